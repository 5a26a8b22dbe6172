# Sourced by the build scripts. Routes the compilers through one compiler cache for every checkout and flavour
# on this machine, kept outside the checkout: TESSEL_CCACHE_DIR, or tessel-ccache in the user's cache folder,
# at most TESSEL_CCACHE_SIZE (8G by default). Paths under the checkout are hashed relative to it, so a fresh
# clone in another folder reuses what an earlier one compiled.
#
# tessel_cache_options <checkout root> sets the array cache_options to the CMake options of a configure. Without
# ccache, or with a cache folder that can't be written, they build without the cache, and one line says so
# (once for a whole test run).
tessel_cache_options() {
	local root="$1"
	cache_options=(-DCMAKE_C_COMPILER_LAUNCHER= -DCMAKE_CXX_COMPILER_LAUNCHER=)
	local dir="${TESSEL_CCACHE_DIR:-${XDG_CACHE_HOME:-$HOME/.cache}/tessel-ccache}"
	local reason=""
	local probe=""
	if ! command -v ccache >/dev/null 2>&1; then
		reason="ccache is not installed"
	elif ! mkdir -p "$dir" 2>/dev/null || ! probe="$(mktemp "$dir/.probe.XXXXXX" 2>/dev/null)"; then
		reason="its folder $dir can't be written"
	fi
	if [ -n "$reason" ]; then
		if [ -z "${TESSEL_CACHE_SAID:-}" ]; then
			echo "compiler cache: $reason; building without it"
			export TESSEL_CACHE_SAID=1
		fi
		return 0
	fi
	rm -f "$probe"
	# The settings travel in the launcher itself, so that a build started by hand (cmake --build, ninja) uses
	# the same cache as the scripts. The depend mode reads the compiler's own list of headers (-MD, as Ninja asks
	# for) instead of running the preprocessor once more for each file it has not seen.
	local launcher="/usr/bin/env;CCACHE_DIR=$dir;CCACHE_BASEDIR=$root;CCACHE_MAXSIZE=${TESSEL_CCACHE_SIZE:-8G};CCACHE_DEPEND=1"
	launcher="$launcher;$(command -v ccache)"
	cache_options=(-DCMAKE_C_COMPILER_LAUNCHER="$launcher" -DCMAKE_CXX_COMPILER_LAUNCHER="$launcher")
	export TESSEL_CCACHE_IN_USE="$dir"
}
