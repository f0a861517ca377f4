#!/usr/bin/env bash
# Installs missing packages, builds, shows, checks and exports an example machine definition, and draws the machine.
#   scripts/run.sh [TYPE [MACHINE]]   default: the first machine of the type MillTurn
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/build.sh

type=${1:-MillTurn} machine=${2:-$(ls "examples/machines/${1:-MillTurn}" | head -n 1)}
export KV_REGISTRY=${KV_REGISTRY:-$PWD/build/run/registry}
kestrova=build/release/bin/kestrova
work=build/run/machines
mkdir -p "$work"
cp -r examples/machines/. "$work/"

for command in show check export; do
  echo
  echo "\$ kestrova machine $command --machines $work --type $type $machine"
  "$kestrova" machine "$command" --machines "$work" --type "$type" "$machine"
done
export_file=$work/$type/$machine/KestrovaAPT.txt
echo
cat "$export_file"
picture=$work/$type/$machine/$machine.png
echo
echo "\$ kestrova picture $work/$type/$machine --of machine --out $picture"
"$kestrova" picture "$work/$type/$machine" --of machine --out "$picture" --force
echo
echo "The export is in $export_file"
echo "The picture is in $picture"
