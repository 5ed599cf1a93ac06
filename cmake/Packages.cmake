# SPDX-License-Identifier: MIT
# Debian packages of the command, the library and its development files: `cpack` in a build folder of the preset package,
# as scripts/package.sh calls it.
if(WIN32 OR NOT PROJECT_IS_TOP_LEVEL OR NOT PIXKIT_INSTALL)
    return()
endif()
set(PIXKIT_MAINTAINER "The pixkit authors <maintainers@pixkit.invalid>" CACHE STRING "Whom Debian packages name as their maintainer")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME pixkit)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "${PIXKIT_MAINTAINER}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL command runtime development)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
# What Debian wants beside the files that are installed, and the times of all.
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/DebianFiles.cmake")
set(CPACK_POST_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/DebianScripts.cmake")
set(CPACK_PIXKIT_SOURCE_DIR "${PROJECT_SOURCE_DIR}")

set(same_version "(= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
# Borrowed at run time where they are there, so that no dependency is found in the files.
set(borrowed "libturbojpeg0, zlib1g")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # or it would stand before each package's own
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/src")

set(CPACK_DEBIAN_COMMAND_PACKAGE_NAME pixkit)
set(CPACK_DEBIAN_COMMAND_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_COMMAND_PACKAGE_RECOMMENDS "${borrowed}")
set(CPACK_DEBIAN_COMMAND_DESCRIPTION "command that converts, changes and composes pictures with alpha
pixkit reads PNG, BMP, TGA, GIF, icons, cursors and JPEG files, and writes
them: converted, resized, turned, with effects, shadows and text, put
together on a canvas or as contact sheets and sprites, one or folders of
them at a time.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libpixkit${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS "${borrowed}")
file(WRITE "${PROJECT_BINARY_DIR}/debian/triggers" "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${PROJECT_BINARY_DIR}/debian/triggers")
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "library that loads, changes, draws and saves pictures with alpha
pixkit is one C++ class for pictures inside other programs: PNG, BMP, TGA,
GIF, icons, cursors and JPEG; effects, resampling, shadows and blending
with the same bytes on every machine, and text with the system's fonts.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libpixkit-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libpixkit${PROJECT_VERSION_MAJOR} ${same_version}")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "headers of the pixkit library
What programs that use the library pixkit are built with: its headers, a
CMake package, find_package(pixkit), and a page on using them.")
include(CPack)
