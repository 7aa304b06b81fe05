# Seeds the fuzz targets' corpus folders, which libFuzzer keeps growing from run to run:
#   <fuzz build>/corpus/fuzz_metadata  every metadata file of the tests, raw and wrapped
#                                      the way metaData() returns it
#   <fuzz build>/corpus/fuzz_scan      the seed plugins, real plugin files
# and the regression inputs of tests/fuzz/regressions (metadata-*, scan-*), which
# earlier runs found. Also makes <fuzz build>/findings/, where a run writes an input
# that crashes a target.
#
#   cmake -DSOURCE_DIR=<source tree> -DFUZZ_DIR=<fuzz build folder> -P corpus.cmake
#
# The target fuzz_corpus runs it, as part of zelvane_fuzzers (cmake --build --preset fuzz).
cmake_minimum_required(VERSION 3.21)

foreach(variable IN ITEMS SOURCE_DIR FUZZ_DIR)
    if(NOT ${variable})
        message(FATAL_ERROR "corpus.cmake needs -D${variable}=...")
    endif()
endforeach()

set(metadata_corpus "${FUZZ_DIR}/corpus/fuzz_metadata")
set(scan_corpus "${FUZZ_DIR}/corpus/fuzz_scan")
file(MAKE_DIRECTORY "${metadata_corpus}" "${scan_corpus}" "${FUZZ_DIR}/findings")

file(GLOB metadata_files "${SOURCE_DIR}/tests/fixtures/*.json")
file(GLOB plugin_metadata_files "${SOURCE_DIR}/tests/*/plugins/*.json")
foreach(json IN LISTS metadata_files plugin_metadata_files)
    # Named after the folder under tests/ and the file: tests/fixtures/core.json is
    # fixtures-core, tests/plugin/plugins/full.json plugin-full.
    file(RELATIVE_PATH relative "${SOURCE_DIR}/tests" "${json}")
    string(REGEX REPLACE "/.*" "" folder "${relative}")
    get_filename_component(name "${json}" NAME_WLE)
    set(seed "${folder}-${name}")
    configure_file("${json}" "${metadata_corpus}/${seed}.json" COPYONLY)
    file(READ "${json}" metadata)
    file(WRITE "${metadata_corpus}/${seed}-wrapped.json"
        "{\"IID\":\"org.zelvane.Test/1.0\",\"className\":\"TestPlugin\",\"debug\":false,\"MetaData\":${metadata}}")
endforeach()

file(GLOB seed_plugins "${FUZZ_DIR}/tests/fuzz/seeds/*.so")
if(NOT seed_plugins)
    message(FATAL_ERROR "No seed plugins in ${FUZZ_DIR}/tests/fuzz/seeds: build fuzz_seeds first")
endif()
file(COPY ${seed_plugins} DESTINATION "${scan_corpus}")

file(GLOB metadata_regressions "${SOURCE_DIR}/tests/fuzz/regressions/metadata-*")
file(GLOB scan_regressions "${SOURCE_DIR}/tests/fuzz/regressions/scan-*")
if(metadata_regressions)
    file(COPY ${metadata_regressions} DESTINATION "${metadata_corpus}")
endif()
if(scan_regressions)
    file(COPY ${scan_regressions} DESTINATION "${scan_corpus}")
endif()
