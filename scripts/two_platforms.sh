#!/usr/bin/env bash
# Checks that the programs of both platforms write the same bytes and read one another's files. Both must be built, in
# build/release and build/windows.
#   scripts/two_platforms.sh            prints a line for each comparison
#   scripts/two_platforms.sh --speed    prints the times of bench/platforms.cpp in Wine as ratios to those of Linux
set -euo pipefail
cd "$(dirname "$0")/.."
linux=$PWD/build/release/bin/kestrova
windows=$PWD/build/windows/bin/kestrova.exe
wine=$PWD/build/windows/wine.sh

speed() {
  local out=$PWD/build/windows/speed
  mkdir -p "$out"
  g++ -std=c++20 -O2 -I. bench/platforms.cpp -o "$out/platforms" -Lbuild/release/lib -lKVSHAREu \
    -Wl,-rpath,"$PWD/build/release/lib"
  x86_64-w64-mingw32-g++-posix -std=c++20 -O2 -DUNICODE -D_UNICODE -DNOMINMAX -D_WIN32_WINNT=0x0A00 -I. \
    bench/platforms.cpp -o build/windows/bin/platforms.exe build/windows/libKVSHAREu.dll.a -lktmw32 -lole32 -loleaut32
  KV_REGISTRY=$out/registry "$out/platforms" >"$out/linux.txt"
  KV_REGISTRY=speed "$wine" build/windows/bin/platforms.exe >"$out/windows.txt"
  printf '%-32s%12s%12s%8s\n' "" "Linux, ns" "Wine, ns" "ratio"
  paste "$out/linux.txt" "$out/windows.txt" | tr -d '\r' | awk -F'\t' '{printf "%-32s%12d%12d%8.2f\n", $1, $2, $4, $4 / $2}'
}

case ${1:-} in
  "") ;;
  --speed) speed; exit ;;
  *) echo "usage: scripts/two_platforms.sh [--speed]" >&2; exit 2 ;;
esac
machines=$PWD/examples/machines
folder=$(mktemp -d)
# The registries of the Windows program are keys of this name.
registries=two-platforms-$$
forget() {
  local name
  rm -rf "$folder"
  for name in windows windows-reads-linux windows-reads-windows copies; do
    "$wine" reg delete "HKCU\\Software\\Kestrova Registries\\$registries-$name" /f >/dev/null 2>&1 || true
  done
}
trap forget EXIT
cd "$folder"
export TZ=UTC
key='HKCU\Software\Zemlor\TwoPlatforms'
failures=0

# on PLATFORM REGISTRY ARGUMENTS...: runs the program with a registry of that name.
on() {
  local platform=$1 registry=$registries-$2; shift 2
  if [ "$platform" = linux ]; then
    KV_REGISTRY=$folder/$registry "$linux" "$@"
  else
    # Not into a pipe, which the services of Wine that a program starts would keep open.
    KV_REGISTRY=$registry "$wine" "$windows" "$@" >"$folder/output"
    tr -d '\r' <"$folder/output"
  fi
}

# same TITLE FILE FILE
same() {
  if cmp -s "$2" "$3"; then
    printf '%-60s the same %s bytes\n' "$1" "$(stat -c %s "$2")"
  else
    printf '%-60s DIFFERENT\n' "$1"
    diff <(head -c 2000000 "$2") <(head -c 2000000 "$3") | head -n 6 || true
    failures=$((failures + 1))
  fi
}

# The values of a file of settings without those that name folders of the machine.
values_of() { grep -vE '"(value|default)": ".*\\\\' "$1" >"${1%.json}.values"; }

