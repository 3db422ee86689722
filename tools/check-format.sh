#!/usr/bin/env bash
# Every C++ file is formatted as .clang-format says.
set -euo pipefail
cd "$(dirname "$0")/.."
format=clang-format-14
command -v $format >/dev/null || format=clang-format
mapfile -t files < <(find . \( -path ./build -o -path ./dist -o -path ./.git \) -prune -o \
  \( -name '*.cpp' -o -name '*.h' \) -print)
[ ${#files[@]} -gt 0 ]
$format --dry-run -Werror "${files[@]}"
echo "check-format: ${#files[@]} files"
