# Zelvane's API reference: HTML, and a .qch file for Qt Creator and Qt Assistant.
#
#   cmake -DSOURCE_DIR=<source dir> -DOUTPUT_DIR=<folder> [-DQHELPGENERATOR=<path>]
#         -P docs/api/docs.cmake
#
# Reads every public header (include/zelvane/**, the components' included, and the
# generated zelvane/zelvaneversion.h), the class and page descriptions of docs/api/*.dox
# and the guides docs/*.md. Any Doxygen warning fails the run: a warning is a broken
# reference or a description of something that does not exist. ./build.sh docs runs it
# with qhelpgenerator; the test docs_reference (label package) without it.
cmake_minimum_required(VERSION 3.21)

foreach(variable SOURCE_DIR OUTPUT_DIR)
    if(NOT DEFINED ${variable})
        message(FATAL_ERROR "usage: cmake -DSOURCE_DIR=<source dir> -DOUTPUT_DIR=<folder> "
            "[-DQHELPGENERATOR=<path>] -P ${CMAKE_CURRENT_LIST_FILE}")
    endif()
endforeach()
find_program(DOXYGEN doxygen)
if(NOT DOXYGEN)
    message(FATAL_ERROR "doxygen not found (Debian package doxygen)")
endif()

# The version comes from the top-level project() call.
file(STRINGS "${SOURCE_DIR}/CMakeLists.txt" project_line REGEX "^    VERSION [0-9.]+$" LIMIT_COUNT 1)
string(REGEX REPLACE "^ +VERSION " "" ZELVANE_VERSION "${project_line}")
string(REPLACE "." "" ZELVANE_VERSION_NODOTS "${ZELVANE_VERSION}")
string(REPLACE "." ";" parts "${ZELVANE_VERSION}")
list(GET parts 0 PROJECT_VERSION_MAJOR)
list(GET parts 1 PROJECT_VERSION_MINOR)
list(GET parts 2 PROJECT_VERSION_PATCH)
set(PROJECT_VERSION "${ZELVANE_VERSION}")

file(REMOVE_RECURSE "${OUTPUT_DIR}")
set(WORK_DIR "${OUTPUT_DIR}/input")
# The generated header, as it is installed.
configure_file("${SOURCE_DIR}/cmake/zelvaneversion.h.in"
    "${WORK_DIR}/include/zelvane/zelvaneversion.h" @ONLY)
# The guides, each with a label that the reference links to (writing-a-plugin.md:
# writing_a_plugin); the files themselves stay plain Markdown for other readers.
file(GLOB guides "${SOURCE_DIR}/docs/*.md")
foreach(guide IN LISTS guides)
    get_filename_component(name "${guide}" NAME_WE)
    string(REPLACE "-" "_" label "${name}")
    file(READ "${guide}" text)
    string(REGEX REPLACE "^# ([^\n]*)\n" "# \\1 {#${label}}\n" text "${text}")
    file(WRITE "${WORK_DIR}/guides/${name}.md" "${text}")
endforeach()

set(INPUT "${SOURCE_DIR}/include/zelvane ${WORK_DIR}/include ${SOURCE_DIR}/docs/api ${WORK_DIR}/guides")
if(QHELPGENERATOR)
    set(GENERATE_QHP YES)
else()
    set(GENERATE_QHP NO)
    set(QHELPGENERATOR "")
endif()
configure_file("${CMAKE_CURRENT_LIST_DIR}/Doxyfile.in" "${OUTPUT_DIR}/Doxyfile" @ONLY)

execute_process(COMMAND "${DOXYGEN}" "${OUTPUT_DIR}/Doxyfile"
    WORKING_DIRECTORY "${OUTPUT_DIR}"
    RESULT_VARIABLE status)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "doxygen failed (exit status ${status})")
endif()
file(READ "${OUTPUT_DIR}/warnings.log" warnings)
if(NOT warnings STREQUAL "")
    message(FATAL_ERROR "Doxygen warnings:\n${warnings}")
endif()
if(NOT EXISTS "${OUTPUT_DIR}/html/index.html")
    message(FATAL_ERROR "doxygen wrote no ${OUTPUT_DIR}/html/index.html")
endif()
message(STATUS "HTML reference: ${OUTPUT_DIR}/html/index.html")
if(GENERATE_QHP)
    set(qch "${OUTPUT_DIR}/zelvane-${ZELVANE_VERSION}.qch")
    if(NOT EXISTS "${qch}")
        message(FATAL_ERROR "qhelpgenerator wrote no ${qch}")
    endif()
    message(STATUS "Qt help file: ${qch}")
endif()
