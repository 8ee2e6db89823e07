# Installs libraries, headers, the CMake package "vornfilehandle" and the pkg-config files.
include(CMakePackageConfigHelpers)

# Components are called as Debian's packages, without the number of a binary interface.
set(development libvornfilehandle-dev)
install(TARGETS vornplatform_headers vornplatform_needed EXPORT vornfilehandle)
foreach(library vornfilehandle vornplatform)
    install(TARGETS ${library} EXPORT vornfilehandle
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        COMPONENT lib${library} NAMELINK_COMPONENT ${development})
endforeach()
install(DIRECTORY include/vorn platform/include/vorn
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT ${development} FILES_MATCHING PATTERN "*.h")

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/vornfilehandle)
install(EXPORT vornfilehandle
    FILE vornfilehandleTargets.cmake NAMESPACE vorn:: DESTINATION ${package_folder}
    COMPONENT ${development})
configure_package_config_file(cmake/vornfilehandleConfig.cmake.in
    ${PROJECT_BINARY_DIR}/vornfilehandleConfig.cmake INSTALL_DESTINATION ${package_folder})
configure_file(cmake/vornfilehandleConfigVersion.cmake.in
    ${PROJECT_BINARY_DIR}/vornfilehandleConfigVersion.cmake @ONLY)
install(FILES
    ${PROJECT_BINARY_DIR}/vornfilehandleConfig.cmake
    ${PROJECT_BINARY_DIR}/vornfilehandleConfigVersion.cmake
    DESTINATION ${package_folder} COMPONENT ${development})

# The prefix is found from where the file lies, so that "cmake --install --prefix" tells the truth.
set(pkgconfig_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH prefix_from_pkgconfig /prefix/${pkgconfig_folder} /prefix)
foreach(name vornfilehandle vornplatform)
    configure_file(cmake/${name}.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${pkgconfig_folder}
        COMPONENT ${development})
endforeach()
