#!/usr/bin/env bash
# Runs the window's tests once more on a real X display: a virtual one (Xvfb) with a window manager (openbox),
# which the offscreen platform of the other runs lacks (the X server's fonts, keyboard focus, window frames and
# stacking). At scale 1 every test of the widget layer, the editor's dialogs, the tool's window and the host's
# window; at scale 2 those that measure texts and layout and take pictures. The pictures are left in the build
# folder: tessel-islands-form@1x.png and @2x.png, tessel-login@..., tessel-result-dialog@...
# Usage: Tools/gui-on-display.sh <build dir>
set -euo pipefail
build="$(cd "$1" && pwd)"

work="$(mktemp -d)"
source "$(dirname "$0")/display.sh"
tessel_start_display "$work"

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
