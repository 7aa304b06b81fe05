# Sourced by build.sh test --sanitize (ROOT, JOBS, ensure_packages, configure_and_build,
# run_tests are set).
#
# Builds the whole tree in build-sanitize/ with AddressSanitizer (which brings
# LeakSanitizer) and UndefinedBehaviorSanitizer, and runs every test under them. Any
# report fails the test that caused it (halt_on_error). Reports whose cause lies in
# Qt's own code are suppressed by tests/reliability/lsan.supp and ubsan.supp, where
# each entry says why; UBSan can only suppress what it may recover from, so the checks
# are compiled recoverable and halt at run time instead.

sanitize_flags="-fsanitize=address,undefined -fno-omit-frame-pointer"
# Without precompiled headers: in one run under these flags GCC did not take the test
# plugins' shared precompiled header and then stumbled over its include guard
# ("redefinition of class"); compiled without, the plugins build every time.
configure_and_build "$ROOT/build-sanitize" \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON \
    -DCMAKE_CXX_FLAGS="$sanitize_flags" \
    -DCMAKE_EXE_LINKER_FLAGS="-fsanitize=address,undefined" \
    -DCMAKE_SHARED_LINKER_FLAGS="-fsanitize=address,undefined" \
    -DCMAKE_MODULE_LINKER_FLAGS="-fsanitize=address,undefined"

# detect_leaks is on by default on Linux; said here so that nobody wonders.
export ASAN_OPTIONS="detect_leaks=1:abort_on_error=0:strict_string_checks=1:detect_stack_use_after_return=1:check_initialization_order=1"
export LSAN_OPTIONS="suppressions=$ROOT/tests/reliability/lsan.supp:print_suppressions=0"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1:suppressions=$ROOT/tests/reliability/ubsan.supp"
run_tests "$ROOT/build-sanitize"
