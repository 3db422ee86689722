#!/usr/bin/env bash
# Packs the same sources a second time, in another folder and from nothing, and compares every file
# with those that ./package.sh left in dist/.
set -euo pipefail
cd "$(dirname "$0")/.."
other=$(mktemp -d)
trap 'rm -rf "$other"' EXIT
mkdir "$other/somewhere else"
tar -c --exclude=./build --exclude=./dist . | tar -x -C "$other/somewhere else"
(cd "$other/somewhere else" && ./package.sh) >build/same-bytes.log 2>&1 || {
  tail -n 30 build/same-bytes.log >&2
  exit 1
}
diff -rq dist "$other/somewhere else/dist"
echo "test-same-bytes: $(find dist -type f | wc -l) files, all the same"
