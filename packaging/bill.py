#!/usr/bin/python3
"""Writes the software bill of materials of a release, in CycloneDX 1.6:
bill.py OUTPUT VERSION TIME VERSIONS-FILE EXECUTABLE...     (TIME in seconds since 1970)

VERSIONS-FILE names the source package and version of everything that is linked in, one on a line.
Where a library leaves its version in the program, it has to be that one.
"""
import datetime
import hashlib
import json
import os
import re
import sys
import uuid

# Source package: what it is, its licence, and what of its version the program holds.
LIBRARIES = {
    "libpng1.6": ("libpng", "libpng-2.0", "libpng version {}"),
    "libjpeg-turbo": ("libjpeg-turbo", "IJG AND BSD-3-Clause AND Zlib", None),
    "zlib": ("zlib", "Zlib", "{}"),
    "gcc": ("libgcc and libstdc++", "GPL-3.0-or-later WITH GCC-exception-3.1", None),
    "mingw-w64": ("mingw-w64 runtime and winpthreads", "ZPL-2.1 AND MIT AND BSD-3-Clause", None),
}
SOURCES = {"zlib": "libz-mingw-w64", "gcc": "gcc-mingw-w64"}


def upstream(version):
    """1:2.1.5-2+deb12u1 -> 2.1.5"""
    return re.sub(r"[+~].*", "", version.split(":")[-1].rsplit("-", 1)[0])


def main():
    output, version, moment, versions, *programs = sys.argv[1:]
    contents = {}
    for path in programs:
        with open(path, "rb") as file:
            contents[path] = file.read()
    with open(versions, encoding="utf-8") as file:
        linked = dict(line.split() for line in file)
    if linked.keys() != LIBRARIES.keys():
        sys.exit(f"bill: {versions} does not name {', '.join(LIBRARIES)}")

    components = []
    for package, (name, licence, trace) in LIBRARIES.items():
        number = upstream(linked[package])
        for path, data in contents.items():
            if trace and trace.format(number).encode() not in data:
                sys.exit(f"bill: {path} was not linked with {name} {number}")
        source = SOURCES.get(package, package)
        purl_version = linked[package].replace(":", "%3A").replace("+", "%2B")
        components.append({
            "type": "library",
            "bom-ref": package,
            "name": name,
            "version": number,
            "licenses": [{"expression": licence}],
            "purl": f"pkg:deb/debian/{source}@{purl_version}",
            "properties": [{"name": "debian:version", "value": linked[package]}],
        })
    program = {
        "type": "application",
        "bom-ref": "tarvelin",
        "name": "Tarvelin",
        "version": version,
        "licenses": [{"license": {"id": "MIT"}}],
        "components": [{
            "type": "file",
            "bom-ref": name,
            "name": name,
            "hashes": [{"alg": "SHA-256", "content": hashlib.sha256(contents[path]).hexdigest()}],
        } for path in programs for name in ["/".join(path.split(os.sep)[-2:])]],
    }
    date = datetime.datetime.fromtimestamp(int(moment), datetime.timezone.utc)
    bill = {
        "$schema": "http://cyclonedx.org/schema/bom-1.6.schema.json",
        "bomFormat": "CycloneDX",
        "specVersion": "1.6",
        "version": 1,
        "metadata": {
            "timestamp": date.strftime("%Y-%m-%dT%H:%M:%SZ"),
            "component": program,
        },
        "components": components,
        "dependencies": [{"ref": "tarvelin", "dependsOn": list(LIBRARIES)},
                         {"ref": "libpng1.6", "dependsOn": ["zlib"]}],
    }
    number = uuid.uuid5(uuid.NAMESPACE_OID, json.dumps(bill, sort_keys=True))
    bill["serialNumber"] = f"urn:uuid:{number}"
    with open(output, "w", encoding="utf-8", newline="\n") as file:
        json.dump(bill, file, indent=2, ensure_ascii=False)
        file.write("\n")


main()
