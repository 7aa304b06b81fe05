#!/usr/bin/env bash
# Zelvane's entry point on a fresh Debian 12 machine: installs what is missing, then
# builds the presets and targets of CMakePresets.json, which hold every build step, and
# calls the scripts of packaging/ for the Debian packages.
#
#   ./build.sh test [--sanitize|--tsan] [CTEST OPTIONS]   everything, then the tests
#           (e.g. -L unit): in build/, under ASan, LSan and UBSan in build-sanitize/ or
#           under ThreadSanitizer in build-tsan/
#   ./build.sh demo               what the demo loads, build/demo/*.png, its window
#   ./build.sh fuzz [SECONDS]     each fuzz target of build-fuzz/ for SECONDS (60)
#   ./build.sh bench [--quick] [OPTIONS]   start-up figures against raw Qt, with a CSV
#                                 and a scaling plot in build/bench-results/
#   ./build.sh package [--check]  Debian packages in build-package/packages, lintian;
#           --check builds the README's host and plugin against them (and, with
#           ZELVANE_CLEAN_ROOT=DIR, against them installed in a debootstrapped root)
#   ./build.sh docs               the API reference in build-docs/ (HTML and .qch)
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")"
ROOT=$(pwd)
JOBS=${JOBS:-2}

# Debian packages the build and the tests need. Checked one by one, so a machine that
# has them all installs nothing and needs no network. qt6-tools-dev and qt6-l10n-tools
# are Qt's Linguist tools, which compile the components' translations; the demo's German
# screenshot takes Qt's own texts (its standard buttons) from qt6-translations-l10n.
PACKAGES=(cmake ninja-build g++ pkgconf qt6-base-dev libgl-dev qt6-svg-dev
    qt6-declarative-dev qml6-module-qtquick qml6-module-qtquick-window
    qml6-module-qtqml-workerscript qml6-module-qtquick-controls qml6-module-qtquick-layouts
    qml6-module-qtquick-templates qml6-module-qtqml-models qml6-module-qttest
    fonts-dejavu-core dpkg-dev file abigail-tools doxygen qt6-tools-dev qt6-l10n-tools
    qt6-translations-l10n)

# What ./build.sh package needs beyond the build: lintian and the manual page writer.
PACKAGE_TOOLS=(lintian help2man)
# What ./build.sh docs needs beyond doxygen: Qt 6's qhelpgenerator, for the .qch file.
DOCS_TOOLS=(qt6-documentation-tools)
# ccache: the package tests build the tree twice with the release's flags (the install
# check and the release), and the second build takes the first one's objects.
PACKAGES+=(ccache)

ensure_packages() {
    local missing=() package sudo=()
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed" ||
            missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    echo "build.sh: installing ${missing[*]}"
    [ "$(id -u)" -eq 0 ] || sudo=(sudo)
    "${sudo[@]}" apt-get update -qq
    DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq --no-install-recommends \
        "${missing[@]}"
}

heading() { echo; echo "== $1"; }
fail() { echo "$1" >&2; exit "${2:-1}"; }

# The label that the first `-L <label>` or `--label-regex <label>` selects, when it
# names one label and nothing else; empty otherwise.
selected_label() {
    while [ $# -gt 1 ] && [ "$1" != -L ] && [ "$1" != --label-regex ]; do shift; done
    case "${2:-}" in unit | tools | examples | package) echo "$2" ;; esac
}

# --sanitize and --tsan name their presets.
run_test() {
    local preset=default ctest_options=() argument label=""
    for argument in "$@"; do
        case "$argument" in
        --sanitize | --tsan) preset=${argument#--} ;;
        *) ctest_options+=("$argument") ;;
        esac
    done
    ensure_packages "${PACKAGES[@]}"
    cmake --preset default
    if [ "$preset" != default ]; then
        # The sanitized tests load the test plugins of build/. With one label selected,
        # only what its tests need is built (zelvane_tests_<label>).
        cmake --build --preset test-plugins -j "$JOBS"
        cmake --preset "$preset"
        label=$(selected_label "${ctest_options[@]}")
    fi
    cmake --build --preset "$preset" -j "$JOBS" ${label:+--target "zelvane_tests_$label"}
    ctest --preset "$preset" -j "$JOBS" "${ctest_options[@]}"
}

