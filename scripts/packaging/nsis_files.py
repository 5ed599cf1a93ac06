#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Lists the files of a folder for the installer: to be installed, and, each by its name, to be removed again, so that nothing
that somebody else put there goes with them.

    nsis_files.py FOLDER LIST.nsh
"""
import pathlib
import sys


def main():
    folder = pathlib.Path(sys.argv[1]).resolve()
    files = sorted(path.relative_to(folder) for path in folder.rglob("*") if path.is_file())
    folders = sorted({parent for path in files for parent in path.parents})
    size = sum((folder / path).stat().st_size for path in files)

    def windows(path):
        return str(path).replace("/", "\\").replace("$", "$$")

    def inside(path):
        return "$INSTDIR" if path == pathlib.Path() else f"$INSTDIR\\{windows(path)}"

    lines = [f"!define SIZE_IN_KIB {(size + 1023) // 1024}", "!macro InstallListedFiles"]
    for parent in folders:
        lines.append(f'    SetOutPath "{inside(parent)}"')
        lines += [f'    File "{(folder / path).as_posix()}"' for path in files if path.parent == parent]
    lines += ["!macroend", "!macro RemoveListedFiles"]
    lines += [f'    Delete "{inside(path)}"' for path in files]
    lines += [f'    RMDir "{inside(parent)}"' for parent in reversed(folders) if parent != pathlib.Path()]
    lines.append("!macroend")
    pathlib.Path(sys.argv[2]).write_text("\n".join(lines) + "\n", encoding="utf-8")


main()
