# How every target of the project is compiled: one place for the language level, warnings and hardening.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_AUTOMOC ON)

if(NOT CMAKE_CXX_COMPILER_LAUNCHER)
    find_program(CCACHE_PROGRAM ccache)
    if(CCACHE_PROGRAM)
        set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
    endif()
endif()

option(FERROBANK_WARNINGS_AS_ERRORS "Fail the build on any warning" ON)
option(FERROBANK_SANITIZE "Build with the address and undefined-behaviour sanitizers" OFF)
option(FERROBANK_COVERAGE "Instrument for source coverage" OFF)

add_library(ferrobank-compiling INTERFACE)
target_compile_options(ferrobank-compiling INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(FERROBANK_WARNINGS_AS_ERRORS)
    target_compile_options(ferrobank-compiling INTERFACE -Werror)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # GCC 12 warns inside its own coroutine frames about values that are initialised.
    target_compile_options(ferrobank-compiling INTERFACE -fcoroutines -Wno-maybe-uninitialized)
endif()
if(CMAKE_BUILD_TYPE MATCHES "Rel")
    target_compile_options(ferrobank-compiling INTERFACE -fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
    target_link_options(ferrobank-compiling INTERFACE -Wl,-z,relro -Wl,-z,now)
endif()
if(FERROBANK_SANITIZE)
    target_compile_options(ferrobank-compiling INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=all
                                                         -fno-omit-frame-pointer)
    target_link_options(ferrobank-compiling INTERFACE -fsanitize=address,undefined)
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
