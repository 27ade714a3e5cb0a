# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

# Classes generated from the interface descriptions in dbus/.
#
#   ringlet_dbus_proxy(TARGET INTERFACE CLASS [INCLUDE...])
#   ringlet_dbus_adaptor(TARGET INTERFACE CLASS [INCLUDE...])
#
# Each makes CLASS from dbus/INTERFACE.xml in a pair of files named after the class in lower case, with
# the given headers included for the types that the description names, and adds them to TARGET.
#
# Qt's own macro for adaptors is not used: it gives the adaptor a typed parent, and the generated methods
# then call the parent directly instead of by name through the meta-object.

set(RINGLET_QDBUSXML2CPP "" CACHE FILEPATH
    "qdbusxml2cpp of the building machine, for cross builds; by default that of the Qt built against")

function(_ringlet_dbus_generate option target interface class)
    set(qdbusxml2cpp ${RINGLET_QDBUSXML2CPP})
    if(NOT qdbusxml2cpp)
        get_target_property(qdbusxml2cpp Qt5::qdbusxml2cpp IMPORTED_LOCATION)
    endif()
    string(TOLOWER ${class} basename)
    set(xml ${PROJECT_SOURCE_DIR}/dbus/${interface}.xml)
    set(generated ${CMAKE_CURRENT_BINARY_DIR}/${target}_dbus)
    file(MAKE_DIRECTORY ${generated})
    set(includes)
    foreach(header IN LISTS ARGN)
        list(APPEND includes -i ${header})
    endforeach()
    add_custom_command(
        OUTPUT ${generated}/${basename}.h ${generated}/${basename}.cpp
        COMMAND ${qdbusxml2cpp} ${option} ${basename} -c ${class} ${includes} ${xml}
        WORKING_DIRECTORY ${generated}
        DEPENDS ${xml}
        COMMENT "Generating ${class} from ${interface}.xml"
        VERBATIM)
    target_sources(${target} PRIVATE ${generated}/${basename}.h ${generated}/${basename}.cpp)
    target_include_directories(${target} PUBLIC ${generated})
endfunction()

function(ringlet_dbus_proxy target interface class)
    _ringlet_dbus_generate(-p ${target} ${interface} ${class} ${ARGN})
endfunction()

function(ringlet_dbus_adaptor target interface class)
    _ringlet_dbus_generate(-a ${target} ${interface} ${class} ${ARGN})
endfunction()
