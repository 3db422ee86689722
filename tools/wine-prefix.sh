#!/usr/bin/env bash
# Private Wine prefixes: each a small Windows of its own, copied in a moment from one that is made
# once (build/wine/base, or TARVELIN_WINE_BASE).
#   wine-prefix.sh base              makes that one now; otherwise the first "new" does
#   wine-prefix.sh new DIR null      a prefix whose programs get windows but no screen
#   wine-prefix.sh new DIR screen    one whose windows appear on the caller's DISPLAY
#   wine-prefix.sh new DIR desktop   the same on a desktop of its own, 1280x1024, drawn there
#   wine-prefix.sh env DIR           prints the settings under which programs run in it, for eval
#   wine-prefix.sh stop DIR          ends its programs; its registry is on disk afterwards
#   wine-prefix.sh remove DIR        stop, and delete the folder
# A caller does:
#   tools/wine-prefix.sh new "$dir" null
#   eval "$(tools/wine-prefix.sh env "$dir")"
#   wine program.exe
#   tools/wine-prefix.sh remove "$dir"
# Most files of drive_c are hard links to the base's: replace such a file, do not write into it.
set -euo pipefail
tools=$(cd "$(dirname "$0")" && pwd)
base=${TARVELIN_WINE_BASE-$tools/../build/wine/base}

settings() {
  printf 'export WINEPREFIX=%q WINEARCH=win64 WINEDEBUG=-all\n' "$(realpath "$1")"
  # The same English Windows everywhere, with file names in UTF-8.
  printf 'export LC_ALL=C.UTF-8\n'
  printf 'export WINEDLLOVERRIDES=%q\n' "mscoree,mshtml=;winemenubuilder.exe,winedbg.exe=d"
}

make_base() {
  local stamp
  stamp=$(WINEDEBUG=-all wine --version && sha256sum <"$tools/wine-prefix.sh")
  mkdir -p "$base/.."
  exec 9>"$base.lock"
  flock 9
  if [ "$(cat "$base/stamp" 2>/dev/null)" != "$stamp" ]; then
    rm -rf "$base"
    mkdir "$base"
    (
      eval "$(settings "$base")"
      exec 9>&-  # the server outlives this shell
      env -u DISPLAY timeout 120 wineboot -i >"$base.log" 2>&1 || { cat "$base.log" >&2; exit 1; }
      wineserver -k -w
    )
    # Without a Tahoma Wine takes another font and the texts do not fit their places.
    cp /usr/share/wine/fonts/*.ttf "$base/drive_c/windows/Fonts/"
    # It has no Chinese or Japanese characters; as on Windows another font lends them.
    cp /usr/share/fonts-droid-fallback/truetype/DroidSansFallback.ttf \
      "$base/drive_c/windows/Fonts/"
    printf '\n[%s] 1700000000\n' >>"$base/system.reg" \
      'Software\\Microsoft\\Windows NT\\CurrentVersion\\FontLink\\SystemLink'
    printf '"%s"=str(7):"DroidSansFallback.ttf,Droid Sans Fallback\\0"\n' >>"$base/system.reg" \
      Tahoma 'Tahoma Bold'
    # The user's folders are links into the home directory; here they are folders.
    find "$base/drive_c/users" -type l | while read -r link; do
      rm "$link"
      mkdir "$link"
    done
    echo "$stamp" >"$base/stamp"
  fi
  exec 9>&-
}

new() {
  local dir=$1 mode=$2
  make_base
  mkdir -p "$dir"
  cp -al "$base/drive_c" "$dir/"
  cp -a "$base/dosdevices" "$base"/*.reg "$base/.update-timestamp" "$dir/"
  # These few are written in place.
  find "$dir/drive_c/windows" -maxdepth 1 -name '*.ini' | while read -r file; do
    cp -p "$file" "$file.copy"
    mv "$file.copy" "$file"
  done
  case $mode in
    null)
      printf '\n[Software\\\\Wine\\\\Drivers] 1700000000\n"Graphics"="null"\n'
      ;;
    screen) ;;
    desktop)
      printf '\n[Software\\\\Wine\\\\Explorer] 1700000000\n"Desktop"="Default"\n'
      printf '\n[Software\\\\Wine\\\\Explorer\\\\Desktops] 1700000000\n"Default"="1280x1024"\n'
      ;;
    *)
      echo "wine-prefix: null, screen or desktop, not $mode" >&2
      exit 2
      ;;
  esac >>"$dir/user.reg"
}

stop() {
  (
    eval "$(settings "$1")"
    wineserver -k -w || true  # it is an error when nothing runs
  )
}

case ${1-}:$# in
  base:1) make_base ;;
  new:3) new "$2" "$3" ;;
  env:2) settings "$2" ;;
  stop:2) stop "$2" ;;
  remove:2)
    stop "$2"
    rm -rf "$2"
    ;;
  *)
    sed -n '2,/^set/s/^# \{0,1\}//p' "$0" >&2
    exit 2
    ;;
esac
