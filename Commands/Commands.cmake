zo_public_headers(zosoftwareplatformembedded BASE ${CMAKE_SOURCE_DIR}/Commands HEADERS
    CBlockInput.h
    CChannelList.h
    CCommandCall.h
    CCommandError.h
    CCommandResult.h
    CCommandSink.h
    CNumericSuffix.h
    CPendingOperation.h
    CommandArguments.h
    CommandDeclaration.h
    CommandInvocation.h
    CommandMistakes.h
    CommandParameter.h
    CommandPattern.h
    CommandResponses.h
    CommandTableMaker.h
    CommandWords.h
    DeclaredCommands.h)
target_sources(zosoftwareplatformembedded PRIVATE
    ${CMAKE_SOURCE_DIR}/Commands/CChannelList.cpp
    ${CMAKE_SOURCE_DIR}/Commands/CommandArguments.cpp
    ${CMAKE_SOURCE_DIR}/Commands/CommandResponses.cpp)
