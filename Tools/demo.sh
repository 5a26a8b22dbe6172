#!/usr/bin/env bash
# Sets up, builds, prepares a copy of the demo kit in the build folder and runs the tool on it.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
cd "$root"
bash Tools/setup.sh
bash Tools/build.sh Build
rm -rf Build/DemoKit
cp -r Kit Build/DemoKit
Build/Engine/Source/Programs/TesselEditor/TesselEditor -Kit=Build/DemoKit -ListMods
