#!/usr/bin/env bash
# The window on Windows, under Wine on a virtual X display of its own, at Wine's 100% and 200% (96 and 192
# DPI): the Win32 backend's own tests, the widget layer's and the tool's window tests (at 200% those that measure
# texts and take pictures, as on Linux), then TesselEditor.exe opens the tool's tab on a copy of the demo kit and
# takes a picture of its window. Each picture must show a drawn window (many colours, not one or two); they are
# left in the build folder: tessel-editor@1x.png and @2x.png, and the tests' tessel-islands-form@..., tessel-login@...,
# tessel-tool@...
# Called by Tools/windows.sh with Wine set up; usage: Tools/windows-gui.sh <windows build dir>
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="$(cd "$1" && pwd)"
wine=/usr/lib/wine/wine64
work="$(mktemp -d)"
source "$root/Tools/display.sh"
# Room for the tests' windows at 200% (2400 pixels wide): pictures are copied from the screen.
screen_width=2560
screen_height=1600
tessel_start_display "$work" "${screen_width}x${screen_height}"

cp -r "$root/Kit" "$work/kit"
kit="Z:${work//\//\\}\\kit"
set_dpi() {
	"$wine" reg add 'HKCU\Control Panel\Desktop' /v LogPixels /t REG_DWORD /d "$1" /f >/dev/null 2>&1
	# Wine reads the setting when its server starts.
	/usr/lib/wine/wineserver -k 2>/dev/null || true
	/usr/lib/wine/wineserver -w 2>/dev/null || true
}
failed=0
layout='HKCU\Software\Tessel\TesselEditor'
# One test program under Wine at the scale set; SLATE_TEST_SCALE makes a program refuse a DPI that is not it.
run_tests() { # program scale [filter]
	if (cd "$build/Windows" && SLATE_TEST_SCALE="$2" WINEDEBUG=-all timeout 300 "$wine" "./$1.exe" --gtest_brief=1 \
		--gtest_filter="${3:-*}") >"$work/tests.txt" 2>&1; then
		echo "windows-gui: $1 at scale $2: $(tr -d '\r' <"$work/tests.txt" | grep -E '^\[  PASSED  \]')"
	else
		tr -d '\r' <"$work/tests.txt"
		echo "windows-gui: $1 failed at scale $2"
		failed=1
	fi
}
at_scale_2='*Whole*:*Screenshot*'
for scale in 1 2; do
	set_dpi $((96 * scale))
	run_tests Win32WidgetTests "$scale"
	filter='*'
	[ "$scale" = 2 ] && filter="$at_scale_2"
	run_tests SlateTests "$scale" "$filter"
	run_tests TesselWidgetTests "$scale" "$filter"
	# The host's options start the host as a child, each time as a new program: once is enough.
	[ "$scale" = 1 ] && run_tests HostOptionsTests "$scale"
	picture="$build/tessel-editor@${scale}x.png"
	rm -f "$picture"
	# The first size, whatever a run before left.
	"$wine" reg delete "$layout" /f >/dev/null 2>&1 || true
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

# The kept layout. A window its user closes keeps its place and tab for the next start; a kept place larger than
# the screen (a smaller screen now, or a larger scale) comes back fitted to the screen.
picture_size() { file "$1" | sed -n 's/.*PNG image data, \([0-9]*\) x \([0-9]*\).*/\1 \2/p'; }
le32() { printf '%08x' $(($1 & 0xffffffff)) | sed 's/\(..\)\(..\)\(..\)\(..\)/\4\3\2\1/'; }
"$wine" reg delete "$layout" /f >/dev/null 2>&1 || true
(cd "$build/Windows" && WINEDEBUG=-all exec "$wine" ./TesselEditor.exe -Kit="$kit") >"$work/editor.txt" 2>&1 &
editor=$!
window=$(timeout 60 xdotool search --sync --name '^Tessel Editor$' | head -n 1 || true)
if [ -n "$window" ]; then
	sleep 2
	xdotool windowactivate --sync "$window" key alt+F4 || true
fi
if ! timeout 60 tail --pid="$editor" -f /dev/null || ! "$wine" reg query "$layout" /v OpenTab 2>/dev/null | grep -q TesselTools ||
	! "$wine" reg query "$layout" /v Placement >/dev/null 2>&1; then
	kill "$editor" 2>/dev/null || true
	tr -d '\r' <"$work/editor.txt"
	echo "windows-gui: TesselEditor.exe closed by its user kept no layout"
	failed=1
fi
"$wine" reg add "$layout" /v Placement /t REG_BINARY /f /d \
	"$(le32 44)$(le32 0)$(le32 1)$(le32 -1)$(le32 -1)$(le32 -1)$(le32 -1)$(le32 -300)$(le32 -200)$(le32 4700)$(le32 3800)" >/dev/null 2>&1
picture="$build/tessel-editor-kept.png"
rm -f "$picture"
(cd "$build/Windows" && timeout 120 "$wine" ./TesselEditor.exe -Kit="$kit" -Screenshot="Z:${picture//\//\\}") >"$work/editor.txt" 2>&1 || true
read -r width height <<<"$(picture_size "$picture" || true)"
if [ -z "${width:-}" ] || [ "$width" -gt "$screen_width" ] || [ "$height" -gt "$screen_height" ] || [ "$width" -lt 1000 ]; then
	tr -d '\r' <"$work/editor.txt"
	echo "windows-gui: a kept place larger than the screen came back as ${width:-no picture}x${height:-}"
	failed=1
else
	echo "windows-gui: a user's close kept the layout; a kept place of 5000x4000 came back as ${width}x${height} on a" \
		"${screen_width}x${screen_height} screen"
fi
"$wine" reg delete "$layout" /f >/dev/null 2>&1 || true
exit "$failed"
