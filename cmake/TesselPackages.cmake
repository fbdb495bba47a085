# Debian packages, one of each installed component; scripts/package makes them.
option(TESSEL_DEBIAN "Install for Debian packages: their documents, no run paths" OFF)
set(TESSEL_MAINTAINER "Tessel developers <tessel@lists.invalid>" CACHE STRING
    "Who answers for the Debian packages")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "${TESSEL_MAINTAINER}")
set(CPACK_PACKAGING_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
# CPack's default: any other text would stand before each package's own summary.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_NAME} built using CMake")
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE tessel)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1 CACHE STRING "Revision of the Debian packages")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")

set(debian_version "${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}")
set(debian_library libtessel${TESSEL_SOVERSION})

# tessel_package(COMPONENT NAME SECTION DEPENDS SUMMARY DESCRIPTION)
macro(tessel_package component name section depends summary description)
    string(TOUPPER ${component} upper)
    list(APPEND CPACK_COMPONENTS_ALL ${component})
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name})
    set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
    set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${depends}")
    set(CPACK_DEBIAN_${upper}_DESCRIPTION "${summary}\n${description}")
    if(TESSEL_DEBIAN)
        set(directory "${PROJECT_BINARY_DIR}/debian/${name}")
        set(debian_package ${name})
        configure_file("${PROJECT_SOURCE_DIR}/cmake/debian/changelog.in" "${directory}/changelog.Debian")
        execute_process(COMMAND gzip -9nf "${directory}/changelog.Debian" COMMAND_ERROR_IS_FATAL ANY)
        install(FILES "${directory}/changelog.Debian.gz" "${PROJECT_SOURCE_DIR}/cmake/debian/copyright"
            DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/doc/${name}" COMPONENT ${component})
    endif()
endmacro()

if(TESSEL_DEBIAN)
    string(TIMESTAMP debian_date "%a, %d %b %Y %H:%M:%S +0000" UTC)
endif()
set(about "Tessel finds an account's calendars on a server that speaks CalDAV,
keeps a copy of them and changes them without losing what others wrote.
")
tessel_package(Library ${debian_library} libs "libtessel-data (>= ${PROJECT_VERSION}), tzdata"
    "client library for calendar servers"
    "${about}This package holds the shared libraries.")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/cmake/debian/triggers")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_RECOMMENDS ca-certificates)
tessel_package(Data libtessel-data misc ""
    "time zone definitions of the Tessel library"
    "${about}This package holds the definitions of time zones that it writes.")
set(CPACK_DEBIAN_DATA_PACKAGE_ARCHITECTURE all)
tessel_package(Development libtessel-dev libdevel "${debian_library} (= ${debian_version})"
    "client library for calendar servers, development files"
    "${about}This package holds headers, and what CMake and pkg-config need.")
if(TESSEL_BUILD_TOOLS)
    tessel_package(Tool tessel utils "${debian_library} (= ${debian_version})"
        "calendars on a server, from the command line"
        "${about}This package holds a tool that does so from the command line.")
    set(CPACK_DEBIAN_TOOL_PACKAGE_SHLIBDEPS ON)
    if(TESSEL_DEBIAN) # whose pages are compressed
        install(CODE "
            file(GLOB pages \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_MANDIR}/man1/*.1\")
            execute_process(COMMAND gzip -9nf \${pages} COMMAND_ERROR_IS_FATAL ANY)"
            COMPONENT Tool)
    endif()
endif()
include(CPack)
