#!/usr/bin/env bash
# Runs the Windows TesselCmd.exe under Wine on a fresh copy of the demo kit, with the Windows stand-in cook
# commandlet as the kit's editor: list, check, cook (client and server) and inspect. When the Linux build is
# there too (Build/), the same commands run on a second copy with the Linux programs, and the two cooked and
# packaged trees must hold the same files with the same bytes.
# Called by Tools/windows.sh with Wine set up; usage: Tools/windows-kit.sh <windows build dir>
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
windows="$(cd "$1" && pwd)/Windows"
wine=/usr/lib/wine/wine64
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

make_kit() {
	local kit="$1"
	cp -r "$root/Kit" "$kit"
	mkdir -p "$kit/Engine/Binaries/Win64" "$kit/Orrery/Content/Mods" "$kit/Orrery/Saved" "$kit/ModTools/Output"
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
