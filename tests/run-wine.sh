#!/usr/bin/env bash
# Runs a Windows test executable under Wine: run-wine.sh BUILD_DIRECTORY EXECUTABLE [ARGUMENT...]
#
# Each run gets a fresh prefix, which only this test and what it starts will ever see, without a
# screen but with working windows. The test finds in its environment
#   TARVELIN_EXE     the program of the same build, with Toolbox_Language beside it
#   TARVELIN_SAMPLE  the folder with the sample modules of the same build
# both as Windows paths on drive Z:. Drive C: is the prefix. It is ended after four minutes, or as many
# seconds as TARVELIN_TEST_SECONDS says.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=$(cd "$1" && pwd)
shift

mkdir -p "$build/wine"
prefix=$(mktemp -d "$build/wine/test.XXXXXX")
trap '"$here/../tools/wine-prefix.sh" remove "$prefix"' EXIT
"$here/../tools/wine-prefix.sh" new "$prefix" null
eval "$("$here/../tools/wine-prefix.sh" env "$prefix")"

windows_path() { printf 'Z:%s' "${1//\//\\}"; }
TARVELIN_EXE=$(windows_path "$build/Tarvelin.exe")
TARVELIN_SAMPLE=$(windows_path "$build/sample")
export TARVELIN_EXE TARVELIN_SAMPLE TARVELIN_MAY_CHANGE_THIS_MACHINE=1

"$here/run-native.sh" timeout --kill-after=5 "${TARVELIN_TEST_SECONDS-240}" wine "$@"
