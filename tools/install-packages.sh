#!/usr/bin/env bash
# Installs what is missing on a Debian machine: install-packages.sh PURPOSE...     (see below)
set -euo pipefail

# shellcheck disable=SC1091  # os-release is not ours
system=$(. /etc/os-release 2>/dev/null && echo "${ID-} ${VERSION_ID-}" || true)
case $system in
  "debian 12" | "debian 13") ;;
  *)
    echo "This was made for Debian 12 and 13 and their packages; here is ${system:-another system}." >&2
    exit 1
    ;;
esac

packages=()
for purpose in "$@"; do
  case $purpose in
    build)
      packages+=(cmake ninja-build g++ g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix
        libz-mingw-w64-dev googletest dpkg-dev ca-certificates)
      ;;
    test)
      packages+=(libpng-dev libjpeg62-turbo-dev python3-pefile python3
        wine wine64 fonts-wine fonts-droid-fallback)
      # Other versions format and find otherwise; there the two checks are skipped.
      [ "$system" != "debian 12" ] || packages+=(clang-format-14 clang-tidy-14)
      ;;
    run)
      packages+=(wine wine64 fonts-wine fonts-droid-fallback xvfb xdotool imagemagick)
      ;;
    docs)
      packages+=(doxygen)
      ;;
    clang)
      packages+=(clang)
      ;;
    package)
      packages+=(nsis librsvg2-bin imagemagick osslsigncode openssl python3-pefile git)
      ;;
    x86)
      packages+=(debootstrap)
      ;;
    bench)
      packages+=(libbenchmark-dev python3)
      ;;
    fuzz)
      packages+=(clang libclang-rt-dev libpng-dev libjpeg62-turbo-dev)
      ;;
    *)
      echo "install-packages: build, test, run, docs, clang, package, x86, bench or fuzz, not $purpose" >&2
      exit 2
      ;;
  esac
done

is_missing() {
  ! dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null | grep -qx installed
}
missing=()
for package in "${packages[@]}"; do
  if is_missing "$package"; then missing+=("$package"); fi
done
[ ${#missing[@]} -gt 0 ] || exit 0

as_root=()
if [ "$(id -u)" != 0 ]; then
  command -v sudo >/dev/null || {
    echo "Missing, and neither root nor sudo to install them: ${missing[*]}" >&2
    exit 1
  }
  as_root=(sudo)
fi
echo "Installing: ${missing[*]}"
# Lists of other makers may fail to load; what matters is whether the packages can be had.
"${as_root[@]}" apt-get -q update || true
unknown=()
for package in "${missing[@]}"; do
  apt-cache show "$package" >/dev/null 2>&1 || unknown+=("$package")
done
if [ ${#unknown[@]} -gt 0 ]; then
  echo "This machine's package sources do not have: ${unknown[*]}" >&2
  exit 1
fi
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
  apt-get -q install -y --no-install-recommends "${missing[@]}"
for package in "${missing[@]}"; do
  if is_missing "$package"; then
    echo "$package could not be installed" >&2
    exit 1
  fi
done
