#!/usr/bin/env bash
# Zelvane's entry point on a fresh Debian 12 machine: installs what is missing, then
# runs the CMake presets of CMakePresets.json, which hold every build option.
#
#   ./build.sh test [--sanitize] [CTEST OPTIONS]   build everything, run the tests
#                                                  (e.g. -L unit, -R tst_pluginsmodel)
#   ./build.sh demo                                build what the demo needs, run it
#   ./build.sh fuzz [SECONDS]                      build the fuzz targets, run each
#   ./build.sh bench [--quick] [OPTIONS]           start-up figures against raw Qt, with
#                                                  a CSV and a scaling plot in
#                                                  build/bench-results/
#   ./build.sh package [--check]                   Debian packages in build-package/packages,
#                                                  lintian; --check builds the README's
#                                                  host and plugin against them (and,
#                                                  with ZELVANE_CLEAN_ROOT=DIR, against
#                                                  them installed in a debootstrapped root)
#   ./build.sh docs                                the API reference: build-docs/html/ and
#                                                  build-docs/zelvane-<version>.qch
#
# Build folders: build/ (preset default), build-sanitize/ (sanitize), build-fuzz/ (fuzz).
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")"
ROOT=$(pwd)
JOBS=${JOBS:-2}

# Debian packages the build and the tests need. Checked one by one, so a machine that
# has them all installs nothing and needs no network.
PACKAGES=(
    cmake ninja-build g++ pkgconf
    qt6-base-dev libgl-dev qt6-svg-dev
    qt6-declarative-dev qml6-module-qtquick qml6-module-qtquick-window
    qml6-module-qtqml-workerscript
    qml6-module-qtquick-controls qml6-module-qtquick-layouts qml6-module-qtquick-templates
    qml6-module-qtqml-models qml6-module-qttest
    fonts-dejavu-core
    dpkg-dev file abigail-tools doxygen
)

# What ./build.sh package needs beyond the build: lintian and the manual page writer.
PACKAGE_TOOLS=(lintian help2man)
# What ./build.sh docs needs beyond doxygen: Qt 6's qhelpgenerator, for the .qch file.
DOCS_TOOLS=(qt6-documentation-tools)

ensure_packages() {
    local missing=()
    local package
    for package in "$@"; do
        if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
            missing+=("$package")
        fi
    done
    if [ ${#missing[@]} -eq 0 ]; then
        return 0
    fi
    echo "build.sh: installing ${missing[*]}"
    local sudo=()
    if [ "$(id -u)" -ne 0 ]; then
        sudo=(sudo)
    fi
    "${sudo[@]}" apt-get update -qq
    DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq --no-install-recommends \
        "${missing[@]}"
}

# The label that `-L <label>` or `--label-regex <label>` selects, when it names one
# label and nothing else; empty otherwise.
selected_label() {
    local previous=""
    local argument
    for argument in "$@"; do
        case "$previous" in
        -L | --label-regex)
            case "$argument" in
            unit | tools | examples | package) echo "$argument" ;;
            esac
            return 0
            ;;
        esac
        previous=$argument
    done
}

run_test() {
    local sanitize=0
    local ctest_options=()
    local argument
    for argument in "$@"; do
        case "$argument" in
        --sanitize) sanitize=1 ;;
        *) ctest_options+=("$argument") ;;
        esac
    done
    ensure_packages "${PACKAGES[@]}"
    cmake --preset default
    if [ "$sanitize" -eq 0 ]; then
        cmake --build --preset default -j "$JOBS"
        ctest --preset default -j "$JOBS" "${ctest_options[@]}"
        return
    fi

    # The sanitized tests load the test plugins of build/.
    cmake --build --preset test-plugins -j "$JOBS"
    cmake --preset sanitize
    # With one label selected, only what its tests need (zelvane_tests_<label>).
    local label
    label=$(selected_label "${ctest_options[@]}")
    if [ -n "$label" ]; then
        cmake --build --preset sanitize -j "$JOBS" --target "zelvane_tests_$label"
    else
        cmake --build --preset sanitize -j "$JOBS"
    fi
    ctest --preset sanitize -j "$JOBS" "${ctest_options[@]}"
}

