#!/usr/bin/env bash
# Only the Windows halves (*_win.h, *_win.cpp), the Windows tests and the sample modules include
# headers of the Windows SDK; everything else must build and be tested anywhere.
# Usage: tools/check-portable.sh [FOLDER]
set -euo pipefail
cd "${1:-$(dirname "$0")/..}"

# A header of the compiler, of C++ or of the decoders is fine in angle brackets, and so is
# "folder/name.h" of our own, unless it is a Windows half. Anything else is a foreign header.
allowed='<[a-z0-9_]+>|<(benchmark/benchmark|png|jpeglib|jerror|gtest/gtest(-spi)?|setjmp|zlib|dirent|fcntl|unistd|sys/[a-z]+)\.h>'
own='"(app|addons|shellmenu|settings|common|widgets|resources|tests/[a-z]+|bench|fuzz)/[A-Za-z0-9_]+\.(h|inc)"'

files=$(find . \( -path ./build -o -path ./dist -o -path ./.git -o -path ./tests/win -o -path ./sample \) \
  -prune -o \( -name '*.cpp' -o -name '*.h' \) ! -name '*_win.cpp' ! -name '*_win.h' -print)
[ -n "$files" ] || { echo "check-portable: no sources here" >&2; exit 1; }

bad=$(echo "$files" | xargs grep -nE '^[[:space:]]*#[[:space:]]*include' |
  sed -E 's/[[:space:]]*\/\/.*$//' |
  grep -vE "include[[:space:]]*($allowed|$own)\$" || true)
halves=$(echo "$files" | xargs grep -nE '#[[:space:]]*include[[:space:]]*[<"][^>"]*_win\.h' || true)
if [ -n "$bad$halves" ]; then
  printf '%s\n' "$bad" "$halves" | sed '/^$/d' >&2
  echo "check-portable: a portable file includes what is not portable" >&2
  exit 1
fi
echo "check-portable: $(echo "$files" | wc -l) portable files"
