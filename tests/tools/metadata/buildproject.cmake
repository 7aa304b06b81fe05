# Builds a small plugin project against a copy of the package's CMake files laid out as
# they are installed, and checks that the metadata check is a real build step:
#   1. good metadata builds; the unchecked plugin's bad metadata is not looked at;
#   2. editing the JSON file to something the library refuses fails the next build,
#      naming the file, the key and the rule, before anything is compiled;
#   3. a warning does not fail the build;
#   4. fixing the file makes the build pass again.
#
#   cmake -DSOURCE_DIR=<project> -DPACKAGE_SOURCE_DIR=<cmake/> -DCASE_DIR=<cases>
#         -DWORK_DIR=<scratch> -DGENERATOR=<generator> -P buildproject.cmake
cmake_minimum_required(VERSION 3.21)

set(project "${WORK_DIR}/project")
set(package "${WORK_DIR}/package")
set(build "${WORK_DIR}/build")
file(REMOVE_RECURSE "${WORK_DIR}")
file(COPY "${SOURCE_DIR}/" DESTINATION "${project}")
file(COPY "${PACKAGE_SOURCE_DIR}/ZelvaneMacros.cmake" "${PACKAGE_SOURCE_DIR}/ZelvaneCheckMetadata.cmake"
    DESTINATION "${package}")

set(failures "")

function(use_metadata target case)
    configure_file("${CASE_DIR}/${case}.json" "${project}/${target}.json" COPYONLY)
endfunction()

# Runs a build; expects it to pass or fail; every further argument must occur in the
# output, and "NOT <text>" must not.
function(build_step step expectation)
    execute_process(COMMAND "${CMAKE_COMMAND}" --build "${build}"
        RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    set(problems "")
    if(expectation STREQUAL "PASS" AND NOT result EQUAL 0)
        string(APPEND problems "  expected the build to pass, it failed\n")
    elseif(expectation STREQUAL "FAIL" AND result EQUAL 0)
        string(APPEND problems "  expected the build to fail, it passed\n")
    endif()
    set(negate FALSE)
    foreach(text IN LISTS ARGN)
        if(text STREQUAL "NOT")
            set(negate TRUE)
            continue()
        endif()
        string(FIND "${output}" "${text}" position)
        if(negate AND NOT position EQUAL -1)
            string(APPEND problems "  the output contains: ${text}\n")
        elseif(NOT negate AND position EQUAL -1)
            string(APPEND problems "  the output lacks: ${text}\n")
        endif()
        set(negate FALSE)
    endforeach()
    if(problems)
        set(failures "${failures}${step}:\n${problems}--- output\n${output}\n" PARENT_SCOPE)
    endif()
endfunction()

use_metadata(checked good_full)
use_metadata(unchecked error_name_array)
execute_process(
    COMMAND "${CMAKE_COMMAND}" -S "${project}" -B "${build}" -G "${GENERATOR}"
        "-DZELVANE_PACKAGE_DIR=${package}"
    RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(NOT result EQUAL 0)
    message(NOTICE "${output}")
    message(FATAL_ERROR "configuring the plugin project failed")
endif()

build_step("good metadata" PASS
    "Checking the plugin metadata of checked"
    NOT "Checking the plugin metadata of unchecked")

use_metadata(checked error_argument_parameter_number)
build_step("metadata the library refuses" FAIL
    "Checking the plugin metadata of checked"
    "${project}/checked.json: error: \"Arguments\"[1].\"Parameter\": must be a string when present, not a number; the library refuses this plugin"
    "zelvane_add_plugin(checked): the metadata check failed"
    NOT "checked.cpp.o")

use_metadata(checked warn_category_lower_case)
build_step("metadata with a warning" PASS
    "${project}/checked.json: warning: \"Category\": \"core\" is neither \"Core\" nor \"Extension\" (letter case counts); the plugin is never loaded")

use_metadata(checked good_minimal)
build_step("fixed metadata" PASS
    "Checking the plugin metadata of checked"
    NOT "warning:")

if(failures)
    message(NOTICE "${failures}")
    message(FATAL_ERROR "the metadata check does not behave as a build step")
endif()
