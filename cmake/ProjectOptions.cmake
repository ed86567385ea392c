# Compiler settings that every target of the project shares.

option(TRN_BUILD_BENCHMARKS "Build the programs under bench/" OFF)
option(TRN_WITH_EXTERNAL_DECODER "Build the decoder over libmpg123 that a setting can choose" ON)
option(TRN_FUZZ "Build the fuzzing targets with their engine (Clang)" OFF)
option(TRN_HARDEN "Build with the checks and the address layout that docs/robustness.md names" ON)
set(TRN_SANITIZE "" CACHE STRING "Value of -fsanitize= for every target (empty: none)")

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")

add_library(trn_options INTERFACE)
target_include_directories(trn_options INTERFACE
    "${PROJECT_SOURCE_DIR}/include"
    "${PROJECT_SOURCE_DIR}/platform"
    "${PROJECT_SOURCE_DIR}/src")

# The same file must give the same PCM on every compiler: no contraction into
# fused multiply-add, no value-changing optimisation.
if(MSVC)
    target_compile_options(trn_options INTERFACE /W4 /WX /utf-8 /fp:precise)
else()
    target_compile_options(trn_options INTERFACE
        -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -ffp-contract=off)
    # GCC 12 finds overlapping copies in the standard library's own string concatenation (GCC PR 105651).
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
        target_compile_options(trn_options INTERFACE -Wno-restrict)
    endif()
endif()

if(WIN32)
    target_compile_definitions(trn_options INTERFACE UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN)
    if(MINGW)
        target_link_options(trn_options INTERFACE -static)
    endif()
endif()

include(Hardening)

if(TRN_SANITIZE)
    target_compile_options(trn_options INTERFACE
        -fsanitize=${TRN_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(trn_options INTERFACE -fsanitize=${TRN_SANITIZE})
endif()

# trn_add_library(NAME sources... [LINK targets...]): one static library a folder.
function(trn_add_library name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LINK")
    add_library(${name} STATIC ${arg_UNPARSED_ARGUMENTS})
    target_link_libraries(${name} PUBLIC trn_options ${arg_LINK})
endfunction()
