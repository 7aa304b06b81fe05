#!/usr/bin/env bash
# The ABI of Zelvane's shared libraries against the checked-in baselines in abi/.
#
#   abi.sh check  <release build dir> <source dir>
#   abi.sh update <release build dir> <source dir>
#
# <release build dir> is a build with BUILD_TESTING=OFF (packaging/release-build.sh
# makes one), so the symbols exported only for the project's own tests are not part of
# the ABI. Every shared library with a soname in it has a baseline
# abi/<soname>.abi, written by abidw (libabigail) from the library's debug information
# and restricted to the types of the public headers (include/zelvane/**).
#
# check: abidiff compares each library with its baseline. An incompatible change
# (a removed or changed exported function, a changed class layout or virtual table)
# fails, and so does a library without a baseline; a compatible change (an added
# function) is shown and passes. update: writes the baselines anew; RELEASING.md says
# when that is right and when the soname must change instead.
set -euo pipefail

if [[ $# -ne 3 || ($1 != check && $1 != update) ]]; then
    echo "usage: $0 check|update <release build dir> <source dir>" >&2
    exit 2
fi
mode=$1
build_dir=$(cd "$2" && pwd -P)
source_dir=$(cd "$3" && pwd -P)
abi_dir="$source_dir/abi"

for tool in abidw abidiff; do
    if ! command -v "$tool" >/dev/null 2>&1; then
        echo "$tool not found (Debian package abigail-tools): the ABI is not checked"
        exit 77
    fi
done

# The public headers: the source tree's and the generated ones (export, version).
header_options=()
while read -r dir; do
    header_options+=(--headers-dir "$dir")
done < <(find "$source_dir/include/zelvane" "$build_dir" -path "$build_dir/packages" -prune -o \
    -path "$build_dir/_CPack_Packages" -prune -o -type d -path '*/include/zelvane' -print | sort -u)

# Symbols outside namespace Zelvane are no part of the ABI (see the file).
suppressions=(--suppressions "$abi_dir/zelvane.abignore")

# The project's shared libraries with their sonames: "<soname> <file>".
libraries() {
    local file soname
    while read -r file; do
        soname=$(objdump -p "$file" 2>/dev/null | awk '$1 == "SONAME" { print $2 }')
        [[ -n $soname ]] && echo "$soname $file"
    done < <(find "$build_dir" \( -path "$build_dir/packages" -o -path "$build_dir/_CPack_Packages" \
        -o -path "$build_dir/CMakeFiles" \) -prune -o -type f -name 'lib*.so.*' -print | sort)
}

built=$(libraries)
failures=0
found=0
while read -r soname file; do
    [[ -n $soname ]] || continue
    found=$((found + 1))
    baseline="$abi_dir/$soname.abi"
    if [[ $mode == update ]]; then
        abidw --no-corpus-path --no-comp-dir-path --no-show-locs --drop-private-types \
            "${suppressions[@]}" "${header_options[@]}" --out-file "$baseline" "$file"
        echo "wrote abi/$soname.abi from $file"
        continue
    fi
    if [[ ! -f $baseline ]]; then
        echo "FAIL: $soname has no ABI baseline; a new library gets one with" >&2
        echo "      abi/abi.sh update <release build dir> <source dir> (see RELEASING.md)" >&2
        failures=$((failures + 1))
        continue
    fi
    status=0
    # The new library is read whole: with --drop-private-types abidiff also dropped the
    # exported classes' own layout and missed a data member added to ObjectPool.
    report=$(abidiff "${suppressions[@]}" "$baseline" "$file" 2>&1) || status=$?
    # abidiff's status is a bit set: 1 error, 2 usage error, 4 a change, 8 an
    # incompatible change.
    if ((status & 8)); then
        echo "FAIL: $soname: incompatible ABI change against abi/$soname.abi:" >&2
        echo "$report" >&2
        failures=$((failures + 1))
    elif ((status & 3)); then
        echo "FAIL: abidiff could not compare $soname (status $status):" >&2
        echo "$report" >&2
        failures=$((failures + 1))
    elif ((status & 4)); then
        echo "ok: $soname: compatible ABI change (update the baseline when releasing):"
        echo "$report"
    else
        echo "ok: $soname: the ABI of abi/$soname.abi"
    fi
done <<<"$built"

if ((found == 0)); then
    echo "FAIL: no shared library in $build_dir" >&2
    exit 1
fi
if [[ $mode == check ]]; then
    # A baseline without its library: a library was renamed or its soname changed.
    for baseline in "$abi_dir"/*.abi; do
        soname=$(basename "$baseline" .abi)
        if ! grep -q "^$soname " <<<"$built"; then
            echo "FAIL: abi/$soname.abi has no library $soname in $build_dir" >&2
            failures=$((failures + 1))
        fi
    done
fi
if ((failures > 0)); then
    exit 1
fi
