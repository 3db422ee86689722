#!/usr/bin/env bash
# Installs what is missing, builds everything and runs every test: the portable half here, under
# sanitizers, and the Windows half under Wine. Needs no display.
#   ./test.sh [--x86] [ARGUMENT...]
# --x86 tests the 32-bit program too, in a Debian of its own with a 32-bit Wine that is made first;
# where the machine's Wine runs 32-bit programs that is always done. Arguments go to ctest, for
# example ./test.sh -R registry
set -euo pipefail
cd "$(dirname "$0")"

x86=OFF
if [ "${1-}" = --x86 ]; then
  x86=ON
  shift
fi

tools/install-packages.sh build test
if tools/wine32.sh there; then x86=ON; fi
tools/build-deps.sh
for preset in native mingw-x64 mingw-x86; do
  options=()
  [ $preset != mingw-x86 ] || options=(-DTARVELIN_TESTS=$x86)
  echo "== Building $preset"
  cmake --preset "$preset" "${options[@]}" >"build/$preset.log" || {
    cat "build/$preset.log"
    exit 1
  }
  cmake --build --preset "$preset"
done
# The prefixes from which all others are copied.
tools/wine-prefix.sh base
if [ $x86 = ON ]; then
  tools/wine32.sh make
  tools/wine32.sh run tools/wine-prefix.sh base
fi

# One run over the tests of all builds.
echo 'subdirs("native" "mingw-x64" "mingw-x86")' >build/CTestTestfile.cmake
echo "== Testing"
ctest --test-dir build --output-on-failure --no-tests=error -j "$(nproc)" "$@"
