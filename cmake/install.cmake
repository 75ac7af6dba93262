# The files that `cmake --install` copies below a prefix: the library, the public headers, the tools (tools/), a
# CMake package, and a file for pkg-config. None of them contains an absolute path: folders are relative to the
# file that names them. So the installed tree may be moved, and DESTDIR works.
include(CMakePackageConfigHelpers)

set(QRV_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/qrv)
install(TARGETS qrv qrv_module EXPORT qrv)
install(DIRECTORY include/qrv DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(EXPORT qrv NAMESPACE qrv:: FILE qrvTargets.cmake DESTINATION ${QRV_PACKAGE_DIR})

configure_package_config_file(cmake/qrvConfig.cmake.in ${PROJECT_BINARY_DIR}/qrvConfig.cmake
    INSTALL_DESTINATION ${QRV_PACKAGE_DIR} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/qrvConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/qrvConfig.cmake ${PROJECT_BINARY_DIR}/qrvConfigVersion.cmake
    DESTINATION ${QRV_PACKAGE_DIR})

# Folders in qrv.pc are relative to its own location.
set(QRV_PC_DIR ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${QRV_PC_DIR} OUTPUT_VARIABLE QRV_PC_TO_PREFIX)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_LIBDIR BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX} OUTPUT_VARIABLE QRV_PC_LIBDIR)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_INCLUDEDIR BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX}
    OUTPUT_VARIABLE QRV_PC_INCLUDEDIR)
configure_file(cmake/qrv.pc.in ${PROJECT_BINARY_DIR}/qrv.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/qrv.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
