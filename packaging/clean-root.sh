#!/usr/bin/env bash
# Installs Zelvane's Debian packages into a fresh Debian 12 system and builds the
# README's host and plugin there, against the installed packages alone.
#
#   sudo packaging/clean-root.sh <folder of .deb files> <source dir> <root folder>
#
# Makes <root folder> with debootstrap (minbase, bookworm) unless it holds a system
# already, then inside it: apt-get install ./*.deb but zelvane-tools (which brings in
# their Depends) and the compiler, builds examples/readme/ with find_package(Zelvane) and
# with pkg-config, runs the host over its plugin, and builds packaging/safestart-host/,
# whose SafeStart must find its trial helper without the tools; then installs
# zelvane-tools and runs zelvane-inspect --trial over the same plugin. Needs root, debootstrap and the
# network; it downloads a few hundred MB, so CI does not run it (the test package_debs
# checks an unpacked copy instead).
set -euo pipefail

if [[ $# -ne 3 ]]; then
    echo "usage: $0 <folder of .deb files> <source dir> <root folder>" >&2
    exit 2
fi
debs_dir=$(cd "$1" && pwd -P)
source_dir=$(cd "$2" && pwd -P)
root=$3
mirror=${DEBIAN_MIRROR:-http://deb.debian.org/debian}

if [[ ! -x $root/usr/bin/apt-get ]]; then
    debootstrap --variant=minbase bookworm "$root" "$mirror"
fi
cp /etc/resolv.conf "$root/etc/resolv.conf"
rm -rf "$root/zelvane" && mkdir -p "$root/zelvane/debs"
cp "$debs_dir"/*.deb "$root/zelvane/debs/"
cp -r "$source_dir/examples/readme" "$root/zelvane/readme"
cp -r "$source_dir/packaging/safestart-host" "$root/zelvane/safestart-host"
mountpoint -q "$root/proc" || mount -t proc proc "$root/proc"
trap 'umount "$root/proc" 2>/dev/null || true' EXIT

chroot "$root" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root \
    DEBIAN_FRONTEND=noninteractive /bin/bash -euo pipefail -c '
cd /zelvane
apt-get update -qq
libraries=()
for deb in debs/*.deb; do
    [[ $(dpkg-deb -f "$deb" Package) == zelvane-tools ]] || libraries+=("./$deb")
done
apt-get install -y -qq --no-install-recommends "${libraries[@]}" cmake make g++ pkgconf >install.log
for deb in "${libraries[@]}"; do
    dpkg-query -W -f="\${Package} \${Version} \${Status}\n" "$(dpkg-deb -f "$deb" Package)"
done

echo "== find_package(Zelvane)"
cmake -S readme/host -B host -DCMAKE_BUILD_TYPE=Release >host.log
cmake --build host >>host.log
cmake -S readme/plugin -B plugin -DCMAKE_BUILD_TYPE=Release >plugin.log
cmake --build plugin >>plugin.log
grep "^Zelvane_DIR" host/CMakeCache.txt
mkdir -p host/plugins && cp plugin/libgreeter.so host/plugins/
QT_QPA_PLATFORM=offscreen host/myeditor --help | grep -- --greeting
status=0
QT_QPA_PLATFORM=offscreen host/myeditor --greeting "" || status=$?
echo "myeditor --greeting \"\" exited with $status"
test "$status" -eq 1

echo "== pkg-config zelvane"
pkg-config --modversion zelvane
mkdir -p pc/plugins && cp readme/plugin/greeter.cpp readme/plugin/greeter.json pc/
(cd pc && /usr/lib/qt6/libexec/moc greeter.cpp -o greeter.moc)
g++ -std=c++17 -fPIC -shared -o pc/plugins/libgreeter.so pc/greeter.cpp -Ipc \
    $(pkg-config --cflags --libs zelvane)
g++ -std=c++17 -fPIC -o pc/myeditor readme/host/main.cpp $(pkg-config --cflags --libs zelvane Qt6Widgets)
QT_QPA_PLATFORM=offscreen pc/myeditor --help | grep -- --greeting
status=0
QT_QPA_PLATFORM=offscreen pc/myeditor --greeting "" || status=$?
echo "myeditor --greeting \"\" exited with $status"
test "$status" -eq 1

echo "== SafeStart without zelvane-tools"
cmake -S safestart-host -B safestart -DCMAKE_BUILD_TYPE=Release >safestart.log
cmake --build safestart >>safestart.log
mkdir -p safestart/plugins && cp plugin/libgreeter.so safestart/plugins/
output=$(cd safestart && QT_QPA_PLATFORM=offscreen ./safestart)
echo "$output"
# /lib is /usr/lib on a merged-/usr system, and the library may be found by either.
grep -Eq "^helper: (/usr)?/lib/[^/]+/zelvane/zelvane-trial$" <<<"$output"
grep -q "^culprit: Greeter: failed in initialize()" <<<"$output"

echo "== zelvane-tools"
apt-get install -y -qq --no-install-recommends ./debs/zelvane-tools_*.deb >>install.log
dpkg-query -W -f="\${Package} \${Version} \${Status}\n" zelvane-tools
status=0
zelvane-inspect host/plugins --iid org.example.MyEditor/1.0 --trial --arg greeting= || status=$?
echo "zelvane-inspect --trial exited with $status"
test "$status" -eq 1
echo "clean root: every check passed"
'
