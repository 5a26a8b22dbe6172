#!/usr/bin/env bash
# Installs the Debian packages the build needs, when they are missing. With --windows: those of the cross build
# for Windows and of running it under Wine instead.
set -euo pipefail

packages=(cmake ninja-build g++ libgtest-dev libcli11-dev zlib1g-dev qt6-base-dev qt6-qpa-plugins fonts-dejavu-core fonts-roboto-unhinted pigz clang libclang-rt-dev ccache mold xvfb openbox git jq python3-yaml clang-format)
# The CI example's schema check runs on Node.js; a machine that has its own npm keeps it.
if ! command -v npm >/dev/null; then
	packages+=(nodejs npm)
fi
if [ "${1:-}" = "--windows" ]; then
	packages=(cmake ninja-build g++-mingw-w64-x86-64-posix libz-mingw-w64-dev googletest libcli11-dev wine64 ccache xvfb openbox xdotool file fonts-roboto-unhinted)
fi
missing=()
for package in "${packages[@]}"; do
	if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
		missing+=("$package")
	fi
done
if [ ${#missing[@]} -gt 0 ]; then
	echo "Installing: ${missing[*]}"
	sudo_cmd=()
	if [ "$(id -u)" -ne 0 ]; then
		sudo_cmd=(sudo)
	fi
	"${sudo_cmd[@]}" apt-get update -qq
	DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
