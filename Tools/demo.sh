#!/usr/bin/env bash
# Sets up, builds, prepares a copy of the demo kit in the build folder (with the stand-in cook commandlet where
# the kit's editor executable stands, and the stand-in SteamCMD and uploader under ModTools) and runs the tool's
# main job on it: the catalogue, a cook of "Islands" for both targets with its packaging, the packaged tree, and
# a picture of the tool (offscreen when there is no display).
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
cd "$root"
bash Tools/setup.sh
bash Tools/build.sh Build
rm -rf Build/DemoKit
cp -r Kit Build/DemoKit
cp Build/Engine/Source/Programs/StandIns/CookCommandlet/TesselCookCommandlet Build/DemoKit/Engine/Binaries/Win64/UE4Editor.exe
mkdir -p Build/DemoKit/ModTools/SteamCMD Build/DemoKit/ModTools/Uploader
cp Build/Engine/Source/Programs/StandIns/SteamCmd/TesselSteamCmd Build/DemoKit/ModTools/SteamCMD/steamcmd.exe
cp Build/Engine/Source/Programs/StandIns/Uploader/TesselUploader Build/DemoKit/ModTools/Uploader/QuillonModUploader.exe
editor=Build/Engine/Source/Programs/TesselEditor/TesselEditor

"$editor" -Kit=Build/DemoKit -ListMods
echo
echo "Cooking Islands for WindowsNoEditor and WindowsServer (log shortened):"
"$editor" -Kit=Build/DemoKit -Cook=Islands -modasdlc | awk 'NR <= 6 || /Success|Failure|Quillon/' 
echo
echo "Packaged output:"
(cd Build/DemoKit/ModTools/Output && find . -type f | sort)
if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
	export QT_QPA_PLATFORM=offscreen
fi
"$editor" -Kit=Build/DemoKit -Screenshot="$root/Build/tessel-demo.png" 2>/dev/null
