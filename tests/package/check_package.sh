#!/usr/bin/env bash
# Checks Zelvane as a packager and its users meet it.
#
#   check_package.sh install <source dir> <work dir> [<generator>]
#       Configures the source tree without tests and examples in a scratch folder
#       under <work dir>, builds and installs it into a scratch prefix, then checks
#       the installed layout, the library's exported symbols, a host project built
#       with find_package(Zelvane), a plugin built with the installed
#       zelvane_add_plugin() whose JSON file is edited between two builds, the
#       components, and a Core and an Extension project written by the installed
#       zelvane-create-plugin, whose tests pass, and broken copies of them whose
#       trial-load test fails and names the cause.
#   check_package.sh tree-exports <libZelvane.so of a BUILD_TESTING=ON tree>
#       Checks that the tests' build of the library exports the internals they use.
set -euo pipefail

# The cmake that runs the tests, when CTest says which one that is.
cmake() {
    command "${CMAKE:-cmake}" "$@"
}

failures=0
fail() {
    echo "FAIL: $*" >&2
    failures=$((failures + 1))
}
pass() {
    echo "ok: $*"
}

# The library's dynamic symbols, demangled.
exported_symbols() {
    nm -DC --defined-only "$1"
}

check_tree_exports() {
    local library=$1
    local symbols
    symbols=$(exported_symbols "$library")
    local symbol
    for symbol in 'Zelvane::PluginLoader::scan(QString const&)' \
        'Zelvane::PluginLoader::load(QMap<QString, QString> const&)' \
        'Zelvane::PluginData::scan()'; do
        if grep -qF -- "$symbol" <<<"$symbols"; then
            pass "the tests' library exports $symbol"
        else
            fail "the tests' library does not export $symbol"
        fi
    done
}

