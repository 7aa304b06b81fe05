# Debian packages of Zelvane, made by CPack from the install components.
#
# Every install() rule of the project names one component; each component becomes one
# .deb, named and described below. Nothing here lists files: whatever a component
# installs is in its package, so a new file needs only the right COMPONENT. A component
# that has no entry here (or a rule without COMPONENT, which CMake calls "Unspecified")
# makes cpack fail rather than leave files out of every package.
#
#   cmake -S . -B build-package -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF \
#         -DZELVANE_BUILD_EXAMPLES=OFF -DCMAKE_INSTALL_PREFIX=/usr -DZELVANE_DEBIAN_PACKAGES=ON
#   cmake --build build-package && (cd build-package && cpack -G DEB)
#
# ./build.sh package does this with Debian's hardening flags and runs lintian over the
# result; docs/packaging.md says why the remaining lintian warnings are left.
include_guard(GLOBAL)

option(ZELVANE_DEBIAN_PACKAGES
    "Install each Debian package's copyright and changelog under share/doc/<package>" OFF)

set(ZELVANE_PACKAGING_DIR "${CMAKE_CURRENT_LIST_DIR}")
set(ZELVANE_DEBIAN_VERSION "${PROJECT_VERSION}-1")

# zelvane_debian_package(<component> <package> <section> <kind> <synopsis> <description>)
#
# <kind> is "library" for a package that holds a shared library of the project (its
# package gets a shlibs file and the development package depends on it), "other"
# otherwise. The description is one paragraph; CPack wraps it.
set(ZELVANE_DEBIAN_COMPONENTS "")
# Debian wants the extended description in lines of at most 80 columns; CPack writes it
# as given. Paragraphs are separated by "\n.\n".
function(zelvane_debian_wrap text out)
    string(REPLACE "\n.\n" ";" paragraphs "${text}")
    set(result "")
    foreach(paragraph IN LISTS paragraphs)
        if(NOT result STREQUAL "")
            string(APPEND result "\n.\n")
        endif()
        string(REPLACE " " ";" words "${paragraph}")
        set(line "")
        foreach(word IN LISTS words)
            string(LENGTH "${line} ${word}" length)
            if(line STREQUAL "")
                set(line "${word}")
            elseif(length GREATER 78)
                string(APPEND result "${line}\n")
                set(line "${word}")
            else()
                string(APPEND line " ${word}")
            endif()
        endforeach()
        string(APPEND result "${line}")
    endforeach()
    set(${out} "${result}" PARENT_SCOPE)
endfunction()

macro(zelvane_debian_package component package section kind synopsis description)
    list(APPEND ZELVANE_DEBIAN_COMPONENTS ${component})
    string(TOUPPER "${component}" _zelvane_upper)
    set(ZELVANE_DEBIAN_${_zelvane_upper}_PACKAGE "${package}")
    set(ZELVANE_DEBIAN_${_zelvane_upper}_SECTION "${section}")
    set(ZELVANE_DEBIAN_${_zelvane_upper}_KIND "${kind}")
    zelvane_debian_wrap("${description}" _zelvane_wrapped)
    set(ZELVANE_DEBIAN_${_zelvane_upper}_DESCRIPTION "${synopsis}\n${_zelvane_wrapped}")
endmacro()

set(_zelvane_about "Zelvane gives a Qt 6 desktop application a plugin framework: it reads \
each plugin's JSON metadata without running its code, loads one core plugin and the \
enabled extension plugins in dependency order, lets plugins share objects, and gives the \
application a ready-made model for its plugin settings screen.")

zelvane_debian_package(runtime libzelvane1 libs library
    "plugin framework for Qt 6 applications - library"
    "${_zelvane_about}\n.\nThis package contains the shared library libZelvane.")
zelvane_debian_package(development libzelvane-dev libdevel other
    "plugin framework for Qt 6 applications - development files"
    "${_zelvane_about}\n.\nThis package contains the headers, the CMake package \
(find_package(Zelvane) and the zelvane_add_plugin() helper for plugin authors), the \
pkg-config file and the JSON schema of the plugin metadata.")
zelvane_debian_package(tools zelvane-tools devel other
    "plugin framework for Qt 6 applications - tools"
    "${_zelvane_about}\n.\nThis package contains zelvane-inspect, which explains what a \
host would load from a plugin folder without running plugin code, and \
zelvane-create-plugin, which writes a plugin project with its tests.")
zelvane_debian_package(widgets libzelvanewidgets1 libs library
    "plugin framework for Qt 6 applications - widgets"
    "${_zelvane_about}\n.\nThis package contains libZelvaneWidgets, the plugin settings \
widget and dialog for Qt Widgets applications.")
# One install component, so one package: the QML module and the library it is built on.
zelvane_debian_package(quick qml6-module-zelvane libs library
    "plugin framework for Qt 6 applications - QML module"
    "${_zelvane_about}\n.\nThis package contains the QML module Zelvane with the plugin \
settings page for Qt Quick applications, and libZelvaneQuick, the library it is built on.")
zelvane_debian_package(diagnostics libzelvanediagnostics1 libs library
    "plugin framework for Qt 6 applications - diagnostics"
    "${_zelvane_about}\n.\nThis package contains libZelvaneDiagnostics, which explains to \
a host why plugins were or were not loaded and finds, after a start that crashed, the \
plugin that took it down, with zelvane-trial, the helper that tries the plugins in a \
process of its own, and the translations of the components.")

