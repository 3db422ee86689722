#!/usr/bin/env bash
# Whatever lies beside the program, it is linked to nothing but Windows' own libraries:
# check-imports.sh EXECUTABLE...
# They are loaded before the program's first statement, so it cannot protect itself. Most libraries
# of Windows come from the program's folder when a file of that name is there; these never do, on
# Windows 7 to 11 and their servers:
#   advapi32, gdi32, kernel32, msvcrt, ole32, shell32, user32
#              are on Windows' list of known DLLs (Session Manager\KnownDLLs), which are mapped from
#              the system's folder only
#   ntdll      is in every process before the program is looked at
#   comctl32   version 6, which the manifest asks for, comes from Windows' side-by-side folder; and
#              a program with a manifest cannot be turned to other files by a ".local" one
# Anything else is to be loaded at run time, from the system's folder by its full path.
set -euo pipefail

allowed='advapi32|comctl32|gdi32|kernel32|msvcrt|ntdll|ole32|shell32|user32'
for program in "$@"; do
  imports=$(x86_64-w64-mingw32-objdump -p "$program" | sed -n 's/^[[:space:]]*DLL Name: //p')
  [ -n "$imports" ] || {
    echo "check-imports: $program imports nothing, which no program does" >&2
    exit 1
  }
  foreign=$(grep -vixE "($allowed)\.dll" <<<"$imports" || true)
  if [ -n "$foreign" ]; then
    printf 'check-imports: a file beside %s could pass for:\n%s\n' "$program" "$foreign" >&2
    exit 1
  fi
done
