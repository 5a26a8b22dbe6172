#!/usr/bin/env bash
# Runs the window's tests once more on a real X display: a virtual one (Xvfb) with a window manager (openbox),
# which the offscreen platform of the other runs lacks (the X server's fonts, keyboard focus, window frames and
# stacking). At scale 1 every test of the widget layer, the editor's dialogs, the tool's window and the host's
# window; at scale 2 those that measure texts and layout and take pictures. The pictures are left in the build
# folder: tessel-islands-form@1x.png and @2x.png, tessel-login@..., tessel-result-dialog@...
# Usage: Tools/gui-on-display.sh <build dir>
set -euo pipefail
build="$(cd "$1" && pwd)"

# A display number that no X server holds.
display=""
for number in $(seq 90 130); do
	if [ ! -e "/tmp/.X$number-lock" ] && [ ! -e "/tmp/.X11-unix/X$number" ]; then
		display="$number"
		break
	fi
done
if [ -z "$display" ]; then
	echo "gui-on-display: no free X display number" >&2
	exit 1
fi
work="$(mktemp -d)"
Xvfb ":$display" -screen 0 1920x1080x24 -nolisten tcp >"$work/xvfb.log" 2>&1 &
xvfb=$!
wm=""
cleanup() {
	[ -n "$wm" ] && kill "$wm" 2>/dev/null || true
	kill "$xvfb" 2>/dev/null || true
	wait 2>/dev/null || true
	rm -rf "$work"
}
trap cleanup EXIT
for _ in $(seq 100); do
	[ -S "/tmp/.X11-unix/X$display" ] && break
	sleep 0.1
done
if [ ! -S "/tmp/.X11-unix/X$display" ]; then
	cat "$work/xvfb.log" >&2
	echo "gui-on-display: Xvfb did not start" >&2
	exit 1
fi
export DISPLAY=":$display"
unset WAYLAND_DISPLAY
openbox --sm-disable >"$work/openbox.log" 2>&1 &
wm=$!
sleep 1

export SLATE_TEST_PLATFORM=xcb
# The host keeps its layout in the user's configuration: a folder of this run's own.
export XDG_CONFIG_HOME="$work/config"
programs=(
	Runtime/Slate/SlateTests
	Editor/UnrealEd/UnrealEdTests
	Developer/Tessel/TesselWidgetTests
	Programs/TesselEditor/HostWindowTests
)
at_scale_2='*Whole*:*StandOver*:*WithinTheScreen*:*Screenshot*'
failed=0
for program in "${programs[@]}"; do
	for scale in 1 2; do
		filter='*'
		[ "$scale" = 2 ] && filter="$at_scale_2"
		if ! SLATE_TEST_SCALE="$scale" "$build/Engine/Source/$program" --gtest_filter="$filter" --gtest_brief=1 \
			>"$work/run.log" 2>&1; then
			cat "$work/run.log"
			echo "gui-on-display: ${program##*/} failed at scale $scale"
			failed=1
		else
			echo "gui-on-display: ${program##*/} at scale $scale: $(grep -E '^\[  PASSED  \]' "$work/run.log" | head -n 1)"
		fi
	done
done
exit "$failed"
