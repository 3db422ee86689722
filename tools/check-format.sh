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

# Windows' own editor shows language files properly with a mark and its own line ends.
for file in resources/languages/*.lng; do
  [ "$(head -c 3 "$file")" = $'\xEF\xBB\xBF' ] &&
    [ "$(grep -c '' "$file")" = "$(grep -c $'\r$' "$file")" ] || {
    echo "check-format: $file needs a byte-order mark and lines that end in CR and LF" >&2
    exit 1
  }
done
