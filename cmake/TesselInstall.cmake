# What a consumer gets: the libraries, the headers that Tessel/Tessel.h and Tessel/TesselSession.h
# reach, the zone bundle (installed by Resources/), a CMake package and pkg-config files.
include(CMakePackageConfigHelpers)
include(TesselPublicHeaders)

set(TESSEL_CMAKE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/Tessel")
# The packages' paths are relative to their files, since the prefix may be chosen at installation.
set(TESSEL_PC_DIR "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig")
file(RELATIVE_PATH TESSEL_PC_PREFIX "${TESSEL_PC_DIR}" "${CMAKE_INSTALL_PREFIX}")
file(RELATIVE_PATH TESSEL_PC_INCLUDEDIR "${CMAKE_INSTALL_PREFIX}" "${CMAKE_INSTALL_FULL_INCLUDEDIR}")
file(RELATIVE_PATH TESSEL_PC_LIBDIR "${CMAKE_INSTALL_PREFIX}" "${CMAKE_INSTALL_FULL_LIBDIR}")

# tessel_install(LIBRARY PC HEADERS header... [REQUIRES package...] [LIBS flag...]): a library with
# its headers and its PC.pc. A static library leaves what it links to whoever links it.
function(tessel_install library pc)
    cmake_parse_arguments(ARG "" "" "HEADERS;REQUIRES;LIBS" ${ARGN})
    target_sources(${library} PUBLIC FILE_SET HEADERS
        BASE_DIRS "${PROJECT_SOURCE_DIR}" FILES ${ARG_HEADERS})
    if(PROJECT_IS_TOP_LEVEL)
        # The target LIBRARY_verify_interface_header_sets compiles every public header alone.
        set_target_properties(${library} PROPERTIES VERIFY_INTERFACE_HEADER_SETS ON)
    endif()
    install(TARGETS ${library} EXPORT ${library}Targets
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT Library
            NAMELINK_COMPONENT Development
        ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT Development
        FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT Development)
    install(EXPORT ${library}Targets NAMESPACE Tessel:: DESTINATION "${TESSEL_CMAKE_DIR}"
        COMPONENT Development)

    list(JOIN ARG_REQUIRES ", " TESSEL_PC_REQUIRES)
    list(JOIN ARG_LIBS " " TESSEL_PC_LIBS)
    configure_file("${PROJECT_SOURCE_DIR}/cmake/${pc}.pc.in" "${PROJECT_BINARY_DIR}/${pc}.pc" @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/${pc}.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
        COMPONENT Development)
endfunction()

set(requires "")
set(session_requires "")
set(session_libs "")
if(NOT BUILD_SHARED_LIBS)
    set(requires icu-i18n icu-uc libxml-2.0 "libcurl >= ${TESSEL_CURL_VERSION}"
        "openssl >= ${TESSEL_OPENSSL_VERSION}" spdlog)
    set(session_requires libical libcares sqlite3)
    set(session_libs -lSQLiteCpp) # which brings no .pc
endif()
tessel_install(Tessel tessel HEADERS ${TESSEL_PUBLIC_HEADERS} REQUIRES ${requires})
if(TESSEL_BUILD_SESSION)
    tessel_install(TesselSession tessel-session HEADERS ${TESSEL_SESSION_PUBLIC_HEADERS}
        REQUIRES "tessel = ${PROJECT_VERSION}" ${session_requires} LIBS ${session_libs})
endif()

set(TESSEL_IS_STATIC TRUE)
if(BUILD_SHARED_LIBS)
    set(TESSEL_IS_STATIC FALSE)
endif()
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/TesselConfig.cmake.in"
    "${PROJECT_BINARY_DIR}/TesselConfig.cmake" INSTALL_DESTINATION "${TESSEL_CMAKE_DIR}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/TesselConfigVersion.cmake"
    COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/TesselConfig.cmake"
    "${PROJECT_BINARY_DIR}/TesselConfigVersion.cmake" DESTINATION "${TESSEL_CMAKE_DIR}"
    COMPONENT Development)
