# SPDX-License-Identifier: MIT
# The constants of the build: cache variables here, one generated source file for the compiler.
include_guard(GLOBAL)

set(TAV_PLATFORM_ADDRESS "http://127.0.0.1:48620" CACHE STRING
    "Cloud platform: scheme, host and port, no trailing slash")
set(TAV_CONVERSION_ADDRESS "http://127.0.0.1:48620" CACHE STRING
    "Conversion service: scheme, host and port, no trailing slash")
set(TAV_CLIENT_CREDENTIAL "Basic dGF2LWxvY2FsOnRhdi1sb2NhbC1zZWNyZXQ=" CACHE STRING
    "Authorization header of the account requests: Basic, a space, Base64 of client-id:secret")
set(TAV_REFRESH_BEARER "Bearer tav-local-refresh" CACHE STRING
    "Authorization header of the token refresh request: Bearer, a space, the fixed token")
set(TAV_ACCOUNT_CIPHER_KEY "tav-local-key-16" CACHE STRING
    "Key and initialisation vector of the account cipher: 16 printable ASCII characters")

foreach(name TAV_PLATFORM_ADDRESS TAV_CONVERSION_ADDRESS)
    if(NOT "${${name}}" MATCHES "^https?://[^][/ \"\\?#@\t\r\n]+$")
        message(FATAL_ERROR "${name} must be scheme://host:port without a trailing slash, not \"${${name}}\"")
    endif()
endforeach()
foreach(name TAV_CLIENT_CREDENTIAL TAV_REFRESH_BEARER)
    if(NOT "${${name}}" MATCHES "^[ -~]+$")
        message(FATAL_ERROR "${name} is a header value and must be printable ASCII on one line")
    endif()
endforeach()
string(LENGTH "${TAV_ACCOUNT_CIPHER_KEY}" key_length)
if(NOT key_length EQUAL 16 OR NOT "${TAV_ACCOUNT_CIPHER_KEY}" MATCHES "^[ -~]+$")
    message(FATAL_ERROR "TAV_ACCOUNT_CIPHER_KEY must have exactly 16 printable ASCII characters")
endif()

# A build that may be shipped warns of what is only for a developer's machine: the published secrets and addresses, and
# addresses without TLS.
if(NOT CMAKE_BUILD_TYPE MATCHES "^(Debug|RelWithDebInfo)$" AND NOT TAV_WITH_BENCH)
    set(published
        "Basic dGF2LWxvY2FsOnRhdi1sb2NhbC1zZWNyZXQ=" "Bearer tav-local-refresh" "tav-local-key-16")
    foreach(name TAV_CLIENT_CREDENTIAL TAV_REFRESH_BEARER TAV_ACCOUNT_CIPHER_KEY)
        if("${${name}}" IN_LIST published)
            message(WARNING "${name} still has its published default, which protects nothing. "
                "Set it with -D${name}=... before shipping this build.")
        endif()
    endforeach()
    foreach(name TAV_PLATFORM_ADDRESS TAV_CONVERSION_ADDRESS)
        if("${${name}}" STREQUAL "http://127.0.0.1:48620")
            message(WARNING "${name} is still the default, a platform on the same machine. "
                "Set it with -D${name}=https://... before shipping this build.")
        elseif("${${name}}" MATCHES "^http://" AND NOT "${${name}}" MATCHES "^http://(127\\.[0-9.]+|localhost)(:[0-9]+)?$")
            message(WARNING "${name} is ${${name}}: over plain http, others on the network can read "
                "and change passwords, tokens and drawings. Give it an https address before shipping this build.")
        endif()
    endforeach()
endif()

# tav_build_constants(out): writes the source file that defines the constants and returns its path.
function(tav_build_constants out)
    foreach(name TAV_PLATFORM_ADDRESS TAV_CONVERSION_ADDRESS TAV_CLIENT_CREDENTIAL TAV_REFRESH_BEARER TAV_ACCOUNT_CIPHER_KEY)
        string(REPLACE "\\" "\\\\" ${name} "${${name}}")
        string(REPLACE "\"" "\\\"" ${name} "${${name}}")
        string(REPLACE "?" "\\?" ${name} "${${name}}")
    endforeach()
    configure_file(${CMAKE_CURRENT_FUNCTION_LIST_DIR}/BuildConstants.cpp.in ${PROJECT_BINARY_DIR}/generated/BuildConstants.cpp @ONLY)
    set(${out} ${PROJECT_BINARY_DIR}/generated/BuildConstants.cpp PARENT_SCOPE)
endfunction()
