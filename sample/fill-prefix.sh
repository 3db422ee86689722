#!/usr/bin/env bash
# Turns a Wine prefix into a well-used computer: fill-prefix.sh PREFIX BUILD_DIRECTORY
# Installs the sample modules of that build, fills the "Send to" folder and imports sample.reg. It
# can be run again to bring back what was removed meanwhile.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
prefix=$(cd "$1" && pwd)
modules=$(cd "$2" && pwd)/sample
eval "$("$here/../tools/wine-prefix.sh" env "$prefix")"
unset DISPLAY
drive=$prefix/drive_c

install_to() {
  mkdir -p "$drive/$1"
  cp -f --remove-destination "${@:2}" "$drive/$1/"
}
install_to "Program Files/Quimbrel" "$modules/quimbrel.dll"
install_to "Program Files/Pellowick" "$modules/pellowick.dll"
install_to "Program Files/Dunmorrel" "$modules/dunmorrel.dll"
install_to "Program Files/Fennimarsch Süd" "$modules/ueberblick.dll"
install_to "Program Files/ことのは" "$modules/kotonoha.ocx"
install_to "Program Files/نخلة" "$modules/nakhla.dll"
install_to "Program Files/Companion" "$modules"/companion/*.dll
install_to "windows" "$modules/bare.dll"
install_to "windows/Downloaded Program Files" "$modules"/{wexcomb.ocx,refusing.dll,crashing.dll} \
  "$modules"/{silent.ocx,text.dll,truncated.dll}
if [ -e "$modules/orchard32.dll" ]; then
  install_to "Program Files (x86)/Old Orchard" "$modules/orchard32.dll"
fi

send_to=$(find "$drive/users" -iname SendTo -path '*Microsoft/Windows*' -print -quit)
if [ -z "$send_to" ]; then
  send_to=$drive/users/$(id -un)/AppData/Roaming/Microsoft/Windows/SendTo
fi
mkdir -p "$send_to/Project folder"
touch "$send_to"/{"Mail Recipient.MAPIMail","a.lnk.lnk","Fax & Co.lnk","50 % kleiner.lnk",README} \
  "$send_to"/{Überblick.lnk,ことのは手帳.txt,نخلة.lnk,"Hollowfern 🌲.zip","Compressed (zipped) Folder.ZFSendToTarget"}
printf '[.ShellClassInfo]\r\n' >"$send_to/desktop.ini"
touch "$send_to/.hidden"  # to Wine, a name that begins with a dot is that of a hidden file

registry=$(mktemp --suffix=.reg)
trap 'rm -f "$registry"' EXIT
folder=C:${send_to#"$drive"}
{
  cat "$here/sample.reg"
  printf '\n[HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\'
  printf 'Shell Folders]\n"SendTo"="%s"\n' "${folder//\//\\\\}"
} | sed 's/$/\r/' | iconv -f UTF-8 -t UTF-16 >"$registry"
# Where Wine has both bitnesses it starts the 32-bit tools first; the view is named.
wine reg import "Z:${registry//\//\\}" /reg:64
wineserver -k -w || true
