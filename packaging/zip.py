#!/usr/bin/python3
"""Packs a folder: zip.py ARCHIVE FOLDER TIME     (TIME in seconds since 1970)

The same files give the same bytes: members are sorted, all of one time, without owner or rights.
"""
import os
import sys
import time
import zipfile

archive, folder, moment = sys.argv[1:]
date = time.gmtime(int(moment))[:6]
parent = os.path.dirname(os.path.abspath(folder))
files = sorted(os.path.join(place, name)
               for place, _, names in os.walk(os.path.abspath(folder)) for name in names)
with zipfile.ZipFile(archive, "w") as output:
    for path in files:
        member = zipfile.ZipInfo(os.path.relpath(path, parent), date)
        member.create_system = 0
        member.compress_type = zipfile.ZIP_DEFLATED
        with open(path, "rb") as file:
            output.writestr(member, file.read(), compresslevel=9)
