# Sourced by the other scripts. needs GROUP... installs the missing Debian packages of the groups. If the user is not
# root, it prints the missing packages in one line and exits.

packages_build="g++ cmake ninja-build cmark pkg-config ccache libsqlite3-dev libpugixml-dev libfmt-dev libcli11-dev
  libeigen3-dev libicu-dev nlohmann-json3-dev libdeflate-dev libglu1-mesa-dev qt6-base-dev libegl-dev libegl1
  libgl1-mesa-dri libpng-dev libdw-dev binutils-mingw-w64-x86-64
  unixodbc-dev libsqliteodbc odbc-mdbtools tdsodbc sqlite3"
packages_test="libgtest-dev libgmock-dev rapidjson-dev locales libgsf-bin libxml2-utils p7zip-full python3 spin xdotool
  xvfb"
packages_bench="libboost-serialization-dev libcereal-dev libsimpleini-dev libtbb-dev python3"
packages_fuzz="clang libclang-rt-14-dev"
packages_headers="libx11-dev"
packages_windows="g++-mingw-w64-x86-64-posix libz-mingw-w64-dev wine wine64 googletest python3 debian-archive-keyring"
packages_check="git clang-format clang-tidy"

needs() {
  local group package list missing=()
  for group in "$@"; do
    list="packages_$group"
    for package in ${!list}; do
      dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
    done
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  if [ "$(id -u)" -ne 0 ]; then
    echo "missing packages: ${missing[*]} (install them, or run this script as root)" >&2
    exit 1
  fi
  echo "installing ${missing[*]}"
  local log; log=$(mktemp)
  export DEBIAN_FRONTEND=noninteractive
  { apt-get update && apt-get install -y --no-install-recommends "${missing[@]}"; } >"$log" 2>&1 || {
    tail -n 5 "$log" >&2
    echo "could not install: ${missing[*]}" >&2
    exit 1
  }
  rm -f "$log"
}

# configure_and_build PRESET TARGET...: prints nothing unless it fails. The release's tests share its build folder, so
# that the library is compiled once; scripts/build.sh does not build them.
configure_and_build() {
  local preset=$1 log; shift
  mkdir -p build
  log=build/$preset.log
  { cmake --preset "$preset" ${KV_CONFIGURE:-} && cmake --build "build/$preset" --target "$@"; } >"$log" 2>&1 || {
    grep -E -A 12 ' error: |^FAILED|CMake Error' "$log" | sed -n 1,60p >&2 || true
    echo "the build of preset $preset failed; the whole log is $log" >&2
    exit 1
  }
}
