#!/usr/bin/env bash
# Zelvane's entry point on a fresh Debian 12 machine.
#
#   ./build.sh test [--sanitize]   install what is missing, build, run every test
#   ./build.sh demo                build and run the demo host
#
# Build folders: build/ (plain), build-sanitize/ (ASan, UBSan, LSan).
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
        echo "build.sh test --sanitize: not available yet" >&2
        exit 1
    fi
    configure_and_build "$ROOT/build"
    run_tests "$ROOT/build"
    ;;
demo)
    echo "build.sh demo: the demo host is not available yet" >&2
    exit 1
    ;;
*)
    echo "usage: ./build.sh test [--sanitize] | demo" >&2
    exit 2
    ;;
esac
