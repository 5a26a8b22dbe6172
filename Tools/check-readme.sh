#!/usr/bin/env bash
# Runs the README's quick-lane lines that look at the plain build (a ctest -R, a test program with
# --gtest_filter) as written, from the top of the checkout, and checks that the test command refuses a stage
# it doesn't know before it installs or builds anything. The other lines of that block are the test command's
# own steps.
set -euo pipefail
cd "$(dirname "$0")/.."
block="$(sed -n '/^### The quick lane/,/^`Tools\/build.sh/p' README.md | sed -n '/^```sh$/,/^```$/p')"
ran=0
while IFS= read -r line; do
	command="${line%%#*}"
	case "$command" in
	"(cd Build && ctest"* | Build/*)
		echo "+ $command"
		bash -c "$command" >/dev/null
		ran=$((ran + 1))
		;;
	esac
done <<<"$block"
if [ "$ran" -ne 2 ]; then
	echo "check-readme: expected the two quick-lane lines that look at Build, found $ran"
	exit 1
fi
if bash Tools/test.sh --stage nope >/dev/null 2>&1; then
	echo "check-readme: the test command took an unknown stage"
	exit 1
fi
echo "check-readme: the quick lane's lines ran as written"
