#!/usr/bin/env bash
# Configures and builds one flavour of the project: Tools/build.sh <build dir> [cmake options...] [--target ...]
# Compiles through the shared compiler cache (Tools/cache.sh).
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
source "$root/Tools/cache.sh"
dir="$1"
shift
# Options up to "--target" go to the configuration, the rest to the build.
configure=()
while [ $# -gt 0 ] && [ "$1" != "--target" ]; do
	configure+=("$1")
	shift
done
tessel_cache_options "$root"
cmake -S "$root" -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "${cache_options[@]}" "${configure[@]}" >/dev/null
cmake --build "$dir" -j "${TESSEL_BUILD_JOBS:-2}" "$@"
