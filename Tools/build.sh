#!/usr/bin/env bash
# Configures and builds one flavour of the project: Tools/build.sh <build dir> [cmake options...]
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
dir="$1"
shift
cmake -S "$root" -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" >/dev/null
cmake --build "$dir" -j 2
