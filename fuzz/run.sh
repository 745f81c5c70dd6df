#!/usr/bin/env bash
# Runs one fuzz target for a number of seconds:
#
#   fuzz/run.sh TARGET SECONDS [LIBFUZZER-OPTION...]
#
# TARGET is ParseFuzzer, StreamFuzzer, PrimitiveFuzzer, TypedValueFuzzer or
# RoundTripFuzzer. The first run configures and builds build-fuzz/ with
# Clang, AddressSanitizer and UndefinedBehaviorSanitizer (FUZZ_BUILD_DIR
# names another build directory). The target starts from fuzz/corpus/ and
# keeps what it finds new in build-fuzz/fuzz-corpus/TARGET/; an input that
# fails is written to build-fuzz/fuzz-findings/ and the script exits with
# libFuzzer's status, not 0.
set -euo pipefail
if [ $# -lt 2 ]; then
	echo "usage: $0 TARGET SECONDS [LIBFUZZER-OPTION...]" >&2
	exit 2
fi
target=$1
seconds=$2
shift 2
source_dir="$(cd "$(dirname "$0")/.." && pwd)"
build_dir="${FUZZ_BUILD_DIR:-$source_dir/build-fuzz}"

if [ ! -f "$build_dir/CMakeCache.txt" ]; then
	CC=clang CXX=clang++ cmake -S "$source_dir" -B "$build_dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
		-DFASTINFOSET_BUILD_FUZZ=ON -DFASTINFOSET_BUILD_TESTS=OFF -DFASTINFOSET_BUILD_EXAMPLES=OFF
fi
cmake --build "$build_dir" -j2 --target "$target"

work="$build_dir/fuzz-corpus/$target"
findings="$build_dir/fuzz-findings"
mkdir -p "$work" "$findings"
# The limits of the established XML fuzzing setups: 2560 MB, 25 s per input.
exec "$build_dir/fuzz/$target" "$work" "$source_dir/fuzz/corpus" \
	-dict="$source_dir/fuzz/FastInfoset.dict" \
	-max_total_time="$seconds" -timeout=25 -rss_limit_mb=2560 \
	-artifact_prefix="$findings/$target-" -print_final_stats=1 "$@"
