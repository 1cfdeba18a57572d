# SPDX-License-Identifier: MIT
# tav_pkg_config(NAME name DESCRIPTION text REQUIRES packages LIBRARIES options COMPONENT name): installs name.pc, for
# hosts that are not built by CMake.
include_guard(GLOBAL)

function(tav_pkg_config)
    cmake_parse_arguments(PARSE_ARGV 0 pc "" "NAME;DESCRIPTION;REQUIRES;LIBRARIES;COMPONENT" "")
    set(folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
    # From where the file lies, so that the installation may be moved.
    file(RELATIVE_PATH pc_prefix /${folder} /)
    string(REGEX REPLACE "/$" "" pc_prefix ${pc_prefix})
    configure_file(${CMAKE_CURRENT_FUNCTION_LIST_DIR}/pkg_config.pc.in ${PROJECT_BINARY_DIR}/generated/${pc_NAME}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/generated/${pc_NAME}.pc DESTINATION ${folder}
        COMPONENT ${pc_COMPONENT})
endfunction()
