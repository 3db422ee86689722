#!/usr/bin/env bash
# Runs clang-tidy over the portable sources, as build/native compiles them; that build comes first
# (another one can be named in TARVELIN_BUILD).
# A source is looked at again only when it, one of our headers that it includes, or the settings
# have changed. Without clang-tidy-14, whose findings others do not share, the check counts as
# skipped (77).
set -euo pipefail
cd "$(dirname "$0")/.."
build=${TARVELIN_BUILD:-build/native}
tidy=clang-tidy-14
command -v $tidy >/dev/null || { echo "check-tidy: no $tidy"; exit 77; }
cache=$build/tidy
mkdir -p "$cache"
# What the compiler is told, without the names of the sources.
settings=$(cat .clang-tidy tools/check-tidy.sh && $tidy --version &&
  sed -n 's/^  "command": \(.*\) -o .*/\1/p' "$build/compile_commands.json" | sort -u)

# Each line: a source of ours and the headers of ours that its object was made from.
sources=$(ninja -C "$build" -t deps | awk -v root="$PWD/" '
  /^[^ ]/ { if (line) print line; line = "" }
  /^ / && index($1, root) == 1 { line = line (line ? " " : "") substr($1, length(root) + 1) }
  END { if (line) print line }' |
  grep -E '^(app|addons|shellmenu|settings|common|widgets)/' | sort -u || true)
[ -n "$sources" ] || { echo "check-tidy: $build is not built" >&2; exit 1; }

stale=()
while read -r -a files; do
  key=$( (echo "$settings" && cat "${files[@]}") | sha256sum | cut -c1-32)
  [ -e "$cache/$key" ] || stale+=("${files[0]}" "$cache/$key")
done <<<"$sources"
echo "check-tidy: $(wc -l <<<"$sources") sources, $((${#stale[@]} / 2)) of them to look at"

check_one() {
  local output
  if output=$("$1" -p "$2" --quiet "$3" 2>&1); then
    touch "$4"
  else
    echo "$output"
    return 1
  fi
}
export -f check_one
if [ ${#stale[@]} -gt 0 ]; then
  printf '%s\0' "${stale[@]}" |
    xargs -0 -n 2 -P "$(nproc)" bash -c 'check_one "$@"' check-tidy "$tidy" "$build"
fi
