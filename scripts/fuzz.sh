# Sourced by build.sh fuzz [SECONDS] (ROOT, JOBS, ensure_packages, configure_and_build
# are set; the remaining arguments are in "$@").
#
# Builds the libFuzzer targets of tests/fuzz with clang in build-fuzz/ and runs each
# for SECONDS (default 60), one after the other, in one process each. The corpus is
# kept in build-fuzz/corpus/<target> and grows from run to run; an input that crashes
# a target is written to build-fuzz/findings/ and fails the step.

fuzz_seconds=${1:-60}
case "$fuzz_seconds" in
'' | *[!0-9]*) echo "build.sh fuzz: SECONDS must be a number, not $fuzz_seconds" >&2; exit 2 ;;
esac

# clang links -fsanitize=fuzzer from the compiler-rt package.
ensure_packages cmake ninja-build clang libclang-rt-14-dev qt6-base-dev libgl-dev

fuzz_dir="$ROOT/build-fuzz"
cmake -S "$ROOT/tests/fuzz" -B "$fuzz_dir" -G Ninja \
    -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build "$fuzz_dir" -j "$JOBS"

# Seeds: every metadata file of the tests, raw and wrapped the way metaData() returns
# it, and real plugin files for the scanning target.
metadata_corpus="$fuzz_dir/corpus/fuzz_metadata"
scan_corpus="$fuzz_dir/corpus/fuzz_scan"
mkdir -p "$metadata_corpus" "$scan_corpus" "$fuzz_dir/findings"
for json in "$ROOT"/tests/*/plugins/*.json; do
    seed=$(basename "$(dirname "$(dirname "$json")")")-$(basename "$json" .json)
    cp "$json" "$metadata_corpus/$seed.json"
    {
        printf '{"IID":"org.zelvane.Test/1.0","className":"TestPlugin","debug":false,"MetaData":'
        cat "$json"
        printf '}'
    } >"$metadata_corpus/$seed-wrapped.json"
done
cp "$fuzz_dir"/seeds/*.so "$scan_corpus/"
# Regression inputs found by earlier runs start every run.
if [ -d "$ROOT/tests/fuzz/regressions" ]; then
    cp "$ROOT"/tests/fuzz/regressions/metadata-* "$metadata_corpus/" 2>/dev/null || true
    cp "$ROOT"/tests/fuzz/regressions/scan-* "$scan_corpus/" 2>/dev/null || true
fi

for target in fuzz_metadata fuzz_scan; do
    echo "build.sh fuzz: running $target for $fuzz_seconds s"
    "$fuzz_dir/$target" "$fuzz_dir/corpus/$target" \
        -max_total_time="$fuzz_seconds" -print_final_stats=1 \
        -artifact_prefix="$fuzz_dir/findings/$target-"
done
