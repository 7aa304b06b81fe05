# Sourced by build.sh fuzz [SECONDS] (ROOT, JOBS, ensure_packages, configure_and_build
# are set; the remaining arguments are in "$@").
echo "build.sh fuzz: not available yet" >&2
exit 1
