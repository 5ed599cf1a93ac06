# `cmake --install` gives headers, library, command and a CMake package: find_package(pixkit), pixkit::pixkit.
include(CMakePackageConfigHelpers)
set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/pixkit")

install(TARGETS pixkit EXPORT pixkit-targets)
install(EXPORT pixkit-targets NAMESPACE pixkit:: DESTINATION "${package_dir}")
write_basic_package_version_file("${CMAKE_CURRENT_BINARY_DIR}/pixkit-config-version.cmake" COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_SOURCE_DIR}/cmake/pixkit-config.cmake" "${CMAKE_CURRENT_BINARY_DIR}/pixkit-config-version.cmake"
        DESTINATION "${package_dir}")

install(FILES "${PROJECT_SOURCE_DIR}/include/pixkit/pixkit.h" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/pixkit")
install(FILES surface/cPixSheet.h surface/PngProperties.h
        DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/pixkit/surface")
install(FILES shared/ByteArray.h shared/enumerations.h shared/resources.h
        DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/pixkit/shared")
install(FILES diagnostics/guard.h DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/pixkit/diagnostics")
install(FILES platform/handle.h platform/interaction.h platform/pictures.h
        DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/pixkit/platform")
