#!/usr/bin/env bash
# Checks record_life.pml in every interleaving, with so many operations of the user's thread; says how many states there
# were. Any violation, and a search that is not complete, fails.
#   check.sh [OPERATIONS]
set -euo pipefail
model=$(cd "$(dirname "$0")" && pwd)/record_life.pml
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
spin -DOPERATIONS="${1:-3}" -a "$model"
"${CC:-cc}" -O2 -w -DSAFETY -o pan pan.c
./pan -m1000000 >log
grep -q 'errors: 0' log && ! grep -q 'max search depth too small' log || { cat log; spin -DOPERATIONS="${1:-3}" -k ./*.trail -p "$model" || true; exit 1; }
grep 'states, stored' log
