#!/usr/bin/env bash
# Sets up, builds and runs every test, in five stages: plain (gcc), sanitize (clang with AddressSanitizer and
# UndefinedBehaviorSanitizer), fuzz (the fuzz targets of the sanitize build), tsan (ThreadSanitizer on the
# process layer) and windows (the cross build under Wine). Every build goes through the shared compiler cache
# (Tools/cache.sh). Each stage prints its wall time at its end, and the total comes last.
# Usage: Tools/test.sh [--stage plain|sanitize|fuzz|tsan|windows]...   (every stage, in that order, by default)
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
cd "$root"

all_stages=(plain sanitize fuzz tsan windows)
declare -A titles=(
	[plain]="plain: build with gcc and run every test"
	[sanitize]="sanitize: build with clang, AddressSanitizer and UndefinedBehaviorSanitizer, and run the tests"
	[fuzz]="fuzz: the readers of outside bytes, on the sanitize build"
	[tsan]="tsan: the process and job runner tests with ThreadSanitizer"
	[windows]="windows: cross-built with mingw-w64, tested under Wine"
)
stages=()
while [ $# -gt 0 ]; do
	if [ "$1" != "--stage" ] || [ $# -lt 2 ] || [ -z "$2" ] || [ -z "${titles[$2]:-}" ]; then
		echo "usage: Tools/test.sh [--stage plain|sanitize|fuzz|tsan|windows]..." >&2
		exit 2
	fi
	stages+=("$2")
	shift 2
done
if [ ${#stages[@]} -eq 0 ]; then
	stages=("${all_stages[@]}")
fi

bash Tools/setup.sh
source Tools/cache.sh
tessel_cache_options "$root"
cache_counts() {
	if [ -n "${TESSEL_CCACHE_IN_USE:-}" ]; then
		CCACHE_DIR="$TESSEL_CCACHE_IN_USE" ccache --print-stats 2>/dev/null |
			awk '$1 ~ /^(direct_cache_hit|preprocessed_cache_hit)$/ { hits += $2 } $1 == "cache_miss" { misses += $2 }
				END { print hits + 0, misses + 0 }'
	fi
}
read -r hits_before misses_before <<<"$(cache_counts)" || true

stage_plain() {
	bash Tools/check-format.sh
	bash Tools/build.sh Build
	(cd Build && ctest -j 2 --output-on-failure)
	# The window's tests once more on a real X display with a window manager, at scale 1 and 2.
	bash Tools/gui-on-display.sh Build
}

stage_sanitize() {
	bash Tools/sanitize-build.sh
	# The two kill tests check what a killed walk or save leaves on disk, through hundreds of child processes; the
	# plain stage runs them, and under the sanitizers each child costs ten times as much (five minutes together).
	(cd Build-sanitize && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 ctest -j 2 --output-on-failure \
		-E '^(CompressCookedFilesTests\.KilledWalkLeavesOnlyWholeFilesUnderTheirNames|ModDatabaseTests\.KilledWhileSavingLeavesALoadableSavedState)$')
}

tsan_configure=(Build-tsan -DTESSEL_SANITIZE=thread -DTESSEL_WIDGET_BACKEND=Headless)
tsan_targets=(--target ProcessTests TesselTests TesselFakeChild TesselCookCommandlet)

# Each fuzz target runs on one core for a fixed time. When the tsan stage follows, its build takes the other
# core meanwhile, one job at a time; once the fuzzers are done it is stopped and goes on with both cores.
tsan_early_build=""
trap 'if [ -n "$tsan_early_build" ]; then kill -TERM -- "-$tsan_early_build" 2>/dev/null || true; fi' EXIT
stage_fuzz() {
	bash Tools/fuzz.sh --build-only
	if [[ " ${stages[*]} " == *" tsan "* ]]; then
		TESSEL_BUILD_JOBS=1 setsid bash Tools/build.sh "${tsan_configure[@]}" "${tsan_targets[@]}" >/dev/null 2>&1 &
		tsan_early_build=$!
	fi
	bash Tools/fuzz.sh 30
}

stage_tsan() {
	if [ -n "$tsan_early_build" ]; then
		kill -TERM -- "-$tsan_early_build" 2>/dev/null || true
		wait "$tsan_early_build" 2>/dev/null || true
	fi
	bash Tools/build.sh "${tsan_configure[@]}" "${tsan_targets[@]}"
	(cd Build-tsan && TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1" ctest -j 2 --output-on-failure \
		-R '^(WindowsArgumentsTests|Utf8StreamDecoderTests|PlatformProcessTests|MonitoredProcessTests|LinePipelineTests|JobRunnerTests)\.')
}

stage_windows() {
	bash Tools/windows.sh
}

timings=()
start=$SECONDS
for stage in "${stages[@]}"; do
	echo "== ${titles[$stage]}"
	stage_start=$SECONDS
	"stage_$stage"
	seconds=$((SECONDS - stage_start))
	timings+=("$stage $((seconds / 60))m$((seconds % 60))s")
	echo "== $stage: done in $((seconds / 60))m $((seconds % 60))s"
done
total=$((SECONDS - start))
echo "== stages: ${timings[*]}"
if [ -n "${hits_before:-}" ]; then
	read -r hits_after misses_after <<<"$(cache_counts)" || true
	echo "== compiler cache: $((hits_after - hits_before)) compilations from the cache, $((misses_after - misses_before)) compiled"
fi
echo "== all stages passed in $((total / 60))m $((total % 60))s"
