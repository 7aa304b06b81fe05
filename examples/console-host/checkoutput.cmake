# Runs the console host and compares everything it writes with an expected file.
#   -DHOST=<program> -DARGUMENTS=<arguments separated by |> -DEXPECTED=<file>
#   -DEXIT_CODE=<code>
string(REPLACE "|" ";" arguments "${ARGUMENTS}")
execute_process(COMMAND "${HOST}" ${arguments}
    OUTPUT_VARIABLE output
    ERROR_VARIABLE output
    RESULT_VARIABLE result)
file(READ "${EXPECTED}" expected)
if(NOT output STREQUAL expected OR NOT result STREQUAL EXIT_CODE)
    message(FATAL_ERROR "zelvane-console-host ${arguments}\n"
        "exit code ${result}, expected ${EXIT_CODE}\n"
        "--- expected output\n${expected}--- actual output\n${output}---")
endif()
message(STATUS "output as expected:\n${output}")
