#!/usr/bin/env bash
# Checks Zelvane's Debian packages the way a host author meets them.
#
#   check-debs.sh <folder of .deb files> <source dir> <work dir>
#
# Unpacks every package (dpkg-deb -x) into one scratch root, checks what the packages
# hold and declare, then builds the README's host and plugin (examples/readme/) against
# that root alone, once through find_package(Zelvane) and once through pkg-config, and
# runs each host over its plugin: the host lists the option that the plugin declares,
# and loading it runs the plugin's initialize(), which refuses an empty greeting.
#
# ./build.sh package --check runs it over build-package/packages; the test
# package_debs (label package) over packages it makes itself.
set -euo pipefail

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

if [[ $# -ne 3 ]]; then
    echo "usage: $0 <folder of .deb files> <source dir> <work dir>" >&2
    exit 2
fi
debs_dir=$(cd "$1" && pwd -P)
source_dir=$(cd "$2" && pwd -P)
mkdir -p "$3"
work=$(mktemp -d "$(cd "$3" && pwd -P)/debs.XXXXXX")
trap 'rm -rf "$work"' EXIT
root="$work/root"
readme="$source_dir/examples/readme"
multiarch=$(dpkg-architecture -qDEB_HOST_MULTIARCH 2>/dev/null || gcc -print-multiarch)
libdir="$root/usr/lib/$multiarch"
generator=${CMAKE_GENERATOR:-Ninja}
command -v ninja >/dev/null 2>&1 || generator="Unix Makefiles"

shopt -s nullglob
debs=("$debs_dir"/*.deb)
shopt -u nullglob
if [[ ${#debs[@]} -eq 0 ]]; then
    echo "FAIL: no .deb file in $debs_dir" >&2
    exit 1
fi

echo "== the packages"
declare -A owner=()
for deb in "${debs[@]}"; do
    package=$(dpkg-deb -f "$deb" Package)
    for field in Version Section Description; do
        [[ -n $(dpkg-deb -f "$deb" "$field") ]] || fail "$package has no $field"
    done
    # Two packages that ship the same file cannot be installed together.
    while read -r path; do
        if [[ -n ${owner[$path]:-} ]]; then
            fail "$path is in both ${owner[$path]} and $package"
        fi
        owner[$path]=$package
    done < <(dpkg-deb --fsys-tarfile "$deb" | tar -t | grep -v '/$')
    if [[ -n ${owner[./usr/share/doc/$package/copyright]:-} ]]; then
        pass "$package $(dpkg-deb -f "$deb" Version): $(dpkg-deb -f "$deb" Depends)"
    else
        fail "$package has no usr/share/doc/$package/copyright"
    fi
    dpkg-deb -x "$deb" "$root"
done

# The runtime library's package says which package provides the soname, so that
# dpkg-shlibdeps of a host's package depends on it.
runtime=$(printf '%s\n' "${debs[@]}" | grep '/libzelvane1_' || true)
if [[ -n $runtime ]]; then
    shlibs=$(dpkg-deb --ctrl-tarfile "$runtime" | tar -xO ./shlibs 2>/dev/null || true)
    if [[ $shlibs == "libZelvane 1 libzelvane1 "* ]]; then
        pass "shlibs: $shlibs"
    else
        fail "libzelvane1's shlibs file is '$shlibs'"
    fi
else
    fail "no libzelvane1 package"
fi
development=$(printf '%s\n' "${debs[@]}" | grep '/libzelvane-dev_' || true)
if [[ -n $development && $(dpkg-deb -f "$development" Depends) == *"libzelvane1 (= "* ]]; then
    pass "libzelvane-dev depends on its libzelvane1"
else
    fail "libzelvane-dev does not depend on libzelvane1 (= version)"
fi

# Every packaged component is found by find_package(Zelvane COMPONENTS ...).
components=()
for deb in "${debs[@]}"; do
    case $(dpkg-deb -f "$deb" Package) in
    libzelvanediagnostics1) components+=(Diagnostics) ;;
    libzelvanewidgets1) components+=(Widgets) ;;
    qml6-module-zelvane) components+=(Quick) ;;
    esac
done
if [[ ${#components[@]} -gt 0 ]]; then
    mkdir -p "$work/components"
    {
        echo "cmake_minimum_required(VERSION 3.21)"
        echo "project(components LANGUAGES CXX)"
        echo "find_package(Zelvane REQUIRED COMPONENTS ${components[*]})"
        for component in "${components[@]}"; do
            echo "if(NOT TARGET Zelvane::$component)"
            echo "    message(FATAL_ERROR \"no target Zelvane::$component\")"
            echo "endif()"
        done
    } >"$work/components/CMakeLists.txt"
    if cmake -S "$work/components" -B "$work/components-build" -DCMAKE_PREFIX_PATH="$root/usr" \
        -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF >"$work/components.log" 2>&1; then
        pass "find_package(Zelvane COMPONENTS ${components[*]}) and its targets"
    else
        cat "$work/components.log"
        fail "find_package(Zelvane COMPONENTS ${components[*]})"
    fi
fi

# A host's run: the plugins are in plugins/ beside the executable. Prints what it says.
run_host() {
    QT_QPA_PLATFORM=offscreen "$@" 2>&1
}

# Runs a host over the greeter plugin: --help lists the plugin's option, and an empty
# greeting makes the plugin's initialize() fail, which loadPlugins() reports.
check_host() {
    local how=$1 host=$2
    local used
    used=$(ldd "$host" | awk '$1 == "libZelvane.so.1" { print $3 }')
    if [[ $(realpath -m "$used") == "$libdir"/libZelvane.so.1* ]]; then
        pass "$how: the host uses the unpacked library"
    else
        fail "$how: the host uses '$used', not $libdir/libZelvane.so.1"
    fi
    local output status=0
    output=$(run_host "$host" --help) || status=$?
    if [[ $status -eq 0 && $output =~ --greeting\ \<text\>\ +What\ to\ say ]]; then
        pass "$how: the host lists the plugin's option --greeting"
    else
        fail "$how: 'myeditor --help' exited with $status and printed: $output"
    fi
    status=0
    output=$(run_host "$host" --greeting "") || status=$?
    local expected='The plugin "Greeter" failed to initialize. Error: "the greeting is empty"'
    if [[ $status -eq 1 && $output == *"$expected"* ]]; then
        pass "$how: the host loads the plugin, whose initialize() refuses an empty greeting"
    else
        fail "$how: 'myeditor --greeting \"\"' exited with $status and printed: $output"
    fi
}

echo "== the README's host and plugin, with find_package(Zelvane)"
configure() {
    cmake -S "$1" -B "$2" -G "$generator" -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_PREFIX_PATH="$root/usr" -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF
}
if configure "$readme/host" "$work/host" >"$work/host.log" 2>&1 &&
    cmake --build "$work/host" >>"$work/host.log" 2>&1 &&
    configure "$readme/plugin" "$work/plugin" >"$work/plugin.log" 2>&1 &&
    cmake --build "$work/plugin" >>"$work/plugin.log" 2>&1; then
    found=$(sed -n 's/^Zelvane_DIR:PATH=//p' "$work/host/CMakeCache.txt")
    if [[ $found == "$libdir/cmake/Zelvane" ]]; then
        pass "find_package(Zelvane) found $found"
    else
        fail "find_package(Zelvane) found '$found', not the unpacked package"
    fi
    mkdir -p "$work/host/plugins"
    cp "$work/plugin/libgreeter.so" "$work/host/plugins/"
    check_host find_package "$work/host/myeditor"
else
    cat "$work/host.log" "$work/plugin.log" 2>/dev/null
    fail "building the README's host and plugin with find_package(Zelvane)"
fi

echo "== the README's host and plugin, with pkg-config"
export PKG_CONFIG_PATH="$libdir/pkgconfig"
moc=$(pkg-config --variable=libexecdir Qt6Core 2>/dev/null)/moc
[[ -x $moc ]] || moc=/usr/lib/qt6/libexec/moc
mkdir -p "$work/pc/plugins"
cp "$readme/plugin/greeter.cpp" "$readme/plugin/greeter.json" "$work/pc/"
if cflags=$(pkg-config --cflags zelvane Qt6Widgets) && libs=$(pkg-config --libs zelvane Qt6Widgets) &&
    (cd "$work/pc" && "$moc" greeter.cpp -o greeter.moc) >"$work/pc.log" 2>&1 &&
    # shellcheck disable=SC2086 # the flags are words
    g++ -std=c++17 -fPIC -shared -o "$work/pc/plugins/libgreeter.so" "$work/pc/greeter.cpp" \
        -I"$work/pc" $cflags $libs >>"$work/pc.log" 2>&1 &&
    # shellcheck disable=SC2086
    g++ -std=c++17 -fPIC -o "$work/pc/myeditor" "$readme/host/main.cpp" $cflags $libs \
        -Wl,-rpath,"$(pkg-config --variable=libdir zelvane)" >>"$work/pc.log" 2>&1; then
    pass "pkg-config: zelvane $(pkg-config --modversion zelvane), $(pkg-config --libs zelvane)"
    check_host pkg-config "$work/pc/myeditor"
    # The version header agrees with the package and its macros compile.
    cat >"$work/pc/version.cpp" <<'CPP'
#include <zelvane/zelvaneversion.h>

#include <cstdio>

static_assert(ZELVANE_VERSION >= ZELVANE_VERSION_CHECK(1, 0, 0), "a 1.x release");
static_assert(ZELVANE_VERSION < ZELVANE_VERSION_CHECK(ZELVANE_VERSION_MAJOR + 1, 0, 0), "");

int main()
{
    std::printf("%s %d.%d.%d\n", ZELVANE_VERSION_STR, ZELVANE_VERSION_MAJOR,
                ZELVANE_VERSION_MINOR, ZELVANE_VERSION_PATCH);
}
CPP
    version=$(pkg-config --modversion zelvane)
    # shellcheck disable=SC2086
    if g++ -std=c++17 -o "$work/pc/version" "$work/pc/version.cpp" $cflags >>"$work/pc.log" 2>&1 &&
        [[ $("$work/pc/version") == "$version $version" ]]; then
        pass "zelvane/zelvaneversion.h says $version"
    else
        cat "$work/pc.log"
        fail "zelvane/zelvaneversion.h does not say $version"
    fi
else
    cat "$work/pc.log"
    fail "building the README's host and plugin with pkg-config"
fi

echo "== SafeStart from the Diagnostics package, without the tools"
# A host that ships SafeStart installs libzelvanediagnostics1, not zelvane-tools: the
# trial helper must be in the Diagnostics package, where the library finds it beside
# itself, and no release library may name a folder of the machine that built it.
diagnostics=$(printf '%s\n' "${debs[@]}" | grep '/libzelvanediagnostics1_' || true)
if [[ -z $diagnostics ]]; then
    fail "no libzelvanediagnostics1 package"
elif ! grep -q "\./usr/lib/$multiarch/zelvane/zelvane-trial\$" <<<"$(dpkg-deb -c "$diagnostics")"; then
    fail "libzelvanediagnostics1 does not hold usr/lib/$multiarch/zelvane/zelvane-trial"
else
    pass "libzelvanediagnostics1 holds usr/lib/$multiarch/zelvane/zelvane-trial"
    if grep -q "\./usr/share/zelvane/translations/zelvane_de\.qm\$" <<<"$(dpkg-deb -c "$diagnostics")"; then
        pass "libzelvanediagnostics1 holds the German catalogue"
    else
        fail "libzelvanediagnostics1 does not hold usr/share/zelvane/translations/zelvane_de.qm"
    fi
    safe_root="$work/safe-root"
    for deb in "${debs[@]}"; do
        case $(dpkg-deb -f "$deb" Package) in
        libzelvane1 | libzelvane-dev | libzelvanediagnostics1) dpkg-deb -x "$deb" "$safe_root" ;;
        esac
    done
    # Qt's string literals are UTF-16: both encodings are searched (-e l).
    for library in "$safe_root/usr/lib/$multiarch"/lib*.so.1 \
        "$safe_root/usr/lib/$multiarch/zelvane/zelvane-trial"; do
        if grep -qF -e "$source_dir" -e "$debs_dir" \
            <<<"$(strings -a "$library"; strings -a -e l "$library")"; then
            fail "$(basename "$library") names a folder of the build machine"
        fi
    done
    # After a start that never finished, SafeStart tries the plugins in its helper, with
    # the arguments of that start: the greeter's initialize() refuses an empty greeting.
    if cmake -S "$source_dir/packaging/safestart-host" -B "$work/safestart-build" -G "$generator" \
        -DCMAKE_BUILD_TYPE=Release -DCMAKE_PREFIX_PATH="$safe_root/usr" \
        -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF >"$work/safestart.log" 2>&1 &&
        cmake --build "$work/safestart-build" >>"$work/safestart.log" 2>&1; then
        mkdir -p "$work/safestart-build/plugins"
        cp "$work/plugin/libgreeter.so" "$work/safestart-build/plugins/" 2>/dev/null ||
            cp "$work/pc/plugins/libgreeter.so" "$work/safestart-build/plugins/"
        status=0
        output=$(cd "$work/safestart-build" &&
            LD_LIBRARY_PATH="$safe_root/usr/lib/$multiarch" QT_QPA_PLATFORM=offscreen \
                ./safestart 2>&1) || status=$?
        helper="helper: $safe_root/usr/lib/$multiarch/zelvane/zelvane-trial"
        if [[ $status -eq 0 && $output == *"$helper"* &&
            $output == *"culprit: Greeter: failed in initialize()"*"the greeting is empty"* ]]; then
            pass "SafeStart finds its helper in the Diagnostics package and names the culprit"
        else
            fail "SafeStart without the tools exited with $status and printed: $output"
        fi
    else
        cat "$work/safestart.log"
        fail "building a SafeStart host against the Diagnostics package"
    fi
fi

if ((failures > 0)); then
    echo "$failures check(s) failed" >&2
    exit 1
fi
echo "every check passed"
