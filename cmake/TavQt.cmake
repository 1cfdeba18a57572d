# SPDX-License-Identifier: MIT
# TAV_QT and TAV_QT_VERSION: the Qt that everything is built with. One process has one, so it is the host's that counts.
include_guard(DIRECTORY)

set(TAV_QT 5 CACHE STRING "Major version of Qt: 5 or 6")
set_property(CACHE TAV_QT PROPERTY STRINGS 5 6)
if(TAV_QT STREQUAL 5)
    set(TAV_QT_VERSION 5.15)
elseif(TAV_QT STREQUAL 6)
    set(TAV_QT_VERSION 6.4)
else()
    message(FATAL_ERROR "TAV_QT must be 5 or 6, not \"${TAV_QT}\"")
endif()
