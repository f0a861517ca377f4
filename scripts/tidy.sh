#!/usr/bin/env bash
# Runs clang-tidy with the repository's checks over all sources of the Linux build or the given ones. Any finding is a
# failure.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/dependencies.sh
needs build fuzz check
[ -f build/asan/compile_commands.json ] || configure_and_build asan kestrova
if [ $# -gt 0 ]; then files=("$@"); else mapfile -t files < <(git ls-files '*.cpp' ':!tests' ':!bench' ':!fuzz' ':!examples' ':!platform/windows'); fi
printf '%s\0' "${files[@]}" | xargs -0 -n 3 -P "$(nproc)" clang-tidy --quiet -p build/asan --warnings-as-errors='*' 2>/dev/null
echo "clang-tidy: ${#files[@]} sources, no finding"
