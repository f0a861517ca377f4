#!/usr/bin/env bash
# Installs the cross compiler and Wine, builds KVSHAREu.dll, kestrova.exe and their tests, runs the tests in Wine and packs
# build/windows/KVSHARE-<version>-windows.zip.
#   scripts/windows.sh [--no-tests] [FOLDER...]   only the tests of the named folders
# Exit codes: 1 a failure; 2 wrong usage; 3 the sources of the libraries can't be fetched.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/dependencies.sh

tests=yes folders=()
for word in "$@"; do
  case $word in
    --no-tests) tests= ;;
    -*) echo "usage: scripts/windows.sh [--no-tests] [FOLDER...]" >&2; exit 2 ;;
    *) folders+=("$word") ;;
  esac
done
build=$PWD/build/windows
step() { printf '%-28s %3d:%02d\n' "$1" $((SECONDS / 60)) $((SECONDS % 60)); SECONDS=0; }

# fetch_sources: the source packages of the libraries that no package has for this compiler, in the versions of this
# machine's distribution. apt works with lists of the build folder; the machine's lists stay as they are.
fetch_sources() {
  local libraries=(pugixml libdeflate libpng1.6) library apt=$build/apt origins
  mkdir -p "$build/sources" "$apt"/{parts,lists/partial,cache/archives/partial}
  for library in "${libraries[@]}"; do
    compgen -G "$build/sources/${library%1.6}-*/" >/dev/null || break
    [ "$library" != "${libraries[-1]}" ] || return 0
  done
  # The distribution's archive as this machine names it.
  origins=$(apt-get indextargets --format '$(SITE) $(RELEASE) $(COMPONENT)' 'Created-By: Packages' 'Origin: Debian' |
    sort -u)
  [ -n "$origins" ] || { echo "apt knows no archive of the distribution: run apt-get update" >&2; exit 3; }
  sed 's|^|deb-src [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] |' <<<"$origins" >"$apt/parts/sources.list"
  local options=(-o Dir::Etc::sourcelist=/dev/null -o Dir::Etc::sourceparts="$apt/parts"
    -o Dir::State::lists="$apt/lists" -o Dir::Cache="$apt/cache" -o APT::Sandbox::User=root -o Acquire::Languages=none
    -o APT::Update::Error-Mode=any)
  (cd "$build/sources" && apt-get "${options[@]}" update && apt-get "${options[@]}" source --download-only --tar-only "${libraries[@]}") \
    >"$build/sources.log" 2>&1 || {
    grep -E '^[EW]:' "$build/sources.log" >&2 || tail -n 5 "$build/sources.log" >&2
    echo "cannot fetch the source packages ${libraries[*]} from $(cut -d' ' -f1 <<<"$origins" | sort -u | tr '\n' ' ')" >&2
    echo "unpack their sources into build/windows/sources, or make the archive reachable" >&2
    exit 3
  }
  for library in "${libraries[@]}"; do
    tar xf "$build/sources/${library}"_*.orig.tar.?z -C "$build/sources"
  done
}

needs build windows
[ -z "$tests" ] || needs test
step "packages"
fetch_sources
step "sources"

export KV_CONFIGURE="-DKV_TESTS=$([ -n "$tests" ] && echo ON || echo OFF)"
configure_and_build windows KVSHAREu kestrova kv_languages kv_installation kv_tech_database
step "library and program"
if [ -n "$tests" ]; then
  if [ ${#folders[@]} -eq 0 ]; then configure_and_build windows all; else configure_and_build windows "${folders[@]/#/test_}"; fi
  step "tests built"
  "$build/wine.sh" wineboot --init
  scripts/wine_tests.py "$build" "${folders[@]}"
  step "tests run"
fi

version=$(sed -n 's/^project(KVShare VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
name=KVSHARE-$version-windows
rm -rf "$build/$name" "$build/$name.zip"
cmake --install "$build" --prefix "$build/$name" >"$build/install.log"
(cd "$build" && cmake -E tar cf "$name.zip" --format=zip "$name")
step "packed"

# The program of the package finds everything from its own place, in a folder that the build does not know. A module is
# built with the package alone.
moved=$(mktemp -d)
trap 'rm -rf "$moved"' EXIT
(cd "$moved" && cmake -E tar xf "$build/$name.zip" && mv "$name" "a folder")
"$build/wine.sh" "$moved/a folder/bin/kestrova.exe" machine check Vertical850
{
  cmake -S examples/consumer -B "$moved/module" --toolchain "$PWD/cmake/windows-toolchain.cmake" -G Ninja \
    -DKVShare_DIR="$moved/a folder/lib/cmake/KVShare" && cmake --build "$moved/module"
} >"$build/module.log" 2>&1 || { cat "$build/module.log" >&2; exit 1; }
cp "$moved/module/consumer.exe" "$moved/a folder/bin"
"$build/wine.sh" "$moved/a folder/bin/consumer.exe" >"$build/module.txt"  # a pipe would be kept open by Wine's services
grep -q '^hello from KESTROVAu' "$build/module.txt" || {
  echo "a module built with the package prints: $(cat "$build/module.txt")" >&2
  exit 1
}
step "package used"

if [ -x build/release/bin/kestrova ]; then
  scripts/two_platforms.sh
  step "compared with Linux"
fi
echo "built build/windows/$name.zip"
