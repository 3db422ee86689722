#!/usr/bin/env bash
# Measures the scans of the "New" and "Send to" pages under Wine on a crowded system, each beside
# the calls to Windows that it cannot do without. Fails when a scan takes more than 1.3 times as
# long, or when twice the file types take more than 2.1 times as long.
# Usage: bench.sh [BUILD_DIRECTORY]     (build/mingw-x64 when none is given)
set -euo pipefail
cd "$(dirname "$0")"

build=${1-build/mingw-x64}
if [ $# = 0 ]; then
  tools/build-deps.sh mingw-x64
  cmake --preset mingw-x64 >/dev/null
fi
log=$(cmake --build "$build" --target bench_win) || { echo "$log"; exit 1; }

mkdir -p "$build/wine"
prefix=$(mktemp -d "$build/wine/bench.XXXXXX")
trap 'tools/wine-prefix.sh remove "$prefix"' EXIT
tools/wine-prefix.sh new "$prefix" null

# The registries of two systems, written into the hive while the prefix is at rest: through the
# registry's own calls it would take longer than the measurement. The files are the bench's own.
for types in 20000 40000; do
  awk -v types="$types" 'BEGIN {
    classes = "Software\\\\TarvelinBench\\\\" types "\\\\Software\\\\Classes\\\\"
    for (i = 0; i < types; i++) {
      id = sprintf("e%05d", i)
      printf "\n[%s.%s] 1700000000\n@=\"%s\"\n", classes, id, id
      printf "\n[%s.%s\\\\ShellNew] 1700000000\n\"NullFile\"=\"\"\n", classes, id
      printf "\n[%s%s] 1700000000\n@=\"Document of type %s\"\n", classes, id, id
      printf "\n[%s%s\\\\DefaultIcon] 1700000000\n@=\"C:\\\\bench\\\\%d.ico,00\"\n",
        classes, id, 10 + i % 50
    }
  }'
done >>"$prefix/user.reg"

eval "$(tools/wine-prefix.sh env "$prefix")"
timeout --kill-after=5 600 wine "$build/bench/bench_win.exe"
