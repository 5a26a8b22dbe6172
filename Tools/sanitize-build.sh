#!/usr/bin/env bash
# Builds the sanitizer flavour in Build-sanitize: clang with AddressSanitizer and UndefinedBehaviorSanitizer,
# the libraries also instrumented for libFuzzer, so that the tests and the fuzz targets link the same objects.
# Usage: Tools/sanitize-build.sh [--target names...]
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
CC=clang CXX=clang++ bash "$root/Tools/build.sh" "$root/Build-sanitize" -DTESSEL_SANITIZE=address -DTESSEL_BUILD_FUZZERS=ON \
	-DTESSEL_BUILD_BENCHMARKS=OFF "$@"
