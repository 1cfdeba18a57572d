# SPDX-License-Identifier: MIT
# For tools/check-windows: mingw-w64 beside the headers and code generators of this machine's Qt. Nothing is linked.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
list(APPEND CMAKE_PREFIX_PATH /usr/lib/x86_64-linux-gnu/cmake)

# Qt's libraries are Linux', so the link steps come to nothing, and any file does as an import library.
set(CMAKE_CXX_LINKER_LAUNCHER true)
function(tav_name_import_libraries)
    get_property(targets DIRECTORY PROPERTY IMPORTED_TARGETS)
    foreach(target IN LISTS targets)
        get_target_property(type ${target} TYPE)
        if(type STREQUAL SHARED_LIBRARY)
            set_target_properties(${target} PROPERTIES IMPORTED_IMPLIB ${CMAKE_TOOLCHAIN_FILE})
        endif()
    endforeach()
endfunction()
get_property(in_try_compile GLOBAL PROPERTY IN_TRY_COMPILE)
if(NOT in_try_compile)
    cmake_language(DEFER CALL tav_name_import_libraries)
endif()
