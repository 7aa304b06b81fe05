# Registers a Qt Test executable's test functions with CTest when CTest reads the test
# list, from the executable's own listing, so a function added to a test is run without
# anybody adding its name anywhere. zelvane_add_test() writes one small file per
# executable that includes this one and calls zelvane_discover_qt_tests(); CTest reads
# it through the folder's TEST_INCLUDE_FILES.
#
#   zelvane_discover_qt_tests(<target> <executable> FUNCTIONS|ROWS <environment>)
#
# FUNCTIONS: one test "<target>.<function>" per test function, from `-functions`.
# ROWS: one test per row of a data-driven function ("<target>.<function>:<row>", the
# argument Qt Test takes to run one row) and per other function, from `-datatags`.
#
# A missing executable or a listing that fails becomes one failing test that says so,
# never an empty list: a test that is not built must not pass by not existing.
#
# Run as a script (cmake -DMESSAGE=<text> -P discoverqttests.cmake), it prints the
# message and fails; that is the failing test's command.
if(CMAKE_SCRIPT_MODE_FILE AND DEFINED MESSAGE)
    message(FATAL_ERROR "${MESSAGE}")
endif()

set(ZELVANE_DISCOVER_SCRIPT "${CMAKE_CURRENT_LIST_FILE}")

function(zelvane_discover_failure name message environment)
    add_test("${name}" "${ZELVANE_DISCOVER_CMAKE}" "-DMESSAGE=${message}"
        -P "${ZELVANE_DISCOVER_SCRIPT}")
    set_tests_properties("${name}" PROPERTIES ENVIRONMENT "${environment}")
endfunction()

function(zelvane_discover_qt_tests target executable mode environment)
    if(NOT EXISTS "${executable}")
        zelvane_discover_failure("${target}.NOT_BUILT"
            "${executable} does not exist: build the tree (cmake --build) before running its tests"
            "${environment}")
        return()
    endif()

    if(mode STREQUAL "ROWS")
        set(option -datatags)
    else()
        set(option -functions)
    endif()
    # The same environment as the tests: an offscreen platform for the GUI tests, and
    # in a sanitizer build the sanitizers' options and suppressions.
    execute_process(
        COMMAND "${ZELVANE_DISCOVER_CMAKE}" -E env ${environment} "${executable}" ${option}
        OUTPUT_VARIABLE output
        ERROR_VARIABLE errors
        RESULT_VARIABLE result
        TIMEOUT 120)
    if(NOT result EQUAL 0)
        zelvane_discover_failure("${target}.LISTING_FAILED"
            "${executable} ${option} failed (${result}):\n${output}${errors}" "${environment}")
        return()
    endif()

    string(REPLACE ";" "\\;" output "${output}")
    string(REPLACE "\n" ";" lines "${output}")
    set(count 0)
    foreach(line IN LISTS lines)
        if(mode STREQUAL "ROWS")
            # "<class> <function>" or "<class> <function> <row>"; a row's name may hold
            # spaces, the class's and the function's never do.
            if(NOT line MATCHES "^[A-Za-z_][A-Za-z0-9_:]* ([A-Za-z_][A-Za-z0-9_]*)( (.*))?$")
                continue()
            endif()
            set(argument "${CMAKE_MATCH_1}")
            if(CMAKE_MATCH_2)
                string(APPEND argument ":${CMAKE_MATCH_3}")
            endif()
        else()
            if(NOT line MATCHES "^([A-Za-z_][A-Za-z0-9_]*)\\(\\)$")
                continue()
            endif()
            set(argument "${CMAKE_MATCH_1}")
        endif()
        add_test("${target}.${argument}" "${executable}" "${argument}")
        set_tests_properties("${target}.${argument}" PROPERTIES ENVIRONMENT "${environment}")
        math(EXPR count "${count} + 1")
    endforeach()
    if(count EQUAL 0)
        zelvane_discover_failure("${target}.NO_FUNCTIONS"
            "${executable} ${option} listed no test function:\n${output}${errors}"
            "${environment}")
    endif()
endfunction()
