#!/usr/bin/env bash
# Runs a test executable: run-native.sh COMMAND [ARGUMENT...]
# It has passed when it exits with 0 and says that at least one test passed. Either alone would not
# do: a program that cannot start may exit with 0, and a sanitizer reports after the closing line.
set -euo pipefail
output=$(mktemp)
trap 'rm -f "$output"' EXIT

code=0
UBSAN_OPTIONS=print_stacktrace=1 "$@" --gtest_color=no 2>&1 | tee "$output" || code=$?
if [ $code -ne 0 ]; then
  echo "$*: exit code $code" >&2
  exit 1
fi
if ! grep -Eq '^\[  PASSED  \] [1-9][0-9]* tests?\.' "$output"; then
  echo "$*: no test says that it passed" >&2
  exit 1
fi