# Builds only the library, the example plugins, zelvane-demo and zelvane-inspect,
# prints what the demo host loads, renders the editor (all plugins, and Focus) and its
# two plugin settings screens to PNG files, and opens the demo's window when there is
# a display.
run_demo() {
    ensure_packages "${PACKAGES[@]}"
    cmake --preset default
    cmake --build --preset demo -j "$JOBS"

    local demo="$ROOT/build/examples/host/zelvane-demo"
    local out="$ROOT/build/demo"
    mkdir -p "$out"
    # The selection that the window shows and saves; it persists across runs, so a
    # change made in the plugins dialog shows in the next run's list.
    local settings="$out/zelvane-demo.ini"

    echo
    echo "== zelvane-demo --list"
    "$demo" --list --settings "$settings"

    # The screenshots show the example plugins' own defaults, all of them (Export is
    # off by default), and Focus, over the sample documents.
    local shots samples="$ROOT/examples/host/sample"
    shots=$(mktemp -d)
    printf '[plugin]\nExport=true\n' >"$shots/all.ini"
    printf '[plugin]\nWorkbench=false\nFocus=true\n' >"$shots/focus.ini"
    "$demo" --settings "$shots/all.ini" --show file-menu --screenshot "$out/editor.png" \
        "$samples/notes.txt" "$samples/welcome.txt" 2>/dev/null
    "$demo" --settings "$shots/focus.ini" --screenshot "$out/editor-focus.png" \
        "$samples/welcome.txt" 2>/dev/null
    # The plugins screen explains a plugin that will not load: Spellcheck, whose
    # dependency Documents is switched off by hand.
    printf '[plugin]\nDocuments=false\nSpellcheck=true\n' >"$shots/no-documents.ini"
    "$demo" --settings "$shots/no-documents.ini" --show plugins --select Spellcheck \
        --screenshot "$out/plugins-dialog.png" 2>/dev/null
    "$demo" --settings "$shots/no-documents.ini" --qml --show plugins --select Spellcheck \
        --screenshot "$out/plugins-qml.png" 2>/dev/null
    rm -rf "$shots"

    echo
    echo "Screenshots:"
    echo "  $out/editor.png           (the editor with every example plugin, File menu open)"
    echo "  $out/editor-focus.png     (the editor with Focus as its core plugin)"
    echo "  $out/plugins-dialog.png   (the plugins screen, --show plugins --select Spellcheck)"
    echo "  $out/plugins-qml.png      (the same in QML, --qml)"
    echo "Plugin selection of the demo: $settings"
    echo "Inspect the plugin folder:    $ROOT/build/tools/inspect/zelvane-inspect $ROOT/build/examples/plugins --iid org.zelvane.DocumentEditor/1.0 --settings $settings"

    if [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ]; then
        echo
        echo "Opening the demo window (Tools > Plugins… shows the settings screen)."
        "$demo" --settings "$settings" "$ROOT/examples/host/sample/welcome.txt"
    else
        echo
        echo "No display (\$DISPLAY and \$WAYLAND_DISPLAY are unset): not opening the window."
        echo "On a desktop: $demo --settings $settings [--qml]"
    fi
}

