# Sourced, not run: the release build's configuration, for packaging/release-build.sh and
# for the package tests' install check. Both build the same tree with these flags, so
# that with ccache the second build takes the first one's objects.
#
#   zelvane_release_options <source dir> <build dir>   fills zelvane_release_cmake_options

# The folder that holds both paths, for ccache's base_dir: with paths relative to it and
# no folder name in the hash, two build folders at the same depth share their objects.
zelvane_common_folder() {
    local a=$1/ b=$2/ prefix=""
    while [[ $a == */* && $b == */* ]]; do
        local head_a=${a%%/*} head_b=${b%%/*}
        [[ $head_a == "$head_b" ]] || break
        prefix+=$head_a/
        a=${a#*/}
        b=${b#*/}
    done
    prefix=${prefix%/}
    echo "${prefix:-/}"
}

zelvane_release_options() {
    local source_dir=$1 build_dir=$2
    # The flags Debian builds its packages with, bindnow included (hardening=+all); -g
    # keeps the types in the library for abidw, and cpack strips the packaged copies.
    # The debug information keeps the real source paths (no fixfilepath or
    # fixdebugpath, which would make them relative to the folder this runs in), so that
    # abidw can tell the types of the public headers from the others.
    export DEB_BUILD_MAINT_OPTIONS="hardening=+all reproducible=-fixfilepath,-fixdebugpath"
    # -femit-class-debug-always: GCC describes a class with a virtual table (every
    # QObject) only where its key function is, which for Q_OBJECT classes is moc's file;
    # abidw then cannot tie the functions of the class's other files to it and sees only
    # their symbols.
    local cxxflags ldflags
    cxxflags="$(dpkg-buildflags --get CXXFLAGS) $(dpkg-buildflags --get CPPFLAGS) -femit-class-debug-always"
    ldflags=$(dpkg-buildflags --get LDFLAGS)
    zelvane_release_cmake_options=(
        -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF -DZELVANE_BUILD_EXAMPLES=OFF
        "-DCMAKE_CXX_FLAGS=$cxxflags" "-DCMAKE_SHARED_LINKER_FLAGS=$ldflags"
        "-DCMAKE_MODULE_LINKER_FLAGS=$ldflags" "-DCMAKE_EXE_LINKER_FLAGS=$ldflags")
    if command -v ccache >/dev/null 2>&1; then
        zelvane_release_cmake_options+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
        CCACHE_BASEDIR=$(zelvane_common_folder "$(cd "$source_dir" && pwd -P)" \
            "$(mkdir -p "$build_dir" && cd "$build_dir" && pwd -P)")
        export CCACHE_BASEDIR
        export CCACHE_NOHASHDIR=1
    fi
}
