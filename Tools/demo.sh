#!/usr/bin/env bash
# Sets up, builds, and runs the tool's main job on a copy of the demo kit in Build/DemoKit (see run-demo.sh).
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
cd "$root"
bash Tools/setup.sh
bash Tools/build.sh Build
bash Tools/run-demo.sh Build Build/DemoKit Build/tessel-demo.png
