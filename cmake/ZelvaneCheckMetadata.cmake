# Checks a Zelvane plugin's metadata file against what the library accepts.
#
#   cmake -DZELVANE_METADATA=<plugin>.json [-DZELVANE_TARGET=<target>]
#         [-DZELVANE_STAMP=<file>] -P ZelvaneCheckMetadata.cmake
#
# zelvane_add_plugin() runs this as a build step whenever the JSON file changes; it can
# also be run by hand. Errors are the cases in which the library refuses the plugin at
# run time, some of them with an empty error text, so they fail the build here instead.
# Warnings are cases the library accepts but that rarely do what the author meant.
# Every line has the form "<file>: error: <key>: <rule>" (or "warning:"), which
# editors and IDEs recognise. On success the stamp file, if given, is touched.
cmake_minimum_required(VERSION 3.21)

if(NOT DEFINED ZELVANE_METADATA)
    message(FATAL_ERROR
        "usage: cmake -DZELVANE_METADATA=<plugin>.json [-DZELVANE_TARGET=<target>] "
        "[-DZELVANE_STAMP=<file>] -P ${CMAKE_CURRENT_LIST_FILE}")
endif()

set(zelvane_errors "")
set(zelvane_warnings "")
set(zelvane_refused "the library refuses this plugin")

function(zelvane_metadata_error key rule)
    set(line "${ZELVANE_METADATA}: error: ")
    if(NOT key STREQUAL "")
        string(APPEND line "${key}: ")
    endif()
    string(APPEND line "${rule}")
    set(zelvane_errors "${zelvane_errors}${line}\n" PARENT_SCOPE)
endfunction()

function(zelvane_metadata_warning key rule)
    set(zelvane_warnings "${zelvane_warnings}${ZELVANE_METADATA}: warning: ${key}: ${rule}\n"
        PARENT_SCOPE)
endfunction()

# The JSON type names of CMake's parser, as a plugin author would say them.
function(zelvane_json_type_text type out)
    if(type STREQUAL "STRING")
        set(text "a string")
    elseif(type STREQUAL "NUMBER")
        set(text "a number")
    elseif(type STREQUAL "BOOLEAN")
        set(text "a boolean")
    elseif(type STREQUAL "NULL")
        set(text "null")
    elseif(type STREQUAL "ARRAY")
        set(text "an array")
    elseif(type STREQUAL "OBJECT")
        set(text "an object")
    else()
        set(text "${type}")
    endif()
    set(${out} "${text}" PARENT_SCOPE)
endfunction()

# Stops with every collected line, and removes the stamp so the next build checks again.
function(zelvane_metadata_finish)
    if(NOT zelvane_warnings STREQUAL "")
        string(REGEX REPLACE "\n$" "" text "${zelvane_warnings}")
        message(NOTICE "${text}")
    endif()
    if(NOT zelvane_errors STREQUAL "")
        string(REGEX REPLACE "\n$" "" text "${zelvane_errors}")
        message(NOTICE "${text}")
        if(DEFINED ZELVANE_STAMP)
            file(REMOVE "${ZELVANE_STAMP}")
        endif()
        if(DEFINED ZELVANE_TARGET)
            message(FATAL_ERROR "zelvane_add_plugin(${ZELVANE_TARGET}): the metadata check failed")
        endif()
        message(FATAL_ERROR "the metadata check failed")
    endif()
    if(DEFINED ZELVANE_STAMP)
        file(TOUCH "${ZELVANE_STAMP}")
    endif()
endfunction()

if(NOT EXISTS "${ZELVANE_METADATA}")
    zelvane_metadata_error("" "the file does not exist")
    zelvane_metadata_finish()
endif()
file(READ "${ZELVANE_METADATA}" json)

string(JSON top_type ERROR_VARIABLE parse_error TYPE "${json}")
if(parse_error)
    string(STRIP "${parse_error}" parse_error)
    string(REGEX REPLACE "^failed parsing json string: (\\* )?" "" parse_error "${parse_error}")
    string(REGEX REPLACE "[ \t]*\n[ \t]*" " " parse_error "${parse_error}")
    zelvane_metadata_error("" "not valid JSON: ${parse_error}")
    zelvane_metadata_finish()
endif()
if(NOT top_type STREQUAL "OBJECT")
    zelvane_json_type_text("${top_type}" type_text)
    zelvane_metadata_error("" "the metadata must be a JSON object, not ${type_text}")
    zelvane_metadata_finish()
endif()

