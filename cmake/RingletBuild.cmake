# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

# Flags that every target of the tree is built with, and the two language levels.

set(CMAKE_AUTOMOC ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
# What runs on the device keeps to C++14; a folder that runs on desktops only raises it to 17.
set(CMAKE_CXX_STANDARD 14)

add_compile_options(-Wall -Wextra -Wpedantic)
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    # Qt's macros for categorised logging, used as streams.
    add_compile_options(-Wno-gnu-zero-variadic-macro-arguments)
endif()
if(RINGLET_WERROR)
    add_compile_options(-Werror)
endif()
# A missing symbol shows when a library is linked, not when a host loads it.
add_link_options(LINKER:-z,defs)

if(RINGLET_SANITIZE)
    # Of debugging information only what a report shows: the rest is a good part of building.
    add_compile_options(-fsanitize=${RINGLET_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -g1)
    add_link_options(-fsanitize=${RINGLET_SANITIZE})
endif()

if(RINGLET_BUILD_FUZZERS)
    if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        message(FATAL_ERROR "RINGLET_BUILD_FUZZERS needs clang, the compiler is ${CMAKE_CXX_COMPILER_ID}: "
                            "set CMAKE_CXX_COMPILER to clang++ and CMAKE_C_COMPILER to clang")
    endif()
    if(NOT RINGLET_SANITIZE MATCHES "address")
        message(FATAL_ERROR "RINGLET_BUILD_FUZZERS needs a sanitizer to find anything: "
                            "set RINGLET_SANITIZE to 'address,undefined'")
    endif()
    # clang's sanitizers stand in the program, and libraries find them there.
    add_link_options(LINKER:-z,undefs)
endif()

# An installed program finds the tree's own libraries from where it lies itself, in whatever prefix.
function(ringlet_program_finds_libraries target)
    file(RELATIVE_PATH to_libraries ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN/${to_libraries}")
endfunction()
