# zelvane_add_plugin(<target> SOURCES <file>... METADATA <file>.json [NO_METADATA_CHECK])
#
# Builds a Zelvane plugin: a MODULE library named lib<target>.so that links
# Zelvane::Zelvane, runs moc and is rebuilt whenever its metadata file changes.
# The metadata file is the JSON file that the plugin class names in
# Q_PLUGIN_METADATA(IID "..." FILE "...").
#
# Before moc embeds the metadata file, a build step checks it against what the library
# accepts (ZelvaneCheckMetadata.cmake, next to this file) and fails the build with the
# file, the key and the rule when the library would refuse the plugin at run time;
# doubtful values are reported as warnings. Editing the file runs the check again.
# NO_METADATA_CHECK skips it, for plugins whose metadata is wrong on purpose.
include_guard(GLOBAL)

# Found next to this file, both in the source tree and in the installed package; kept in
# a global property because the function may be called from any directory.
set_property(GLOBAL PROPERTY ZELVANE_CHECK_METADATA_SCRIPT
    "${CMAKE_CURRENT_LIST_DIR}/ZelvaneCheckMetadata.cmake")
set_property(GLOBAL PROPERTY ZELVANE_PLUGIN_TEST_SCRIPT
    "${CMAKE_CURRENT_LIST_DIR}/ZelvanePluginTest.cmake")

function(zelvane_add_plugin target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "NO_METADATA_CHECK" "METADATA" "SOURCES")
    if(arg_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "zelvane_add_plugin(${target}): unknown arguments: ${arg_UNPARSED_ARGUMENTS}")
    endif()
    if(NOT arg_SOURCES)
        message(FATAL_ERROR "zelvane_add_plugin(${target}): SOURCES is required")
    endif()
    if(NOT arg_METADATA)
        message(FATAL_ERROR "zelvane_add_plugin(${target}): METADATA <file>.json is required")
    endif()
    get_filename_component(metadata "${arg_METADATA}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_SOURCE_DIR}")
    if(NOT EXISTS "${metadata}")
        message(FATAL_ERROR "zelvane_add_plugin(${target}): metadata file ${metadata} does not exist")
    endif()

    add_library(${target} MODULE ${arg_SOURCES})
    target_link_libraries(${target} PRIVATE Zelvane::Zelvane)
    set_target_properties(${target} PROPERTIES
        AUTOMOC ON
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        ZELVANE_PLUGIN_METADATA "${metadata}")
    # moc embeds the JSON file into the plugin. It cannot always see which file
    # a source names (the name may come from a macro), so say it here: the
    # autogen step re-runs, and moc's own dependency file then notices the change.
    set_property(TARGET ${target} APPEND PROPERTY AUTOGEN_TARGET_DEPENDS "${metadata}")
    set_property(TARGET ${target} APPEND PROPERTY AUTOMOC_DEPEND_FILTERS
        "Q_PLUGIN_METADATA" "[\"']([^\"']+\\.json)[\"']")
    foreach(source IN LISTS arg_SOURCES)
        get_filename_component(source "${source}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_SOURCE_DIR}")
        set_property(SOURCE "${source}" APPEND PROPERTY OBJECT_DEPENDS "${metadata}")
    endforeach()
    # moc writes the metadata as one constexpr array, and GCC's default limits on
    # constant evaluation stop at about 256 KiB of it: raise them, so that a plugin
    # with a long description or many arguments still builds.
    target_compile_options(${target} PRIVATE
        "$<$<CXX_COMPILER_ID:GNU>:-fconstexpr-loop-limit=16777216;-fconstexpr-ops-limit=4294967296>")

    if(NOT arg_NO_METADATA_CHECK)
        get_property(check_script GLOBAL PROPERTY ZELVANE_CHECK_METADATA_SCRIPT)
        set(stamp "${CMAKE_CURRENT_BINARY_DIR}/CMakeFiles/${target}.dir/metadata-check.stamp")
        add_custom_command(OUTPUT "${stamp}"
            COMMAND "${CMAKE_COMMAND}" "-DZELVANE_METADATA=${metadata}"
                "-DZELVANE_TARGET=${target}" "-DZELVANE_STAMP=${stamp}" -P "${check_script}"
            DEPENDS "${metadata}" "${check_script}"
            COMMENT "Checking the plugin metadata of ${target}"
            VERBATIM)
        # As a source the stamp is made before anything of the target is compiled; as an
        # autogen dependency it is made before moc reads the JSON file.
        target_sources(${target} PRIVATE "${stamp}")
        set_property(TARGET ${target} APPEND PROPERTY AUTOGEN_TARGET_DEPENDS "${stamp}")
    endif()
