# Checks that every code block of README.md that is introduced by a marker
#   <!-- file: examples/readme/host/main.cpp -->
# equals that file, and that every file under examples/readme/ is shown once or more.
#
#   cmake -DREADME=<README.md> -DROOT=<source tree> -P checkreadme.cmake
cmake_minimum_required(VERSION 3.21)

file(READ "${README}" readme)
set(failures "")
set(shown "")
set(marker "<!-- file: ")

string(FIND "${readme}" "${marker}" position)
while(NOT position EQUAL -1)
    string(LENGTH "${marker}" marker_length)
    math(EXPR path_start "${position} + ${marker_length}")
    string(SUBSTRING "${readme}" ${path_start} -1 rest)
    string(FIND "${rest}" " -->" path_end)
    string(SUBSTRING "${rest}" 0 ${path_end} path)

    # The block starts on the line after the opening fence and ends before the closing one.
    string(FIND "${rest}" "```" fence)
    string(SUBSTRING "${rest}" ${fence} -1 rest)
    string(FIND "${rest}" "\n" line_end)
    math(EXPR content_start "${line_end} + 1")
    string(SUBSTRING "${rest}" ${content_start} -1 rest)
    string(FIND "${rest}" "\n```" content_end)
    if(content_end EQUAL -1)
        string(APPEND failures "${path}: the code block is not closed\n")
        break()
    endif()
    math(EXPR content_length "${content_end} + 1")
    string(SUBSTRING "${rest}" 0 ${content_length} block)

    if(NOT EXISTS "${ROOT}/${path}")
        string(APPEND failures "${path}: the README shows a file that does not exist\n")
    else()
        file(READ "${ROOT}/${path}" expected)
        if(NOT block STREQUAL expected)
            string(APPEND failures "${path}: the README's block differs from the file\n"
                "--- file\n${expected}--- README\n${block}")
        endif()
    endif()
    list(APPEND shown "${path}")

    string(SUBSTRING "${rest}" ${content_length} -1 rest)
    set(readme "${rest}")
    string(FIND "${readme}" "${marker}" position)
endwhile()

file(GLOB_RECURSE files RELATIVE "${ROOT}" "${ROOT}/examples/readme/*")
foreach(file IN LISTS files)
    if(NOT file IN_LIST shown)
        string(APPEND failures "${file}: not shown in the README\n")
    endif()
endforeach()

if(failures)
    message(NOTICE "${failures}")
    message(FATAL_ERROR "README.md and examples/readme/ differ")
endif()
