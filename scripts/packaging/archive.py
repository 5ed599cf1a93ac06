#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes a folder as a zip archive that depends on nothing but names and contents of its files, and SOURCE_DATE_EPOCH.

    archive.py ARCHIVE.zip FOLDER [PREFIX]     PREFIX: the folder inside the archive
"""
import os
import pathlib
import sys
import time
import zipfile


def when():
    """The time of all entries. Zip archives know none before 1980 and count in pairs of seconds."""
    return max(time.gmtime(int(os.environ["SOURCE_DATE_EPOCH"]))[:6], (1980, 1, 1, 0, 0, 0))


def write(archive, files):
    """files: names and bytes, in the order in which they shall be."""
    with zipfile.ZipFile(archive, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as target:
        for name, contents in files:
            entry = zipfile.ZipInfo(name, when())
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.create_system = 3
            entry.external_attr = 0o100644 << 16
            target.writestr(entry, contents)


def folder_files(folder, prefix=""):
    folder = pathlib.Path(folder)
    names = sorted(path.relative_to(folder).as_posix() for path in folder.rglob("*") if path.is_file())
    return [(f"{prefix}/{name}" if prefix else name, (folder / name).read_bytes()) for name in names]


if __name__ == "__main__":
    write(sys.argv[1], folder_files(sys.argv[2], *sys.argv[3:]))
