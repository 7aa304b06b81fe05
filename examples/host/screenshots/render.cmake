# Renders the demo's screenshots over the sample documents, with the example plugins'
# own defaults and the settings files beside this script:
#   all.ini           every example plugin (Export is off by default)
#   focus.ini         Focus as the core plugin instead of Workbench
#   no-documents.ini  Spellcheck on, its dependency Documents switched off by hand, so
#                     the plugins screens have a plugin to explain
#
#   cmake -DDEMO=<zelvane-demo> -DSCRATCH_DIR=<folder> -DOUTPUT_DIR=<folder>
#         [-DQML=OFF] -P render.cmake
#
# The build's target zelvane_demo_screenshots runs it (cmake --build --preset
# demo-screenshots) and writes build/demo/*.png.
cmake_minimum_required(VERSION 3.21)

foreach(variable IN ITEMS DEMO SCRATCH_DIR OUTPUT_DIR)
    if(NOT ${variable})
        message(FATAL_ERROR "render.cmake needs -D${variable}=...")
    endif()
endforeach()
if(NOT DEFINED QML)
    set(QML ON)
endif()

get_filename_component(samples "${CMAKE_CURRENT_LIST_DIR}/../sample" ABSOLUTE)

# The demo keeps its selection and its safe-start mark in the settings it is given, so
# it gets fresh copies: every run starts from the same state and the files here never
# change.
file(REMOVE_RECURSE "${SCRATCH_DIR}")
file(MAKE_DIRECTORY "${SCRATCH_DIR}" "${OUTPUT_DIR}")
file(COPY "${CMAKE_CURRENT_LIST_DIR}/all.ini" "${CMAKE_CURRENT_LIST_DIR}/focus.ini"
    "${CMAKE_CURRENT_LIST_DIR}/no-documents.ini" DESTINATION "${SCRATCH_DIR}")

# render(<png> <settings file> [options...] [LANGUAGE <language>] [DOCUMENTS files...])
# The demo's log lines (which plugins it loads) are not what a screenshot run is
# about; they show only when the demo fails.
function(render png settings)
    cmake_parse_arguments(PARSE_ARGV 2 arg "" "LANGUAGE" DOCUMENTS)
    # The demo follows the system's language; every screenshot names its own, so that
    # the build machine's locale never shows.
    if(NOT arg_LANGUAGE)
        set(arg_LANGUAGE C)
    endif()
    execute_process(
        COMMAND "${CMAKE_COMMAND}" -E env "LANGUAGE=${arg_LANGUAGE}" "LC_ALL=C.UTF-8"
            "${DEMO}" --settings "${SCRATCH_DIR}/${settings}" ${arg_UNPARSED_ARGUMENTS}
            --screenshot "${OUTPUT_DIR}/${png}" ${arg_DOCUMENTS}
        RESULT_VARIABLE result
        ERROR_VARIABLE errors)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "zelvane-demo could not render ${png} (${result}):\n${errors}")
    endif()
endfunction()

render(editor.png all.ini --show file-menu
    DOCUMENTS "${samples}/notes.txt" "${samples}/welcome.txt")
render(editor-focus.png focus.ini DOCUMENTS "${samples}/welcome.txt")
render(plugins-dialog.png no-documents.ini --show plugins --select Spellcheck)
# The same screen under a German locale, with the components' German catalogue.
render(plugins-de.png no-documents.ini --show plugins --select Spellcheck LANGUAGE de)
if(QML)
    render(plugins-qml.png no-documents.ini --qml --show plugins --select Spellcheck)
endif()

file(REMOVE_RECURSE "${SCRATCH_DIR}")
