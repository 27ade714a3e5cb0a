# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

# ringlet_install_pkg_config(NAME COMPONENT): makes NAME.pc of NAME.pc.in in the same folder, and installs it.
#
# The .pc files find everything from where they lie themselves, so that they are right for whatever prefix
# is named when the tree is installed. They can use PC_TO_PREFIX (from the file's folder to the prefix), and
# PC_LIBDIR and PC_INCLUDEDIR (from the prefix).
function(ringlet_install_pkg_config name component)
    file(RELATIVE_PATH PC_TO_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
    string(REGEX REPLACE "/$" "" PC_TO_PREFIX "${PC_TO_PREFIX}")
    file(RELATIVE_PATH PC_LIBDIR ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
    file(RELATIVE_PATH PC_INCLUDEDIR ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
    configure_file(${name}.pc.in ${name}.pc @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc
            DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT ${component})
endfunction()
