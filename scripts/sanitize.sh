# Sourced by build.sh test --sanitize (ROOT, JOBS, ensure_packages, configure_and_build,
# run_tests are set).
echo "build.sh test --sanitize: not available yet" >&2
exit 1
