#!/usr/bin/env bash
# Configures and builds one flavour of the project: Tools/build.sh <build dir> [cmake options...]
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
dir="$1"
shift
# Options up to "--target" go to the configuration, the rest to the build.
configure=()
while [ $# -gt 0 ] && [ "$1" != "--target" ]; do
	configure+=("$1")
	shift
done
cmake -S "$root" -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "${configure[@]}" >/dev/null
cmake --build "$dir" -j 2 "$@"