# The longest folder that contains both paths.
check_install() {
    local source_dir work_root generator
    source_dir=$(cd "$1" && pwd -P)
    mkdir -p "$2"
    work_root=$(cd "$2" && pwd -P)
    generator=${3:-Ninja}
    local tests_dir="$source_dir/tests/package"

    # Global: the trap runs after this function has returned.
    work=$(mktemp -d "$work_root/package.XXXXXX")
    trap 'rm -rf "$work"' EXIT
    local prefix="$work/prefix"

    # The release build's configuration, in a folder at the depth of the package tests'
    # release build (<work root>/release): with ccache, whichever of the two builds runs
    # second takes the other's objects. Global, as work is, for the trap.
    tree="$work_root/install-tree"
    rm -rf "$tree"
    trap 'rm -rf "$work" "$tree"' EXIT
    # The projects built against the installation below take the generator (and ccache)
    # alone: they are what a user builds.
    local cmake_options=(-G "$generator") tree_options=()
    if command -v dpkg-buildflags >/dev/null 2>&1; then
        source "$source_dir/packaging/release-flags.sh"
        zelvane_release_options "$source_dir" "$tree"
        tree_options=("${zelvane_release_cmake_options[@]}")
        if command -v ccache >/dev/null 2>&1; then
            cmake_options+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
        fi
    fi
    local jobs=${ZELVANE_PACKAGE_JOBS:-2}

    echo "== configure, build and install into $prefix"
    cmake -S "$source_dir" -B "$tree" "${cmake_options[@]}" "${tree_options[@]}" \
        -DBUILD_TESTING=OFF -DZELVANE_BUILD_EXAMPLES=OFF >"$work/configure.log" 2>&1 ||
        { cat "$work/configure.log"; fail "configuring the tree"; return; }
    cmake --build "$tree" -j "$jobs" >"$work/build.log" 2>&1 ||
        { cat "$work/build.log"; fail "building the tree"; return; }
    cmake --install "$tree" --prefix "$prefix" >"$work/install.log" 2>&1 ||
        { cat "$work/install.log"; fail "installing the tree"; return; }

    echo "== installed layout"
    local library="$prefix/lib/libZelvane.so"
    local path
    for path in "$library" "$prefix/lib/libZelvane.so.1"; do
        if [[ -L $path ]]; then pass "$path is a link"; else fail "$path is not a symbolic link"; fi
    done
    local real
    real=$(readlink -f "$library")
    if [[ -f $real && ! -L $real && $(basename "$real") == libZelvane.so.1.* ]]; then
        pass "libZelvane.so resolves to $(basename "$real")"
    else
        fail "libZelvane.so resolves to $real"
    fi
    local soname
    soname=$(objdump -p "$real" | awk '$1 == "SONAME" { print $2 }')
    if [[ $soname == libZelvane.so.1 ]]; then pass "SONAME $soname"; else fail "SONAME is '$soname'"; fi

    local header
    for header in iplugin.h objectpool.h pluginargumentdescription.h plugincontroller.h \
        pluginloader.h pluginscaterogies.h pluginsmodel.h IPlugin ObjectPool \
        PluginArgumentDescription PluginController PluginLoader PluginsCaterogies \
        PluginsModel zelvane_export.h zelvaneversion.h; do
        if [[ -f $prefix/include/zelvane/$header ]]; then
            pass "include/zelvane/$header"
        else
            fail "include/zelvane/$header is not installed"
        fi
    done
    local private_headers
    private_headers=$(find "$prefix/include" -name '*_p.h')
    if [[ -z $private_headers ]]; then pass "no private header installed"; else fail "private headers installed: $private_headers"; fi
    if grep -q 'define ZELVANE_AUTOTEST_EXPORT *$' "$prefix/include/zelvane/zelvane_export.h"; then
        pass "ZELVANE_AUTOTEST_EXPORT is empty in the installed export header"
    else
        fail "ZELVANE_AUTOTEST_EXPORT exports in the installed export header"
    fi

    local file
    for file in ZelvaneConfig.cmake ZelvaneConfigVersion.cmake ZelvaneTargets.cmake \
        ZelvaneMacros.cmake ZelvanePluginTest.cmake; do
        if [[ -f $prefix/lib/cmake/Zelvane/$file ]]; then
            pass "lib/cmake/Zelvane/$file"
        else
            fail "lib/cmake/Zelvane/$file is not installed"
        fi
    done
    local pc="$prefix/lib/pkgconfig/zelvane.pc"
    if [[ -f $pc ]]; then
        pass "lib/pkgconfig/zelvane.pc"
        if command -v pkg-config >/dev/null 2>&1; then
            local version libdir
            version=$(PKG_CONFIG_PATH="$prefix/lib/pkgconfig" pkg-config --modversion zelvane)
            libdir=$(PKG_CONFIG_PATH="$prefix/lib/pkgconfig" pkg-config --variable=libdir zelvane)
            [[ $version == 1.0.0 ]] && pass "pkg-config version $version" || fail "pkg-config version '$version'"
            # The file may name its folders relative to itself (${pcfiledir}).
            [[ $(realpath -m "$libdir") == "$prefix/lib" ]] && pass "pkg-config libdir $libdir" ||
                fail "pkg-config libdir '$libdir' is not $prefix/lib"
        fi
    else
        fail "lib/pkgconfig/zelvane.pc is not installed"
    fi

    echo "== exported symbols"
    local symbols
    symbols=$(exported_symbols "$real")
    local class
    for class in PluginController ObjectPool IPlugin PluginsModel PluginsCaterogies; do
        if grep -q "Zelvane::$class::" <<<"$symbols"; then
            pass "Zelvane::$class is exported"
        else
            fail "no symbol of Zelvane::$class is exported"
        fi
    done
    for class in PluginLoader PluginData; do
        local members
        members=$(grep "Zelvane::$class::" <<<"$symbols" || true)
        if [[ -z $members ]]; then
            pass "no member of Zelvane::$class is exported"
        else
            fail "members of Zelvane::$class are exported:"$'\n'"$members"
        fi
    done

    echo "== a host built with find_package(Zelvane)"
    cp -r "$tests_dir/host" "$work/host"
    local forwarding
    for forwarding in IPlugin ObjectPool PluginArgumentDescription PluginController \
        PluginLoader PluginsCaterogies PluginsModel; do
        printf '#include <zelvane/%s>\n' "$forwarding" >"$work/host/header_$forwarding.cpp"
    done
    if cmake -S "$work/host" -B "$work/host-build" "${cmake_options[@]}" \
        -DCMAKE_PREFIX_PATH="$prefix" >"$work/host.log" 2>&1 &&
        cmake --build "$work/host-build" -j "$jobs" >>"$work/host.log" 2>&1; then
        local output
        output=$(QT_QPA_PLATFORM=offscreen "$work/host-build/host" 2>&1) || true
        if [[ $output == "Zelvane::ObjectPool owned by Zelvane::PluginController" ]]; then
            pass "the host runs: $output"
        else
            fail "the host printed '$output'"
        fi
        local used
        used=$(ldd "$work/host-build/host" | awk '$1 == "libZelvane.so.1" { print $3 }')
        if [[ $(realpath -m "$used") == "$prefix/lib/libZelvane.so.1.0.0" ]]; then
            pass "the host uses the installed library"
        else
            fail "the host uses '$used', not $prefix/lib/libZelvane.so.1"
        fi
    else
        cat "$work/host.log"
        fail "building the host project"
    fi

    echo "== a plugin built with the installed zelvane_add_plugin()"
    cp -r "$tests_dir/plugin" "$work/plugin"
    local plugin="$work/plugin-build/libprobe.so"
    if cmake -S "$work/plugin" -B "$work/plugin-build" "${cmake_options[@]}" \
        -DCMAKE_PREFIX_PATH="$prefix" >"$work/plugin.log" 2>&1 &&
        cmake --build "$work/plugin-build" -j "$jobs" >>"$work/plugin.log" 2>&1; then
        local before after
        before=$("$work/host-build/host" "$plugin" 2>&1) || true
        if [[ $before == *'"Name":"ProbeBefore"'* ]]; then
            pass "the plugin's metadata: $before"
        else
            fail "the plugin's metadata is '$before'"
        fi
        # Only the JSON file changes; nothing else would make moc run again.
        sed -i 's/"ProbeBefore"/"ProbeAfter"/' "$work/plugin/probe.json"
        if cmake --build "$work/plugin-build" -j "$jobs" >"$work/rebuild.log" 2>&1; then
            after=$("$work/host-build/host" "$plugin" 2>&1) || true
            if [[ $after == *'"Name":"ProbeAfter"'* ]]; then
                pass "after editing the JSON file the rebuilt plugin says: $after"
            else
                fail "editing probe.json did not change the rebuilt plugin's metadata: '$after'"
                echo "-- the rebuild ran:"
                cat "$work/rebuild.log"
            fi
        else
            cat "$work/rebuild.log"
            fail "rebuilding the plugin after editing probe.json"
        fi
    else
        cat "$work/plugin.log"
        fail "building the plugin project"
    fi

    check_components "$prefix" "$tests_dir" "$jobs" "$plugin" "${cmake_options[@]}"
    check_plugin_projects "$prefix" "$jobs" "${cmake_options[@]}"
}

