#!/usr/bin/env bash
# Builds the fuzzers, in the build folder of the address sanitizer's tests, and runs each for a number of seconds (default
# 60) from its seeds, one per core at a time. The input of a finding is saved in build/fuzz/findings; after the fix it
# becomes a seed.
#   scripts/fuzz.sh [SECONDS [NAME...]]
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/dependencies.sh
seconds=${1:-60}; [ $# -eq 0 ] || shift
needs build fuzz
configure_and_build asan fuzzers
mkdir -p build/fuzz/findings

run_one() {
  local name=$1 corpus=build/fuzz/corpus/$1 log=build/fuzz/$1.log
  local options=(-max_total_time="$seconds" -timeout=20 -rss_limit_mb=2048 -print_final_stats=1
    -artifact_prefix="build/fuzz/findings/$name-")
  [ ! -f "fuzz/dictionaries/$name.dict" ] || options+=(-dict="fuzz/dictionaries/$name.dict")
  mkdir -p "$corpus"
  if KV_REGISTRY=build/fuzz/registry "build/asan/bin/${name}_fuzz" "${options[@]}" "$corpus" "fuzz/seeds/$name" >"$log" 2>&1; then
    echo "fuzz $name: $(sed -n 's/^stat::number_of_executed_units: *//p' "$log") executions, no finding"
  else
    tail -n 25 "$log" >&2
    echo "fuzz $name: the input of a finding is in build/fuzz/findings" >&2
    return 255  # stops xargs
  fi
}
export -f run_one
export seconds

[ $# -gt 0 ] || set -- $(basename -s _fuzz.cpp fuzz/*_fuzz.cpp)
printf '%s\n' "$@" | xargs -P "$(nproc)" -I{} bash -c 'run_one {}'
