if(NOT MORVANE_INSTALL)
    return()
endif()

include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/morvane)
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(TARGETS morvane EXPORT morvane-targets FILE_SET HEADERS)
install(EXPORT morvane-targets NAMESPACE morvane:: DESTINATION ${package_dir})

configure_package_config_file(
    ${CMAKE_CURRENT_LIST_DIR}/morvane-config.cmake.in ${PROJECT_BINARY_DIR}/morvane-config.cmake
    INSTALL_DESTINATION ${package_dir}
    NO_SET_AND_CHECK_MACRO)
# Before 1.0 a minor version may change the interface.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/morvane-config-version.cmake COMPATIBILITY SameMinorVersion)
install(
    FILES ${PROJECT_BINARY_DIR}/morvane-config.cmake ${PROJECT_BINARY_DIR}/morvane-config-version.cmake
    DESTINATION ${package_dir})

# The prefix is found from where the file lies, so that an installed tree can be moved.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX}/${pkgconfig_dir}
    OUTPUT_VARIABLE pkgconfig_to_prefix)
configure_file(${CMAKE_CURRENT_LIST_DIR}/morvane.pc.in ${PROJECT_BINARY_DIR}/morvane.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/morvane.pc DESTINATION ${pkgconfig_dir})

if(TARGET morvane_app)
    # The program finds the library it was installed with, wherever that is.
    file(RELATIVE_PATH bin_to_lib /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
    set_target_properties(morvane_app PROPERTIES INSTALL_RPATH $ORIGIN/${bin_to_lib})
endif()
