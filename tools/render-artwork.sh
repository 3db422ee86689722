#!/usr/bin/env bash
# Renders the SVG drawings of resources/artwork/ to the pictures and the icon that the program
# carries. Usage: tools/render-artwork.sh [folder]   (default: in place, resources/)
# Needs rsvg-convert (librsvg2-bin), convert (imagemagick) and icotool (icoutils).
set -euo pipefail
cd "$(dirname "$0")/.."
sources=resources/artwork
target=${1:-resources}
mkdir -p "$target/artwork"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The same drawing gives the same bytes: no time stamps, and pixels as plain 8-bit RGBA or RGB.
png() { convert "$1" "${@:3}" -strip -define png:exclude-chunks=all -depth 8 "$2"; }

for name in logo navigation categories line line-soft; do
  rsvg-convert "$sources/$name.svg" -o "$work/$name.png"
  png "$work/$name.png" "PNG32:$target/artwork/$name.png"
done

# One sheet holds the headers of both navigation groups.
rsvg-convert "$sources/headers.svg" -o "$work/headers.png"
row=0
for name in header-menu-0 header-menu-1 header-ie-0 header-ie-1 header-ie-2 header-ie-3; do
  png "$work/headers.png" "PNG32:$target/artwork/$name.png" -crop "162x24+0+$((row * 24))" +repage
  row=$((row + 1))
done

# Full colour resolution, so that the bottom edge stays sharp.
rsvg-convert "$sources/background.svg" -o "$work/background.png"
convert "$work/background.png" -strip -sampling-factor 4:4:4 -quality 95 \
  "$target/artwork/background.jpg"

# Small sizes have drawings of their own, in which every edge falls on a whole pixel.
for size in 16 24 32; do rsvg-convert "$sources/icon-$size.svg" -o "$work/icon-$size.png"; done
rsvg-convert "$sources/logo.svg" -o "$work/icon-48.png"
rsvg-convert -w 256 -h 256 "$sources/logo.svg" -o "$work/icon-256.png"
icotool --create --output="$target/tarvelin.ico" "$work"/icon-{16,24,32,48}.png \
  --raw="$work/icon-256.png"