run_demo() {
    ensure_packages "${PACKAGES[@]}"
    cmake --preset default
    cmake --build --preset demo -j "$JOBS"
    cmake --build --preset demo-screenshots -j "$JOBS"
    # The selection that the window shows and saves persists across runs, so a change
    # made in the plugins dialog shows in the next run's list.
    local demo="$ROOT/build/examples/host/zelvane-demo" out="$ROOT/build/demo"
    local settings="$out/zelvane-demo.ini"
    heading "zelvane-demo --list"
    "$demo" --list --settings "$settings"
    printf '\nScreenshots:\n'
    echo "  $out/editor.png           (the editor with every example plugin, File menu open)"
    echo "  $out/editor-focus.png     (the editor with Focus as its core plugin)"
    echo "  $out/plugins-dialog.png   (the plugins screen, --show plugins --select Spellcheck)"
    echo "  $out/plugins-qml.png      (the same in QML, --qml)"
    echo "  $out/plugins-de.png       (the plugins screen under LANGUAGE=de)"
    echo "Plugin selection of the demo: $settings"
    echo "Inspect the plugin folder:    $ROOT/build/tools/inspect/zelvane-inspect $ROOT/build/examples/plugins --iid org.zelvane.DocumentEditor/1.0 --settings $settings"
    echo
    if [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ]; then
        echo "Opening the demo window (Tools > Plugins… shows the settings screen)."
        "$demo" --settings "$settings" "$ROOT/examples/host/sample/welcome.txt"
    else
        echo "No display (\$DISPLAY and \$WAYLAND_DISPLAY are unset): not opening the window."
        echo "On a desktop: $demo --settings $settings [--qml]"
    fi
}

# Each target's corpus, build-fuzz/corpus/<target>, grows from run to run; an input that
# crashes a target is written to build-fuzz/findings/ and fails the step.
run_fuzz() {
    local seconds=${1:-60} fuzz_dir="$ROOT/build-fuzz" target
    case "$seconds" in
    '' | *[!0-9]*) fail "build.sh fuzz: SECONDS must be a number, not $seconds" 2 ;;
    esac
    # clang links -fsanitize=fuzzer from the compiler-rt package.
    ensure_packages cmake ninja-build clang libclang-rt-14-dev qt6-base-dev libgl-dev
    cmake --preset fuzz
    cmake --build --preset fuzz -j "$JOBS"
    for target in fuzz_metadata fuzz_scan; do
        echo "build.sh fuzz: running $target for $seconds s"
        "$fuzz_dir/tests/fuzz/$target" "$fuzz_dir/corpus/$target" \
            -max_total_time="$seconds" -print_final_stats=1 \
            -artifact_prefix="$fuzz_dir/findings/$target-"
    done
}

# The release build, its packages and their checks are packaging/'s; docs/packaging.md
# lists the lintian warnings that stay (an error fails the step).
run_package() {
    local check=0 argument packages="$ROOT/build-package/packages"
    for argument in "$@"; do
        [ "$argument" = --check ] || fail "build.sh package: unknown option $argument" 2
        check=1
    done
    ensure_packages "${PACKAGES[@]}" "${PACKAGE_TOOLS[@]}"
    JOBS=$JOBS bash packaging/release-build.sh "$ROOT" "$ROOT/build-package"
    heading lintian
    bash packaging/lintian-gate.sh "$packages" "$ROOT/build-package/lintian.txt" ||
        fail "build.sh package: lintian reports errors (exit status $?)"
    if [ "$check" -eq 1 ]; then
        heading "checking the packages"
        bash packaging/check-debs.sh "$packages" "$ROOT" "$ROOT/build-package"
        # A debootstrapped system needs root and a few hundred MB: only when asked for.
        if [ -n "${ZELVANE_CLEAN_ROOT:-}" ]; then
            ensure_packages debootstrap
            heading "installing the packages into $ZELVANE_CLEAN_ROOT"
            bash packaging/clean-root.sh "$packages" "$ROOT" "$ZELVANE_CLEAN_ROOT"
        fi
    fi
    printf '\nPackages:\n'
    printf '  %s\n' "$packages"/*.deb
}

command=${1:-}
shift || true
case "$command" in
test) run_test "$@" ;;
demo) run_demo ;;
fuzz) run_fuzz "$@" ;;
# zelvane-bench reaches into the library's internals, which only the test build exports.
# Options go to it (--only REGEX, --repetitions N); run it on an idle machine.
bench)
    ensure_packages "${PACKAGES[@]}"
    cmake --preset default
    cmake --build --preset default -j "$JOBS" --target zelvane-bench
    "$ROOT/build/benchmarks/zelvane-bench" --output "$ROOT/build/bench-results" "$@" ;;
# A Doxygen warning fails the step.
docs)
    ensure_packages "${PACKAGES[@]}" "${DOCS_TOOLS[@]}"
    cmake -DSOURCE_DIR="$ROOT" -DOUTPUT_DIR="$ROOT/build-docs" \
        -DQHELPGENERATOR=/usr/lib/qt6/libexec/qhelpgenerator -P docs/api/docs.cmake ;;
package) run_package "$@" ;;
*) fail "usage: ./build.sh test [--sanitize|--tsan] [CTEST OPTIONS] | demo | fuzz [SECONDS] | bench [--quick] | package [--check] | docs" 2 ;;
esac