# The components that the install rules name, in the order above.
get_cmake_property(_zelvane_installed COMPONENTS)
set(ZELVANE_PACKAGED_COMPONENTS "")
set(ZELVANE_UNPACKAGED_COMPONENTS "")
foreach(component IN LISTS ZELVANE_DEBIAN_COMPONENTS)
    if(component IN_LIST _zelvane_installed)
        list(APPEND ZELVANE_PACKAGED_COMPONENTS ${component})
    endif()
endforeach()
foreach(component IN LISTS _zelvane_installed)
    if(NOT component IN_LIST ZELVANE_DEBIAN_COMPONENTS)
        list(APPEND ZELVANE_UNPACKAGED_COMPONENTS ${component})
    endif()
endforeach()

# Every package carries the machine-readable copyright file and a changelog, where
# Debian expects them (lintian's copyright-file-missing and no-changelog).
if(ZELVANE_DEBIAN_PACKAGES)
    set(_zelvane_changelog "${CMAKE_CURRENT_BINARY_DIR}/packaging/changelog.Debian.gz")
    file(MAKE_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}/packaging")
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
        "${ZELVANE_PACKAGING_DIR}/changelog")
    # -n: no name or time stamp in the archive, so the packages build reproducibly.
    execute_process(COMMAND gzip -9nc "${ZELVANE_PACKAGING_DIR}/changelog"
        OUTPUT_FILE "${_zelvane_changelog}" RESULT_VARIABLE _zelvane_gzip)
    if(NOT _zelvane_gzip EQUAL 0)
        message(FATAL_ERROR "gzip failed on ${ZELVANE_PACKAGING_DIR}/changelog")
    endif()
    file(STRINGS "${ZELVANE_PACKAGING_DIR}/changelog" _zelvane_first LIMIT_COUNT 1)
    if(NOT _zelvane_first MATCHES "^zelvane \\(${ZELVANE_DEBIAN_VERSION}\\) ")
        message(WARNING "packaging/changelog does not start with version "
            "${ZELVANE_DEBIAN_VERSION}: add an entry for it (see RELEASING.md)")
    endif()
    # The tools' manual pages are their --help texts, so that the two never differ.
    if(TARGET zelvane-inspect)
        find_program(ZELVANE_HELP2MAN help2man)
    endif()
    if(TARGET zelvane-inspect AND NOT ZELVANE_HELP2MAN)
        message(WARNING "help2man not found: zelvane-tools gets no manual page")
    elseif(TARGET zelvane-inspect)
        set(manual "${CMAKE_CURRENT_BINARY_DIR}/packaging/zelvane-inspect.1.gz")
        add_custom_command(OUTPUT "${manual}"
            COMMAND "${ZELVANE_HELP2MAN}" --no-info --version-string=${PROJECT_VERSION}
                "--name=explain which Zelvane plugins a host would load"
                --output=packaging/zelvane-inspect.1 "$<TARGET_FILE:zelvane-inspect>"
            COMMAND gzip -9nf packaging/zelvane-inspect.1
            DEPENDS zelvane-inspect
            WORKING_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}"
            COMMENT "Writing the manual page of zelvane-inspect"
            VERBATIM)
        set(manuals "${manual}")
        if(TARGET zelvane-create-plugin)
            set(manual "${CMAKE_CURRENT_BINARY_DIR}/packaging/zelvane-create-plugin.1.gz")
            add_custom_command(OUTPUT "${manual}"
                COMMAND "${ZELVANE_HELP2MAN}" --no-info --version-string=${PROJECT_VERSION}
                    "--name=write a Zelvane plugin project with its tests"
                    --output=packaging/zelvane-create-plugin.1
                    "$<TARGET_FILE:zelvane-create-plugin>"
                COMMAND gzip -9nf packaging/zelvane-create-plugin.1
                DEPENDS zelvane-create-plugin
                WORKING_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}"
                COMMENT "Writing the manual page of zelvane-create-plugin"
                VERBATIM)
            list(APPEND manuals "${manual}")
        endif()
        add_custom_target(zelvane_manual_pages ALL DEPENDS ${manuals})
        install(FILES ${manuals} DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT tools)
    endif()
    foreach(component IN LISTS ZELVANE_PACKAGED_COMPONENTS)
        string(TOUPPER "${component}" upper)
        set(doc_dir "${CMAKE_INSTALL_DATADIR}/doc/${ZELVANE_DEBIAN_${upper}_PACKAGE}")
        install(FILES "${ZELVANE_PACKAGING_DIR}/copyright" "${_zelvane_changelog}"
            DESTINATION "${doc_dir}" COMPONENT ${component})
    endforeach()
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zelvane)
set(CPACK_PACKAGE_VENDOR "Zelvane developers")
set(CPACK_PACKAGE_CONTACT "Zelvane developers <zelvane@example.org>")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
# Empty, or CPack puts the project's description before each package's own synopsis.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGE_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}/packages")
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL ${ZELVANE_PACKAGED_COMPONENTS})
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Read by cpack itself (see ZelvaneCPackOptions.cmake.in).
set(CPACK_PROJECT_CONFIG_FILE "${CMAKE_CURRENT_BINARY_DIR}/packaging/ZelvaneCPackOptions.cmake")
configure_file("${ZELVANE_PACKAGING_DIR}/ZelvaneCPackOptions.cmake.in"
    "${CPACK_PROJECT_CONFIG_FILE}" @ONLY)

