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

# The flags Debian builds its packages with, bindnow included (hardening=+all); -g
# keeps the types in the library for abidw, and cpack strips the packaged copies.
# The debug information keeps the real source paths (no fixfilepath or fixdebugpath,
# which would make them relative to the folder this runs in), so that abidw can tell
# the types of the public headers from the others.
export DEB_BUILD_MAINT_OPTIONS="hardening=+all reproducible=-fixfilepath,-fixdebugpath"
# -femit-class-debug-always: GCC describes a class with a virtual table (every QObject)
# only where its key function is, which for Q_OBJECT classes is moc's file; abidw then
# cannot tie the functions of the class's other files to it and sees only their symbols.
cxxflags="$(dpkg-buildflags --get CXXFLAGS) $(dpkg-buildflags --get CPPFLAGS) -femit-class-debug-always"
ldflags=$(dpkg-buildflags --get LDFLAGS)

"$cmake" -S "$source_dir" -B "$build_dir" -G "$generator" \
    -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF -DZELVANE_BUILD_EXAMPLES=OFF \
    -DCMAKE_INSTALL_PREFIX=/usr -DZELVANE_DEBIAN_PACKAGES=ON \
    "-DCMAKE_CXX_FLAGS=$cxxflags" "-DCMAKE_SHARED_LINKER_FLAGS=$ldflags" \
    "-DCMAKE_MODULE_LINKER_FLAGS=$ldflags" "-DCMAKE_EXE_LINKER_FLAGS=$ldflags"
"$cmake" --build "$build_dir" -j "${JOBS:-2}"
rm -f "$build_dir"/packages/*.deb
(cd "$build_dir" && "$cpack" -G DEB)
