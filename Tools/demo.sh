#!/usr/bin/env bash
# Sets up, builds, prepares a copy of the demo kit in the build folder and runs the tool on it: prints the
# catalogue, then opens the tool's tab in the host (offscreen when there is no display) and saves a picture.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
cd "$root"
bash Tools/setup.sh
bash Tools/build.sh Build
rm -rf Build/DemoKit
cp -r Kit Build/DemoKit
editor=Build/Engine/Source/Programs/TesselEditor/TesselEditor
"$editor" -Kit=Build/DemoKit -ListMods
if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
	export QT_QPA_PLATFORM=offscreen
fi
"$editor" -Kit=Build/DemoKit -Screenshot="$root/Build/tessel-demo.png" 2>/dev/null
