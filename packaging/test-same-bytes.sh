#!/usr/bin/env bash
# Packs the commit that is checked out a second time, in another folder and from nothing, and
# compares every file with those that ./package.sh left in dist/.
set -euo pipefail
cd "$(dirname "$0")/.."
[ -z "$(git status --porcelain)" ] ||
  echo "test-same-bytes: there are changes that are not committed; they are not packed" >&2
other=$(mktemp -d)
trap 'rm -rf "$other"' EXIT
git clone -q . "$other/somewhere else"
(cd "$other/somewhere else" && ./package.sh) >build/same-bytes.log 2>&1 || {
  tail -n 30 build/same-bytes.log >&2
  exit 1
}
diff -r dist "$other/somewhere else/dist"
echo "test-same-bytes: $(find dist -type f | wc -l) files, all the same"
