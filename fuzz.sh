#!/usr/bin/env bash
# Hunts for inputs that the program cannot bear, with libFuzzer and sanitizers.
# Usage: fuzz.sh TARGET SECONDS     TARGET is one of the folders in fuzz/corpus
# It starts from the inputs kept there and from those of earlier hunts in build/fuzz/inputs/TARGET.
# What is found is saved in build/fuzz/found/TARGET: mend it, and keep the input in fuzz/corpus,
# where every ./test.sh replays it.
set -euo pipefail
cd "$(dirname "$0")"
if [ $# != 2 ] || [ ! -d "fuzz/corpus/$1" ]; then
  sed -n '3,6s/^# //p' "$0" >&2
  exit 2
fi

tools/install-packages.sh build fuzz
mkdir -p "build/fuzz/inputs/$1" "build/fuzz/found/$1"
( # one build at a time, when several hunts are started at once
  flock 9
  cmake --preset fuzz >build/fuzz.log || { cat build/fuzz.log; exit 1; }
  cmake --build --preset fuzz --target fuzz_targets
) 9>build/fuzz/lock
# The sanitizer gives back soon what was freed: large pictures would look like a leak.
export ASAN_OPTIONS=quarantine_size_mb=16:allocator_release_to_os_interval_ms=200
build/fuzz/fuzz/fuzz_targets "--target=$1" -max_total_time="$2" -timeout=10 \
  -rss_limit_mb=3000 -malloc_limit_mb=256 -print_final_stats=1 \
  -artifact_prefix="build/fuzz/found/$1/" "build/fuzz/inputs/$1" "fuzz/corpus/$1"
