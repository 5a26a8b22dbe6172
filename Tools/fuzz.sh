#!/usr/bin/env bash
# Builds the fuzz targets with clang and runs each for a fixed time on a copy of its seed corpus
# (Engine/Source/Developer/Tessel/Fuzz/Corpus/<target without "Fuzzer">). Fails as soon as one crashes, hangs,
# leaks, outgrows its memory or breaks one of its own checks; the input that did it is kept in
# Build-sanitize/FuzzArtifacts. The targets are those of the sanitizer build (Tools/sanitize-build.sh), which the
# tests of that stage use too.
# Usage: Tools/fuzz.sh [seconds for the JSON reader] [seconds for each other target], or Tools/fuzz.sh --build-only
# The JSON reader gets 30 seconds by default, every other target two fifths of the JSON reader's time (12 of 30).
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
cd "$root"
build_only=""
if [ "${1:-}" = "--build-only" ]; then
	build_only=1
	shift
fi
json_seconds="${1:-30}"
other_seconds="${2:-$(((json_seconds * 2 + 4) / 5))}"
if ! command -v clang++ >/dev/null 2>&1; then
	echo "clang++ is not installed: fuzzing skipped"
	exit 0
fi

# Target, seconds, longest input. Text readers get short inputs, so that their time goes into variety rather
# than length; the binary readers need room for several records and chunks.
targets=(
	"JsonReaderFuzzer $json_seconds 65536"
	"CompressedStreamFuzzer $other_seconds 65536"
	"ModArchiveFormsFuzzer $other_seconds 16384"
	"PublishedFileIdFuzzer $other_seconds 8192"
	"WindowsArgumentsFuzzer $other_seconds 4096"
	"Utf8StreamDecoderFuzzer $other_seconds 4096"
)
names=()
for entry in "${targets[@]}"; do
	names+=("${entry%% *}")
done

bash Tools/sanitize-build.sh --target "${names[@]}"
if [ -n "$build_only" ]; then
	exit 0
fi

work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
artifacts="$root/Build-sanitize/FuzzArtifacts"
mkdir -p "$artifacts"
corpora="Engine/Source/Developer/Tessel/Fuzz/Corpus"
start=$SECONDS
for entry in "${targets[@]}"; do
	read -r name seconds max_len <<<"$entry"
	corpus="$work/$name"
	mkdir -p "$corpus" "$work/tmp"
	cp "$corpora/${name%Fuzzer}"/* "$corpus/"
	echo "== $name for ${seconds}s"
	# Temporary files of a target go into the work folder, so that nothing is left behind even after a crash.
	if ! TMPDIR="$work/tmp" "Build-sanitize/Engine/Source/Developer/Tessel/$name" "$corpus" -max_total_time="$seconds" \
		-max_len="$max_len" -rss_limit_mb=2048 -timeout=10 -print_final_stats=1 \
		-artifact_prefix="$artifacts/$name-" >"$work/$name.log" 2>&1; then
		tail -n 80 "$work/$name.log"
		echo "fuzzing: $name failed; the input is in $artifacts"
		exit 1
	fi
	tail -n 12 "$work/$name.log"
done
echo "fuzzing: no crash, hang or leak in $((SECONDS - start))s (${json_seconds}s JSON reader, ${other_seconds}s each other target)"
