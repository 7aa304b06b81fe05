# Zelvane's API reference: HTML, and a .qch file for Qt Creator and Qt Assistant.
#
#   cmake -DSOURCE_DIR=<source dir> -DOUTPUT_DIR=<folder> [-DQHELPGENERATOR=<path>]
#         -P docs/api/docs.cmake
#
# Reads every public header (include/zelvane/**, the components' included, and the
# generated zelvane/zelvaneversion.h), the documentation blocks of the library's sources
# (the /*! */ blocks of src/**.cpp, which describe the core classes beside their code),
# the pages of docs/api/*.dox and the guides docs/*.md. Any Doxygen warning fails the
# run: a warning is a broken reference or a description of something that does not
# exist. ./build.sh docs runs it with qhelpgenerator; the test docs_reference (label
# package) without it.
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

# The reference of the core classes lives beside their definitions, in /*! */ blocks
# that name what they describe (\class, \fn, \enum, ...), as qdoc keeps it; the frozen
# headers keep their plain comments. Doxygen gets those blocks and nothing else of a
# source file: were it to read the code, the internal classes and helpers of src/ would
# join the reference. Each block stays on its own line number in a .dox file, so a
# warning about it names the line of the source (see below). The .dox files sit in the
# stripped work folder itself, so the reference's file list gains no folder.
set(source_blocks "")
file(GLOB_RECURSE sources RELATIVE "${SOURCE_DIR}/src" "${SOURCE_DIR}/src/*.cpp")
foreach(source IN LISTS sources)
    file(READ "${SOURCE_DIR}/src/${source}" text)
    if(NOT text MATCHES "/\\*!")
        continue()
    endif()
    set(blocks "")
    while(TRUE)
        string(FIND "${text}" "/*!" start)
        if(start EQUAL -1)
            break()
        endif()
        string(SUBSTRING "${text}" 0 ${start} code)
        string(SUBSTRING "${text}" ${start} -1 text)
        string(FIND "${text}" "*/" end)
        if(end EQUAL -1)
            message(FATAL_ERROR "src/${source}: a /*! block is never closed")
        endif()
        math(EXPR end "${end} + 2")
        string(SUBSTRING "${text}" 0 ${end} block)
        string(SUBSTRING "${text}" ${end} -1 text)
        # The code between blocks leaves only its line breaks.
        string(REGEX REPLACE "[^\n]" "" code "${code}")
        string(APPEND blocks "${code}${block}")
    endwhile()
    string(REPLACE "/" "-" name "src/${source}")
    file(WRITE "${WORK_DIR}/${name}.dox" "${blocks}\n")
    string(APPEND source_blocks " ${WORK_DIR}/${name}.dox")
endforeach()

set(INPUT "${SOURCE_DIR}/include/zelvane ${WORK_DIR}/include${source_blocks} ${SOURCE_DIR}/docs/api ${WORK_DIR}/guides")
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
# A warning about a documentation block names the source file it came from.
foreach(source IN LISTS sources)
    string(REPLACE "/" "-" name "src/${source}")
    string(REPLACE "${WORK_DIR}/${name}.dox:" "${SOURCE_DIR}/src/${source}:" warnings "${warnings}")
endforeach()
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
