#!/usr/bin/env bash
# Fetches the documents, builds the benchmarks in Release (-O2) and runs
# them: one table per document, a summary, and the peak memory of a parse
# of the largest document. Works on a fresh Debian machine.
#
#   bench/run.sh [--quick] [--filter REGEX] [-- BENCHMARK_ARGS...]
#
#   --quick        five documents, short measurements, no repetitions
#   --filter RE    only the measurements whose name matches RE; names are
#                  MEASUREMENT/DOCUMENT, e.g. parse_fi/gtk3-gir, and
#                  MEASUREMENT is one of memcpy parse_fi parse_sax
#                  parse_expat parse_libxml2 write_fi write_xml
#                  convertToFIS convertToXML; besides, fixed/parse_fi and
#                  fixed/write_fi (costs of every document), many/parse_fi
#                  and many/write_fi (the small documents one after
#                  another), vocab/write_fi_with/DOCUMENT and the like (with
#                  and without a shared vocabulary). The memory report is
#                  skipped.
#   -- ARGS        passed on to the benchmark, e.g. --benchmark_repetitions=5
#
# The build goes to build-bench/ at the top of the tree (or $BENCH_BUILD_DIR).
# Progress goes to stderr, the tables to stdout.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/.." && pwd)
build=${BENCH_BUILD_DIR:-$root/build-bench}
quick=0
filter=""
extra=()
while [ $# -gt 0 ]; do
	case "$1" in
		--quick) quick=1 ;;
		--filter) filter="$2"; shift ;;
		--) shift; extra=("$@"); break ;;
		-h|--help) sed -n '2,22p' "$0" | sed 's/^# \{0,1\}//'; exit 0 ;;
		*) echo "run.sh: unknown argument $1" >&2; exit 2 ;;
	esac
	shift
done

ALL="soap-envelope soapbox-contacts osinfo-debian11 saml-metadata xkb-base docbook-titlepage-fo cldr-ru mime-freedesktop gl-registry gtk3-gir mame-vgmplay generated-100mb"
QUICK="soap-envelope xkb-base cldr-ru gl-registry gtk3-gir"

echo "== setting up, building in $build" >&2
bash "$root/.ci/setup" >&2
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS_RELEASE="-O2 -DNDEBUG" \
	-DFASTINFOSET_BUILD_TESTS=OFF -DFASTINFOSET_BUILD_EXAMPLES=OFF -DFASTINFOSET_BUILD_TOOLS=OFF \
	-DFASTINFOSET_BUILD_BENCH=ON >/dev/null
cmake --build "$build" -j2 --target fastinfoset-bench fastinfoset-profile fastinfoset-generate-document >&2
bin="$build/bench"

echo "== fetching documents" >&2
bash "$here/fetch-data.sh" --generator "$bin/generate-document" >&2

if [ $quick -eq 1 ]; then
	names=$QUICK
	args=(--benchmark_min_time=0.05)
else
	names=$ALL
	args=(--benchmark_min_time=0.5 --benchmark_repetitions=3 --benchmark_report_aggregates_only=true)
fi
[ -z "$filter" ] || args+=("--benchmark_filter=$filter")
docs=()
largest=""
for name in $names; do
	docs+=("$here/data/$name.xml")
	largest=$name
done

commit=$(git -C "$root" rev-parse --short HEAD 2>/dev/null || echo unknown)
if ! git -C "$root" diff --quiet HEAD -- src include 2>/dev/null; then commit="$commit+changes"; fi
echo "Fast Infoset benchmark, $(date -u '+%Y-%m-%d %H:%M UTC'), library $commit"
echo "Machine: $(grep -m1 'model name' /proc/cpuinfo | cut -d: -f2- | sed 's/^ *//'), $(nproc) CPUs, $(uname -sr)"
echo "Compiler: $(c++ --version | head -1), -O2; Google Benchmark $(dpkg-query -W -f='${Version}' libbenchmark-dev 2>/dev/null)," \
	"expat $(dpkg-query -W -f='${Version}' libexpat1-dev 2>/dev/null), libxml2 $(dpkg-query -W -f='${Version}' libxml2-dev 2>/dev/null)," \
	"POCO $(dpkg-query -W -f='${Version}' libpoco-dev 2>/dev/null)"
echo "Mode: $([ $quick -eq 1 ] && echo quick || echo full): ${args[*]} ${extra[*]:-}"
echo "Documents (name, source, version, octets, sha256 prefix):"
for name in $names; do
	grep "^$name.xml " "$here/data/SOURCES.txt" | sed 's/^/  /'
done

"$bin/fastinfoset-bench" "${args[@]}" "${extra[@]}" "${docs[@]}"

if [ -z "$filter" ]; then
	echo
	echo "== Peak memory of one parse of the largest document, $largest (peak resident set of the process)"
	"$bin/profile" encode "$here/data/$largest.xml" >/dev/null
	"$bin/profile" parse "$here/data/$largest.fi" 1 | sed 's/^/   /'
	for mode in sax expat libxml2; do
		"$bin/profile" $mode "$here/data/$largest.xml" 1 | sed 's/^/   /'
	done
fi
