#!/usr/bin/env bash
# Makes a working copy of the demo kit and places the stand-in programs where a real kit has the engine's and
# Valve's programs: Tools/prepare-kit.sh <build dir> <new kit folder>
# The kit folder is replaced when it holds an earlier copy of the kit; any other existing folder is refused.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
if [ $# -ne 2 ]; then
	echo "usage: Tools/prepare-kit.sh <build dir> <new kit folder>" >&2
	exit 2
fi
build="$(cd "$1" && pwd)"
kit="$2"

if [ -e "$kit" ]; then
	if [ ! -f "$kit/Orrery/Orrery.uproject" ]; then
		echo "prepare-kit: $kit exists and is not a copy of the kit; not replacing it" >&2
		exit 2
	fi
	rm -rf "$kit"
fi
mkdir -p "$(dirname "$kit")"
cp -r "$root/Kit" "$kit"
# Every folder the tool and the programs expect, also those that git does not keep when they are empty.
mkdir -p "$kit/Engine/Binaries/Win64" "$kit/Orrery/Content/Mods" "$kit/Orrery/Saved" \
	"$kit/ModTools/SteamCMD" "$kit/ModTools/Uploader" "$kit/ModTools/Output" "$kit/ModTools/ModConfigs"

place() {
	local built="$build/Engine/Source/Programs/StandIns/$1" target="$kit/$2"
	if [ ! -x "$built" ]; then
		echo "prepare-kit: $built is missing; build the project first" >&2
		exit 1
	fi
	install -m 0755 "$built" "$target"
}
place CookCommandlet/TesselCookCommandlet Engine/Binaries/Win64/UE4Editor.exe
place SteamCmd/TesselSteamCmd ModTools/SteamCMD/steamcmd.exe
place Uploader/TesselUploader ModTools/Uploader/QuillonModUploader.exe
