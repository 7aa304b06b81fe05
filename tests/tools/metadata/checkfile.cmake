# One metadata check case: runs the check script on CASE_DIR/<CASE>.json and compares
# every diagnostic line with CASE_DIR/<CASE>.expected (where @FILE@ stands for the
# file's path). A case with an "error:" line must fail and must leave no stamp; any
# other case must pass and touch the stamp.
#
#   cmake -DCHECK_SCRIPT=... -DCASE_DIR=... -DCASE=... -DWORK_DIR=... -P checkfile.cmake
cmake_minimum_required(VERSION 3.21)

set(metadata "${CASE_DIR}/${CASE}.json")
file(READ "${CASE_DIR}/${CASE}.expected" expected)
string(REPLACE "@FILE@" "${metadata}" expected "${expected}")

# A stamp left by an earlier good run must go when the file turns bad.
set(stamp "${WORK_DIR}/${CASE}.stamp")
file(MAKE_DIRECTORY "${WORK_DIR}")
file(TOUCH "${stamp}")

execute_process(
    COMMAND "${CMAKE_COMMAND}" "-DZELVANE_METADATA=${metadata}" "-DZELVANE_STAMP=${stamp}"
        -P "${CHECK_SCRIPT}"
    RESULT_VARIABLE result
    OUTPUT_VARIABLE output
    ERROR_VARIABLE output)

# Keep only the diagnostic lines; CMake's own "CMake Error at" block follows them.
string(REPLACE ";" "\\;" output_escaped "${output}")
string(REPLACE "\n" ";" lines "${output_escaped}")
set(diagnostics "")
foreach(line IN LISTS lines)
    string(FIND "${line}" "${metadata}: " position)
    if(position EQUAL 0)
        string(APPEND diagnostics "${line}\n")
    endif()
endforeach()

set(failures "")
if(NOT diagnostics STREQUAL expected)
    string(APPEND failures "diagnostics differ\n--- expected\n${expected}--- actual\n${diagnostics}")
endif()
string(FIND "${expected}" ": error: " has_error)
if(has_error EQUAL -1)
    if(NOT result EQUAL 0)
        string(APPEND failures "expected the check to pass, it exited with ${result}\n")
    endif()
    if(NOT EXISTS "${stamp}")
        string(APPEND failures "the stamp file is missing after a passing check\n")
    endif()
else()
    if(result EQUAL 0)
        string(APPEND failures "expected the check to fail, it passed\n")
    endif()
    string(FIND "${output}" "the metadata check failed" has_summary)
    if(has_summary EQUAL -1)
        string(APPEND failures "the failure does not end with \"the metadata check failed\"\n")
    endif()
    if(EXISTS "${stamp}")
        string(APPEND failures "the stamp file was left after a failing check\n")
    endif()
endif()

if(failures)
    message(NOTICE "${CASE}:\n${failures}--- full output\n${output}")
    message(FATAL_ERROR "${CASE} failed")
endif()
