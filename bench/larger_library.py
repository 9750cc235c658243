#!/usr/bin/env python3
"""Makes a library of more movies out of a smaller one: its disks again and again under other names, the documents
being links where the file system lets them be. What is there already stays.

larger_library.py LIBRARY TARGET DOCUMENTS
"""
import itertools
import os
import shutil
import sys

DOCUMENT = "metadata.xml"


def link_or_copy(source, target):
    try:
        os.link(source, target)
    except OSError:  # another file system, or too many links
        shutil.copy(source, target)


def main():
    library, target, wanted = sys.argv[1], sys.argv[2], int(sys.argv[3])
    folders = sorted(os.path.relpath(folder, library) for folder, _, files in os.walk(library) if DOCUMENT in files)
    if not folders:
        sys.exit(f"{library} holds no {DOCUMENT}")
    places = ((time, folder) for time in itertools.count() for folder in folders)
    for time, folder in itertools.islice(places, wanted):
        disk, _, rest = folder.partition("/")
        path = os.path.join(target, f"{disk}-{time}", rest)
        os.makedirs(path, exist_ok=True)
        if not os.path.exists(os.path.join(path, DOCUMENT)):
            link_or_copy(os.path.join(library, folder, DOCUMENT), os.path.join(path, DOCUMENT))


main()