# Keys are case-sensitive; a key that differs from a known one only in case is ignored
# by the library, which is almost never what the author meant.
set(known_keys Name Category Dependencies Default Description Arguments)
string(JSON member_count LENGTH "${json}")
if(member_count GREATER 0)
    math(EXPR last "${member_count} - 1")
    foreach(index RANGE ${last})
        string(JSON member MEMBER "${json}" ${index})
        if(member IN_LIST known_keys)
            continue()
        endif()
        string(TOLOWER "${member}" lower_member)
        foreach(known IN LISTS known_keys)
            string(TOLOWER "${known}" lower_known)
            if(lower_member STREQUAL lower_known)
                zelvane_metadata_warning("\"${member}\""
                    "keys are case-sensitive and this one is ignored; did you mean \"${known}\"?")
            endif()
        endforeach()
    endforeach()
endif()

# "Name" is read through QVariant::toString(): a number or a boolean becomes its text,
# while an array, an object, null or "" leaves the plugin without a name.
string(JSON name_type ERROR_VARIABLE missing TYPE "${json}" Name)
if(missing)
    zelvane_metadata_error("\"Name\"" "missing; ${zelvane_refused}")
elseif(name_type STREQUAL "STRING")
    string(JSON name GET "${json}" Name)
    if(name STREQUAL "")
        zelvane_metadata_error("\"Name\""
            "must be a non-empty string, not an empty string; ${zelvane_refused}")
    endif()
elseif(NOT name_type STREQUAL "NUMBER" AND NOT name_type STREQUAL "BOOLEAN")
    zelvane_json_type_text("${name_type}" type_text)
    zelvane_metadata_error("\"Name\"" "must be a non-empty string, not ${type_text}; ${zelvane_refused}")
endif()

# The library makes each argument a QCommandLineOption of that very name, and Qt refuses
# a name that starts with "-" or "/" or holds "=": the option then has no name, and the host's
# parser can never accept it. Two arguments of one name: the parser refuses the second.
set(zelvane_option_names "")
function(zelvane_check_option_name key name)
    string(SUBSTRING "${name}" 0 1 first)
    if(first STREQUAL "-")
        string(REGEX REPLACE "^-+" "" bare "${name}")
        zelvane_metadata_warning("${key}.\"Name\""
            "\"${name}\" starts with \"-\", which Qt refuses in an option name: the host's command line can never accept it; write \"${bare}\"")
    endif()
    if(first STREQUAL "/")
        zelvane_metadata_warning("${key}.\"Name\""
            "\"${name}\" starts with \"/\", which Qt refuses in an option name: the host's command line can never accept it")
    endif()
    string(FIND "${name}" "=" equals)
    if(NOT equals EQUAL -1)
        zelvane_metadata_warning("${key}.\"Name\""
            "\"${name}\" holds \"=\", which Qt refuses in an option name: the host's command line can never accept it")
    endif()
    if("${name}" IN_LIST zelvane_option_names)
        zelvane_metadata_warning("${key}.\"Name\""
            "\"${name}\" is declared twice: the host's parser refuses the second")
    endif()
    set(zelvane_option_names "${zelvane_option_names};${name}" PARENT_SCOPE)
    set(zelvane_warnings "${zelvane_warnings}" PARENT_SCOPE)
endfunction()

