#!/usr/bin/env bash
# Checks record_life.pml in all interleavings with that many operations of the user's thread (default 3), and prints the
# number of states. Fails on any violation and if the search is not complete.
#   check.sh [OPERATIONS]
set -euo pipefail
model=$(cd "$(dirname "$0")" && pwd)/record_life.pml
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
spin -DOPERATIONS="${1:-3}" -a "$model"
"${CC:-cc}" -w -DSAFETY -o pan pan.c  # without optimisation: that takes longer than it saves
./pan -m1000000 >log
grep -q 'errors: 0' log && ! grep -q 'max search depth too small' log || { cat log; spin -DOPERATIONS="${1:-3}" -k ./*.trail -p "$model" || true; exit 1; }
grep 'states, stored' log
