#!/usr/bin/env bash
# The window on Windows, under Wine on a virtual X display of its own, at Wine's 100% and 200% (96 and 192
# DPI): the Win32 backend's own tests, then TesselEditor.exe opens the tool's tab on a copy of the demo kit and
# takes a picture of its window. Each picture must show a drawn window (many colours, not one or two); they are
# left in the build folder as tessel-editor@1x.png and tessel-editor@2x.png.
# Called by Tools/windows.sh with Wine set up; usage: Tools/windows-gui.sh <windows build dir>
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="$(cd "$1" && pwd)"
wine=/usr/lib/wine/wine64
work="$(mktemp -d)"
source "$root/Tools/display.sh"
tessel_start_display "$work"

cp -r "$root/Kit" "$work/kit"
kit="Z:${work//\//\\}\\kit"
set_dpi() {
	"$wine" reg add 'HKCU\Control Panel\Desktop' /v LogPixels /t REG_DWORD /d "$1" /f >/dev/null 2>&1
	# Wine reads the setting when its server starts.
	/usr/lib/wine/wineserver -k 2>/dev/null || true
	/usr/lib/wine/wineserver -w 2>/dev/null || true
}
failed=0
for scale in 1 2; do
	set_dpi $((96 * scale))
	if (cd "$build/Windows" && timeout 120 "$wine" ./Win32WidgetTests.exe --gtest_brief=1) >"$work/tests.txt" 2>&1; then
		echo "windows-gui: Win32WidgetTests at scale $scale: $(tr -d '\r' <"$work/tests.txt" | grep -E '^\[  PASSED  \]')"
	else
		tr -d '\r' <"$work/tests.txt"
		echo "windows-gui: Win32WidgetTests failed at scale $scale"
		failed=1
	fi
	picture="$build/tessel-editor@${scale}x.png"
	rm -f "$picture"
	if (cd "$build/Windows" && timeout 120 "$wine" ./TesselEditor.exe -Kit="$kit" -Screenshot="Z:${picture//\//\\}") \
		>"$work/editor.txt" 2>&1; then
		echo "windows-gui: at scale $scale: $(tr -d '\r' <"$work/editor.txt" | grep -E '^Screenshot saved' | sed 's/.*(//; s/)//')" \
			"in ${picture##*/}"
	else
		tr -d '\r' <"$work/editor.txt"
		echo "windows-gui: TesselEditor.exe drew no window at scale $scale"
		failed=1
	fi
done
set_dpi 96
exit "$failed"
