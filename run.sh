#!/usr/bin/env bash
# Builds the program and starts it under Wine in a scratch system full of sample add-ons, so that
# everything can be tried and nothing can be harmed. Without a display the program runs on an
# invisible one and a picture of each page is saved in build/screenshots/, with some in other
# languages and in a high-contrast scheme.
set -euo pipefail
cd "$(dirname "$0")"

tools/install-packages.sh build run
tools/build-deps.sh
echo "== Building mingw-x64"
cmake --preset mingw-x64 >build/mingw-x64.log || { cat build/mingw-x64.log; exit 1; }
cmake --build --preset mingw-x64 --target Tarvelin tarvelin_languages sample/all

echo "== Making a sample system"
mode=desktop
[ -z "${DISPLAY-}" ] || mode=screen
prefix=build/wine/run
xvfb=
cleanup() {
  tools/wine-prefix.sh remove "$prefix"
  [ -z "$xvfb" ] || kill "$xvfb"
}
[ ! -e "$prefix" ] || tools/wine-prefix.sh remove "$prefix"
tools/wine-prefix.sh new "$prefix" $mode
trap cleanup EXIT
sample/fill-prefix.sh "$prefix" build/mingw-x64
eval "$(tools/wine-prefix.sh env "$prefix")"

start_display() {
  exec 3< <(exec Xvfb -displayfd 1 -screen 0 1280x1024x24 -nolisten tcp 2>build/xvfb.log)
  xvfb=$!
  read -r -t 20 number <&3 || { cat build/xvfb.log >&2; exit 1; }
  export DISPLAY=:$number
}
[ $mode = screen ] || start_display

echo "== Counting the rows of every page"
timeout 120 wine build/mingw-x64/sample/count_rows.exe "Z:${PWD//\//\\}\\build\\mingw-x64\\Tarvelin.exe"

if [ $mode = screen ]; then
  echo "== Running; close the window to end"
  wine build/mingw-x64/Tarvelin.exe
else
  echo "== No display: saving a picture of each page"
  wine build/mingw-x64/Tarvelin.exe &
  tools/screenshots.sh build/screenshots

  # Again in other languages, as a user's settings file would have it.
  settings=$(find "$prefix/drive_c/users" -path '*/AppData/Roaming' -not -path '*/Public/*')
  mkdir -p "$settings/Corvane/Halvicore V4"
  for language in German French Russian Japanese; do
    wineserver -k -w
    printf '[Main]\r\nLanguage=%s\r\n' $language >"$settings/Corvane/Halvicore V4/Main.ini"
    wine build/mingw-x64/Tarvelin.exe &
    tools/screenshots.sh build/screenshots/${language,,} shell-extensions browser-helpers \
      browser-settings change-setting question
  done

  # And in the colours of a scheme for those who see black on white badly.
  wineserver -k -w
  rm "$settings/Corvane/Halvicore V4/Main.ini"
  wine reg import sample/high-contrast.reg
  wineserver -k -w
  wine build/mingw-x64/Tarvelin.exe &
  tools/screenshots.sh build/screenshots/high-contrast
fi
