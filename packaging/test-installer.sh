#!/usr/bin/env bash
# Installs, reinstalls and removes Tarvelin in a Wine prefix of its own: test-installer.sh x64|x86
# ./package.sh comes first. For x86 Wine has to run 32-bit programs (tools/wine32.sh).
set -euo pipefail
cd "$(dirname "$0")/.."
arch=$1
setup=$(echo "$PWD"/dist/Tarvelin-*-"$arch"-setup.exe)
stage=build/package/$arch
version=$(sed -n 's/^project(Tarvelin VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)

mkdir -p build/wine
prefix=$(mktemp -d "$PWD/build/wine/setup.XXXXXX")
trap 'tools/wine-prefix.sh remove "$prefix"' EXIT
tools/wine-prefix.sh new "$prefix" null
eval "$(tools/wine-prefix.sh env "$prefix")"
drive=$prefix/drive_c
folder="$drive/Program Files/Tarvelin"
shortcut="$drive/ProgramData/Microsoft/Windows/Start Menu/Programs/Tarvelin.lnk"
view=64
if [ "$arch" = x86 ]; then
  folder="$drive/Program Files (x86)/Tarvelin"
  shortcut=${shortcut%.lnk}" (32-bit).lnk"
  view=32
fi

fail() {
  echo "test-installer: $arch: $1" >&2
  exit 1
}
expect_code() { # CODE COMMAND...
  local code=0
  timeout 120 "${@:2}" || code=$?
  [ $code = "$1" ] || fail "exit code $code instead of $1 of: ${*:2}"
}
installed() { # FOLDER: exactly what was packed and the uninstaller
  diff <(cd "$stage/Tarvelin" && find . -type f -exec sha256sum {} + | sort) \
    <(cd "$1" && find . -type f ! -name Uninstall.exe -exec sha256sum {} + | sort) ||
    fail "the installed files are not those of the package"
  [ -s "$1/Uninstall.exe" ] || fail "no uninstaller"
}
registered() { # VALUE: what Windows' list of programs says, empty when it is not there
  wine reg query 'HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall\Tarvelin' \
    /v "$1" "/reg:$view" 2>/dev/null | sed -n 's/.*REG_SZ *//p' | tr -d '\r'
}

echo "test-installer: $arch: installing"
expect_code 0 wine "$setup" /S
installed "$folder"
[ -s "$shortcut" ] || fail "no shortcut"
[ "$(registered DisplayVersion)" = "$version" ] || fail "the list of programs does not name it"
[ "$(registered InstallLocation | tr '\\' /)" = "C:${folder#"$drive"}" ] || fail "wrong place"
settings=$(find "$drive/users" -path '*/AppData/Roaming/Corvane/Halvicore V4/Main.ini')
[ "$(tr -d '\r' <"$settings")" = $'[Main]\nLanguage=English' ] || fail "the language was not set"

echo "test-installer: $arch: installing again over a damaged program"
printf '[Main]\r\nLanguage=\r\nOther=1\r\n' >"$settings"
cp "$settings" "$prefix/settings"
echo damaged >"$prefix/damaged"
mv "$prefix/damaged" "$folder/Tarvelin.exe"
rm "$folder/Toolbox_Language/German.lng"
expect_code 0 wine "$setup" /S
installed "$folder"
cmp "$settings" "$prefix/settings" || fail "settings were changed that were there"

echo "test-installer: $arch: refusing while the program runs"
echo changed >"$folder/license.txt"
wine "$folder/Tarvelin.exe" &
for _ in $(seq 100); do
  # The one process of that name; it has claimed its mutex once it waits for input.
  [ "$(wine tasklist 2>/dev/null | grep -c 'Tarvelin.exe')" != 1 ] || break
  sleep 0.2
done
sleep 2
expect_code 32 wine "$setup" /S
wine "$folder/Uninstall.exe" /S
sleep 3
[ "$(cat "$folder/license.txt")" = changed ] || fail "it was installed while the program ran"
[ -e "$folder/Tarvelin.exe" ] || fail "it was removed while the program ran"
wineserver -k -w

echo "test-installer: $arch: removing"
echo mine >"$folder/notes.txt"
echo mine >"$folder/Toolbox_Language/Mine.lng"
wine "$folder/Uninstall.exe" /S
wineserver -w
[ "$(cd "$folder" && find . -type f | sort)" = $'./Toolbox_Language/Mine.lng\n./notes.txt' ] ||
  fail "not exactly the user's own files stayed"
[ ! -e "$shortcut" ] || fail "the shortcut stayed"
[ -z "$(registered DisplayVersion)" ] || fail "the list of programs still names it"
cmp "$settings" "$prefix/settings" || fail "settings were changed by the removal"

echo "test-installer: $arch: into a folder of choice"
expect_code 0 wine "$setup" /S '/D=C:\Chosen'
installed "$drive/Chosen"
wine "$drive/Chosen/Uninstall.exe" /S
wineserver -w
[ ! -e "$drive/Chosen" ] || fail "an empty folder stayed"
echo "test-installer: $arch: passed"
