# Starts a virtual X display (Xvfb) with a window manager (openbox) for this script's windows, and stops it when
# the script ends: sets DISPLAY. Sourced; usage: tessel_start_display <scratch folder, removed at the end> [WxH]
# (1920x1080 unless given).
tessel_start_display() {
	work="$1"
	screen="${2:-1920x1080}"
	# A display number that no X server holds.
	display=""
	for number in $(seq 90 130); do
		if [ ! -e "/tmp/.X$number-lock" ] && [ ! -e "/tmp/.X11-unix/X$number" ]; then
			display="$number"
			break
		fi
	done
	if [ -z "$display" ]; then
		echo "display: no free X display number" >&2
		return 1
	fi
	Xvfb ":$display" -screen 0 "${screen}x24" -nolisten tcp >"$work/xvfb.log" 2>&1 &
	xvfb=$!
	wm=""
	tessel_stop_display() {
		[ -n "$wm" ] && kill "$wm" 2>/dev/null || true
		kill "$xvfb" 2>/dev/null || true
		wait 2>/dev/null || true
		rm -rf "$work"
	}
	trap tessel_stop_display EXIT
	for _ in $(seq 100); do
		[ -S "/tmp/.X11-unix/X$display" ] && break
		sleep 0.1
	done
	if [ ! -S "/tmp/.X11-unix/X$display" ]; then
		cat "$work/xvfb.log" >&2
		echo "display: Xvfb did not start" >&2
		return 1
	fi
	export DISPLAY=":$display"
	unset WAYLAND_DISPLAY
	openbox --sm-disable >"$work/openbox.log" 2>&1 &
	wm=$!
	sleep 1
}
