# What `cmake --install` gives: the library, its headers, a CMake package and a pkg-config file.

include(CMakePackageConfigHelpers)

set(ZELM_PACKAGE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/ZelmFoundation")

install(TARGETS ZelmFoundation EXPORT ZelmFoundationTargets
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT dev)
install(EXPORT ZelmFoundationTargets NAMESPACE Zelm:: DESTINATION "${ZELM_PACKAGE_DIR}" COMPONENT dev)
install(FILES "${PROJECT_SOURCE_DIR}/zelm/Export.h" "${PROJECT_SOURCE_DIR}/zelm/zelm.h"
        DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/zelm" COMPONENT dev)

configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/ZelmFoundationConfig.cmake.in"
                              "${PROJECT_BINARY_DIR}/ZelmFoundationConfig.cmake"
                              INSTALL_DESTINATION "${ZELM_PACKAGE_DIR}")
# Before 1.0 every minor version may change the interface.
write_basic_package_version_file("${PROJECT_BINARY_DIR}/ZelmFoundationConfigVersion.cmake"
                                 COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/ZelmFoundationConfig.cmake"
              "${PROJECT_BINARY_DIR}/ZelmFoundationConfigVersion.cmake"
        DESTINATION "${ZELM_PACKAGE_DIR}" COMPONENT dev)

# The library directory may be deeper than one level, such as lib/x86_64-linux-gnu.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig"
           OUTPUT_VARIABLE ZELM_PREFIX_FROM_PC)
configure_file("${PROJECT_SOURCE_DIR}/cmake/zelm-foundation.pc.in"
               "${PROJECT_BINARY_DIR}/zelm-foundation.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/zelm-foundation.pc"
        DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT dev)
