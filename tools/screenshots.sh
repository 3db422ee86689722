#!/usr/bin/env bash
# Saves pictures of the program that runs on DISPLAY, in a Wine desktop of its own:
#   screenshots.sh FOLDER [NAME...]    all that are named below, or those
# It clicks through the pages, opens the dialog that changes a setting and the menu of a row, closes
# the groups of the navigation bar, and removes an entry unless only some are named.
set -euo pipefail
folder=$1
wanted=" ${*:2} "
mkdir -p "$folder"

# Where to click for each page, counted from the corner of the window's client area.
pages='
shell-extensions  60 115
new-menu          60 135
send-to           60 155
context-menus     60 213
explorer-bars     60 233
toolbars          60 253
extra-buttons     60 273
browser-helpers   60 293
activex-controls  60 313
browser-settings  60 333
'
frame_left=3 frame_top=22

# The desktop is of one colour: what is not is the window.
window_place() { import -window root png:- | convert png:- -format '%@' info: 2>/dev/null; }

# The place is taken when the window has stopped changing.
wait_for_window() {
  local place='' before tries
  for tries in $(seq 120); do
    before=$place
    place=$(window_place)
    if [[ $place == 7[0-9][0-9]x5[0-9][0-9]+* && $place == "$before" ]]; then
      echo "$place"
      return
    fi
    sleep 0.25
  done
  echo "screenshots: no window after $((tries / 4)) s, only ${place:-nothing}" >&2
  return 1
}

is_wanted() { [[ $wanted == "  " || $wanted == *" $1 "* ]]; }

# Two pictures that look alike would mean that a click went nowhere.
taken=
take() {
  is_wanted "$1" || return 0
  local file=$folder/$1.png last='' picture
  for _ in $(seq 40); do
    picture=$(import -window root -crop "$place" +repage png:- | convert png:- rgba:- | sha256sum)
    [ "$picture" != "$last" ] || break
    last=$picture
    sleep 0.25
  done
  if [[ $taken == *"$picture"* ]]; then
    echo "screenshots: $1 looks like one before it" >&2
    exit 1
  fi
  taken+=$picture
  import -window root -crop "$place" +repage "$file"
  echo "$file"
}

place=$(wait_for_window)
IFS='x+' read -r _ _ left top <<<"$place"
click() {
  xdotool mousemove $((left + frame_left + $1)) $((top + frame_top + $2)) click "${@:3}"
  # Out of the way, so that nothing is shown as pointed at.
  xdotool mousemove 1279 1023
}
press() {
  xdotool key "$@"
  sleep 1
}
while read -r name x y; do
  [ -n "$name" ] && is_wanted "$name" || continue
  click "$x" "$y" 1
  take "$name"
done <<<"$pages"
click 300 120 --repeat 2 --delay 50 1
sleep 1
take change-setting
press Escape
click 300 120 3
sleep 1
take row-menu
press Escape
click 60 135 1
click 60 188 1
sleep 0.5
click 60 90 1
take groups-closed
click 300 105 1
press Delete
take question
is_wanted removed || exit 0
press Return
take removed
press Return
