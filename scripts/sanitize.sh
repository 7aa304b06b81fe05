# Sourced by build.sh test --sanitize (ROOT, JOBS, ensure_packages, configure_and_build,
# run_tests are set).
#
# Builds the tree in build-sanitize/ with AddressSanitizer (which brings LeakSanitizer)
# and UndefinedBehaviorSanitizer, and runs the tests under them. Any report fails the
# test that caused it (halt_on_error). Reports whose cause lies in Qt's own code are
# suppressed by tests/reliability/lsan.supp and ubsan.supp, where each entry says why;
# UBSan can only suppress what it may recover from, so the checks are compiled
# recoverable and halt at run time instead.
#
# ZELVANE_SANITIZE_TESTS=<ctest regex> limits the run to the matching tests and builds
# only their executables, not the whole tree.

sanitize_dir="$ROOT/build-sanitize"
sanitize_flags="-fsanitize=address,undefined -fno-omit-frame-pointer"
sanitize_subset=${ZELVANE_SANITIZE_TESTS:-}
if [ -n "$sanitize_subset" ]; then
    sanitize_examples=OFF
else
    sanitize_examples=ON
fi

# The tests load the test plugins of the plain build in build/ (made here if missing):
# a plugin is only a fixture, and building every one again under sanitizers would be
# most of this run. A plugin binds to the sanitized library that the test process holds.
plain_dir="$ROOT/build"
if [ ! -f "$plain_dir/CMakeCache.txt" ]; then
    cmake -S "$ROOT" -B "$plain_dir" -G Ninja
fi
cmake --build "$plain_dir" -j "$JOBS" --target zelvane_test_plugins

# Without precompiled headers: in one run under these flags GCC did not take the test
# plugins' shared precompiled header and then stumbled over its include guard
# ("redefinition of class"); compiled without, the plugins build every time.
cmake -S "$ROOT" -B "$sanitize_dir" -G Ninja \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON \
    -DZELVANE_BUILD_EXAMPLES="$sanitize_examples" \
    -DZELVANE_TEST_PREBUILT_PLUGIN_DIR="$plain_dir/tests/plugins" \
    -DCMAKE_CXX_FLAGS="$sanitize_flags" \
    -DCMAKE_EXE_LINKER_FLAGS="-fsanitize=address,undefined" \
    -DCMAKE_SHARED_LINKER_FLAGS="-fsanitize=address,undefined" \
    -DCMAKE_MODULE_LINKER_FLAGS="-fsanitize=address,undefined"

if [ -n "$sanitize_subset" ]; then
    # The executables behind the selected tests, from their commands (ctest names them
    # as missing until they are built).
    mapfile -t sanitize_targets < <(ctest --test-dir "$sanitize_dir" -N -V -R "$sanitize_subset" \
        | sed -n -e 's/^[0-9]*: Test command: \([^ ]*\).*/\1/p' \
            -e 's/^Could not find executable \(.*\)$/\1/p' \
        | xargs -r -n1 basename | sort -u)
    if [ ${#sanitize_targets[@]} -eq 0 ]; then
        echo "build.sh test --sanitize: no test matches $sanitize_subset" >&2
        exit 1
    fi
    cmake --build "$sanitize_dir" -j "$JOBS" --target "${sanitize_targets[@]}"
else
    cmake --build "$sanitize_dir" -j "$JOBS"
fi

# detect_leaks is on by default on Linux; said here so that nobody wonders.
export ASAN_OPTIONS="detect_leaks=1:abort_on_error=0:strict_string_checks=1:detect_stack_use_after_return=1:check_initialization_order=1"
export LSAN_OPTIONS="suppressions=$ROOT/tests/reliability/lsan.supp:print_suppressions=0"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1:suppressions=$ROOT/tests/reliability/ubsan.supp"
if [ -n "$sanitize_subset" ]; then
    ctest --test-dir "$sanitize_dir" --output-on-failure -j "$JOBS" --timeout 300 -R "$sanitize_subset"
else
    run_tests "$sanitize_dir"
fi
