#!/usr/bin/env bash
# Builds, and makes the pictures of docs/pictures again: the example machines, and the toolpaths, features and a pattern
# of sample documents.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/build.sh

folder=docs/pictures
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export KV_REGISTRY=$work/registry
kestrova() { build/release/bin/kestrova "$@"; }
mkdir -p "$folder"

for machine in MillTurn/TwinTurret12 Mill/Vertical850 Mill/Trunnion500; do
  kestrova picture "examples/machines/$machine" --of machine --out "$folder/${machine#*/}.png" --size 1100x750 --force
done

kestrova document new "$work/part.kvdoc" --nodes 12
kestrova settings set UseFeedColors 1 --document "$work/part.kvdoc"
kestrova settings set LineWidth 1
for row in "400 #2A7FD5" "800 #1F9E6E" "1600 #E08A1E" "100000 #B0367A"; do
  kestrova feedcolors add --process mill ${row% *} "${row#* }"
done
kestrova picture "$work/part.kvdoc" --of toolpath --out "$folder/toolpath.png" --size 900x620 --force

kestrova pattern add "$work/part.kvdoc" 7 --kind linear --direction 1,0,0 --spacing 20 --count 6 --direction2 0,1,0 \
  --spacing2 20 --count2 4
kestrova pattern skip "$work/part.kvdoc" 7 3-4,9,20
kestrova pattern order "$work/part.kvdoc" 7 --operation 9 --by nearest
kestrova picture "$work/part.kvdoc" --of pattern --out "$folder/pattern.png" --size 900x620 --force
kestrova picture "$work/part.kvdoc" --of document --out "$folder/document.png" --size 900x620 --force
ls -l "$folder"
