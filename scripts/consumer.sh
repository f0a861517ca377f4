#!/usr/bin/env bash
# Runs the lines of README's section on linking a module, with folders of its own: they install the library, and build and
# run the example module with CMake and with pkg-config. Then builds and runs the samples of docs/modules, and checks how
# the programs find the library.
set -euo pipefail
cd "$(dirname "$0")/.."
folder=$PWD/build/consumer prefix=$PWD/build/consumer/prefix
rm -rf "$folder"
mkdir -p "$folder"
export KV_REGISTRY=$folder/registry

{
  echo 'set -euo pipefail'
  sed -n '/^## Link a module/,/^## /s/^    //p' README.md | sed "s|/tmp/|@folder@/|g; s|/opt/kestrova|@folder@/prefix|g" |
    sed "s|@folder@|$folder|g"
} >"$folder/readme.sh"
bash "$folder/readme.sh" >"$folder/readme.log" 2>&1 || {
  cat "$folder/readme.log" >&2
  echo "the lines of README.md fail; see $folder/readme.sh" >&2
  exit 1
}
greeting='hello from KESTROVAu'
if [ "$(grep -cxF "$greeting" "$folder/readme.log")" -ne 2 ]; then
  cat "$folder/readme.log" >&2
  echo "the lines of README.md do not print '$greeting' twice" >&2
  exit 1
fi

# The samples of docs/modules with the installed package alone: each prints its .txt file, one also with pkg-config.
samples=$folder/samples
export CMAKE_PREFIX_PATH=$prefix PKG_CONFIG_PATH=$prefix/lib/pkgconfig
{
  cmake -S examples/modules -B "$samples" -DCMAKE_CXX_COMPILER_LAUNCHER=ccache && cmake --build "$samples" &&
    g++ -std=c++20 examples/modules/start.cpp -o "$samples/start_by_pkg_config" $(pkg-config --cflags --libs kvshare)
} >"$folder/samples.log" 2>&1 || {
  cat "$folder/samples.log" >&2
  exit 1
}
mkdir "$folder/run"
check_sample() {  # NAME FILE: the program prints the file
  (cd "$folder/run" && KV_REGISTRY=$folder/run/registry "$samples/$1" >"$1" 2>&1) || {
    cat "$folder/run/$1" >&2
    echo "the sample $1 has failed" >&2
    exit 1
  }
  diff "$2" "$folder/run/$1" >&2 || { echo "the sample $1 prints something else than $2" >&2; exit 1; }
}
for source in "$PWD"/examples/modules/*.cpp; do check_sample "$(basename "$source" .cpp)" "${source%.cpp}.txt"; done
check_sample start_by_pkg_config "$PWD/examples/modules/start.txt"

# Each program finds the library by RUNPATH, and LD_LIBRARY_PATH replaces it.
mkdir "$folder/other"
cp -P "$prefix"/lib/libKVSHAREu.so* "$folder/other"
"$prefix/bin/kestrova" --version >/dev/null
for program in "$prefix/bin/kestrova" "$folder/module/consumer" "$folder/consumer"; do
  [[ $(readelf -d "$program") == *'(RUNPATH)'* ]] || { echo "$program has no RUNPATH" >&2; exit 1; }
  [[ $(LD_LIBRARY_PATH=$folder/other ldd "$program") == *"=> $folder/other/libKVSHAREu.so"* ]] || {
    echo "LD_LIBRARY_PATH does not replace the library of $program" >&2
    exit 1
  }
done
echo "consumer: $greeting"
