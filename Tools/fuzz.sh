#!/usr/bin/env bash
# Builds the JSON reader's fuzz target with clang and runs it for a fixed time on the seed corpus.
# Usage: Tools/fuzz.sh [seconds]
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
cd "$root"
seconds="${1:-30}"
if ! command -v clang++ >/dev/null 2>&1; then
	echo "clang++ is not installed: fuzzing skipped"
	exit 0
fi
CC=clang CXX=clang++ cmake -S . -B Build-fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	-DTESSEL_SANITIZE=address -DTESSEL_BUILD_TESTS=OFF -DTESSEL_BUILD_FUZZERS=ON >/dev/null
cmake --build Build-fuzz -j 2 --target JsonReaderFuzzer
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
cp Engine/Source/Developer/Tessel/Fuzz/Corpus/* "$work/"
Build-fuzz/Engine/Source/Developer/Tessel/JsonReaderFuzzer "$work" -max_total_time="$seconds" -max_len=65536 \
	-rss_limit_mb=2048 -timeout=10 -print_final_stats=1 2>&1 | tail -n 15
echo "fuzzing: no crash, hang or leak in ${seconds}s"
