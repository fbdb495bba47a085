# Warnings and sanitizers that everything in this project is built with.
function(tessel_compiler_options target)
    if(PROJECT_IS_TOP_LEVEL)
        target_compile_options(${target} PRIVATE
            -Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Woverloaded-virtual -Werror)
        if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
            target_compile_options(${target} PRIVATE -Wno-missing-field-initializers -Wno-missing-braces)
        endif()
        # To g++ 12 any "text" + std::string() may overlap itself or be too long (its bug 105651).
        if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
            target_compile_options(${target} PRIVATE -Wno-restrict -Wno-stringop-overflow)
        endif()
        # g++ reports designated initialisers that leave members to their defaults.
        target_compile_options(${target} PRIVATE -Wno-missing-field-initializers)
    endif()
endfunction()

# Headers that most files of a target include: tessel_precompile(TARGET [HEADER...]).
function(tessel_precompile target)
    if(TESSEL_PRECOMPILE)
        target_precompile_headers(${target} PRIVATE <algorithm> <atomic> <chrono> <functional> <map>
            <memory> <mutex> <optional> <string> <unordered_map> <variant> <vector> ${ARGN})
    endif()
endfunction()

if(TESSEL_SANITIZE)
    # What the sanitizers insert makes g++ see uninitialised reads and overlong copies in the
    # standard library.
    if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
        add_compile_options(-Wno-maybe-uninitialized -Wno-array-bounds -Wno-restrict
            -Wno-stringop-overflow -Wno-stringop-overread)
    endif()
    add_compile_options(-fsanitize=${TESSEL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${TESSEL_SANITIZE})
endif()
