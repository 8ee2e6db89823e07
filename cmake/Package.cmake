# Installs libraries, headers, the CMake package "vornfilehandle" and the pkg-config files.
include(CMakePackageConfigHelpers)

install(TARGETS vornfilehandle vornplatform vornplatform_headers EXPORT vornfilehandle
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/vorn platform/include/vorn
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/vornfilehandle)
install(EXPORT vornfilehandle
    FILE vornfilehandleTargets.cmake NAMESPACE vorn:: DESTINATION ${package_folder})
configure_package_config_file(cmake/vornfilehandleConfig.cmake.in
    ${PROJECT_BINARY_DIR}/vornfilehandleConfig.cmake INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vornfilehandleConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/vornfilehandleConfig.cmake
    ${PROJECT_BINARY_DIR}/vornfilehandleConfigVersion.cmake
    DESTINATION ${package_folder})

# The prefix is found from where the file lies, so that "cmake --install --prefix" tells the truth.
set(pkgconfig_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH prefix_from_pkgconfig /prefix/${pkgconfig_folder} /prefix)
foreach(name vornfilehandle vornplatform)
    configure_file(cmake/${name}.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${pkgconfig_folder})
endforeach()
