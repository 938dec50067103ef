# Installs headers, libraries, a CMake package and a pkg-config file for those who write applications.
include(CMakePackageConfigHelpers)

set(zo_header_dir ${CMAKE_INSTALL_INCLUDEDIR}/zosoftwareplatform)
set(zo_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/ZoSoftwarePlatform)

foreach(target IN ITEMS zoplatform zocomponentshell zosoftwareplatformembedded)
    set_target_properties(${target} PROPERTIES
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}
        INSTALL_RPATH "$ORIGIN")
endforeach()
set_target_properties(zosoftwareplatformembedded PROPERTIES EXPORT_NAME SoftwarePlatform)

install(TARGETS zoplatform zocomponentshell zosoftwareplatformembedded
    EXPORT ZoSoftwarePlatformTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    FILE_SET HEADERS DESTINATION ${zo_header_dir})
install(TARGETS zo-demo-instrument zo RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
set_target_properties(zo-demo-instrument zo PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")

install(EXPORT ZoSoftwarePlatformTargets
    NAMESPACE Zo::
    DESTINATION ${zo_package_dir})
configure_package_config_file(
    ${CMAKE_SOURCE_DIR}/CMake/ZoSoftwarePlatformConfig.cmake.in
    ${CMAKE_BINARY_DIR}/ZoSoftwarePlatformConfig.cmake
    INSTALL_DESTINATION ${zo_package_dir})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/ZoSoftwarePlatformConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${CMAKE_BINARY_DIR}/ZoSoftwarePlatformConfig.cmake
    ${CMAKE_BINARY_DIR}/ZoSoftwarePlatformConfigVersion.cmake
    DESTINATION ${zo_package_dir})

configure_file(${CMAKE_SOURCE_DIR}/CMake/zosoftwareplatform.pc.in ${CMAKE_BINARY_DIR}/zosoftwareplatform.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/zosoftwareplatform.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
