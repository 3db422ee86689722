#!/usr/bin/env bash
# Makes everything that a release consists of in dist/: for x64 and x86 a zip to unpack and an
# installer, the software bill of materials, the manifests for winget and Scoop, and the checksums
# of all. The same commit gives the same bytes in any folder.
#
#   TARVELIN_CERTIFICATE           a PKCS#12 file; programs and installers are signed with it
#   TARVELIN_CERTIFICATE_PASSWORD  the file that holds its password
#   TARVELIN_TIMESTAMP_URL         a time stamping service for the signatures, if any
#   TARVELIN_DOWNLOAD_URL          where the files will lie, for the manifests
set -euo pipefail
cd "$(dirname "$0")"

tools/install-packages.sh build package
./build.sh
version=$(sed -n 's/^project(Tarvelin VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
# What has a date bears that of the commit.
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH-$(git log -1 --format=%ct)}
export SOURCE_DATE_EPOCH TZ=UTC LC_ALL=C.UTF-8 MAGICK_THREAD_LIMIT=1
url=${TARVELIN_DOWNLOAD_URL-https://tarvelin.example/$version}
stage=build/package
rm -rf $stage dist/*.zip dist/*.exe dist/*.json dist/winget dist/scoop dist/SHA256SUMS
mkdir -p $stage

sign=packaging/sign.sh
if [ -n "${TARVELIN_CERTIFICATE-}" ]; then
  echo "== Signing"
  for arch in x64 x86; do $sign dist/$arch/Tarvelin.exe; done
fi

# nsis_files INSTALL|REMOVE < FILES: the installer's or the uninstaller's commands for files and
# folders, both in the order of their names.
nsis_files() {
  local path folder last=none
  while read -r path; do
    case $1 in
      INSTALL)
        folder=$(dirname "/$path")
        folder=${folder%/}
        [ "$folder" = "$last" ] || echo "SetOutPath \"\$INSTDIR${folder//\//\\}\""
        last=$folder
        echo "File \"\${STAGE}/Tarvelin/$path\""
        ;;
      REMOVE) echo "Delete \"\$INSTDIR\\${path//\//\\}\"" ;;
    esac
  done
}

# The languages whose texts the program has, English first, which is for all others.
nsis_languages() {
  local file nsis running known=" "
  while IFS='|' read -r file nsis running; do
    known+="$file.lng "
    [ -e "resources/languages/$file.lng" ] || continue
    echo "!insertmacro MUI_LANGUAGE \"$nsis\""
    echo "LangString Language \${LANG_${nsis^^}} \"$file\""
    echo "LangString Running \${LANG_${nsis^^}} \"$running\""
  done < <(grep -v '^#' packaging/languages.txt)
  for file in resources/languages/*.lng; do
    [[ $known == *" ${file##*/} "* ]] || {
      echo "package: packaging/languages.txt does not name ${file##*/}" >&2
      exit 1
    }
  done
}

for arch in x64 x86; do
  echo "== Packing $arch"
  here=$stage/$arch
  mkdir -p "$here"
  cp -r dist/$arch "$here/Tarvelin"
  cp README.md "$here/Tarvelin/README.md"
  packaging/zip.py "dist/Tarvelin-$version-$arch.zip" "$here/Tarvelin" "$SOURCE_DATE_EPOCH"

  (cd "$here/Tarvelin" && find . -type f | sed 's/^\.\///' | sort) >"$here/files"
  nsis_files INSTALL <"$here/files" >"$here/files.nsh"
  nsis_files REMOVE <"$here/files" >"$here/unfiles.nsh"
  nsis_languages >"$here/languages.nsh"
  cp resources/tarvelin.ico "$here/Tarvelin/license.txt" "$here/"
  # The drawings refer to the logo beside them.
  cp packaging/*.svg resources/artwork/logo.svg "$here/"
  for picture in header welcome; do
    rsvg-convert "$here/$picture.svg" -o "$here/$picture.png"
    convert "$here/$picture.png" -background white -flatten -type TrueColor "BMP3:$here/$picture.bmp"
  done
  # An installer keeps the times of its files.
  find "$here" -exec touch -h -d "@$SOURCE_DATE_EPOCH" {} +

  target=amd64-unicode
  [ $arch = x64 ] || target=x86-unicode
  setup=dist/Tarvelin-$version-$arch-setup.exe
  options=(-DVERSION="$version" -DARCH="$arch" -DTARGET="$target" -DSTAGE="$PWD/$here"
    -DOUTPUT="$PWD/$setup" -DKILOBYTES="$(du -ks --apparent-size "$here/Tarvelin" | cut -f1)")
  [ -z "${TARVELIN_CERTIFICATE-}" ] || options+=(-DSIGN="$PWD/$sign")
  makensis -V2 -WX -INPUTCHARSET UTF8 "${options[@]}" packaging/tarvelin.nsi
  [ -z "${TARVELIN_CERTIFICATE-}" ] || $sign "$setup"
done

echo "== Describing the release"
cmp build/deps/mingw-x64/versions build/deps/mingw-x86/versions
packaging/bill.py "dist/Tarvelin-$version.cdx.json" "$version" "$SOURCE_DATE_EPOCH" \
  build/deps/mingw-x64/versions dist/x64/Tarvelin.exe dist/x86/Tarvelin.exe
hash_of() { sha256sum "dist/$1" | cut -d' ' -f1; }
mkdir dist/winget dist/scoop
for template in packaging/winget/*.in packaging/scoop/*.in; do
  target=${template#packaging/}
  sed -e "s|@VERSION@|$version|g" -e "s|@URL@|$url|g" \
    -e "s|@DATE@|$(date -u -d "@$SOURCE_DATE_EPOCH" +%F)|g" \
    -e "s|@ZIP_X64@|Tarvelin-$version-x64.zip|g" -e "s|@ZIP_X86@|Tarvelin-$version-x86.zip|g" \
    -e "s|@SETUP_X64@|Tarvelin-$version-x64-setup.exe|g" \
    -e "s|@SETUP_X86@|Tarvelin-$version-x86-setup.exe|g" \
    -e "s|@ZIP_X64_SHA256@|$(hash_of "Tarvelin-$version-x64.zip")|g" \
    -e "s|@ZIP_X86_SHA256@|$(hash_of "Tarvelin-$version-x86.zip")|g" \
    -e "s|@SETUP_X64_SHA256@|$(hash_of "Tarvelin-$version-x64-setup.exe")|g" \
    -e "s|@SETUP_X86_SHA256@|$(hash_of "Tarvelin-$version-x86-setup.exe")|g" \
    "$template" >"dist/${target%.in}"
done
(cd dist && sha256sum Tarvelin-* winget/* scoop/*) >build/SHA256SUMS
mv build/SHA256SUMS dist/
sed -n '/^[0-9a-f]*  Tarvelin-/p' dist/SHA256SUMS
[ -n "${TARVELIN_CERTIFICATE-}" ] || echo "Nothing is signed: no TARVELIN_CERTIFICATE was given."
[ -n "${TARVELIN_DOWNLOAD_URL-}" ] || echo "The manifests name no real place: no TARVELIN_DOWNLOAD_URL was given."
