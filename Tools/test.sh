#!/usr/bin/env bash
# Sets up, builds and runs every test: first a plain build, then one with AddressSanitizer and
# UndefinedBehaviorSanitizer, the fuzzers, ThreadSanitizer on the process layer, and last the Windows cross
# build under Wine.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
cd "$root"
bash Tools/setup.sh

echo "== Build and test"
bash Tools/build.sh Build
(cd Build && ctest -j 2 --output-on-failure)

echo "== Build and test with AddressSanitizer and UndefinedBehaviorSanitizer"
bash Tools/build.sh Build-asan -DTESSEL_SANITIZE=address
# The two kill tests check what a killed walk or save leaves on disk, through hundreds of child processes; the
# plain stage runs them, and under the sanitizers each child costs ten times as much (five minutes together).
(cd Build-asan && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 ctest -j 2 --output-on-failure \
	-E '^(CompressCookedFilesTests\.KilledWalkLeavesOnlyWholeFilesUnderTheirNames|ModDatabaseTests\.KilledWhileSavingLeavesALoadableSavedState)$')

echo "== Fuzz the JSON reader"
bash Tools/fuzz.sh 30

echo "== Process and job runner tests with ThreadSanitizer"
bash Tools/build.sh Build-tsan -DTESSEL_SANITIZE=thread --target ProcessTests TesselTests TesselFakeChild TesselCookCommandlet
(cd Build-tsan && TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1" ctest -j 2 --output-on-failure \
	-R '^(WindowsArgumentsTests|Utf8StreamDecoderTests|PlatformProcessTests|MonitoredProcessTests|LinePipelineTests|JobRunnerTests)\.')

echo "== Windows: cross-built with mingw-w64, tested under Wine"
bash Tools/windows.sh
