# How the tree builds, exports and installs each package component (Diagnostics,
# Widgets, Quick). Used by src/ only; never installed.
#
# zelvane_add_component(<Name>
#     HEADERS <public headers>...          include/zelvane/<name>/, installed
#     FORWARDING_HEADERS <headers>...      the CamelCase forms beside them, installed
#     SOURCES <files>...
#     [PUBLIC <targets>...]                what users of the component link too
#     [PRIVATE <targets>...]
#     [INTERNAL])                          links the library's internal code (see below)
#
# Makes the shared library Zelvane<Name> (Zelvane::<Name>, libZelvane<Name>.so.1) with
# the export header <zelvane/<name>/zelvane_<name>_export.h>, and installs it in the
# install component <name> with its headers and its targets file
# Zelvane<Name>Targets.cmake, which find_package(Zelvane COMPONENTS <Name>) reads.
#
# With INTERNAL the component gets its own copy of ZelvaneInternal, linked hidden
# (--exclude-libs): in a tree with tests the internal classes are exported for the
# tests, and a component must export its own API only, never a second copy of the
# library's.
function(zelvane_add_component name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "INTERNAL" ""
        "HEADERS;FORWARDING_HEADERS;SOURCES;PUBLIC;PRIVATE")
    if(arg_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "zelvane_add_component(${name}): unknown arguments "
            "${arg_UNPARSED_ARGUMENTS}")
    endif()
    string(TOLOWER "${name}" lower)
    set(target Zelvane${name})
    set(generated "${CMAKE_CURRENT_BINARY_DIR}/include/zelvane/${lower}")

    qt_add_library(${target} SHARED ${arg_HEADERS} ${arg_SOURCES})
    add_library(Zelvane::${name} ALIAS ${target})
    set_target_properties(${target} PROPERTIES
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}
        EXPORT_NAME ${name}
        OUTPUT_NAME ${target}
        LIBRARY_OUTPUT_DIRECTORY "${ZELVANE_BUILD_LIBDIR}"
        AUTOMOC ON
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)
    target_compile_definitions(${target} PRIVATE ${ZELVANE_COMPILE_DEFINITIONS})
    target_include_directories(${target}
        PUBLIC
            "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>"
            "$<BUILD_INTERFACE:${CMAKE_CURRENT_BINARY_DIR}/include>"
            "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>"
        PRIVATE
            "${PROJECT_SOURCE_DIR}/src")
    target_link_libraries(${target} PUBLIC Zelvane ${arg_PUBLIC} PRIVATE ${arg_PRIVATE})
    target_link_options(${target} PRIVATE "LINKER:--no-undefined")
    if(arg_INTERNAL)
        zelvane_link_internal(${target})
    endif()
    # A component finds the libraries beside it, also in a prefix that the dynamic linker
    # does not search: a host that uses a component only through another one (a QML host
    # through the module) links it indirectly, and an executable's RUNPATH serves only its
    # own direct dependencies.
    if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
        set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN")
    endif()

    include(GenerateExportHeader)
    generate_export_header(${target}
        BASE_NAME zelvane_${lower}
        EXPORT_FILE_NAME "${generated}/zelvane_${lower}_export.h")

    install(TARGETS ${target} EXPORT ${target}Targets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
            COMPONENT ${lower}
            NAMELINK_COMPONENT development)
    install(FILES ${arg_HEADERS} ${arg_FORWARDING_HEADERS}
        "${generated}/zelvane_${lower}_export.h"
        DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/zelvane/${lower}"
        COMPONENT development)
    install(EXPORT ${target}Targets
        NAMESPACE Zelvane::
        DESTINATION "${ZELVANE_CMAKE_DIR}"
        COMPONENT development)
endfunction()

# zelvane_link_internal(<target>)
#
# The one way a component, a tool, a benchmark or a fuzz target takes the library's
# internal code: its own hidden copy of ZelvaneInternal, beside libZelvane for the
# exported classes. Hidden, so that nothing it exports stands in for the library's.
function(zelvane_link_internal target)
    target_link_libraries(${target} PRIVATE "$<BUILD_INTERFACE:ZelvaneInternal>")
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "SHARED_LIBRARY")
        target_link_options(${target} PRIVATE
            "LINKER:--exclude-libs,$<TARGET_FILE_NAME:ZelvaneInternal>")
    endif()
endfunction()
