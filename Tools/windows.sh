#!/usr/bin/env bash
# Cross-builds the core, its stand-in children and their tests for 64-bit Windows with mingw-w64, and runs each
# test program whole under Wine. The programs and the libraries they need end up in Build-windows/Windows, a
# folder that runs on Windows as it is.
# Usage: Tools/windows.sh [--build-only]
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
cd "$root"
bash Tools/setup.sh --windows
source Tools/cache.sh
tessel_cache_options "$root"

start=$SECONDS
cmake -S . -B Build-windows -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "${cache_options[@]}" \
	-DCMAKE_TOOLCHAIN_FILE="$root/Tools/mingw-w64.cmake" -DTESSEL_GTEST_SOURCE=/usr/src/googletest >/dev/null
cmake --build Build-windows -j "${TESSEL_BUILD_JOBS:-2}"
echo "windows: built in $((SECONDS - start))s"
if [ "${1:-}" = "--build-only" ]; then
	exit 0
fi

# A Wine of our own inside the build folder, made once; no display and no crash dialog. Wine's debugger would
# print a backtrace into a crashing program's output: a debugger that does nothing stands in for it, so that
# a crash ends the program with its exception code and nothing else, as on a machine without a debugger.
export WINEPREFIX="$root/Build-windows/WinePrefix"
export WINEDEBUG=-all
export WINEDLLOVERRIDES="winemenubuilder.exe=d"
unset DISPLAY WAYLAND_DISPLAY
wine=/usr/lib/wine/wine64
if [ ! -f "$WINEPREFIX/system.reg" ]; then
	"$wine" wineboot --init >/dev/null 2>&1 || true
	"$wine" reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f >/dev/null 2>&1
fi
"$wine" reg add 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\AeDebug' /v Debugger /t REG_SZ \
	/d 'cmd.exe /c exit %ld %ld' /f >/dev/null 2>&1
start=$SECONDS
(cd Build-windows && ctest -j 2 --output-on-failure)
bash Tools/windows-kit.sh Build-windows
bash Tools/windows-gui.sh Build-windows
/usr/lib/wine/wineserver -k 2>/dev/null || true
echo "windows: tests ran in $((SECONDS - start))s"
