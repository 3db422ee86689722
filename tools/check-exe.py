#!/usr/bin/python3
"""Checks that a program is what may be handed out: check-exe.py EXECUTABLE VERSION

It imports nothing that could be planted beside it (check-imports.sh), Windows guards it in every way
that it can, it says which Windows it is for, carries its manifest, version, icon and pictures, and
tells neither when nor where it was built.
"""
import os
import re
import subprocess
import sys

import pefile

SIZE_LIMIT = 800_000
ICON_SIZES = {16, 24, 32, 48, 256}
X64 = 0x8664
X86 = 0x014C


def checks(path, version):
    """Yields (what has to hold, whether it does)."""
    imports = subprocess.run(
        [os.path.join(os.path.dirname(__file__), "check-imports.sh"), path], check=False)
    yield "imports only what Windows never takes from the program's folder", imports.returncode == 0

    with open(path, "rb") as file:
        data = file.read()
    yield f"at most {SIZE_LIMIT} bytes, not {len(data)}", len(data) <= SIZE_LIMIT

    pe = pefile.PE(data=data)
    header = pe.OPTIONAL_HEADER
    yield "is for x64 or x86", pe.FILE_HEADER.Machine in (X64, X86)
    guards = ["DYNAMIC_BASE", "NX_COMPAT", "TERMINAL_SERVER_AWARE"]
    if pe.FILE_HEADER.Machine == X64:
        guards.append("HIGH_ENTROPY_VA")
    for guard in guards:
        yield guard, getattr(header, f"IMAGE_DLLCHARACTERISTICS_{guard}")
    # An address can be random only where what has to be moved is listed.
    yield "has relocations", hasattr(pe, "DIRECTORY_ENTRY_BASERELOC") and \
        not pe.FILE_HEADER.IMAGE_FILE_RELOCS_STRIPPED
    yield "is a program with windows", header.Subsystem == 2
    yield "for Windows 6.1", (header.MajorSubsystemVersion, header.MinorSubsystemVersion) == (6, 1)
    yield "for system 6.1", (header.MajorOperatingSystemVersion,
                             header.MinorOperatingSystemVersion) == (6, 1)

    yield "no time stamp", pe.FILE_HEADER.TimeDateStamp == 0
    yield "no debug information", not hasattr(pe, "DIRECTORY_ENTRY_DEBUG") and \
        not any(section.Name.startswith(b".debug") for section in pe.sections)
    yield "no symbols", pe.FILE_HEADER.NumberOfSymbols == 0
    yield "no path of a build machine", not re.search(rb"/(home|tmp|root|work|build)/", data)

    resources = {entry.id: entry.directory.entries
                 for entry in pe.DIRECTORY_ENTRY_RESOURCE.entries if entry.id is not None}

    def contents(kind):
        for entry in resources.get(pefile.RESOURCE_TYPE[kind], []):
            place = entry.directory.entries[0].data.struct
            yield entry.id, pe.get_data(place.OffsetToData, place.Size)

    manifest = dict(contents("RT_MANIFEST")).get(1, b"").decode()
    for needed in ["Microsoft.Windows.Common-Controls", 'level="highestAvailable"',
                   "{8e0f7a12-bfb3-4fe8-b9a5-48fd50a15a9a}", "<gdiScaling>true</gdiScaling>",
                   f'name="Tarvelin" version="{version}.0"']:
        yield f"a manifest with {needed}", needed in manifest
    # With another code page for the process, language files without a mark would be misread.
    yield "a manifest without activeCodePage", "activeCodePage" not in manifest

    for _, group in contents("RT_GROUP_ICON"):
        sizes = {group[6 + 14 * i] or 256 for i in range(int.from_bytes(group[4:6], "little"))}
        yield f"an icon of {sorted(ICON_SIZES)}, not {sorted(sizes)}", sizes == ICON_SIZES
    yield "one icon", len(list(contents("RT_GROUP_ICON"))) == 1
    yield "pictures", len(list(contents("RT_RCDATA"))) >= 12

    fixed = pe.VS_FIXEDFILEINFO[0]
    words = [fixed.FileVersionMS >> 16, fixed.FileVersionMS & 0xFFFF,
             fixed.FileVersionLS >> 16, fixed.FileVersionLS & 0xFFFF]
    yield f"version {version}, not {words}", ".".join(map(str, words)) == version + ".0"
    yield "one version", (fixed.ProductVersionMS, fixed.ProductVersionLS) == \
        (fixed.FileVersionMS, fixed.FileVersionLS)
    texts = {key.decode(): value.decode() for info in pe.FileInfo[0] if info.Key == b"StringFileInfo"
             for table in info.StringTable for key, value in table.entries.items()}
    for key, value in {"FileVersion": version + ".0", "ProductVersion": version + ".0",
                       "ProductName": "Tarvelin", "OriginalFilename": "Tarvelin.exe"}.items():
        yield f"{key} {value}, not {texts.get(key)}", texts.get(key) == value


def main():
    path, version = sys.argv[1:]
    failed = [what for what, holds in checks(path, version) if not holds]
    for what in failed:
        print(f"check-exe: {path}: {what}: does not hold", file=sys.stderr)
    if not failed:
        print(f"check-exe: {path}: {os.path.getsize(path)} bytes")
    sys.exit(1 if failed else 0)


main()
