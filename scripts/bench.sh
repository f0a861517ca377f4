#!/usr/bin/env bash
# Builds the release benchmarks with their peers, runs each with its peers in one process and prints tables of ratios.
# A full run is saved to bench/results.md. With names (archive, machine, ...) only these run, and nothing is saved.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/dependencies.sh
needs build bench
configure_and_build bench all
export KV_REGISTRY; KV_REGISTRY=$(mktemp -d)
trap 'rm -rf "$KV_REGISTRY"' EXIT

if [ $# -gt 0 ]; then
  for name in "$@"; do "build/bench/bin/${name}_bench"; done
  exit
fi
{
  echo "# Benchmarks"
  echo
  echo "Printed by \`scripts/bench.sh\` on $(nproc) cores. A ratio is the time divided by the peer's time, the median of at"
  echo "least five pairs measured alternately in one process; below 1 is faster than the peer."
  for bench in build/bench/bin/*_bench; do "$bench"; done
} | tee build/bench/results.md
cp build/bench/results.md bench/results.md