# dpkg-shlibdeps must find the project's own libraries that a package links (a
# component links libZelvane.so.1): the folders of every shared library of the build.
function(zelvane_shared_library_dirs directory out)
    set(dirs "")
    get_property(targets DIRECTORY "${directory}" PROPERTY BUILDSYSTEM_TARGETS)
    foreach(target IN LISTS targets)
        get_target_property(type ${target} TYPE)
        if(type STREQUAL "SHARED_LIBRARY")
            get_target_property(output ${target} LIBRARY_OUTPUT_DIRECTORY)
            if(NOT output)
                get_target_property(output ${target} BINARY_DIR)
            endif()
            list(APPEND dirs "${output}")
        endif()
    endforeach()
    get_property(subdirectories DIRECTORY "${directory}" PROPERTY SUBDIRECTORIES)
    foreach(subdirectory IN LISTS subdirectories)
        zelvane_shared_library_dirs("${subdirectory}" subdirs)
        list(APPEND dirs ${subdirs})
    endforeach()
    list(REMOVE_DUPLICATES dirs)
    set(${out} "${dirs}" PARENT_SCOPE)
endfunction()
zelvane_shared_library_dirs("${PROJECT_SOURCE_DIR}" CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS)

# Inter-package dependencies. dpkg-shlibdeps finds those on Qt and the C++ runtime, but
# not on this project's own libraries, which are not installed while cpack runs.
set(_zelvane_libraries "")
foreach(component IN LISTS ZELVANE_PACKAGED_COMPONENTS)
    string(TOUPPER "${component}" upper)
    if(ZELVANE_DEBIAN_${upper}_KIND STREQUAL "library")
        list(APPEND _zelvane_libraries
            "${ZELVANE_DEBIAN_${upper}_PACKAGE} (= ${ZELVANE_DEBIAN_VERSION})")
    endif()
endforeach()
foreach(component IN LISTS ZELVANE_PACKAGED_COMPONENTS)
    string(TOUPPER "${component}" upper)
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME "${ZELVANE_DEBIAN_${upper}_PACKAGE}")
    set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION "${ZELVANE_DEBIAN_${upper}_SECTION}")
    set(CPACK_DEBIAN_${upper}_DESCRIPTION "${ZELVANE_DEBIAN_${upper}_DESCRIPTION}")
    set(depends "")
    if(component STREQUAL "development")
        # The CMake package finds Qt6 Core and Gui, and Qt's Gui package needs the GL
        # headers, which qt6-base-dev does not pull in.
        set(depends ${_zelvane_libraries} "qt6-base-dev (>= 6.4)" "libgl-dev")
        # find_package(Zelvane COMPONENTS Quick) finds Qt's Qml and Quick packages.
        if("quick" IN_LIST ZELVANE_PACKAGED_COMPONENTS)
            list(APPEND depends "qt6-declarative-dev (>= 6.4)")
        endif()
    elseif(NOT component STREQUAL "runtime" AND NOT component STREQUAL "tools")
        # The components link libZelvane and are built from the same internal code.
        set(depends "libzelvane1 (= ${ZELVANE_DEBIAN_VERSION})")
    endif()
    if(ZELVANE_DEBIAN_${upper}_KIND STREQUAL "library")
        set(CPACK_DEBIAN_${upper}_PACKAGE_MULTIARCH same)
        # ldconfig runs from dpkg's trigger, once per transaction (lintian:
        # lacks-ldconfig-trigger). CPack would also write a postinst and a postrm that
        # call ldconfig (maintscript-calls-ldconfig) unless the extra control files name
        # scripts of their own; naming ones that do not exist leaves the package without
        # maintainer scripts, and cpack says "Adding file to tar" for each.
        set(CPACK_DEBIAN_${upper}_PACKAGE_CONTROL_EXTRA
            "${ZELVANE_PACKAGING_DIR}/library/triggers"
            "${ZELVANE_PACKAGING_DIR}/library/no-script/postinst"
            "${ZELVANE_PACKAGING_DIR}/library/no-script/postrm")
    endif()
    list(JOIN depends ", " depends)
    set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${depends}")
endforeach()

include(CPack)
