# SPDX-License-Identifier: MIT
# `cmake --install` gives headers, library, command, a CMake package (find_package(pixkit), pixkit::pixkit) and a file for
# pkg-config.
include(CMakePackageConfigHelpers)
set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/pixkit")

install(TARGETS pixkit EXPORT pixkit-targets
        RUNTIME COMPONENT runtime LIBRARY COMPONENT runtime NAMELINK_COMPONENT development ARCHIVE COMPONENT development)
install(EXPORT pixkit-targets NAMESPACE pixkit:: DESTINATION "${package_dir}" COMPONENT development)
write_basic_package_version_file("${CMAKE_CURRENT_BINARY_DIR}/pixkit-config-version.cmake" COMPATIBILITY SameMajorVersion)
# Whoever links the static library needs the libraries that draw text. A shared one has them itself; were they named as
# private ones, pkg-config would ask for their development files all the same.
get_target_property(library_type pixkit TYPE)
set(pc_libraries)
set(pc_packages)
if(library_type STREQUAL "STATIC_LIBRARY")
    set(needed_packages ${text_packages})
    list(TRANSFORM system_libraries PREPEND "-l" OUTPUT_VARIABLE pc_libraries)
    string(REPLACE ";" " " pc_libraries "${link_options};${pc_libraries}")
    string(STRIP "${pc_libraries}" pc_libraries)
    string(REPLACE ";" " " pc_packages "${text_packages}")
endif()
configure_file("${PROJECT_SOURCE_DIR}/cmake/pixkit-config.cmake" pixkit-config.cmake @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/pixkit-config.cmake" "${CMAKE_CURRENT_BINARY_DIR}/pixkit-config-version.cmake"
        DESTINATION "${package_dir}" COMPONENT development)

if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
    set(package_prefix "${CMAKE_INSTALL_PREFIX}")
    set(package_libdir "${CMAKE_INSTALL_LIBDIR}")
else() # found from where the file lies, so that an installation may be moved
    file(RELATIVE_PATH up "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
    string(REGEX REPLACE "/$" "" up "${up}")
    set(package_prefix "\${pcfiledir}/${up}")
    set(package_libdir "\${pcfiledir}/..")
endif()
configure_file("${PROJECT_SOURCE_DIR}/cmake/pixkit.pc.in" pixkit.pc @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/pixkit.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)

# The headers that <pixkit/pixkit.h> includes. Installed, all of them lie below pixkit/ and say so to each other, so that
# no other project's "shared/..." or "platform/..." is found in their place.
foreach(header IN ITEMS ../include/pixkit/pixkit.h surface/cPixSheet.h surface/Records.h shared/ByteArray.h
        shared/enumerations.h shared/resources.h diagnostics/ErrorReport.h
        platform/api.h platform/clipboard.h platform/drops.h platform/gdi.h platform/gdiplus.h platform/handle.h platform/icons.h
        platform/interaction.h platform/pictures.h platform/regions.h platform/text.h)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${header}")
    file(READ "${header}" text)
    string(REPLACE "#include \"" "#include \"pixkit/" text "${text}")
    string(REPLACE "../include/pixkit/" "" installed "${header}")
    file(CONFIGURE OUTPUT "${CMAKE_CURRENT_BINARY_DIR}/headers/${installed}" CONTENT "${text}" @ONLY)
endforeach()
install(DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}/headers/" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/pixkit" COMPONENT development)
