# Fails naming every test of the build folder that carries no CTest label, so that no
# test drops out of `ctest -L <label>` runs unnoticed. The list is CTest's own, the
# tests found in the executables when it reads them included.
#
#   cmake -DCTEST=<ctest> -DBUILD_DIR=<build folder> -P checklabels.cmake
cmake_minimum_required(VERSION 3.21)

execute_process(COMMAND "${CTEST}" --test-dir "${BUILD_DIR}" -N --show-only=json-v1
    OUTPUT_VARIABLE json
    RESULT_VARIABLE result)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "ctest -N --show-only=json-v1 failed (${result})")
endif()

string(JSON count LENGTH "${json}" tests)
set(unlabelled "")
if(count GREATER 0)
    math(EXPR last "${count} - 1")
    foreach(index RANGE ${last})
        string(JSON name GET "${json}" tests ${index} name)
        set(labelled FALSE)
        string(JSON properties ERROR_VARIABLE no_properties GET "${json}" tests ${index} properties)
        if(NOT no_properties)
            string(JSON property_count LENGTH "${properties}")
            if(property_count GREATER 0)
                math(EXPR last_property "${property_count} - 1")
                foreach(property RANGE ${last_property})
                    string(JSON key GET "${properties}" ${property} name)
                    if(key STREQUAL "LABELS")
                        set(labelled TRUE)
                    endif()
                endforeach()
            endif()
        endif()
        if(NOT labelled)
            string(APPEND unlabelled "  ${name}\n")
        endif()
    endforeach()
endif()

if(unlabelled)
    message(FATAL_ERROR "Tests without a CTest label (add their folder with "
        "zelvane_add_test_directory(), or give them LABELS):\n${unlabelled}")
endif()
message(STATUS "${count} tests, every one labelled")
