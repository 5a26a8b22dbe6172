#!/usr/bin/env bash
# Keeps Docs/publish-from-ci.yml true: validates it against the workflow schema (action-validator, pinned in
# Tools/ci-example), then runs it twice through Tools/run-workflow.py on a kit repository in a temporary folder,
# with the built TesselCmd and the stand-ins: a first release publishes every mod and commits their ids, and a
# second release updates the same items and changes nothing.
# Usage: Tools/check-ci-example.sh <build dir>
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="$(cd "${1:?usage: Tools/check-ci-example.sh <build dir>}" && pwd)"
workflow="$root/Docs/publish-from-ci.yml"
fail() {
	echo "check-ci-example: $*" >&2
	exit 1
}

# The validator lives in a cache of its own, installed from the lock file once.
tools="${TESSEL_NODE_TOOLS:-$HOME/.cache/tessel-node-tools}"
if ! cmp -s "$root/Tools/ci-example/package-lock.json" "$tools/package-lock.json" ||
	[ ! -x "$tools/node_modules/.bin/action-validator" ]; then
	rm -rf "$tools"
	mkdir -p "$tools"
	cp "$root/Tools/ci-example/package.json" "$root/Tools/ci-example/package-lock.json" "$tools/"
	(cd "$tools" && npm ci --no-audit --no-fund --loglevel=error >/dev/null)
fi
"$tools/node_modules/.bin/action-validator" "$workflow" || fail "$workflow does not match the workflow schema"
broken="$(mktemp)"
sed 's/runs-on:/runs_on:/' "$workflow" >"$broken"
if "$tools/node_modules/.bin/action-validator" "$broken" >/dev/null 2>&1; then
	rm -f "$broken"
	fail "the validator passed a workflow whose jobs have no runs-on"
fi
rm -f "$broken"

# Debian's Python, which has Debian's YAML module, before any other on the PATH.
python=/usr/bin/python3
[ -x "$python" ] || python=python3

scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT
tesselcmd="$build/Engine/Source/Programs/TesselCmd/TesselCmd"
export GIT_AUTHOR_NAME=Team GIT_AUTHOR_EMAIL=team@example.com GIT_COMMITTER_NAME=Team GIT_COMMITTER_EMAIL=team@example.com

# The team's kit repository: every mod with its title and texts in Mods.db and its picture in Previews. One mod's
# folder name is a command for a shell that finds it pasted into a script.
kit="$scratch/kit"
bash "$root/Tools/prepare-kit.sh" "$build" "$kit" >/dev/null
odd='Rope$(touch${IFS}INJECTED)'
cp -r "$kit/Orrery/Content/Mods/Outfits" "$kit/Orrery/Content/Mods/$odd"
mods=(Islands Outfits SkyLanterns "$odd")
for mod in "${mods[@]}"; do
	[ -f "$kit/Previews/$mod.png" ] || cp "$kit/Previews/Islands.png" "$kit/Previews/$mod.png"
	"$tesselcmd" --kit "$kit" set "$mod" title="The ${mod%%\$*}" description="All of ${mod%%\$*}." \
		change-notes="Release" >/dev/null
done
printf '%s\n' 'ModTools/Output/' 'ModTools/ModConfigs/' 'Orrery/Saved/*' '!Orrery/Saved/Mods.db' >"$kit/.gitignore"
git -C "$kit" init --quiet --initial-branch=main
git -C "$kit" add --all
git -C "$kit" commit --quiet -m "The kit"
git clone --quiet --bare "$kit" "$scratch/origin.git"

# The login secret, made as the workflow's comment says: a login typed at SteamCMD's prompt, its cache packed.
login="$scratch/login"
bash "$root/Tools/prepare-kit.sh" "$build" "$login" >/dev/null
printf 'the-password\n' | (cd "$login" && ModTools/SteamCMD/steamcmd.exe +login ci-publisher +quit) >/dev/null
cache="$(tar -czf - -C "$login/ModTools/SteamCMD" config | base64 -w0)"
grep -rq the-password "$login/ModTools/SteamCMD/config" && fail "the login cache holds the password"

records() { # each mod's Workshop id and GUID on the default branch, "mod id guid" a line
	local clone="$scratch/look-$1"
	git clone --quiet "$scratch/origin.git" "$clone"
	"$tesselcmd" --kit "$clone" --json list | jq -r '.mods[] | "\(.ModDir) \(.ItemSeamId) \(.GUID)"' | sort
}
release() {
	local tag="$1"
	git -C "$scratch/origin.git" tag "$tag" main
	"$python" "$root/Tools/run-workflow.py" "$workflow" --repo "$scratch/origin.git" --ref "refs/tags/$tag" \
		--work "$scratch/run-$tag" --path "$(dirname "$tesselcmd")" \
		--secret STEAM_USERNAME=ci-publisher --secret STEAM_LOGIN_CACHE="$cache" \
		--env TESSEL_STEAMCMD_WORKSHOP="$scratch/workshop" >"$scratch/run-$tag.log" 2>&1 ||
		{
			cat "$scratch/run-$tag.log"
			fail "release $tag: the workflow failed"
		}
}

release release-1
first="$(records 1)"
[ "$(grep -cE '^[^ ]+ 29000000[0-9]{2} [0-9A-F]{32}$' <<<"$first")" -eq ${#mods[@]} ] ||
	fail "release-1 left these ids and GUIDs on main: $first"
[ "$(cut -d' ' -f2 <<<"$first" | sort -u | wc -l)" -eq ${#mods[@]} ] || fail "release-1 gave two mods one id: $first"
head_after_first="$(git -C "$scratch/origin.git" rev-parse main)"

release release-2
[ "$(records 2)" = "$first" ] || fail "release-2 changed the ids or GUIDs: $(records 3)"
[ "$(git -C "$scratch/origin.git" rev-parse main)" = "$head_after_first" ] || fail "release-2 committed to main"
while read -r mod id guid; do
	grep -qF -- "-ModDir=$mod -" "$scratch/run-release-2.log" && ! grep -qF -- "-ModGUID=$guid" "$scratch/run-release-2.log" &&
		fail "release-2 cooked $mod with another GUID than $guid"
done <<<"$first"
items="$(find "$scratch/workshop" -name '*.vdf' | wc -l)"
[ "$items" -eq ${#mods[@]} ] || fail "the Workshop holds $items items after two releases, not ${#mods[@]}"
[ -z "$(find "$scratch" -name INJECTED)" ] || fail "a mod's folder name ran as a command"
for tag in release-1 release-2; do
	grep -q 'Logging in using cached credentials' "$scratch/run-$tag.log" || fail "$tag: SteamCMD did not use the cached login"
	grep -q 'the-password' "$scratch/run-$tag.log" && fail "$tag: the password showed in the run"
done
echo "check-ci-example: the workflow is valid, and two releases published ${#mods[@]} mods once each, keeping their ids and GUIDs"
