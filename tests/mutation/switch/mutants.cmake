# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

# Read by a copy of the tree that holds mutants, right behind its project(): everything that is built there can ask
# which mutant is on.

add_library(mutantswitch STATIC ${CMAKE_CURRENT_LIST_DIR}/switch.cpp ${CMAKE_CURRENT_LIST_DIR}/mutant.h)
set_target_properties(mutantswitch PROPERTIES
    AUTOMOC OFF CXX_VISIBILITY_PRESET hidden POSITION_INDEPENDENT_CODE ON)
include_directories(${CMAKE_CURRENT_LIST_DIR})
# Here only: installed packages know nothing of it.
link_libraries($<BUILD_INTERFACE:mutantswitch>)

# Mutants are odd on purpose.
add_compile_options(-w)
add_link_options(-fuse-ld=lld)

# Those that are built one by one are built often.
foreach(target IN LISTS MUTATED_TARGETS)
    cmake_language(EVAL CODE "
        cmake_language(DEFER CALL target_precompile_headers ${target} PRIVATE <QtCore/QtCore> <QtDBus/QtDBus>)")
endforeach()
