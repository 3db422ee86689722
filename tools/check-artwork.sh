#!/usr/bin/env bash
# Checks that the pictures in resources/ are those that their drawings give, so that no drawing is
# changed without rendering it. Rendering libraries differ in the last bit of an edge's shade: a
# difference of 2 % in a channel is let pass.
set -euo pipefail
cd "$(dirname "$0")/.."
fresh=$(mktemp -d)
trap 'rm -rf "$fresh"' EXIT
tools/render-artwork.sh "$fresh"

failed=0
fail() {
  echo "check-artwork: $1" >&2
  failed=1
}

# same KEPT RENDERED: whether both pictures have the same size and pixels.
same() {
  [ "$(identify -format '%wx%h' "$1")" = "$(identify -format '%wx%h' "$2")" ] &&
    [ "$(compare -metric AE -fuzz 2% "$1" "$2" null: 2>&1)" = 0 ]
}

kept=$(cd resources/artwork && ls ./*.png ./*.jpg)
rendered=$(cd "$fresh/artwork" && ls)
[ "${kept//.\//}" = "$rendered" ] || fail "resources/artwork does not hold exactly: ${rendered//$'\n'/ }"
for picture in "$fresh"/artwork/*; do
  name=${picture##*/}
  same "resources/artwork/$name" "$picture" || fail "$name is not what its drawing gives"
done

mkdir "$fresh/kept-icons" "$fresh/icons"
icotool --extract --output="$fresh/kept-icons" resources/tarvelin.ico
icotool --extract --output="$fresh/icons" "$fresh/tarvelin.ico"
for icon in "$fresh"/icons/*; do
  same "$fresh/kept-icons/${icon##*/}" "$icon" || fail "tarvelin.ico: ${icon##*_} is not what its drawing gives"
done
exit "$failed"
