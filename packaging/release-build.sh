#!/usr/bin/env bash
# Builds Zelvane as a release and its Debian packages.
#
#   release-build.sh <source dir> <build dir>
#
# Release, BUILD_TESTING=OFF (so the test-only exports are out), no examples, installed
# under /usr with Debian's hardening flags; cpack then writes one .deb per install
# component into <build dir>/packages. ./build.sh package uses build-package/; the
# package tests a folder of their own, whose library the ABI check reads too.
set -euo pipefail

if [[ $# -ne 2 ]]; then
    echo "usage: $0 <source dir> <build dir>" >&2
    exit 2
fi
source_dir=$1
build_dir=$2
cmake=${CMAKE:-cmake}
cpack=${CPACK:-$(dirname "$(command -v "$cmake")")/cpack}
generator=Ninja
command -v ninja >/dev/null 2>&1 || generator="Unix Makefiles"

source "$(dirname "${BASH_SOURCE[0]}")/release-flags.sh"
zelvane_release_options "$source_dir" "$build_dir"
"$cmake" -S "$source_dir" -B "$build_dir" -G "$generator" "${zelvane_release_cmake_options[@]}" \
    -DCMAKE_INSTALL_PREFIX=/usr -DZELVANE_DEBIAN_PACKAGES=ON
"$cmake" --build "$build_dir" -j "${JOBS:-2}"
rm -f "$build_dir"/packages/*.deb
(cd "$build_dir" && "$cpack" -G DEB)
