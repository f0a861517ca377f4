#!/usr/bin/env bash
# Installs into a folder of its own and compiles the installed headers, with the warnings that a module may use: each
# alone, and all of them before and after headers that define similar names. Without C++20 each gives one error.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/dependencies.sh
needs headers
prefix=$PWD/build/headers/prefix
rm -rf build/headers
mkdir -p build/headers/sources build/headers/objects
scripts/build.sh --prefix "$prefix" >/dev/null

names=()
while read -r header; do
  name=${header//\//_}
  echo "#include <kvshare/$header>" >"build/headers/sources/$name.cpp"
  names+=("$name")
done < <(cd "$prefix/include/kvshare" && find . -name '*.h' -printf '%P\n' | sort)
all=$(cat build/headers/sources/*.cpp)

beside=(sql X11)
declare -A includes=([sql]=$'#include <sql.h>\n#include <sqlext.h>\n#include <odbcinst.h>'
                     [X11]=$'#include <X11/Xlib.h>\n#include <X11/Xutil.h>')
for group in "${beside[@]}"; do
  printf '%s\n' "${includes[$group]}" "$all" >"build/headers/sources/after_$group.cpp"
  printf '%s\n' "$all" "${includes[$group]}" >"build/headers/sources/before_$group.cpp"
done
printf '%s\n' "${names[@]}" "${beside[@]/#/after_}" "${beside[@]/#/before_}" |
  xargs -P "$(nproc)" -I{} ccache g++ -std=c++20 -Wall -Wextra -Werror -I"$prefix/include" \
    -c build/headers/sources/{}.cpp -o build/headers/objects/{}.o

# one_error NAME: fails if the header without C++20 has another error or more than one.
one_error() {
  local errors
  errors=$(g++ -std=c++14 -fsyntax-only -I"$prefix/include" "build/headers/sources/$1.cpp" 2>&1 | grep ' error: ') || true
  case $errors in
    *$'\n'* | '') printf '%s\n' "$1 with C++14 gives not one error:" "$errors" >&2; return 1 ;;
    *'KVSHAREu needs C++20: compile with -std=c++20'*) ;;
    *) printf '%s\n' "$1 with C++14 gives an unclear error:" "$errors" >&2; return 1 ;;
  esac
}
export prefix
export -f one_error
printf '%s\n' "${names[@]}" | xargs -P "$(nproc)" -I{} bash -c 'one_error {}'
echo "headers: ${#names[@]} installed, each compiles alone; all compile beside those of ${beside[*]}"
