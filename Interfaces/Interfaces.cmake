zo_public_headers(zosoftwareplatformembedded BASE ${CMAKE_SOURCE_DIR}/Interfaces/_Inc HEADERS
    CBScpiDeviceHandler.h
    CBScpiEmulationCallback.h
    CBScpiExecutionSink.h
    CBScpiMultichannelEventObserver.h
    CBScpiMultichannelParser.h
    IZOScpiBlockData.h
    IZOScpiDeviceHandler.h
    IZOScpiEmulationCallback.h
    IZOScpiErrorManagement.h
    IZOScpiExecutionSink.h
    IZOScpiManager.h
    IZOScpiMultichannelEventObserver.h
    IZOScpiMultichannelParser.h
    IZOScpiObjectRegistration.h
    IZOScpiOutputBuffer.h
    IZOScpiPendingOperations.h
    IZOScpiStatusManagement.h
    IZOScpiStatusRegister.h
    IZOScpiSubsystemFormat.h
    ScpiParameter.h
    ScpiParserData.h)
target_sources(zosoftwareplatformembedded PRIVATE
    )