# Builds the libFuzzer targets with clang in build-fuzz/ and runs each for SECONDS
# (default 60), one after the other. The corpus is kept in build-fuzz/corpus/<target>
# and grows from run to run; an input that crashes a target is written to
# build-fuzz/findings/ and fails the step.
run_fuzz() {
    local seconds=${1:-60}
    case "$seconds" in
    '' | *[!0-9]*) echo "build.sh fuzz: SECONDS must be a number, not $seconds" >&2; exit 2 ;;
    esac
    # clang links -fsanitize=fuzzer from the compiler-rt package.
    ensure_packages cmake ninja-build clang libclang-rt-14-dev qt6-base-dev libgl-dev
    cmake --preset fuzz
    cmake --build --preset fuzz -j "$JOBS"

    # Seeds: every metadata file of the tests, raw and wrapped the way metaData()
    # returns it, and real plugin files for the scanning target.
    local fuzz_dir="$ROOT/build-fuzz"
    local metadata_corpus="$fuzz_dir/corpus/fuzz_metadata"
    local scan_corpus="$fuzz_dir/corpus/fuzz_scan"
    mkdir -p "$metadata_corpus" "$scan_corpus" "$fuzz_dir/findings"
    local json folder seed
    for json in "$ROOT"/tests/fixtures/*.json "$ROOT"/tests/*/plugins/*.json; do
        # tests/fixtures/core.json is fixtures-core, tests/plugin/plugins/full.json plugin-full.
        folder=${json#"$ROOT"/tests/}
        folder=${folder%%/*}
        seed=$folder-$(basename "$json" .json)
        cp "$json" "$metadata_corpus/$seed.json"
        {
            printf '{"IID":"org.zelvane.Test/1.0","className":"TestPlugin","debug":false,"MetaData":'
            cat "$json"
            printf '}'
        } >"$metadata_corpus/$seed-wrapped.json"
    done
    cp "$fuzz_dir"/tests/fuzz/seeds/*.so "$scan_corpus/"
    # Regression inputs found by earlier runs start every run.
    if [ -d "$ROOT/tests/fuzz/regressions" ]; then
        cp "$ROOT"/tests/fuzz/regressions/metadata-* "$metadata_corpus/" 2>/dev/null || true
        cp "$ROOT"/tests/fuzz/regressions/scan-* "$scan_corpus/" 2>/dev/null || true
    fi

    local target
    for target in fuzz_metadata fuzz_scan; do
        echo "build.sh fuzz: running $target for $seconds s"
        "$fuzz_dir/tests/fuzz/$target" "$fuzz_dir/corpus/$target" \
            -max_total_time="$seconds" -print_final_stats=1 \
            -artifact_prefix="$fuzz_dir/findings/$target-"
    done
}

# Builds the release (Release, BUILD_TESTING=OFF, no examples) in build-package/, writes
# one .deb per install component into build-package/packages/ and runs lintian over
# them; errors fail the step, warnings are listed in docs/packaging.md. With --check the
# packages are unpacked into a scratch root and the README's host and plugin are built
# against it alone and run.
run_package() {
    local check=0
    local argument
    for argument in "$@"; do
        case "$argument" in
        --check) check=1 ;;
        *) echo "build.sh package: unknown option $argument" >&2; exit 2 ;;
        esac
    done
    ensure_packages "${PACKAGES[@]}" "${PACKAGE_TOOLS[@]}"
    JOBS=$JOBS bash packaging/release-build.sh "$ROOT" "$ROOT/build-package"
    local debs=("$ROOT"/build-package/packages/*.deb)
    echo
    echo "== lintian"
    local report="$ROOT/build-package/lintian.txt"
    local status=0
    lintian --fail-on error --display-info --pedantic "${debs[@]}" >"$report" 2>&1 || status=$?
    # lintian also warns that it runs as root, which a CI machine does.
    grep -v '^running with root privileges is not recommended!$' "$report" || true
    if [ "$status" -ne 0 ]; then
        echo "build.sh package: lintian reports errors (exit status $status)" >&2
        exit 1
    fi
    if [ "$check" -eq 1 ]; then
        echo
        echo "== checking the packages"
        bash packaging/check-debs.sh "$ROOT/build-package/packages" "$ROOT" "$ROOT/build-package"
        # The same on a real Debian 12 system that debootstrap makes in the folder
        # ZELVANE_CLEAN_ROOT names: needs root and the network (a few hundred MB), so
        # only when asked for. A second run reuses the system.
        if [ -n "${ZELVANE_CLEAN_ROOT:-}" ]; then
            ensure_packages debootstrap
            echo
            echo "== installing the packages into $ZELVANE_CLEAN_ROOT"
            bash packaging/clean-root.sh "$ROOT/build-package/packages" "$ROOT" "$ZELVANE_CLEAN_ROOT"
        fi
    fi
    echo
    echo "Packages:"
    printf '  %s\n' "${debs[@]}"
}

# Builds zelvane-bench in build/ (the test build: the benchmark reaches into the
# library's internals, which only a tree with tests exports) and runs every figure.
# --quick runs each at a few plugins; other options go to zelvane-bench (--only REGEX,
# --repetitions N). Numbers from a busy machine are noise: run it on an idle one.
run_bench() {
    ensure_packages "${PACKAGES[@]}"
    cmake --preset default
    cmake --build --preset default -j "$JOBS" --target zelvane-bench
    "$ROOT/build/benchmarks/zelvane-bench" --output "$ROOT/build/bench-results" "$@"
}

# Writes the API reference: every public header, the class and page descriptions of
# docs/api/ and the guides of docs/, as HTML and as a Qt help file for Qt Creator and
# Qt Assistant. A Doxygen warning fails the step.
run_docs() {
    ensure_packages "${PACKAGES[@]}" "${DOCS_TOOLS[@]}"
    cmake -DSOURCE_DIR="$ROOT" -DOUTPUT_DIR="$ROOT/build-docs" \
        -DQHELPGENERATOR=/usr/lib/qt6/libexec/qhelpgenerator -P docs/api/docs.cmake
}

command=${1:-}
shift || true

case "$command" in
test) run_test "$@" ;;
demo) run_demo ;;
fuzz) run_fuzz "$@" ;;
bench) run_bench "$@" ;;
package) run_package "$@" ;;
docs) run_docs ;;
*)
    echo "usage: ./build.sh test [--sanitize] [CTEST OPTIONS] | demo | fuzz [SECONDS] | bench [--quick] | package [--check] | docs" >&2
    exit 2
    ;;
esac
