# What every target of the drive tool shares: the language, the warnings, the include root.

# Two checkouts share what one of them has compiled, so paths in it are relative to the checkout.
if(NOT CMAKE_CXX_COMPILER_LAUNCHER)
    find_program(CCACHE_PROGRAM ccache)
    if(CCACHE_PROGRAM)
        set(CMAKE_CXX_COMPILER_LAUNCHER
            "${CMAKE_COMMAND}" -E env "CCACHE_BASEDIR=${PROJECT_SOURCE_DIR}/.." CCACHE_NOHASHDIR=1
            CCACHE_SLOPPINESS=pch_defines,time_macros "${CCACHE_PROGRAM}")
    endif()
endif()

# A linker that takes a tenth of the time, for the many test programs.
find_program(LLD_PROGRAM NAMES ld.lld-19)
if(LLD_PROGRAM AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    add_link_options("--ld-path=${LLD_PROGRAM}")
endif()

include("${PROJECT_SOURCE_DIR}/../cmake/Hardening.cmake")
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
check_pie_supported(LANGUAGES CXX)

add_library(drive_settings INTERFACE)
target_compile_features(drive_settings INTERFACE cxx_std_20)
target_include_directories(drive_settings INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_definitions(drive_settings INTERFACE _GNU_SOURCE _FILE_OFFSET_BITS=64)
target_compile_options(drive_settings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
if(FERROBANK_SANITIZE)
    target_compile_options(drive_settings INTERFACE
        -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(drive_settings INTERFACE -fsanitize=address,undefined)
endif()
# People run some of its commands as root, and what it reads may come from elsewhere.
ferrobank_harden(drive_settings)
ferrobank_harden_for_root(drive_settings)

# Headers that are read once for all targets: half of the time of most files is reading them. Only Clang lets targets
# share one set whose other definitions differ, and only sets without a time stamp suit the compiler cache.
function(drive_precompiled_headers name header)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        file(CONFIGURE OUTPUT "${PROJECT_BINARY_DIR}/precompiled/${name}.cpp" CONTENT "")
        add_library(${name} OBJECT "${PROJECT_BINARY_DIR}/precompiled/${name}.cpp")
        target_link_libraries(${name} PRIVATE drive_settings ${ARGN})
        target_compile_options(${name} PRIVATE -Xclang -fno-pch-timestamp)
        target_precompile_headers(${name} PRIVATE "${PROJECT_SOURCE_DIR}/cmake/${header}")
    endif()
endfunction()

function(drive_precompile target name)
    if(TARGET ${name})
        target_precompile_headers(${target} REUSE_FROM ${name})
    endif()
endfunction()

drive_precompiled_headers(drive-headers Precompiled.h)

# drive_library(NAME <target> SOURCES <files> [LINK <targets>]): a static library, or, where there are
# no sources yet, an interface library of the same name.
function(drive_library)
    cmake_parse_arguments(PARSE_ARGV 0 arg "" "NAME" "SOURCES;LINK")
    if(arg_SOURCES)
        add_library(${arg_NAME} STATIC ${arg_SOURCES})
        target_link_libraries(${arg_NAME} PUBLIC drive_settings ${arg_LINK})
        drive_precompile(${arg_NAME} drive-headers)
    else()
        add_library(${arg_NAME} INTERFACE)
        target_link_libraries(${arg_NAME} INTERFACE drive_settings ${arg_LINK})
    endif()
endfunction()

# drive_test(NAME <name> SOURCES <files> [LINK <targets>] [LABELS <labels>] [TIMEOUT <seconds>]): one GoogleTest
# program. It ends with 77 when the machine lacks something that all of it needs, and ctest then shows it as skipped.
function(drive_test)
    cmake_parse_arguments(PARSE_ARGV 0 arg "" "NAME;TIMEOUT" "SOURCES;LINK;LABELS")
    add_executable(${arg_NAME} ${arg_SOURCES})
    target_link_libraries(${arg_NAME} PRIVATE drive_settings ${arg_LINK} drive_testing GTest::gtest)
    drive_precompile(${arg_NAME} drive-test-headers)
    add_test(NAME ${FERROBANK_TEST_PREFIX}drive.${arg_NAME} COMMAND ${arg_NAME})
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 120)
    endif()
    set_tests_properties(${FERROBANK_TEST_PREFIX}drive.${arg_NAME} PROPERTIES
        SKIP_RETURN_CODE 77 TIMEOUT ${arg_TIMEOUT} LABELS "drive;${arg_LABELS}")
endfunction()
