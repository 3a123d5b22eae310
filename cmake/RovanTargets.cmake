# SPDX-License-Identifier: Apache-2.0
# How the targets of this project are made: one library for each folder, one test program for each
# folder under tests/, all with the same warnings and, on request, the same sanitizers.

option(ROVAN_BUILD_TESTS "Build the tests" ON)
option(ROVAN_BUILD_BENCH "Build the benchmarks" OFF)
option(ROVAN_BUILD_FUZZ "Build the fuzz targets (clang only)" OFF)
option(ROVAN_PRECOMPILE "Precompile the headers that most sources include" OFF)
set(ROVAN_TESTS "" CACHE STRING "Folders whose tests are built, the tools among them; all when empty")
set(ROVAN_SANITIZE "" CACHE STRING "Sanitizers for everything, as given to -fsanitize=")

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE RelWithDebInfo)
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
    # Precompiled headers can be cached too, when their macros and times are not looked at.
    set(CMAKE_CXX_COMPILER_LAUNCHER
        env CCACHE_SLOPPINESS=pch_defines,time_macros "${CCACHE_PROGRAM}")
endif()

if(ROVAN_SANITIZE)
    add_compile_options(-fsanitize=${ROVAN_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${ROVAN_SANITIZE})
endif()

# Every processor rounds after each operation, so that the values tested here are those of the unit's.
add_compile_options(-ffp-contract=off)

set(ROVAN_WARNINGS -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)

# What every target of ours has in common.
function(_rovan_common target)
    target_include_directories(${target} PUBLIC "${CMAKE_SOURCE_DIR}")
    # Messages name a source file by its path within the project.
    target_compile_options(${target} PRIVATE ${ROVAN_WARNINGS}
        "-fmacro-prefix-map=${CMAKE_SOURCE_DIR}/=")
    target_link_libraries(${target} PRIVATE Threads::Threads)
endfunction()

# Most of the time of a compilation goes into these.
set(ROVAN_COMMON_HEADERS
    <algorithm> <array> <atomic> <chrono> <cstdint> <functional> <map> <memory> <mutex> <sstream>
    <stdexcept> <string> <thread> <vector>)

function(_rovan_precompile target)
    if(ROVAN_PRECOMPILE)
        target_precompile_headers(${target} PRIVATE ${ROVAN_COMMON_HEADERS} ${ARGN})
        if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
            target_compile_options(${target} PRIVATE -fpch-preprocess)
        endif()
    endif()
endfunction()

# rovan_library(NAME [SOURCES ...] [PUBLIC ...] [PRIVATE ...])
# The static library rovan::NAME. Without SOURCES it takes every .cpp of the calling folder.
function(rovan_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
    if(NOT ARG_SOURCES)
        file(GLOB ARG_SOURCES CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/*.cpp")
    endif()
    if(ARG_SOURCES)
        add_library(rovan_${name} STATIC ${ARG_SOURCES})
        _rovan_common(rovan_${name})
        _rovan_precompile(rovan_${name})
        target_link_libraries(rovan_${name} PUBLIC ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE})
    else()
        add_library(rovan_${name} INTERFACE)
        target_include_directories(rovan_${name} INTERFACE "${CMAKE_SOURCE_DIR}")
        target_link_libraries(rovan_${name} INTERFACE ${ARG_PUBLIC} ${ARG_PRIVATE})
    endif()
    add_library(rovan::${name} ALIAS rovan_${name})
endfunction()

# rovan_executable(NAME SOURCES ... LINK ...)
function(rovan_executable name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    _rovan_common(${name})
    target_link_libraries(${name} PRIVATE ${ARG_LINK})
endfunction()

# rovan_test(FOLDER LINK ... [PROPERTIES ...])
# One test program of all tests/FOLDER/*.cpp; each of its tests is one ctest entry, run in a process
# of its own, so that process-wide singletons start fresh.
function(rovan_test folder)
    cmake_parse_arguments(ARG "" "" "LINK;PROPERTIES" ${ARGN})
    file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/tests/${folder}/*.cpp")
    if(NOT sources OR (ROVAN_TESTS AND NOT folder IN_LIST ROVAN_TESTS))
        return()
    endif()
    string(REPLACE "/" "_" target "${folder}_test")
    add_executable(${target} ${sources})
    _rovan_common(${target})
    _rovan_precompile(${target} <gmock/gmock.h> <gtest/gtest.h>)
    # Optimising the tests themselves costs more than it gains.
    target_compile_options(${target} PRIVATE -O0 -g1
        # Google Test's parametrised suites may leave out the name generator.
        $<$<CXX_COMPILER_ID:Clang>:-Wno-gnu-zero-variadic-macro-arguments>)
    target_compile_definitions(${target} PRIVATE
        ROVAN_SOURCE_DIR="${CMAKE_SOURCE_DIR}" ROVAN_BINARY_DIR="${CMAKE_BINARY_DIR}")
    target_link_libraries(${target} PRIVATE ${ARG_LINK} GTest::gmock GTest::gtest_main)
    gtest_discover_tests(${target} TEST_PREFIX "${folder}." DISCOVERY_TIMEOUT 120
        PROPERTIES TIMEOUT 120 ${ARG_PROPERTIES})
endfunction()

# rovan_bench(FOLDER LINK ...): one Google Benchmark program of all bench/FOLDER/*.cpp.
function(rovan_bench folder)
    cmake_parse_arguments(ARG "" "" "LINK" ${ARGN})
    file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/bench/${folder}/*.cpp")
    if(sources)
        rovan_executable(${folder}_bench SOURCES ${sources}
            LINK ${ARG_LINK} benchmark::benchmark benchmark::benchmark_main)
    endif()
endfunction()

# rovan_fuzz(NAME SOURCE LINK ...): one libFuzzer program.
function(rovan_fuzz name source)
    cmake_parse_arguments(ARG "" "" "LINK" ${ARGN})
    rovan_executable(${name} SOURCES ${source} LINK ${ARG_LINK})
    target_compile_options(${name} PRIVATE -fsanitize=fuzzer)
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
endfunction()
