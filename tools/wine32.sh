#!/usr/bin/env bash
# A Wine that runs 32-bit programs: the machine's own where it can, and otherwise one in a Debian of
# its own, in build/x86-root/, since its packages would replace some of the machine's. That needs
# root, or sudo, for chroot.
#   wine32.sh there                 whether the machine's own Wine can
#   wine32.sh possible              whether the machine's own can or another one can be made
#   wine32.sh make                  makes the other Debian where it is needed (about two minutes)
#   wine32.sh run COMMAND [ARG...]  runs a command where that Wine is; it sees this source tree in
#                                   its own place
set -euo pipefail
tree=$(cd "$(dirname "$0")/.." && pwd)
root=$tree/build/x86-root

there() { [ -e /usr/lib/i386-linux-gnu/wine ]; }

as_root=()
[ "$(id -u)" = 0 ] || as_root=(sudo)

make() {
  if there; then return; fi
  local stamp release mirror
  # shellcheck disable=SC1091  # os-release is not ours
  release=$(. /etc/os-release && echo "$VERSION_CODENAME")
  stamp=$(echo "$release" && declare -f make | sha256sum)
  [ "$(cat "$root/stamp" 2>/dev/null)" != "$stamp" ] || return 0

  "$tree/tools/install-packages.sh" x86
  # Where this machine gets the release from.
  # shellcheck disable=SC2016  # it is not the shell's
  mirror=$(apt-get indextargets --format '$(REPO_URI)' "Codename: $release" 'Created-By: Packages' |
    head -n 1)
  "${as_root[@]}" rm -rf "$root"
  mkdir -p "$tree/build"
  echo "wine32: making a Debian $release with a 32-bit Wine"
  {
    "${as_root[@]}" debootstrap --variant=minbase "$release" "$root" "$mirror"
    "${as_root[@]}" chroot "$root" sh -c '
      export DEBIAN_FRONTEND=noninteractive
      dpkg --add-architecture i386
      apt-get -q update
      apt-get -q install -y --no-install-recommends wine wine64 wine32:i386 fonts-wine \
        fonts-droid-fallback'
  } >"$tree/build/x86-root.log" 2>&1 || {
    tail -n 30 "$tree/build/x86-root.log" >&2
    exit 1
  }
  echo "$stamp" | "${as_root[@]}" tee "$root/stamp" >/dev/null
}

# The mounts are seen by the command alone and end with it: nothing that removes the root later can
# reach the tree through them.
run() {
  if there; then exec "$@"; fi
  # shellcheck disable=SC2016  # it is the inner shell's
  exec "${as_root[@]}" unshare --mount --propagation private bash -c '
    set -e
    root=$1 tree=$2 folder=$3
    shift 3
    mkdir -p "$root$tree"
    mount --bind "$tree" "$root$tree"
    mount -t proc proc "$root/proc"
    mount --rbind /dev "$root/dev"
    exec chroot "$root" /usr/bin/env -C "$folder" TARVELIN_WINE_BASE="$tree/build/wine/both" "$@"' \
    wine32 "$root" "$tree" "$PWD" "$@"
}

case ${1-} in
  there) there ;;
  possible) there || "${as_root[@]}" unshare --mount true 2>/dev/null ;;
  make) make ;;
  run) run "${@:2}" ;;
  *)
    sed -n '2,/^set/s/^# \{0,1\}//p' "$0" >&2
    exit 2
    ;;
esac
