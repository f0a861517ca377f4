#!/usr/bin/env bash
# Builds the release into build/release. With --prefix DIR it also installs into that folder.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/dependencies.sh

prefix=
while [ $# -gt 0 ]; do
  case $1 in
    --prefix)
      [ $# -ge 2 ] || { echo "--prefix needs a folder" >&2; exit 2; }
      prefix=$(realpath -m "$2"); shift 2 ;;
    *) echo "usage: scripts/build.sh [--prefix DIR]" >&2; exit 2 ;;
  esac
done

needs build
configure_and_build release kestrova kv_languages kv_installation kv_tech_database kv_completion
echo "built build/release/bin/kestrova and build/release/lib/libKVSHAREu.so"
if [ -n "$prefix" ]; then
  cmake --install build/release --prefix "$prefix" >/dev/null
  echo "installed to $prefix"
fi
