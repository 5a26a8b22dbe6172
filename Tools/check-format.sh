#!/usr/bin/env bash
# Checks that the lines a change touched are formatted as .clang-format describes, so that format-on-save in an
# editor makes no noise in the next change. The change is everything since the merge base with origin/main, or
# the newest commit when there is no such branch or HEAD is on it; uncommitted edits count too.
# TESSEL_FORMAT_BASE names another base.
set -euo pipefail
cd "$(dirname "$0")/.."
base="${TESSEL_FORMAT_BASE:-}"
if [ -z "$base" ]; then
	if git rev-parse -q --verify origin/main >/dev/null && [ "$(git merge-base HEAD origin/main)" != "$(git rev-parse HEAD)" ]; then
		base="$(git merge-base HEAD origin/main)"
	elif git rev-parse -q --verify HEAD~1 >/dev/null; then
		base=HEAD~1
	else
		echo "check-format: no earlier commit to compare with; nothing to check"
		exit 0
	fi
fi
out="$(git clang-format --diff "$base" -- '*.cpp' '*.h')"
case "$out" in
"" | "no modified files to format" | "clang-format did not modify any files")
	echo "check-format: the lines changed since $(git rev-parse --short "$base") are formatted"
	;;
*)
	printf '%s\n' "$out"
	echo "check-format: lines changed since $(git rev-parse --short "$base") differ from .clang-format (run: git clang-format $base)"
	exit 1
	;;
esac
