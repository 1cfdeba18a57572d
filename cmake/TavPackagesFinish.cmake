# SPDX-License-Identifier: MIT
# CPack runs this after it has built the packages; it corrects where CPack differs from Debian.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
    set(folder ${package}.unpacked)
    execute_process(COMMAND dpkg-deb --raw-extract ${package} ${folder} COMMAND_ERROR_IS_FATAL ANY)
    set(changed OFF)
    if(EXISTS ${folder}/DEBIAN/triggers AND EXISTS ${folder}/DEBIAN/postinst)
        # They run ldconfig, which the trigger does already, once for all packages of an installation.
        file(REMOVE ${folder}/DEBIAN/postinst ${folder}/DEBIAN/postrm)
        set(changed ON)
    endif()
    if(package MATCHES "/([^/_]+)-dbgsym_.*\\.ddeb$")
        # CPack writes no documents for it, and paths of the build into its checksums.
        file(MAKE_DIRECTORY ${folder}/usr/share/doc)
        file(CREATE_LINK ${CMAKE_MATCH_1} ${folder}/usr/share/doc/${CMAKE_MATCH_1}-dbgsym SYMBOLIC)
        execute_process(COMMAND find usr -type f -exec md5sum {} + WORKING_DIRECTORY ${folder}
            OUTPUT_FILE ${folder}/DEBIAN/md5sums COMMAND_ERROR_IS_FATAL ANY)
        set(changed ON)
    endif()
    if(changed)
        execute_process(COMMAND dpkg-deb --root-owner-group -Zxz --build ${folder} ${package}
            OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
    endif()
    file(REMOVE_RECURSE ${folder})
endforeach()
