# What a consumer gets: the library, the headers that Tessel/Tessel.h reaches, the zone bundle
# (installed by Resources/), a CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)
include(TesselPublicHeaders)

target_sources(Tessel PUBLIC FILE_SET HEADERS
    BASE_DIRS "${PROJECT_SOURCE_DIR}" FILES ${TESSEL_PUBLIC_HEADERS})
if(PROJECT_IS_TOP_LEVEL)
    # The target Tessel_verify_interface_header_sets compiles every public header alone.
    set_target_properties(Tessel PROPERTIES VERIFY_INTERFACE_HEADER_SETS ON)
endif()

set(TESSEL_CMAKE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/Tessel")
install(TARGETS Tessel EXPORT TesselTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(EXPORT TesselTargets NAMESPACE Tessel:: DESTINATION "${TESSEL_CMAKE_DIR}")

configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/TesselConfig.cmake.in"
    "${PROJECT_BINARY_DIR}/TesselConfig.cmake" INSTALL_DESTINATION "${TESSEL_CMAKE_DIR}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/TesselConfigVersion.cmake"
    COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/TesselConfig.cmake"
    "${PROJECT_BINARY_DIR}/TesselConfigVersion.cmake" DESTINATION "${TESSEL_CMAKE_DIR}")

# The package's paths are relative to its file, since the prefix may be chosen at installation.
set(TESSEL_PC_DIR "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig")
file(RELATIVE_PATH TESSEL_PC_PREFIX "${TESSEL_PC_DIR}" "${CMAKE_INSTALL_PREFIX}")
file(RELATIVE_PATH TESSEL_PC_INCLUDEDIR "${CMAKE_INSTALL_PREFIX}" "${CMAKE_INSTALL_FULL_INCLUDEDIR}")
file(RELATIVE_PATH TESSEL_PC_LIBDIR "${CMAKE_INSTALL_PREFIX}" "${CMAKE_INSTALL_FULL_LIBDIR}")
# A static library leaves its own libraries to whoever links it.
set(TESSEL_PC_REQUIRES "")
if(NOT BUILD_SHARED_LIBS)
    set(TESSEL_PC_REQUIRES "icu-i18n icu-uc libxml-2.0 libcurl libssl spdlog")
endif()
configure_file("${PROJECT_SOURCE_DIR}/cmake/tessel.pc.in" "${PROJECT_BINARY_DIR}/tessel.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/tessel.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
