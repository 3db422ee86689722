#!/usr/bin/env bash
# Saves pictures of the program that runs on DISPLAY, in a Wine desktop of its own.
#   screenshots.sh FOLDER         clicks through the pages and takes each, then the dialog that
#                                 changes a setting, then the navigation bar with closed groups
#   screenshots.sh FOLDER NAME    takes the window as it stands
set -euo pipefail
folder=$1
only=${2-}
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

take() {
  local file=$folder/$1.png place=$2 last='' picture
  for _ in $(seq 40); do
    picture=$(import -window root -crop "$place" +repage png:- | convert png:- rgba:- | sha256sum)
    [ "$picture" != "$last" ] || break
    last=$picture
    sleep 0.25
  done
  import -window root -crop "$place" +repage "$file"
  echo "$file"
}

place=$(wait_for_window)
if [ -n "$only" ]; then
  take "$only" "$place"
  exit
fi
IFS='x+' read -r _ _ left top <<<"$place"
click() {
  xdotool mousemove $((left + frame_left + $1)) $((top + frame_top + $2)) click "${@:3}" 1
  # Out of the way, so that nothing is shown as pointed at.
  xdotool mousemove 1279 1023
}
while read -r name x y; do
  [ -n "$name" ] || continue
  click "$x" "$y"
  take "$name" "$place"
done <<<"$pages"
click 300 120 --repeat 2 --delay 50
sleep 1
take change-setting "$place"
xdotool key Escape
sleep 1
click 60 188
sleep 0.5
click 60 90
take groups-closed "$place"

# Two pages that look alike would mean that a click went nowhere.
alike=$(while read -r name _; do
  [ -z "$name" ] || convert "$folder/$name.png" rgba:- | sha256sum
done <<<"$pages
change-setting
groups-closed" | sort | uniq -d)
if [ -n "$alike" ]; then
  echo "screenshots: some pages look the same" >&2
  exit 1
fi
