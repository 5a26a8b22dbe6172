#!/usr/bin/env bash
# Runs the Windows TesselCmd.exe under Wine on a fresh copy of the demo kit, with the Windows stand-in cook
# commandlet as the kit's editor: list, check, cook (client and server) and inspect. When the Linux build is
# there too (Build/), the same commands run on a second copy with the Linux programs, and the two cooked and
# packaged trees must hold the same files with the same bytes. Then TesselEditor.exe cooks and publishes Islands
# through its window on a third copy, on a virtual display of its own, as the demo does on Linux: the packaged
# files must be those of TesselCmd.exe, byte for byte, the item must be published, and its two pictures are left
# in the build folder (tessel-window-cook.png and tessel-window-cook-published.png).
# Called by Tools/windows.sh with Wine set up; usage: Tools/windows-kit.sh <windows build dir>
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
windows="$(cd "$1" && pwd)/Windows"
wine=/usr/lib/wine/wine64
work="$(mktemp -d)"
build="$(cd "$1" && pwd)"
trap 'rm -rf "$work"' EXIT

make_kit() {
	local kit="$1"
	cp -r "$root/Kit" "$kit"
	mkdir -p "$kit/Engine/Binaries/Win64" "$kit/Orrery/Content/Mods" "$kit/Orrery/Saved" "$kit/ModTools/Output" \
		"$kit/ModTools/SteamCMD" "$kit/ModTools/Uploader" "$kit/ModTools/ModConfigs"
}

# The Windows kit: its editor is the Windows commandlet; paths reach Wine as Z: paths.
make_kit "$work/win"
cp "$windows/TesselCookCommandlet.exe" "$work/win/Engine/Binaries/Win64/UE4Editor.exe"
# The editor finds its libraries beside it, as an installed engine has them.
cp "$windows"/*.dll "$work/win/Engine/Binaries/Win64/"
winkit="Z:${work//\//\\}\\win"
# Windows' console text ends its lines with CR LF; the checks read them as lines.
tesselcmd() {
	(cd "$windows" && "$wine" ./TesselCmd.exe --kit "$winkit" "$@") | tr -d '\r'
}
tesselcmd list >"$work/list.txt"
grep -q '^Islands$' "$work/list.txt" || { cat "$work/list.txt"; echo "windows-kit: list misses Islands"; exit 1; }
tesselcmd set Islands title="Island Pack" description="Two islands" >/dev/null
tesselcmd check Islands >"$work/check.txt" || true
grep -q 'Island' "$work/check.txt" || { cat "$work/check.txt"; echo "windows-kit: check printed nothing of the mod"; exit 1; }
tesselcmd cook Islands --modasdlc >"$work/cook.txt" 2>&1 || { tail -n 30 "$work/cook.txt"; echo "windows-kit: cook failed"; exit 1; }
grep -q 'Success - 0 error(s)' "$work/cook.txt" || { tail -n 30 "$work/cook.txt"; echo "windows-kit: no success line"; exit 1; }
tesselcmd inspect "$winkit\\ModTools\\Output\\Islands" >"$work/inspect.txt" || { cat "$work/inspect.txt"; echo "windows-kit: inspect failed"; exit 1; }
files=$(cd "$work/win/ModTools/Output/Islands" && find . -type f | wc -l)
echo "windows-kit: TesselCmd.exe listed, checked, cooked and inspected Islands: $files files in ModTools/Output/Islands"

linux="$root/Build"
if [ -x "$linux/Engine/Source/Programs/TesselCmd/TesselCmd" ]; then
	bash "$root/Tools/prepare-kit.sh" "$linux" "$work/linux" >/dev/null
	# The same catalogue, with the GUID the first cook gave the mod, which the description files carry.
	cp "$work/win/Orrery/Saved/Mods.db" "$work/linux/Orrery/Saved/Mods.db"
	"$linux/Engine/Source/Programs/TesselCmd/TesselCmd" --kit "$work/linux" cook Islands --modasdlc >"$work/linux-cook.txt" 2>&1
	if ! diff -r "$work/linux/ModTools/Output/Islands" "$work/win/ModTools/Output/Islands" >"$work/diff.txt"; then
		head -n 20 "$work/diff.txt"
		echo "windows-kit: the Windows cook packaged other files than the Linux cook"
		exit 1
	fi
	echo "windows-kit: the same $files files, byte for byte, as TesselCmd on Linux"
fi

# The window: a kit with every Windows stand-in in place (each program finds its libraries beside it, as an
# installed one does), the catalogue of the first kit, so that the mod keeps the GUID its description files carry.
make_kit "$work/ui"
for place in "Engine/Binaries/Win64/UE4Editor.exe TesselCookCommandlet" "ModTools/SteamCMD/steamcmd.exe TesselSteamCmd" \
	"ModTools/Uploader/QuillonModUploader.exe TesselUploader"; do
	set -- $place
	cp "$windows/$2.exe" "$work/ui/$1"
	cp "$windows"/*.dll "$(dirname "$work/ui/$1")/"
done
cp "$work/win/Orrery/Saved/Mods.db" "$work/ui/Orrery/Saved/Mods.db"
uikit="Z:${work//\//\\}\\ui"
picture="$build/tessel-window-cook.png"
rm -f "$picture" "${picture%.png}-published.png"
(
	source "$root/Tools/display.sh"
	tessel_start_display "$(mktemp -d)"
	cd "$windows"
	STEAM_USERNAME=demo-author STEAM_PASSWORD=demo-password WINEDEBUG=-all timeout 300 "$wine" ./TesselEditor.exe -Kit="$uikit" \
		-Cook=Islands -modasdlc -Screenshot="Z:${picture//\//\\}" -Publish -PublishTitle="Island Pack" \
		-PublishDescription="Two islands joined by a rope bridge, and a crate of props." \
		-PublishPreview="$uikit\\Previews\\Islands.png"
) 2>&1 | tr -d '\r' >"$work/window.txt" || { tail -n 30 "$work/window.txt"; echo "windows-kit: TesselEditor.exe failed"; exit 1; }
grep -q '^Published: ' "$work/window.txt" || { tail -n 30 "$work/window.txt"; echo "windows-kit: the window published nothing"; exit 1; }
# The publication adds the preview picture beside the package; the package itself is the cook's.
if ! diff -r -x preview.jpg "$work/win/ModTools/Output/Islands" "$work/ui/ModTools/Output/Islands" >"$work/diff.txt"; then
	head -n 20 "$work/diff.txt"
	echo "windows-kit: the window's cook packaged other files than TesselCmd.exe's"
	exit 1
fi
[ -s "$work/ui/ModTools/Output/Islands/preview.jpg" ] || { tail -n 30 "$work/window.txt"; echo "windows-kit: no preview beside the package"; exit 1; }
for each in "$picture" "${picture%.png}-published.png"; do
	[ -s "$each" ] || { tail -n 30 "$work/window.txt"; echo "windows-kit: no picture ${each##*/}"; exit 1; }
done
echo "windows-kit: TesselEditor.exe cooked Islands through its window (the same $files files, byte for byte) and" \
	"$(grep '^Published: ' "$work/window.txt" | sed 's/^Published: /published it as /'); pictures ${picture##*/} and" \
	"$(basename "${picture%.png}-published.png")"
