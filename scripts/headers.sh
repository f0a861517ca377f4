#!/usr/bin/env bash
# Installs into a folder of its own and compiles each installed header alone, with the warnings that a module may use.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/dependencies.sh
prefix=$PWD/build/headers/prefix
rm -rf build/headers
mkdir -p build/headers/sources build/headers/objects
scripts/build.sh --prefix "$prefix" >/dev/null

names=()
while read -r header; do
  name=${header//\//_}
  echo "#include <kvshare/$header>" >"build/headers/sources/$name.cpp"
  names+=("$name")
done < <(cd "$prefix/include/kvshare" && find . -name '*.h' -printf '%P\n' | sort)
printf '%s\n' "${names[@]}" | xargs -P "$(nproc)" -I{} ccache g++ -std=c++20 -Wall -Wextra -Werror -I"$prefix/include" \
  -c build/headers/sources/{}.cpp -o build/headers/objects/{}.o
echo "headers: ${#names[@]} installed, each compiles alone"
