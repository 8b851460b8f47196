# How every target of the project is compiled: one place for the language level, warnings and hardening.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_AUTOMOC ON)
include(Hardening)

# Two checkouts share what one of them has compiled, so paths in it are relative to the checkout.
if(NOT CMAKE_CXX_COMPILER_LAUNCHER)
    find_program(CCACHE_PROGRAM ccache)
    if(CCACHE_PROGRAM)
        set(CMAKE_CXX_COMPILER_LAUNCHER
            "${CMAKE_COMMAND}"
            -E
            env
            "CCACHE_BASEDIR=${CMAKE_SOURCE_DIR}"
            CCACHE_NOHASHDIR=1
            CCACHE_SLOPPINESS=pch_defines,time_macros
            "${CCACHE_PROGRAM}")
    endif()
endif()

# A linker that takes a tenth of the time, for the many small test programs.
find_program(LLD_PROGRAM NAMES ld.lld-19)
if(LLD_PROGRAM AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    add_link_options("--ld-path=${LLD_PROGRAM}")
endif()

option(FERROBANK_WARNINGS_AS_ERRORS "Fail the build on any warning" ON)
option(FERROBANK_SANITIZE "Build with the address and undefined-behaviour sanitizers" OFF)
option(FERROBANK_COVERAGE "Instrument for source coverage" OFF)
option(FERROBANK_FUZZ "Also the fuzz targets; Clang with the sanitizers only" OFF)

add_library(ferrobank-compiling INTERFACE)
target_compile_options(ferrobank-compiling INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(FERROBANK_WARNINGS_AS_ERRORS)
    target_compile_options(ferrobank-compiling INTERFACE -Werror)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # GCC 12 warns inside its own coroutine frames about values that are initialised.
    target_compile_options(ferrobank-compiling INTERFACE -fcoroutines -Wno-maybe-uninitialized)
endif()
ferrobank_harden(ferrobank-compiling)
if(FERROBANK_SANITIZE)
    set(sanitized "$<NOT:$<BOOL:$<TARGET_PROPERTY:FERROBANK_STARTED_BY_TESTS>>>")
    target_compile_options(
        ferrobank-compiling
        INTERFACE "$<${sanitized}:-fsanitize=address,undefined;-fno-sanitize-recover=all;-fno-omit-frame-pointer>")
    target_link_options(ferrobank-compiling INTERFACE "$<${sanitized}:-fsanitize=address,undefined>")
endif()
if(FERROBANK_COVERAGE)
    target_compile_options(ferrobank-compiling INTERFACE -fprofile-instr-generate -fcoverage-mapping)
    target_link_options(ferrobank-compiling INTERFACE -fprofile-instr-generate)
endif()

# For everything that includes a Qt header.
add_library(ferrobank-qt-strict INTERFACE)
target_link_libraries(ferrobank-qt-strict INTERFACE ferrobank-compiling)
target_compile_definitions(
    ferrobank-qt-strict
    INTERFACE QT_NO_KEYWORDS
              QT_NO_CAST_FROM_ASCII
              QT_NO_CAST_TO_ASCII
              QT_NO_CAST_FROM_BYTEARRAY
              QT_NO_URL_CAST_FROM_STRING
              QT_NO_NARROWING_CONVERSIONS_IN_CONNECT
              QT_NO_FOREACH)

# Test programs are compiled once and run once: optimising them would take longer than it gains. Benchmarks are not tests.
function(ferrobank_test_program target)
    set_target_properties(${target} PROPERTIES FERROBANK_TEST ON)
    target_compile_options(${target} PRIVATE -O0)
endfunction()

# Gives a target the toolkit's headers precompiled: two thirds of the time of most files is reading them. Targets share one
# set each for libraries and for programs, whose code is generated differently. GCC 12 wants every definition of the sharing
# targets to be the same, so there each target has its own, for which a SMALL one has too few files.
function(ferrobank_precompile target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "SMALL" "" "")
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "EXECUTABLE")
        # Test programs only: the product's one executable knows no toolkit.
        set(source ferrobank-headers-for-programs)
        set(header PrecompiledForTests.h)
    else()
        set(source ferrobank-headers-for-libraries)
        set(header Precompiled.h)
    endif()
    if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        target_precompile_headers(${target} REUSE_FROM ${source})
    elseif(NOT arg_SMALL)
        target_precompile_headers(${target} PRIVATE "${CMAKE_SOURCE_DIR}/cmake/${header}")
        # Without this the compiler cache cannot see what is in them.
        target_compile_options(${target} PRIVATE -fpch-preprocess)
    endif()
endfunction()

# Makes one of the shared sets: ferrobank_precompiled_headers(name header [libraries…]). Call before the targets that use it.
function(ferrobank_precompiled_headers name header)
    if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        return()
    endif()
    set(empty "${CMAKE_BINARY_DIR}/precompiled/empty.cpp")
    file(CONFIGURE OUTPUT "${empty}" CONTENT "int main() {}\n")
    if(name STREQUAL "ferrobank-headers-for-programs")
        add_executable(${name} "${empty}")
        ferrobank_test_program(${name})
    else()
        add_library(${name} OBJECT "${empty}")
    endif()
    target_link_libraries(${name} PRIVATE ferrobank-qt-strict Qt6::Core QCoro6::Core ${ARGN})
    target_compile_options(${name} PRIVATE -Xclang -fno-pch-timestamp)
    target_precompile_headers(${name} PRIVATE "${CMAKE_SOURCE_DIR}/cmake/${header}")
    set_target_properties(${name} PROPERTIES AUTOMOC OFF)
endfunction()
