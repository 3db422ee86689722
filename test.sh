#!/usr/bin/env bash
# Installs what is missing, builds everything and runs every test: the portable half here, under
# sanitizers, and the Windows half under Wine. Needs no display. Arguments go to ctest, for example
# ./test.sh -R registry
set -euo pipefail
cd "$(dirname "$0")"

tools/install-packages.sh build test
tools/build-deps.sh
for preset in native mingw-x64 mingw-x86; do
  echo "== Building $preset"
  cmake --preset "$preset" >"build/$preset.log" || { cat "build/$preset.log"; exit 1; }
  cmake --build --preset "$preset"
done
tools/wine-prefix.sh base

# One run over the tests of all builds.
echo 'subdirs("native" "mingw-x64" "mingw-x86")' >build/CTestTestfile.cmake
echo "== Testing"
ctest --test-dir build --output-on-failure --no-tests=error -j "$(nproc)" "$@"
