#!/usr/bin/env bash
# The tool's main job on the demo kit, with a build that already exists:
#   Tools/run-demo.sh <build dir> <new kit folder> <picture.png>
# Prepares a copy of the kit, prints the catalogue, cooks and packages "Islands" for both targets in the tool's
# window (offscreen when there is no display), saves a picture of the window, publishes the mod through the
# stand-in uploader and SteamCMD, saves a second picture (<picture>-published.png), and lists what was made.
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
	# Without a display, an offscreen one the size of a common monitor, so that the window opens at its own size.
	export QT_QPA_PLATFORM="offscreen:configfile=$root/Tools/offscreen-screen.json"
fi

echo "== The catalogue"
"$editor" -Kit="$kit" -ListMods
echo
echo "== Cooking and publishing Islands in the tool's window"
# The stand-in SteamCMD takes any login whose password has no blank; a real one takes yours.
STEAM_USERNAME="${STEAM_USERNAME:-demo-author}" STEAM_PASSWORD="${STEAM_PASSWORD:-demo-password}" \
	"$editor" -Kit="$kit" -Cook=Islands -modasdlc -Screenshot="$picture" -Publish -PublishTitle="Island Pack" \
	-PublishDescription="Two islands joined by a rope bridge, and a crate of props." \
	-PublishPreview="$kit/Previews/Islands.png"
echo
echo "== Packaged and published in $kit/ModTools"
(cd "$kit/ModTools" && find Output ModConfigs -type f | sort)
