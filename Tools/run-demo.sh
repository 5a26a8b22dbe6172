#!/usr/bin/env bash
# The tool's main job on the demo kit, with a build that already exists:
#   Tools/run-demo.sh <build dir> <new kit folder> <picture.png>
# Prepares a copy of the kit, prints the catalogue, cooks and packages "Islands" for both targets in the tool's
# window (offscreen when there is no display), lists the packaged tree, and saves a picture of the window.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
if [ $# -ne 3 ]; then
	echo "usage: Tools/run-demo.sh <build dir> <new kit folder> <picture.png>" >&2
	exit 2
fi
build="$(cd "$1" && pwd)"
kit="$2"
picture="$3"
editor="$build/Engine/Source/Programs/TesselEditor/TesselEditor"

bash "$root/Tools/prepare-kit.sh" "$build" "$kit"
if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
	export QT_QPA_PLATFORM=offscreen
fi

echo "== The catalogue"
"$editor" -Kit="$kit" -ListMods
echo
echo "== Cooking Islands for WindowsNoEditor and WindowsServer in the tool's window"
"$editor" -Kit="$kit" -Cook=Islands -modasdlc -Screenshot="$picture"
echo
echo "== Packaged output in $kit/ModTools/Output/Islands"
(cd "$kit/ModTools/Output" && find . -type f | sort)
