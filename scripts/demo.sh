# Sourced by build.sh demo (ROOT, JOBS, ensure_packages, configure_and_build are set).
echo "build.sh demo: the demo host is not available yet" >&2
exit 1
