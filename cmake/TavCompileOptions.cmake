# SPDX-License-Identifier: MIT
# tav_compile_options(target): what every target of ours is compiled with.
include_guard(GLOBAL)

function(tav_compile_options target)
    target_compile_features(${target} PRIVATE cxx_std_17)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow $<$<BOOL:${TAV_WARNINGS_AS_ERRORS}>:-Werror>)
endfunction()
