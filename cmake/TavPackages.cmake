# SPDX-License-Identifier: MIT
# Debian packages of the install components, by CPack; tools/packages builds them.
include_guard(GLOBAL)
find_program(GZIP gzip REQUIRED)

set(TAV_PACKAGE_CONTACT "The tav_cloud_platform_sdk authors <authors@tav.invalid>" CACHE STRING
    "Maintainer of the packages: Name <address>")
set(TAV_PACKAGE_REVISION 0tav1 CACHE STRING "Debian revision of the packages")
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tav-cloud-platform-sdk)
set(CPACK_PACKAGE_CONTACT ${TAV_PACKAGE_CONTACT})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES OFF) # CPACK_DEBIAN_DEBUGINFO_PACKAGE does it
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${TAV_PACKAGE_REVISION})
set(CPACK_DEBIAN_PACKAGE_SOURCE tav-cloud-platform-sdk)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/TavPackagesPrepare.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/TavPackagesFinish.cmake)
set(CPACK_COMPONENTS_ALL "")
set(qt_development "qtbase5-dev (>= 5.15)")
if(TAV_QT STREQUAL 6)
    set(qt_development "qt6-base-dev (>= 6.4)")
endif()
set(version "(= ${PROJECT_VERSION}-${TAV_PACKAGE_REVISION})")

# tav_package(component name SECTION s DESCRIPTION text [DEPENDS text] [RECOMMENDS text] [SUGGESTS text] [LIBRARY] [ALL]):
# the package of an install component. LIBRARY: it has shared libraries; ALL: it is the same for every architecture.
macro(tav_package component name)
    cmake_parse_arguments(arg "LIBRARY;ALL" "SECTION;DEPENDS;RECOMMENDS;SUGGESTS;DESCRIPTION" "" ${ARGN})
    list(APPEND CPACK_COMPONENTS_ALL ${component})
    string(TOUPPER ${component} key)
    set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${name})
    set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${arg_SECTION})
    set(CPACK_DEBIAN_${key}_PACKAGE_DEPENDS "${arg_DEPENDS}")
    set(CPACK_DEBIAN_${key}_PACKAGE_RECOMMENDS "${arg_RECOMMENDS}")
    set(CPACK_DEBIAN_${key}_PACKAGE_SUGGESTS "${arg_SUGGESTS}")
    set(CPACK_DEBIAN_${key}_DESCRIPTION "${arg_DESCRIPTION}")
    if(arg_LIBRARY)
        set(CPACK_DEBIAN_${key}_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/debian/triggers)
    endif()
    if(arg_ALL)
        set(CPACK_DEBIAN_${key}_PACKAGE_ARCHITECTURE all)
        set(CPACK_DEBIAN_${key}_DEBUGINFO_PACKAGE OFF)
    endif()
    tav_package_documents(${component} ${name})
endmacro()

# The changelogs, the copyright file and the other files that Debian requires in every package.
function(tav_package_documents component name)
    set(sources ${PROJECT_SOURCE_DIR}/packaging/debian)
    set(documents ${PROJECT_BINARY_DIR}/documents/${name})
    file(MAKE_DIRECTORY ${documents})
    foreach(document IN ITEMS "${PROJECT_SOURCE_DIR}/CHANGELOG.md>changelog.gz" "${sources}/changelog>changelog.Debian.gz")
        string(REGEX MATCH "(.*)>(.*)" document ${document})
        set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${CMAKE_MATCH_1})
        execute_process(COMMAND ${GZIP} -9nc INPUT_FILE ${CMAKE_MATCH_1} OUTPUT_FILE ${documents}/${CMAKE_MATCH_2}
            COMMAND_ERROR_IS_FATAL ANY)
    endforeach()
    file(READ ${sources}/copyright copyright)
    if(EXISTS ${sources}/copyright.${name})
        file(READ ${sources}/copyright.${name} more)
        string(APPEND copyright "${more}")
    endif()
    file(WRITE ${documents}/copyright "${copyright}")
    install(DIRECTORY ${documents}/ DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component})
    foreach(kind IN ITEMS lintian-overrides>lintian/overrides doc-base>doc-base)
        string(REGEX MATCH "(.*)>(.*)" kind ${kind})
        if(EXISTS ${sources}/${CMAKE_MATCH_1}.${name})
            install(FILES ${sources}/${CMAKE_MATCH_1}.${name} RENAME ${name}
                DESTINATION ${CMAKE_INSTALL_DATADIR}/${CMAKE_MATCH_2} COMPONENT ${component})
        endif()
    endforeach()
