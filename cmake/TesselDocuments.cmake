# The target `docs` makes the reference of the public headers in BUILD/reference/html.
find_program(TESSEL_DOXYGEN doxygen)
set(documented ${TESSEL_PUBLIC_HEADERS} ${TESSEL_SESSION_PUBLIC_HEADERS})
list(TRANSFORM documented PREPEND "\"${PROJECT_SOURCE_DIR}/")
list(TRANSFORM documented APPEND "\"")
list(JOIN documented " " TESSEL_DOCUMENTED)
configure_file("${PROJECT_SOURCE_DIR}/docs/Doxyfile.in" "${PROJECT_BINARY_DIR}/Doxyfile" @ONLY)
if(TESSEL_DOXYGEN)
    add_custom_target(docs
        COMMAND "${TESSEL_DOXYGEN}" "${PROJECT_BINARY_DIR}/Doxyfile"
        COMMENT "Making the reference"
        VERBATIM)
else()
    add_custom_target(docs
        COMMAND "${CMAKE_COMMAND}" -E echo "The reference is made by doxygen, which is not installed"
        COMMAND "${CMAKE_COMMAND}" -E false
        VERBATIM)
endif()
