#!/usr/bin/env bash
# Every C++ file is formatted as .clang-format says, and every language file ends its lines as
# Windows does. Other versions of clang-format than 14 format otherwise: without it the check counts
# as skipped (77).
set -euo pipefail
cd "$(dirname "$0")/.."

# Windows' own editor shows language files properly with a mark and its own line ends.
for file in resources/languages/*.lng; do
  [ "$(head -c 3 "$file")" = $'\xEF\xBB\xBF' ] &&
    [ "$(grep -c '' "$file")" = "$(grep -c $'\r$' "$file")" ] || {
    echo "check-format: $file needs a byte-order mark and lines that end in CR and LF" >&2
    exit 1
  }
done

command -v clang-format-14 >/dev/null || { echo "check-format: no clang-format-14"; exit 77; }
mapfile -t files < <(find . \( -path ./build -o -path ./dist -o -path ./.git \) -prune -o \
  \( -name '*.cpp' -o -name '*.h' \) -print)
[ ${#files[@]} -gt 0 ]
clang-format-14 --dry-run -Werror "${files[@]}"
echo "check-format: ${#files[@]} files"
