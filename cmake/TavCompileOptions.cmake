# SPDX-License-Identifier: MIT
# tav_compile_options(target): what every target of ours is compiled with.
# tav_shared_library(target): what every shared library of ours is linked and installed with.
# tav_install_library(target EXPORT name RUNTIME component DEVELOPMENT component): where its files go.
include_guard(GLOBAL)

function(tav_compile_options target)
    target_compile_features(${target} PRIVATE cxx_std_17)
    if(MSVC)
        target_compile_options(${target} PRIVATE /utf-8 /W4 /permissive- $<$<BOOL:${TAV_WARNINGS_AS_ERRORS}>:/WX>)
    else()
        target_compile_options(${target}
            PRIVATE -Wall -Wextra -Wpedantic -Wshadow
                # What Qt's qCWarning() << "..." comes to in C++17.
                $<$<CXX_COMPILER_ID:Clang,AppleClang>:-Wno-gnu-zero-variadic-macro-arguments>
                $<$<BOOL:${TAV_WARNINGS_AS_ERRORS}>:-Werror>)
    endif()
endfunction()

function(tav_shared_library target)
    if(APPLE)
        set(beside @loader_path)
    else()
        set(beside $ORIGIN)
    endif()
    set_target_properties(${target} PROPERTIES
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}
        INSTALL_RPATH ${beside})
    # A symbol that is in no library fails here, and not in the host. Clang leaves those of its sanitizers to the program.
    if(UNIX AND NOT APPLE AND NOT (CMAKE_CXX_COMPILER_ID MATCHES Clang AND CMAKE_CXX_FLAGS MATCHES -fsanitize))
        target_link_options(${target} PRIVATE LINKER:--no-undefined)
    endif()
endfunction()

function(tav_install_library target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "EXPORT;RUNTIME;DEVELOPMENT" "")
    install(TARGETS ${target} EXPORT ${arg_EXPORT}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${arg_RUNTIME} NAMELINK_COMPONENT ${arg_DEVELOPMENT}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${arg_DEVELOPMENT}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT ${arg_RUNTIME})
endfunction()