# Configures and builds a generated plugin project against the prefix: the whole project,
# or with a target only that (the broken copies need their plugin and its trial test, not
# the unit test). Fails on any warning, the metadata check's included.
build_project() {
    local name=$1 prefix=$2 jobs=$3 target=$4
    shift 4
    local log="$work/projects/$name.log"
    local build=(cmake --build "$work/projects/$name-build" -j "$jobs")
    [[ -n $target ]] && build+=(--target "$target")
    if cmake -S "$work/projects/$name" -B "$work/projects/$name-build" \
        -DCMAKE_PREFIX_PATH="$prefix" "$@" >"$log" 2>&1 && "${build[@]}" >>"$log" 2>&1; then
        if grep -qi 'warning' "$log"; then
            cat "$log"
            fail "the project $name builds with warnings"
        else
            pass "the project $name builds without a warning"
        fi
        return 0
    fi
    cat "$log"
    fail "building the project $name"
    return 1
}

# A project's CTest run; with a pattern, only the tests it matches.
run_project_tests() {
    local name=$1 pattern=${2:-}
    local options=(--test-dir "$work/projects/$name-build" --output-on-failure)
    [[ -n $pattern ]] && options+=(-R "$pattern")
    ctest_output=$(command "${CTEST:-ctest}" "${options[@]}" 2>&1)
}

