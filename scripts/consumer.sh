#!/usr/bin/env bash
# Installs into an empty folder, builds the consumer project against it with CMake and with pkg-config, and runs both.
set -euo pipefail
cd "$(dirname "$0")/.."
prefix=$PWD/build/consumer/prefix
rm -rf build/consumer
mkdir -p build/consumer
scripts/build.sh --prefix "$prefix" >/dev/null
export KV_REGISTRY=$PWD/build/consumer/registry

cmake -S examples/consumer -B build/consumer/cmake -G Ninja -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build build/consumer/cmake >/dev/null
with_cmake=$(build/consumer/cmake/consumer)

export PKG_CONFIG_PATH=$prefix/lib/pkgconfig
# shellcheck disable=SC2046 # the flags must be split into words
g++ -std=c++20 examples/consumer/consumer.cpp -o build/consumer/plain $(pkg-config --cflags --libs kvshare) -Wl,-rpath,"$prefix/lib"
with_pkg_config=$(build/consumer/plain)

if [ -z "$with_cmake" ] || [ "$with_cmake" != "$with_pkg_config" ]; then
  echo "the two consumers print different texts: '$with_cmake' and '$with_pkg_config'" >&2
  exit 1
fi
"$prefix/bin/kestrova" --version >/dev/null
readelf -d "$prefix/bin/kestrova" | grep -qF 'RUNPATH' || { echo "the installed program has no RUNPATH" >&2; exit 1; }
echo "consumer: $with_cmake"
