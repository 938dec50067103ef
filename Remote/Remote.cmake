zo_public_headers(zosoftwareplatformembedded BASE ${CMAKE_SOURCE_DIR}/Remote/Inc HEADERS
    CCommandExecutionData.h
    CLazyScpiManager.h
    CNumericSetting.h
    CScpiFunctionExecutionDataPool.h
    CScpiFunctionExecutionDataPoolParser.h
    CScpiPropErrorStrategy.h
    CScpiSinkFramework.h
    CScpiTransaction.h
    ScpiErrorCodes.h
    ScpiRegisterPart.h)
target_sources(zosoftwareplatformembedded PRIVATE
    ${CMAKE_SOURCE_DIR}/Remote/Src/CCommandExecutionData.cpp
    ${CMAKE_SOURCE_DIR}/Remote/Src/CLazyScpiManager.cpp
    ${CMAKE_SOURCE_DIR}/Remote/Src/CScpiFunctionExecutionDataPool.cpp
    ${CMAKE_SOURCE_DIR}/Remote/Src/CScpiFunctionExecutionDataPoolParser.cpp
    ${CMAKE_SOURCE_DIR}/Remote/Src/CScpiPropErrorStrategy.cpp
    ${CMAKE_SOURCE_DIR}/Remote/Src/CScpiSinkFramework.cpp
    ${CMAKE_SOURCE_DIR}/Remote/Src/CScpiTransaction.cpp
    ${CMAKE_SOURCE_DIR}/Remote/Src/ErrorDelivery.cpp
    ${CMAKE_SOURCE_DIR}/Remote/Src/ScpiExecutionRules.cpp
    )
