zo_public_headers(zosoftwareplatformembedded BASE ${CMAKE_SOURCE_DIR}/Interfaces/_Inc HEADERS
    )
target_sources(zosoftwareplatformembedded PRIVATE
    )