# "Arguments" is read with strict JSON types, and the library refuses a malformed entry
# without any error text: this check is the only place that says what is wrong.
string(JSON arguments_type ERROR_VARIABLE missing TYPE "${json}" Arguments)
if(NOT missing)
    if(NOT arguments_type STREQUAL "ARRAY")
        zelvane_json_type_text("${arguments_type}" type_text)
        zelvane_metadata_error("\"Arguments\""
            "must be an array of objects, not ${type_text}; ${zelvane_refused}")
    else()
        string(JSON argument_count LENGTH "${json}" Arguments)
        if(argument_count GREATER 0)
            math(EXPR last "${argument_count} - 1")
            foreach(index RANGE ${last})
                set(key "\"Arguments\"[${index}]")
                string(JSON element_type TYPE "${json}" Arguments ${index})
                if(NOT element_type STREQUAL "OBJECT")
                    zelvane_json_type_text("${element_type}" type_text)
                    zelvane_metadata_error("${key}"
                        "must be an object, not ${type_text}; ${zelvane_refused}")
                    continue()
                endif()
                string(JSON type ERROR_VARIABLE missing TYPE "${json}" Arguments ${index} Name)
                if(missing)
                    zelvane_metadata_error("${key}.\"Name\"" "missing; ${zelvane_refused}")
                elseif(NOT type STREQUAL "STRING")
                    zelvane_json_type_text("${type}" type_text)
                    zelvane_metadata_error("${key}.\"Name\""
                        "must be a non-empty string, not ${type_text}; ${zelvane_refused}")
                else()
                    string(JSON value GET "${json}" Arguments ${index} Name)
                    if(value STREQUAL "")
                        zelvane_metadata_error("${key}.\"Name\""
                            "must be a non-empty string, not an empty string; ${zelvane_refused}")
                    else()
                        zelvane_check_option_name("${key}" "${value}")
                    endif()
                endif()
                foreach(optional Description Parameter)
                    string(JSON type ERROR_VARIABLE missing TYPE "${json}"
                        Arguments ${index} ${optional})
                    if(NOT missing AND NOT type STREQUAL "STRING")
                        zelvane_json_type_text("${type}" type_text)
                        zelvane_metadata_error("${key}.\"${optional}\""
                            "must be a string when present, not ${type_text}; ${zelvane_refused}")
                    endif()
                endforeach()
            endforeach()
        endif()
    endif()
endif()

# Accepted by the library, but a plugin of another category is never loaded and has no
# row in the plugin settings screen.
string(JSON category_type ERROR_VARIABLE missing TYPE "${json}" Category)
if(missing)
    zelvane_metadata_warning("\"Category\""
        "missing; only \"Core\" and \"Extension\" plugins are ever loaded")
elseif(NOT category_type STREQUAL "STRING")
    zelvane_json_type_text("${category_type}" type_text)
    zelvane_metadata_warning("\"Category\""
        "should be \"Core\" or \"Extension\", not ${type_text}; the plugin is never loaded")
else()
    string(JSON category GET "${json}" Category)
    if(NOT category STREQUAL "Core" AND NOT category STREQUAL "Extension")
        zelvane_metadata_warning("\"Category\""
            "\"${category}\" is neither \"Core\" nor \"Extension\" (letter case counts); the plugin is never loaded")
    endif()
endif()

# "Default" goes through QVariant::toBool(): a string or a number is accepted but its
# meaning is easy to misread ("false" is false, "no" is true).
string(JSON default_type ERROR_VARIABLE missing TYPE "${json}" Default)
if(NOT missing AND NOT default_type STREQUAL "BOOLEAN")
    zelvane_json_type_text("${default_type}" type_text)
    zelvane_metadata_warning("\"Default\"" "should be true or false, not ${type_text}")
endif()

# A dependency that can never be met drops the plugin silently at load time.
string(JSON dependencies_type ERROR_VARIABLE missing TYPE "${json}" Dependencies)
if(NOT missing)
    if(NOT dependencies_type STREQUAL "ARRAY")
        zelvane_json_type_text("${dependencies_type}" type_text)
        zelvane_metadata_warning("\"Dependencies\""
            "should be an array of plugin names, not ${type_text}")
    else()
        string(JSON dependency_count LENGTH "${json}" Dependencies)
        if(dependency_count GREATER 0)
            math(EXPR last "${dependency_count} - 1")
            foreach(index RANGE ${last})
                string(JSON type TYPE "${json}" Dependencies ${index})
                if(NOT type STREQUAL "STRING")
                    zelvane_json_type_text("${type}" type_text)
                    # Metadata written for other hosts names a dependency as an object;
                    # the library reads it as an empty name, which no plugin has.
                    set(hint "")
                    if(type STREQUAL "OBJECT")
                        string(JSON named_type ERROR_VARIABLE no_name
                            TYPE "${json}" Dependencies ${index} Name)
                        if(NOT no_name AND named_type STREQUAL "STRING")
                            string(JSON named GET "${json}" Dependencies ${index} Name)
                            set(hint "; it names ${named}, but as an object: write \"${named}\"")
                        endif()
                    endif()
                    zelvane_metadata_warning("\"Dependencies\"[${index}]"
                        "should be a plugin name, not ${type_text}${hint}")
                    continue()
                endif()
                string(JSON dependency GET "${json}" Dependencies ${index})
                if(name_type STREQUAL "STRING" AND dependency STREQUAL name)
                    zelvane_metadata_warning("\"Dependencies\"[${index}]"
                        "the plugin names itself, so it is never loaded")
                endif()
            endforeach()
        endif()
    endif()
endif()

zelvane_metadata_finish()
