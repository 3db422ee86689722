#!/usr/bin/python3
"""Checks that the includes point one way: from a folder only to those below it, and never in a
circle between the units of a folder (a unit is a header with the source of the same name).
Usage: check-includes.py [FOLDER]
"""
import collections
import graphlib
import os
import re
import sys

# What each folder may include besides itself.
BELOW = {"common": set()}
BELOW["widgets"] = {"common"}
BELOW["settings"] = {"common", "widgets"}
BELOW["addons"] = {"common", "widgets", "settings"}
BELOW["shellmenu"] = {"common", "widgets"}
BELOW["app"] = {"common", "widgets", "settings", "addons", "shellmenu"}

INCLUDE = re.compile(r'^\s*#\s*include\s*"([a-z]+)/([A-Za-z0-9_]+)\.h"', re.MULTILINE)


def main():
    os.chdir(sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(__file__), ".."))
    faults = []
    count = 0
    for folder, below in BELOW.items():
        units = collections.defaultdict(set)
        for name in sorted(os.listdir(folder)):
            unit, extension = os.path.splitext(name)
            if extension not in (".h", ".cpp"):
                continue
            count += 1
            with open(os.path.join(folder, name), encoding="utf-8") as file:
                for other, included in INCLUDE.findall(file.read()):
                    if other == folder:
                        units[unit].add(included)
                    elif other not in below:
                        faults.append(f"{folder}/{name} includes {other}/{included}.h")
            units[unit].discard(unit)
        try:
            graphlib.TopologicalSorter(units).prepare()
        except graphlib.CycleError as error:
            faults.append(f"{folder}: a circle: {' <- '.join(error.args[1])}")
    for fault in faults:
        print(f"check-includes: {fault}", file=sys.stderr)
    if count == 0:
        faults.append("nothing here")
        print("check-includes: no sources here", file=sys.stderr)
    if not faults:
        print(f"check-includes: {count} files")
    sys.exit(1 if faults else 0)


main()