# A broken copy of a generated project: its trial-load test must fail and name the cause.
check_broken_copy() {
    local name=$1 prefix=$2 jobs=$3 target=$4 expected=$5
    shift 5
    build_project "$name" "$prefix" "$jobs" "$target" "$@" || return
    if run_project_tests "$name" _trial_load; then
        echo "$ctest_output"
        fail "$name: the trial-load test passes"
    elif [[ $ctest_output == *"$expected"* ]]; then
        pass "$name: the trial-load test fails: $expected"
    else
        echo "$ctest_output"
        fail "$name: the trial-load test fails without saying '$expected'"
    fi
}

# zelvane-create-plugin from the prefix: a Core and an Extension project that build and
# pass their tests, then copies broken as plugins break, whose trial-load test fails.
check_plugin_projects() {
    local prefix=$1 jobs=$2
    shift 2
    local cmake_options=("$@")
    local create="$prefix/bin/zelvane-create-plugin"
    local iid=org.zelvane.Package/1.0

    echo "== plugin projects written by zelvane-create-plugin"
    mkdir -p "$work/projects"
    if "$create" Workbench --iid "$iid" --category Core --output "$work/projects/core" \
        >/dev/null && "$create" Spellcheck --iid "$iid" --depends Workbench \
        --output "$work/projects/extension" >/dev/null; then
        pass "zelvane-create-plugin wrote a Core and an Extension project"
    else
        fail "zelvane-create-plugin"
        return
    fi
    local core="$work/projects/core-build/libworkbench.so"
    build_project core "$prefix" "$jobs" "" "${cmake_options[@]}" || return
    build_project extension "$prefix" "$jobs" "" "${cmake_options[@]}" \
        -Dspellcheck_TRIAL_PLUGINS="$core" || return
    local project
    for project in core extension; do
        if run_project_tests "$project"; then
            pass "$project: $(grep -o '[0-9]*% tests passed.*' <<<"$ctest_output")"
        else
            echo "$ctest_output"
            fail "$project: its tests fail"
        fi
    done

    # Each copy breaks one thing; its plugin is built alone, with the copy's own trial test.
    cp -r "$work/projects/core" "$work/projects/core-crash"
    sed -i 's|^#include <zelvane/IPlugin>|#include <csignal>\n&|; s|^\( *\)auto\* object = new|\1std::raise(SIGSEGV);\n&|' \
        "$work/projects/core-crash/workbenchplugin.cpp"
    check_broken_copy core-crash "$prefix" "$jobs" workbench \
        "libworkbench.so (Workbench) did not start: crashed in initialize(): signal SIGSEGV" \
        "${cmake_options[@]}"

    cp -r "$work/projects/extension" "$work/projects/extension-abort"
    printf '\n#include <cstdlib>\n\nstatic const bool loadingAborts = (std::abort(), true);\n' \
        >>"$work/projects/extension-abort/spellcheckobject.cpp"
    check_broken_copy extension-abort "$prefix" "$jobs" spellcheck \
        "libspellcheck.so (Spellcheck) did not start: crashed while loading the library: signal SIGABRT" \
        "${cmake_options[@]}" -Dspellcheck_TRIAL_PLUGINS="$core"

    # The two projects disagree on the core's name: the extension's dependency is missing.
    cp -r "$work/projects/extension" "$work/projects/extension-mismatch"
    sed -i 's|"Workbench"|"WorkBench"|' "$work/projects/extension-mismatch/spellcheck.json"
    check_broken_copy extension-mismatch "$prefix" "$jobs" spellcheck \
        "libspellcheck.so (Spellcheck) was not loaded: Will not load: its dependencies cannot be met. Needs WorkBench, which is not in the plugin folder." \
        "${cmake_options[@]}" -Dspellcheck_TRIAL_PLUGINS="$core"
}

