#!/usr/bin/env bash
# Tests what ./package.sh left in dist/: packaging/test.sh [x64] [x86]
# The installers named (both when none is) are run under Wine.
set -euo pipefail
cd "$(dirname "$0")/.."
[ $# -gt 0 ] || set -- x64 x86
version=$(sed -n 's/^project(Tarvelin VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() {
  echo "packaging/test: $1" >&2
  exit 1
}

(cd dist && sha256sum --quiet -c SHA256SUMS)
[ "$(cd dist && find . -type f ! -path './x*' ! -name SHA256SUMS | wc -l)" = \
  "$(wc -l <dist/SHA256SUMS)" ] || fail "SHA256SUMS does not name every file"
for arch in x64 x86; do
  tools/check-exe.py dist/$arch/Tarvelin.exe "$version"
  /usr/bin/python3 -m zipfile -e "dist/Tarvelin-$version-$arch.zip" "$work/$arch"
  diff -r -x README.md dist/$arch "$work/$arch/Tarvelin"
  [ -s "$work/$arch/Tarvelin/README.md" ] || fail "the zip for $arch has no README"
done
if grep -n '@' dist/winget/* dist/scoop/*; then fail "a template was not filled"; fi
/usr/bin/python3 - "dist/Tarvelin-$version.cdx.json" dist/scoop/tarvelin.json <<'PYTHON'
import json, sys
bill, scoop = (json.load(open(path, encoding="utf-8")) for path in sys.argv[1:])
references = {part["bom-ref"] for part in [bill["metadata"]["component"], *bill["components"]]}
for dependency in bill["dependencies"]:
    assert {dependency["ref"], *dependency["dependsOn"]} <= references, dependency
assert len(scoop["architecture"]) == 2
PYTHON
echo "packaging/test: the files of the release are whole"

# With a certificate made here: the program is signed, passes the checks of any program, gives back
# its bytes without the signature (sign.sh), and is signed to the same bytes again.
openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj '/CN=Tarvelin test' \
  -addext 'extendedKeyUsage=codeSigning' -keyout "$work/key" -out "$work/certificate" 2>/dev/null
echo secret >"$work/password"
openssl pkcs12 -export -inkey "$work/key" -in "$work/certificate" -passout "file:$work/password" \
  -out "$work/both"
moment=$(date +%s)
for copy in first second; do
  cp dist/x64/Tarvelin.exe "$work/$copy.exe"
  TARVELIN_CERTIFICATE=$work/both TARVELIN_CERTIFICATE_PASSWORD=$work/password \
    SOURCE_DATE_EPOCH=$moment packaging/sign.sh "$work/$copy.exe"
done
cmp "$work/first.exe" "$work/second.exe"
if cmp -s "$work/first.exe" dist/x64/Tarvelin.exe; then fail "nothing was signed"; fi
tools/check-exe.py "$work/first.exe" "$version"
osslsigncode verify -CAfile "$work/certificate" -in "$work/first.exe" >"$work/log" ||
  { cat "$work/log"; fail "the signature is not valid"; }
echo "packaging/test: signing works"

for arch; do
  if [ "$arch" = x86 ]; then
    tools/wine32.sh make
    tools/wine32.sh run packaging/test-installer.sh x86
  else
    packaging/test-installer.sh "$arch"
  fi
done