write_all() {
  local p=$1
  mkdir "$p"
  cp -r "$machines" "$p/machines"
  on "$p" "$p" document new "$p/part.kvdoc" --nodes 60 --seed 5 --units inch
  on "$p" "$p" settings set Feature '#00FF80' --document "$p/part.kvdoc"
  on "$p" "$p" settings set LineWidth 3
  on "$p" "$p" settings export "$p/settings.json"
  values_of "$p/settings.json"
  on "$p" "$p" settings export "$p/document.json" --document "$p/part.kvdoc"
  on "$p" "$p" picture "$p/part.kvdoc" --out "$p/part.kvrec"
  # The file has the paths of the machine's bodies.
  (cd "$p" && on "$p" "$p" machine export --machines machines --type Mill Vertical850)
  cp "$p/machines/Mill/Vertical850/KestrovaAPT.txt" "$p/machine.txt"
  # In the order of their names, because a system may give values in an order of its own.
  on "$p" "$p" reg add "$key" /v a /d 'Größe "8" \ ü€' /f
  on "$p" "$p" reg add "$key" /v b /t REG_DWORD /d 0xfffffffe /f
  on "$p" "$p" reg add "$key" /v c /t REG_MULTI_SZ /d 'one\0two' /f
  on "$p" "$p" reg add "$key" /v d /t REG_BINARY /d 00ff7f /f
  on "$p" "$p" reg add "$key" /v e /t REG_QWORD /d 18446744073709551615 /f
  on "$p" "$p" reg add "$key" /v f /t REG_EXPAND_SZ /d '%TEMP%\x' /f
  on "$p" "$p" reg add "$key\\Sub" /v g /d 'below' /f
  on "$p" "$p" reg export "$key" "$p/key.reg" /y
  on "$p" "$p" ini set "$p/shop.ini" Tool Diameter 12.5
  on "$p" "$p" ini set "$p/shop.ini" Tool Name ' two blanks '
} >/dev/null

# What a reader finds in a writer's files, and its own files made of them.
read_all() {
  local reader=$1 writer=$2 out=$1-reads-$2
  mkdir "$out"
  on "$reader" "$out" settings import "$writer/settings.json"
  for what in show verify dump history; do
    on "$reader" "$out" document "$what" "$writer/part.kvdoc" | sed 's/Address of .*//' >"$out/$what.txt"
  done
  on "$reader" "$out" document convert "$writer/part.kvdoc" "$out/part.kvdoc"
  on "$reader" "$out" picture "$out/part.kvdoc" --out "$out/part.kvrec"
  on "$reader" "$out" settings export "$out/settings.json"
  values_of "$out/settings.json"
  on "$reader" "$out" reg import "$writer/key.reg"
  on "$reader" "$out" reg export "$key" "$out/key.reg" /y
  for name in Diameter Name; do on "$reader" "$out" ini get "$writer/shop.ini" Tool "$name"; done >"$out/shop.txt"
} >/dev/null

for platform in linux windows; do write_all "$platform"; done
# The positions of a recording's binary form may differ in their last bits, because the systems' sines do.
for file in settings.values document.json part.kvrec.txt machine.txt key.reg shop.ini; do
  same "both write $file" "linux/$file" "windows/$file"
done
for writer in linux windows; do
  for reader in linux windows; do read_all "$reader" "$writer"; done
  for file in show.txt verify.txt dump.txt history.txt shop.txt; do
    same "$file of what $writer wrote, read by both" "linux-reads-$writer/$file" "windows-reads-$writer/$file"
  done
  for reader in linux windows; do
    for file in settings.values key.reg part.kvrec.txt; do
      same "$file by $writer, read and written by $reader" "$writer/$file" "$reader-reads-$writer/$file"
    done
  done
done
for reader in linux windows; do
  same "part.kvrec by $reader, of both documents" "$reader-reads-linux/part.kvrec" "$reader-reads-windows/part.kvrec"
done
for copy in linux-reads-windows windows-reads-linux; do
  for reader in linux windows; do on "$reader" copies document show "$copy/part.kvdoc" >"$reader-shows-$copy.txt"; done
  same "what ${copy%%-*} saved again, shown by both" "linux-shows-$copy.txt" "windows-shows-$copy.txt"
done
[ "$failures" -eq 0 ] || { echo "$failures comparisons failed" >&2; exit 1; }
echo "two platforms: all files are the same"