# The components Diagnostics, Widgets and Quick: their files, find_package() per
# component, and a widget host and a QML host built against them, run offscreen over a
# folder holding the probe plugin (an Extension without a Core plugin: nothing loads).
check_components() {
    local prefix=$1 tests_dir=$2 jobs=$3 plugin=$4
    shift 4
    local cmake_options=("$@")

    echo "== the components"
    local path
    for path in lib/libZelvaneDiagnostics.so.1 lib/libZelvaneWidgets.so.1 lib/libZelvaneQuick.so.1 \
        lib/qt6/qml/Zelvane/qmldir lib/qt6/qml/Zelvane/libZelvaneQuickPlugin.so \
        lib/qt6/qml/Zelvane/ZelvaneQuick.qmltypes \
        include/zelvane/diagnostics/LoadDiagnostics include/zelvane/diagnostics/loaddiagnostics.h \
        include/zelvane/widgets/PluginsWidget include/zelvane/widgets/PluginsDialog \
        include/zelvane/quick/QmlPlugins \
        lib/cmake/Zelvane/ZelvaneDiagnosticsTargets.cmake lib/cmake/Zelvane/ZelvaneWidgetsTargets.cmake \
        lib/cmake/Zelvane/ZelvaneQuickTargets.cmake lib/zelvane/zelvane-trial \
        share/zelvane/translations/zelvane_de.qm; do
        if [[ -e $prefix/$path ]]; then pass "$path"; else fail "$path is not installed"; fi
    done
    local library
    for library in Diagnostics Widgets Quick; do
        local members
        members=$(exported_symbols "$prefix/lib/libZelvane$library.so.1" |
            grep -E 'Zelvane::(PluginLoader|PluginData|LoadPlan)::' || true)
        if [[ -z $members ]]; then
            pass "libZelvane$library exports none of the library's internals"
        else
            fail "libZelvane$library exports the library's internals:"$'\n'"$members"
        fi
    done

    if cmake -S "$tests_dir/nocomponents" -B "$work/nocomponents-build" "${cmake_options[@]}" \
        -DCMAKE_PREFIX_PATH="$prefix" >"$work/nocomponents.log" 2>&1; then
        pass "find_package(Zelvane) pulls in no component; an unknown one fails: $(grep -o 'components: .*' "$work/nocomponents.log")"
    else
        cat "$work/nocomponents.log"
        fail "find_package(Zelvane) with and without components"
    fi

    local folder="$work/components-plugins"
    mkdir -p "$folder"
    cp "$plugin" "$folder/" || fail "no probe plugin to show"
    cp -r "$tests_dir/components" "$work/components"
    local forwarding
    for forwarding in diagnostics/DependencyProblem diagnostics/LoadDiagnostics \
        diagnostics/PluginDiagnostic diagnostics/PluginsFilterModel widgets/PluginsDialog \
        widgets/PluginsWidget quick/QmlPlugins; do
        printf '#include <zelvane/%s>\n' "$forwarding" >"$work/components/header_${forwarding/\//_}.cpp"
    done
    if cmake -S "$work/components" -B "$work/components-build" "${cmake_options[@]}" \
        -DCMAKE_PREFIX_PATH="$prefix" >"$work/components.log" 2>&1 &&
        cmake --build "$work/components-build" -j "$jobs" >>"$work/components.log" 2>&1; then
        local host expected output
        for host in widgethost qmlhost; do
            [[ $host == widgethost ]] && expected="widgets" || expected="qml"
            expected+=": libprobe.so: Will not load: the plugin folder has no Core plugin."
            output=$(QT_QPA_PLATFORM=offscreen "$work/components-build/$host" "$folder" \
                org.zelvane.Package/1.0 "$work/components.ini" ProbeAfter 2>&1) || true
            if [[ $output == *"$expected"* ]]; then
                pass "$host runs: $expected"
            else
                fail "$host printed '$output'"
            fi
        done
    else
        cat "$work/components.log"
        fail "building the component hosts"
    fi
}

case ${1:-} in
install)
    shift
    check_install "$@"
    ;;
tree-exports)
    shift
    check_tree_exports "$@"
    ;;
*)
    echo "usage: $0 install <source dir> <work dir> [<generator>] | tree-exports <library>" >&2
    exit 2
    ;;
esac

if ((failures > 0)); then
    echo "$failures check(s) failed" >&2
    exit 1
fi
echo "every check passed"
