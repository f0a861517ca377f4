#!/usr/bin/env bash
# Installs missing packages, builds, and runs all tests: the consumer project against an installation, then every test
# binary.
#   scripts/test.sh [PRESET [FOLDER...]]   another preset (asan, tsan, debug), or only the tests of the named folders
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/dependencies.sh

preset=${1:-release}; [ $# -eq 0 ] || shift
folders=("$@")
needs build test
[ "$preset" != asan ] || needs fuzz  # the compiler of that preset
export KV_CONFIGURE=-DKV_TESTS=ON
if [ ${#folders[@]} -eq 0 ]; then configure_and_build "$preset" all; else configure_and_build "$preset" "${folders[@]/#/test_}"; fi
consumer=
[ "$preset" != release ] || { scripts/consumer.sh & consumer=$!; }  # mostly one process at a time

filter=()
[ ${#folders[@]} -eq 0 ] || filter=(-R "^($(IFS='|'; echo "${folders[*]}"))\\.")
# The thread sanitizer supports at most 65,535 nested calls; these tests exceed that on purpose.
[ "$preset" != tsan ] || filter+=(-E 'OfAMillion')
# A child that is forked among threads can hang in the allocator of clang's address sanitizer.
[ "$preset" != asan ] || filter+=(-E 'ForksAmong')
export LSAN_OPTIONS=suppressions=$PWD/tests/leaks.txt:print_suppressions=0
log=build/$preset/ctest.log
failed=
ctest --test-dir "build/$preset" "${filter[@]}" --output-on-failure -j "$(nproc)" >"$log" 2>&1 || {
  failed=1
  grep -vE '^ *[0-9]+/[0-9]+ Test .* Passed|^ *Start ' "$log" | tail -n 80
}
[ -z "$consumer" ] || wait "$consumer" || failed=1
[ -z "$failed" ] || exit 1
grep -E 'tests passed' "$log"