endfunction()

# zelvane_add_plugin_test(<target> [IID <iid>] [PLUGINS <targets or files>...]
#                         [ARGUMENTS NAME=VALUE...] [SETTINGS <ini>] [TIMEOUT <s>])
#
# Registers the CTest test <target>_trial_load: it copies the plugin <target> and the
# PLUGINS it needs beside it (a Core plugin, its dependencies; targets or *.so files)
# into a fresh folder and loads them there as a host with that IID would, in a child
# process (zelvane-inspect --trial --shutdown, with the trial helper zelvane-trial). The
# test fails, naming the plugin, the step and the cause, when the plugin crashes, exits
# or hangs (TIMEOUT seconds per plugin, default 5) while it loads or unloads, when its
# initialize() fails, or when it is not loaded at all: its file is refused (its metadata,
# another IID), its dependencies cannot be met, or another Core plugin is chosen.
# ARGUMENTS are the plugin arguments of the host's command line, SETTINGS an INI file
# with the host's plugin selection (plugin/<Name>=true|false); without it every plugin
# is at its "Default". Without IID the trial uses the IID that the plugin declares, and
# cannot tell whether it is the host's.
function(zelvane_add_plugin_test target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "IID;SETTINGS;TIMEOUT" "PLUGINS;ARGUMENTS")
    if(arg_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "zelvane_add_plugin_test(${target}): unknown arguments: ${arg_UNPARSED_ARGUMENTS}")
    endif()
    if(NOT TARGET ${target})
        message(FATAL_ERROR "zelvane_add_plugin_test(${target}): ${target} is not a target; "
            "call it after zelvane_add_plugin(${target} ...)")
    endif()
    if(NOT TARGET Zelvane::zelvane-inspect)
        message(FATAL_ERROR "zelvane_add_plugin_test(${target}): zelvane-inspect is not "
            "installed with this Zelvane package (Debian: the package zelvane-tools)")
    endif()
    if(NOT DEFINED arg_TIMEOUT)
        set(arg_TIMEOUT 5)
    endif()
    if(NOT arg_TIMEOUT MATCHES "^[1-9][0-9]*$")
        message(FATAL_ERROR "zelvane_add_plugin_test(${target}): TIMEOUT must be a whole "
            "number of seconds, not \"${arg_TIMEOUT}\"")
    endif()
    set(plugins "$<TARGET_FILE:${target}>")
    foreach(plugin IN LISTS arg_PLUGINS)
        if(TARGET ${plugin})
            list(APPEND plugins "$<TARGET_FILE:${plugin}>")
        else()
            get_filename_component(plugin "${plugin}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_SOURCE_DIR}")
            list(APPEND plugins "${plugin}")
        endif()
    endforeach()
    set(settings "")
    if(DEFINED arg_SETTINGS)
        get_filename_component(settings "${arg_SETTINGS}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_SOURCE_DIR}")
    endif()

    # The test's values go to the script in a file of their own: paths and arguments may
    # hold anything, and a command line of generator expressions would split them at ";".
    set(name "${target}_trial_load")
    set(parameters "${CMAKE_CURRENT_BINARY_DIR}/${name}$<$<BOOL:$<CONFIG>>:-$<CONFIG>>.cmake")
    file(GENERATE OUTPUT "${parameters}" CONTENT
"set(ZELVANE_TEST_PLUGIN [==[$<TARGET_FILE:${target}>]==])
set(ZELVANE_TEST_PLUGINS [==[${plugins}]==])
set(ZELVANE_TEST_IID [==[${arg_IID}]==])
set(ZELVANE_TEST_ARGUMENTS [==[${arg_ARGUMENTS}]==])
set(ZELVANE_TEST_SETTINGS [==[${settings}]==])
set(ZELVANE_TEST_TIMEOUT [==[${arg_TIMEOUT}]==])
set(ZELVANE_TEST_FOLDER [==[${CMAKE_CURRENT_BINARY_DIR}/${name}]==])
set(ZELVANE_TEST_INSPECT [==[$<TARGET_FILE:Zelvane::zelvane-inspect>]==])
")
    get_property(script GLOBAL PROPERTY ZELVANE_PLUGIN_TEST_SCRIPT)
    add_test(NAME ${name}
        COMMAND "${CMAKE_COMMAND}" "-DZELVANE_TEST_PARAMETERS=${parameters}" -P "${script}")
    # Loading and unloading each plugin may take the whole timeout before it is stopped.
    list(LENGTH plugins count)
    math(EXPR test_timeout "2 * ${arg_TIMEOUT} * ${count} + 60")
    set_tests_properties(${name} PROPERTIES TIMEOUT ${test_timeout})
endfunction()
