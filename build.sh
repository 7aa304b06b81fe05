#!/usr/bin/env bash
# Zelvane's entry point on a fresh Debian 12 machine.
#
#   ./build.sh test [--sanitize]   install what is missing, build, run every test
#   ./build.sh demo                build and run the demo host
#   ./build.sh fuzz [SECONDS]      build the fuzz targets with clang and run each
#
# Build folders: build/ (plain); the sanitizer, demo and fuzz steps live in scripts/.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")"
ROOT=$(pwd)
JOBS=${JOBS:-2}

# Debian packages the build and the tests need. Checked one by one, so a machine that
# has them all installs nothing and needs no network.
PACKAGES=(
    cmake ninja-build g++ pkgconf
    qt6-base-dev libgl-dev
    qt6-declarative-dev qml6-module-qtquick qml6-module-qtquick-window
    qml6-module-qtqml-workerscript
    fonts-dejavu-core
)

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

configure_and_build() {
    local dir=$1
    shift
    cmake -S "$ROOT" -B "$dir" -G Ninja "$@"
    cmake --build "$dir" -j "$JOBS"
}

run_tests() {
    local dir=$1
    ctest --test-dir "$dir" --output-on-failure -j "$JOBS" --timeout 300
}

command=${1:-}
shift || true

case "$command" in
test)
    sanitize=0
    for argument in "$@"; do
        case "$argument" in
        --sanitize) sanitize=1 ;;
        *) echo "build.sh test: unknown option $argument" >&2; exit 2 ;;
        esac
    done
    ensure_packages "${PACKAGES[@]}"
    if [ "$sanitize" -eq 1 ]; then
        source "$ROOT/scripts/sanitize.sh"
        exit 0
    fi
    configure_and_build "$ROOT/build"
    run_tests "$ROOT/build"
    ;;
demo)
    ensure_packages "${PACKAGES[@]}"
    source "$ROOT/scripts/demo.sh"
    ;;
fuzz)
    source "$ROOT/scripts/fuzz.sh"
    ;;
*)
    echo "usage: ./build.sh test [--sanitize] | demo | fuzz [SECONDS]" >&2
    exit 2
    ;;
esac
