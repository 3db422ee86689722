#!/usr/bin/env bash
# Builds libpng and libjpeg-turbo for Windows from the distribution's source packages into
# build/deps/<preset>/, as static libraries. zlib comes from the package libz-mingw-w64-dev.
# Usage: tools/build-deps.sh [mingw-x64] [mingw-x86]     (both when none is named)
# Does nothing for a target that was built before by this script with the same settings.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD deps=$PWD/build/deps
[ $# -gt 0 ] || set -- mingw-x64 mingw-x86
stamp=$(cat tools/build-deps.sh tools/libpng.dfa cmake/mingw*.cmake | sha256sum)

missing=()
for preset in "$@"; do
  [ "$(cat "$deps/$preset/stamp" 2>/dev/null)" = "$stamp" ] || missing+=("$preset")
done
[ ${#missing[@]} -gt 0 ] || exit 0

mkdir -p "$deps"
exec 9>"$deps/lock"
flock 9

# The release's source packages, from wherever this machine gets its packages: its own sources as
# "deb-src", in a configuration of our own, so that nothing of the system's is changed.
# shellcheck disable=SC1091  # os-release is not ours
derive_sources() {
  local release file
  release=$(. /etc/os-release && echo "$VERSION_CODENAME")
  mkdir -p apt/sources apt/lists/partial apt/cache/archives/partial
  rm -f apt/sources/*
  for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [ -f "$file" ] || continue
    sed -n -E "s/^deb(-src)?[[:space:]]+((\[[^]]*\])?[[:space:]]*[^[:space:]]+[[:space:]]+$release(-updates|-security)?\/?[[:space:]].*)/deb-src \2/p" \
      "$file" | sort -u >>apt/sources/derived.list
  done
  for file in /etc/apt/sources.list.d/*.sources; do
    [ -f "$file" ] || continue
    # One stanza at a time, without comments; those of other releases and makers are left out.
    sed '/^#/d' "$file" | awk -v RS= -v ORS='\n\n' -v release="$release" '
      tolower($0) ~ /(^|\n)enabled:[ \t]*no/ { next }
      $0 ~ "(^|\n)Suites:([^\n]|\n[ \t])*\n?[ \t]" release "(-updates|-security)?([ \t\n]|$)" {
        gsub(/(^|\n)Types:[^\n]*/, "&\001"); gsub(/Types:[^\n]*\001/, "Types: deb-src"); print
      }' >>apt/sources/derived.sources
  done
  [ -s apt/sources/derived.list ] || [ -s apt/sources/derived.sources ] || {
    echo "build-deps: no package source for $release in /etc/apt" >&2
    exit 1
  }
}

private_apt() {
  local command=$1
  shift
  "$command" -o Dir::Etc::SourceList=/dev/null -o Dir::Etc::SourceParts="$deps/apt/sources" \
    -o Dir::State::Lists="$deps/apt/lists" -o Dir::Cache="$deps/apt/cache" \
    -o APT::Sandbox::User= -o Acquire::Retries=2 "$@"
}

unpack() { # PACKAGE
  local patch
  tar -x --strip-components=1 -C "src/$1" -f download/*.orig.tar.[gx]z
  tar -x -C "src/$1" -f download/*.debian.tar.*
  sed 's/[[:space:]]*#.*//; /^$/d' "src/$1/debian/patches/series" | while read -r patch _; do
    patch -d "src/$1" -p1 <"src/$1/debian/patches/$patch"
  done
}

# fetch PACKAGE: its sources in src/PACKAGE. A mirror may list a version of which it does not hold
# everything. Without the description (.dsc) the two archives do, each being what the signed list
# says; without those the next lower version is taken.
fetch() {
  local package=$1 version
  for version in $(private_apt apt-cache showsrc --only-source "$package" |
    sed -n 's/^Version: //p' | sort -rVu); do
    echo "build-deps: fetching $package $version"
    rm -rf download "src/$package"
    mkdir -p download "src/$package"
    (cd download && private_apt apt-get -q source --download-only "$package=$version") \
      >"$package.log" 2>&1 || true
    private_apt apt-get -q source --print-uris "$package=$version" |
      sed -n -E "s/^'[^']*' ([^ ]*\.tar\.[a-z0-9]+) [0-9]+ SHA256:([0-9a-f]{64})\$/\2  \1/p" \
        >download/sums
    [ "$(wc -l <download/sums)" = 2 ] || continue
    if (cd download && sha256sum -c sums) >>"$package.log" 2>&1; then
      unpack "$package" >>"$package.log"
      return
    fi
  done
  cat update.log >&2
  [ ! -e "$package.log" ] || cat "$package.log" >&2
  echo "build-deps: the sources of $package cannot be had" >&2
  exit 1
}

build_one() { # PRESET PACKAGE OPTIONS...
  local preset=$1 package=$2
  shift 2
  echo "build-deps: building $package for $preset"
  cmake -G Ninja -S "src/$package" -B "$preset.build/$package" \
    -DCMAKE_TOOLCHAIN_FILE="$root/cmake/$preset.cmake" -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_C_FLAGS="-ffunction-sections -fdata-sections -fstack-protector-strong -DNO_GETENV" \
    -DCMAKE_C_FLAGS_RELEASE="-Os -DNDEBUG" \
    -DCMAKE_INSTALL_PREFIX="$deps/$preset.new" "$@"
  cmake --build "$preset.build/$package" --target install
}

build() {
  local preset=$1
  rm -rf "$preset.new" "$preset.build"
  # Only what decodes a picture is wanted. NO_GETENV, above, keeps libjpeg from being told by the
  # environment how much memory to take.
  build_one "$preset" libpng1.6 -DPNG_SHARED=OFF -DPNG_TESTS=OFF -DDFA_XTRA="$root/tools/libpng.dfa"
  build_one "$preset" libjpeg-turbo -DENABLE_SHARED=OFF -DWITH_TURBOJPEG=OFF -DWITH_SIMD=OFF \
    -DWITH_ARITH_ENC=OFF
  cat src/libpng1.6/LICENSE src/libjpeg-turbo/LICENSE.md /usr/share/doc/libz-mingw-w64-dev/copyright \
    /usr/share/doc/mingw-w64-common/copyright >"$preset.new/licenses.txt"
  # The package versions of all that a program is linked with.
  local arch=x86-64 package
  [ "$preset" = mingw-x64 ] || arch=i686
  {
    for package in libpng1.6 libjpeg-turbo; do
      echo "$package $(dpkg-parsechangelog -S Version -l "src/$package/debian/changelog")"
    done
    dpkg-query -W -f='zlib ${Version}\n' libz-mingw-w64-dev
    dpkg-query -W -f='mingw-w64 ${Version}\n' "mingw-w64-$arch-dev"
    dpkg-query -W -f='gcc ${Version}\n' "g++-mingw-w64-$arch-posix"
  } >"$preset.new/versions"
  echo "$stamp" >"$preset.new/stamp"
  rm -rf "$preset.build" "$preset"
  mv "$preset.new" "$preset"
}

cd "$deps"
derive_sources
echo "build-deps: reading the lists of source packages"
# Lists of other makers may fail to load; what matters is whether the sources can be had.
private_apt apt-get -q update >update.log 2>&1 || true
fetch libpng1.6
fetch libjpeg-turbo
# What libjpeg can do only for a caller that asks for it: other sizes, palettes, rougher sums. There
# is no option for these.
sed -i -E '/^#define (DCT_IFAST|DCT_FLOAT|IDCT_SCALING|UPSAMPLE_MERGING|QUANT_[12]PASS)_SUPPORTED/d' \
  src/libjpeg-turbo/jmorecfg.h

jobs=()
for preset in "${missing[@]}"; do
  build "$preset" >"$preset.log" 2>&1 &
  jobs+=("$!:$preset")
done
failed=0
for job in "${jobs[@]}"; do
  if wait "${job%%:*}"; then
    echo "build-deps: ${job#*:} is ready"
  else
    tail -n 30 "${job#*:}.log" >&2
    echo "build-deps: ${job#*:} failed, see build/deps/${job#*:}.log" >&2
    failed=1
  fi
done
[ $failed = 0 ] && rm -rf src download apt
exit $failed
