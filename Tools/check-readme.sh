#!/usr/bin/env bash
# Runs the README's quick-lane lines that look at the plain build (a ctest -R, a test program with
# --gtest_filter) as written, from the top of the checkout, and those of Docs/DEVELOPING.md's quick loop with
# its format check, and checks that the test command refuses a stage it doesn't know before it installs or
# builds anything. The other lines of those blocks are the test command's own steps. Then runs the TesselCmd
# block as written on a fresh copy of the demo kit.
set -euo pipefail
cd "$(dirname "$0")/.."
# run_block <what> <expected count> <block>: runs each line of the block that looks at Build (or checks the
# format), as written; fails unless exactly the expected number ran.
run_block() {
	local what="$1" expected="$2" block="$3" ran=0 line command
	while IFS= read -r line; do
		command="${line%%#*}"
		case "$command" in
		"(cd Build && ctest"* | Build/* | "bash Tools/check-format.sh"*)
			echo "+ $command"
			bash -c "$command" >/dev/null
			ran=$((ran + 1))
			;;
		esac
	done <<<"$block"
	if [ "$ran" -ne "$expected" ]; then
		echo "check-readme: expected $expected lines of $what to run, found $ran"
		exit 1
	fi
}
run_block "the README's quick lane" 3 "$(sed -n '/^### The quick lane/,/^`Tools\/build.sh/p' README.md | sed -n '/^```sh$/,/^```$/p')"
run_block "the guide's quick loop" 3 "$(sed -n '/^## The quick loop/,/^## Layers/p' Docs/DEVELOPING.md | sed -n '/^```sh$/,/^```$/p')"
if bash Tools/test.sh --stage nope >/dev/null 2>&1; then
	echo "check-readme: the test command took an unknown stage"
	exit 1
fi

# The TesselCmd block, every line as written, one after another in a fresh copy of the demo kit, with the
# built TesselCmd and the stand-ins' password in place of "...". Only "check", run before the cook, may fail.
kit="$(mktemp -d)/kit"
trap 'rm -rf "$(dirname "$kit")"' EXIT
bash Tools/prepare-kit.sh Build "$kit" >/dev/null
printf 'Two islands joined by a rope bridge.\n' >"$kit/notes.txt"
tesselcmd="$PWD/Build/Engine/Source/Programs/TesselCmd/TesselCmd"
commands="$(sed -n '/^TesselCmd list/,/^```$/p' README.md | grep -v '^```' | sed -e ':a' -e '/\\$/N; s/\\\n//; ta' |
	sed 's/#.*$//' | grep -v '^[[:space:]]*$')"
ran=0
while IFS= read -r command; do
	command="${command//TesselCmd /\"$tesselcmd\" }"
	command="${command//STEAM_PASSWORD=.../STEAM_PASSWORD=demo-password}"
	expected=0
	case "$command" in *" check "*) expected=1 ;; esac
	set +e
	(cd "$kit" && eval "$command") </dev/null >"$kit.out" 2>&1
	code=$?
	set -e
	if [ "$code" -ne "$expected" ]; then
		cat "$kit.out"
		echo "check-readme: the README's line \"$command\" exited $code, not $expected"
		exit 1
	fi
	ran=$((ran + 1))
done <<<"$commands"
if [ "$ran" -ne 8 ]; then
	echo "check-readme: expected the eight TesselCmd lines of the README, found $ran"
	exit 1
fi
echo "check-readme: the quick lane's lines, the guide's quick loop and the TesselCmd lines ran as written"
