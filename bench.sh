#!/usr/bin/env bash
# Measures the program under Wine beside its floors, which are bare calls to Windows that do the same
# work: its start, its scans at growing sizes, removals, selections and memory; the portable logic
# natively; and the size of the executables. Prints tables of medians and leaves them in
# build/bench/, with a plot for each scan. Limits are judged on an idle machine only, and whatever
# they say, this does not fail.
# Usage: bench.sh [MOST [PART...]]
#   MOST   up to that many entries of a scan, 50000 when it is not told
#   PART   start, work or a scan, all of them when none is named; the report shows the last
#          measurement of every part, and the load at its beginning
set -euo pipefail
cd "$(dirname "$0")"
most=${1-50000}
parts=("${@:2}")
[ ${#parts[@]} -gt 0 ] ||
  parts=(start work shell new sendto menus bars toolbars buttons helpers activex settings)
out=build/bench
build=build/mingw-x64

tools/install-packages.sh build test run bench
tools/build-deps.sh
mkdir -p "$out" build/wine
make() { # PRESET TARGET...
  { cmake --preset "$1" && cmake --build --preset "$1" --target "${@:2}"; } >"$out/build.log" 2>&1 ||
    { cat "$out/build.log"; exit 1; }
}
echo "== Building"
make mingw-x64 Tarvelin tarvelin_languages bench_win bare_win sample/all
make mingw-x86 Tarvelin
make bench portable_bench

# A desktop that is drawn, as a user's is.
exec 3< <(exec Xvfb -displayfd 1 -screen 0 1280x1024x24 -nolisten tcp 2>"$out/xvfb.log")
xvfb=$!
prefix=
cleanup() {
  [ -z "$prefix" ] || tools/wine-prefix.sh remove "$prefix"
  kill "$xvfb"
}
trap cleanup EXIT
read -r -t 20 number <&3 || { cat "$out/xvfb.log" >&2; exit 1; }
export DISPLAY=:$number

load() { cut -d' ' -f1 /proc/loadavg; }
before=$(load)
echo "== Measuring (load $before)"

# A program under Wine and the server that it asks take turns. With two processors the same scan took
# from one to seven times as long, by chance, as if each turn might have to wake the other one; what
# the program does itself vanished behind that. On one processor a program that the server's answer
# wakes may interrupt the server before it is back at rest, and has to let it run once more later on.
# How often that happened hung on how long either had run before, up to nearly a third more switches
# for the same calls; as batch processes they do not interrupt each other.
one=(chrt --batch 0 taskset -c "$(taskset -cp $$ | sed 's/.*: //; s/[-,].*//')")

# measure DISPLAY HIVE SEED ARGUMENT...: measures $part by running bench_win in a system of its own. Its registry is
# written into a hive while the system is at rest: through the registry's own calls it would take
# longer than the measurement.
measure() {
  prefix=$(mktemp -d build/wine/bench.XXXXXX)
  tools/wine-prefix.sh new "$prefix" "$1"
  # shellcheck disable=SC2086  # several words
  bench/bench.py $3 >>"$prefix/$2.reg"
  printf 'load\t%s\n' "$before" >"$out/$part.tsv.part"
  (
    eval "$(tools/wine-prefix.sh env "$prefix")"
    "${one[@]}" wine cmd /c exit  # the first program starts the server and the desktop
    "${one[@]}" timeout --kill-after=5 3000 wine "$build/bench/bench_win.exe" "${@:4}"
  ) | sed -u 's/\r$//' | tee -a "$out/$part.tsv.part" | cut -f1-3 | uniq
  mv "$out/$part.tsv.part" "$out/$part.tsv"
  tools/wine-prefix.sh remove "$prefix"
  prefix=
}
windows_path() {
  local path
  path=$(realpath "$1")
  printf 'Z:%s' "${path//\//\\}"
}
module=$(windows_path "$build/sample/dunmorrel.dll")
for part in "${parts[@]}"; do
  case $part in
    start)
      measure desktop system seed-start start "$(windows_path "$build/Tarvelin.exe")" \
        "$(windows_path "$build/bench/bare_win.exe")"
      ;;
    work) measure desktop user "seed work 10000" work ;;
    *) measure desktop user "seed $part $most" scan "$part" "$most" "$module" ;;
  esac
done
build/bench-native/bench/portable_bench --benchmark_format=json >"$out/portable.json"

echo
bench/bench.py report "$out" "$build/Tarvelin.exe" build/mingw-x86/Tarvelin.exe
