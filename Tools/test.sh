#!/usr/bin/env bash
# Sets up, builds and runs every test: first a plain build, then one with AddressSanitizer and
# UndefinedBehaviorSanitizer.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
cd "$root"
bash Tools/setup.sh

echo "== Build and test"
bash Tools/build.sh Build
(cd Build && ctest -j 2 --output-on-failure)

echo "== Build and test with AddressSanitizer and UndefinedBehaviorSanitizer"
bash Tools/build.sh Build-asan -DTESSEL_SANITIZE=address
(cd Build-asan && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 ctest -j 2 --output-on-failure)

echo "== Fuzz the JSON reader"
bash Tools/fuzz.sh 30
