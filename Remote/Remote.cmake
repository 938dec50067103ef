zo_public_headers(zosoftwareplatformembedded BASE ${CMAKE_SOURCE_DIR}/Remote/Inc HEADERS
    )
target_sources(zosoftwareplatformembedded PRIVATE
    )
