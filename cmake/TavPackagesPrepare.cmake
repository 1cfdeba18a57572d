# SPDX-License-Identifier: MIT
# CPack runs this before it packs the installed files: Debian requires compressed manuals.
file(GLOB_RECURSE pages ${CPACK_TEMPORARY_DIRECTORY}/*.1)
foreach(page IN LISTS pages)
    if(page MATCHES "/share/man/man1/")
        execute_process(COMMAND gzip -9nf ${page} COMMAND_ERROR_IS_FATAL ANY)
    endif()
endforeach()
