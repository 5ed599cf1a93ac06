# SPDX-License-Identifier: MIT
# What find_package(pixkit) reads.
set(pixkit_needed_packages "@needed_packages@")
if(pixkit_needed_packages)
    include(CMakeFindDependencyMacro)
    find_dependency(PkgConfig)
    pkg_check_modules(pixkit_text QUIET IMPORTED_TARGET ${pixkit_needed_packages})
    if(NOT pixkit_text_FOUND)
        set(pixkit_FOUND FALSE)
        set(pixkit_NOT_FOUND_MESSAGE "pixkit draws text with ${pixkit_needed_packages}, and pkg-config does not find them all")
        return()
    endif()
endif()
include("${CMAKE_CURRENT_LIST_DIR}/pixkit-targets.cmake")
