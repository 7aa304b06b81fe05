# The test that zelvane_add_plugin_test() registers: one plugin loaded as a host would,
# in a child process, from a fresh folder holding it and the plugins it needs.
#
#   cmake -DZELVANE_TEST_PARAMETERS=<file> -P ZelvanePluginTest.cmake
#
# The parameters file, written by zelvane_add_plugin_test(), sets the plugin, the other
# plugins, the IID, the arguments, the settings file, the timeout, the folder and
# zelvane-inspect. The trial is zelvane-inspect --trial --shutdown --require <plugin>:
# it fails unless the plugin starts and unloads, and says why not.
cmake_minimum_required(VERSION 3.21)

if(NOT DEFINED ZELVANE_TEST_PARAMETERS)
    message(FATAL_ERROR "usage: cmake -DZELVANE_TEST_PARAMETERS=<file> -P ${CMAKE_CURRENT_LIST_FILE}")
endif()
include("${ZELVANE_TEST_PARAMETERS}")

get_filename_component(plugin_file "${ZELVANE_TEST_PLUGIN}" NAME)

# A fresh folder on every run: a plugin left over from an earlier run, or from another
# build of the project, would take part in the loading and change its outcome.
file(REMOVE_RECURSE "${ZELVANE_TEST_FOLDER}")
file(MAKE_DIRECTORY "${ZELVANE_TEST_FOLDER}")
foreach(plugin IN LISTS ZELVANE_TEST_PLUGINS)
    if(NOT EXISTS "${plugin}")
        message(FATAL_ERROR "${plugin_file}: the trial load needs ${plugin}, which does not "
            "exist (not built yet?)")
    endif()
    file(COPY "${plugin}" DESTINATION "${ZELVANE_TEST_FOLDER}")
endforeach()

set(command "${ZELVANE_TEST_INSPECT}" "${ZELVANE_TEST_FOLDER}" --trial --shutdown
    --timeout "${ZELVANE_TEST_TIMEOUT}" --require "${plugin_file}")
if(NOT ZELVANE_TEST_IID STREQUAL "")
    list(APPEND command --iid "${ZELVANE_TEST_IID}")
endif()
if(NOT ZELVANE_TEST_SETTINGS STREQUAL "")
    list(APPEND command --settings "${ZELVANE_TEST_SETTINGS}")
endif()
foreach(argument IN LISTS ZELVANE_TEST_ARGUMENTS)
    list(APPEND command --arg "${argument}")
endforeach()

execute_process(COMMAND ${command}
    RESULT_VARIABLE status
    OUTPUT_VARIABLE output
    ERROR_VARIABLE errors)
message("${output}")
if(NOT status EQUAL 0)
    string(STRIP "${errors}" errors)
    if(errors STREQUAL "")
        set(errors "zelvane-inspect ended with ${status}")
    endif()
    # As printed: CMake would wrap the lines of an error message, and the lines name the
    # plugin, the step and the cause for whoever searches the log for them.
    message(NOTICE "${errors}")
    message(FATAL_ERROR "${plugin_file}: the trial load failed")
endif()
