#!/usr/bin/env bash
# Signs a program in place: sign.sh EXECUTABLE     (see package.sh for what it finds in its
# environment). Taking the signature away has to give back the program as it was.
set -euo pipefail
program=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

options=(-pkcs12 "$TARVELIN_CERTIFICATE" -h sha256 -n Tarvelin -st "$SOURCE_DATE_EPOCH")
[ -z "${TARVELIN_CERTIFICATE_PASSWORD-}" ] || options+=(-readpass "$TARVELIN_CERTIFICATE_PASSWORD")
[ -z "${TARVELIN_TIMESTAMP_URL-}" ] || options+=(-ts "$TARVELIN_TIMESTAMP_URL")
osslsigncode sign "${options[@]}" -in "$program" -out "$work/signed" >"$work/log" ||
  { cat "$work/log" >&2; exit 1; }
osslsigncode remove-signature -in "$work/signed" -out "$work/bare" >"$work/log" ||
  { cat "$work/log" >&2; exit 1; }
cmp "$program" "$work/bare"
cp "$work/signed" "$program"
