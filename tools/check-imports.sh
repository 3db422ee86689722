#!/usr/bin/env bash
# A program needs nothing that Windows does not bring: check-imports.sh EXECUTABLE
set -euo pipefail

allowed='advapi32|comctl32|gdi32|kernel32|msimg32|msvcrt|ntdll|ole32|oleacc|oleaut32|shell32|shlwapi|user32|uxtheme|version'
imports=$(x86_64-w64-mingw32-objdump -p "$1" | sed -n 's/^[[:space:]]*DLL Name: //p')
[ -n "$imports" ] || { echo "check-imports: $1 imports nothing, which no program does" >&2; exit 1; }
foreign=$(grep -vixE "($allowed)\.dll" <<<"$imports" || true)
if [ -n "$foreign" ]; then
  printf 'check-imports: %s needs DLLs that Windows does not bring:\n%s\n' "$1" "$foreign" >&2
  exit 1
fi
