# SPDX-License-Identifier: MIT
include(CMakeFindDependencyMacro)
find_dependency(Qt5 5.15 COMPONENTS Widgets)
include("${CMAKE_CURRENT_LIST_DIR}/other_hostTargets.cmake")
