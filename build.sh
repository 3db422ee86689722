#!/usr/bin/env bash
# Builds the program for 64-bit and 32-bit Windows into dist/x64/ and dist/x86/, each ready to be
# copied to a Windows machine.
set -euo pipefail
cd "$(dirname "$0")"

tools/install-packages.sh build
tools/build-deps.sh
for arch in x64 x86; do
  preset=mingw-$arch
  echo "== Building $preset"
  cmake --preset "$preset" >"build/$preset.log" || { cat "build/$preset.log"; exit 1; }
  cmake --build --preset "$preset" --target Tarvelin tarvelin_languages
  tools/check-imports.sh "build/$preset/Tarvelin.exe"

  rm -rf "dist/$arch"
  mkdir -p "dist/$arch"
  cp -r "build/$preset/Tarvelin.exe" "build/$preset/Toolbox_Language" "dist/$arch/"
  {
    cat LICENSE
    printf '\nThis software is based in part on the work of the Independent JPEG Group.\n'
    printf 'It contains the following libraries.\n\n'
    cat "build/deps/$preset/licenses.txt"
  } >"dist/$arch/license.txt"
  echo "dist/$arch/Tarvelin.exe: $(stat -c %s "dist/$arch/Tarvelin.exe") bytes"
done