endfunction()

if(NOT TAV_HOST)
    tav_package(host_runtime libtav-host1 LIBRARY SECTION libs
        DESCRIPTION "Stand-ins for the libraries of a desktop host
The module tav_cloud_platform_sdk uses three libraries of the application
that loads it, its host: toolkit, core and utilities. These are small,
complete ones for applications that have none of their own. An application
that has builds the module against those, and does without this package.")
    tav_package(host_development libtav-host-dev SECTION libdevel
        DEPENDS "libtav-host1 ${version}, ${qt_development}"
        DESCRIPTION "Stand-ins for the libraries of a desktop host - development files
Headers, CMake package and pkg-config file of the libraries in libtav-host1.")
    set(host_runtime ", libtav-host1 ${version}")
    set(host_development ", libtav-host-dev ${version}")
endif()
tav_package(runtime libtav-cloud-platform-sdk1 LIBRARY SECTION libs
    # Without certificates no https platform is trusted.
    DEPENDS "ca-certificates${host_runtime}"
    DESCRIPTION "Cloud account and cloud space for desktop applications
A shared library that a desktop application working with project files and
CAD drawings loads into its process. It gives the application and its users
an account on a cloud platform and a cloud space for their files: signing
in, backing files up, sharing them by code, with friends and with groups,
and converting drawings between DGN and DWG.
.
The address of the platform is a constant of the build.")
tav_package(development libtav-cloud-platform-sdk-dev SECTION libdevel
    DEPENDS "libtav-cloud-platform-sdk1 ${version}${host_development}, ${qt_development}"
    SUGGESTS "libtav-cloud-platform-sdk-doc, tav-local-platform"
    DESCRIPTION "Cloud account and cloud space for desktop applications - development files
Headers, CMake package and pkg-config file of the library in
libtav-cloud-platform-sdk1.")
tav_package(documentation libtav-cloud-platform-sdk-doc ALL SECTION doc
    SUGGESTS "libtav-cloud-platform-sdk-dev"
    DESCRIPTION "Cloud account and cloud space for desktop applications - documentation
The guide for an application's engineer, the reference of every operation
with examples, pictures of the dialogs, and the sources of the example
applications.")
tav_package(local_platform tav-local-platform SECTION net
    DEPENDS "nodejs (>= 18)"
    DESCRIPTION "Cloud platform for project files and drawings on one machine
A server for developers, tests and demonstrations: the other side of
everything that the library tav_cloud_platform_sdk sends. It keeps accounts,
projects, shares and groups, and really converts drawings between DGN and
DWG.")
if(NOT TAV_HOST)
    tav_package(desktop_host tav-desktop-host SECTION graphics
        DEPENDS "libtav-cloud-platform-sdk1 ${version}${host_runtime}" RECOMMENDS "qttranslations5-l10n"
        SUGGESTS "tav-local-platform"
        DESCRIPTION "Back drawings up to a cloud platform, share and convert them
A list of drawings, and what can be done with each of them in the cloud
space of the user who signed in. It is the example of how an application
embeds the library tav_cloud_platform_sdk.")
    # A project of its own, built against the installed module, as every host is.
    set(CPACK_INSTALL_CMAKE_PROJECTS
        "${PROJECT_BINARY_DIR};tav_cloud_platform_sdk;ALL;/" "${TAV_DESKTOP_HOST_BUILD};tav_desktop_host;ALL;/")
endif()
# dpkg-shlibdeps finds the libraries of this build here; their packages do not exist yet and are named in DEPENDS above.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
    ${PROJECT_BINARY_DIR}/src ${PROJECT_BINARY_DIR}/host)

set(guides ${CMAKE_INSTALL_DATADIR}/doc/libtav-cloud-platform-sdk-doc)
install(FILES README.md ARCHITECTURE.md SECURITY.md DESTINATION ${guides} COMPONENT documentation)
install(DIRECTORY docs/ DESTINATION ${guides}/docs COMPONENT documentation FILES_MATCHING PATTERN *.md PATTERN *.png)
install(DIRECTORY examples/console_host examples/desktop_host DESTINATION ${guides}/examples COMPONENT documentation)

include(CPack)
