#!/usr/bin/env bash
# Runs lintian over Zelvane's Debian packages: an error fails, warnings and notes are
# listed (docs/packaging.md says why each one that it reports stays).
#
#   lintian-gate.sh <folder of .deb files> <report file>
#
# Prints the report, which it also keeps in <report file>, and exits with lintian's own
# status: 0 when no package has an error. ./build.sh package runs it over
# build-package/packages and keeps the report in build-package/lintian.txt.
set -euo pipefail

if [[ $# -ne 2 ]]; then
    echo "usage: $0 <folder of .deb files> <report file>" >&2
    exit 2
fi
debs=("$1"/*.deb)
report=$2

status=0
lintian --fail-on error --display-info --pedantic "${debs[@]}" >"$report" 2>&1 || status=$?
# lintian also warns that it runs as root, which a CI machine does.
grep -v '^running with root privileges is not recommended!$' "$report" || true
exit "$status"
