#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Fills the templates of packaging/ in, and makes the package for NuGet.

    manifests.py VERSION PACKAGES WINDOWS-TREE

PACKAGES gets winget/, chocolatey/ and pixkit.VERSION.nupkg. It holds the installer already, whose checksum the manifests name;
where it will be found on the web is the releaser's affair: PIXKIT_RELEASE_URL.
"""
import hashlib
import os
import pathlib
import re
import sys
import time

import archive

TEMPLATES = pathlib.Path(__file__).resolve().parent.parent.parent / "packaging"
CONTENT_TYPES = {"rels": "application/vnd.openxmlformats-package.relationships+xml", "nuspec": "application/octet",
                 "dll": "application/octet", "manifest": "application/octet", "h": "application/octet",
                 "targets": "application/octet", "md": "application/octet", "txt": "application/octet", "tlb": "application/octet"}


def filled(path, values):
    text = re.sub("@([A-Z0-9_]+)@", lambda found: values[found[1]], path.read_text(encoding="utf-8"))
    return text.encode()


def nuget(values, tree):
    """The parts of the package by name: a zip archive as the Open Packaging Conventions want it."""
    types = "".join(f'<Default Extension="{name}" ContentType="{kind}"/>' for name, kind in sorted(CONTENT_TYPES.items()))
    files = {
        "[Content_Types].xml": '<?xml version="1.0" encoding="utf-8"?>\n<Types xmlns="http://schemas.openxmlformats.org/package/'
                               f'2006/content-types">{types}</Types>\n'.encode(),
        "_rels/.rels": b'<?xml version="1.0" encoding="utf-8"?>\n<Relationships xmlns="http://schemas.openxmlformats.org/package/'
                       b'2006/relationships"><Relationship Type="http://schemas.microsoft.com/packaging/2010/07/manifest" '
                       b'Target="/pixkit.nuspec" Id="manifest"/></Relationships>\n',
        "pixkit.nuspec": filled(TEMPLATES / "nuget" / "pixkit.nuspec", values),
        "build/native/pixkit.targets": filled(TEMPLATES / "nuget" / "pixkit.targets", values),
        "README.md": filled(TEMPLATES / "nuget" / "README.md", values),
        "LICENSE.txt": (tree / "LICENSE.txt").read_bytes(),
        "THIRD-PARTY.txt": (tree / "THIRD-PARTY.txt").read_bytes(),
    }
    for path in sorted((tree / "include").iterdir()):
        files[f"build/native/include/{path.name}"] = path.read_bytes()
    for bits in ("x86", "x64"):
        for name in ("pixkit.dll", "pixkit.manifest", "pixkit.tlb"):
            files[f"runtimes/win-{bits}/native/{name}"] = (tree / bits / name).read_bytes()
    return list(files.items())


def main():
    version, packages, tree = sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])
    setup = (packages / f"pixkit-{version}-setup.exe").read_bytes()
    values = {
        "VERSION": version,
        "FOUR_PARTS": "{}.{}.0.{}".format(*version.split(".")),  # as manifests have it
        "URL": os.environ.get("PIXKIT_RELEASE_URL", "https://example.org/pixkit"),
        "SETUP_SHA256": hashlib.sha256(setup).hexdigest().upper(),
        "DATE": time.strftime("%Y-%m-%d", time.gmtime(int(os.environ["SOURCE_DATE_EPOCH"]))),
    }
    for folder in ("winget", "chocolatey"):
        for path in sorted((TEMPLATES / folder).rglob("*.*")):
            target = packages / path.relative_to(TEMPLATES)
            target.parent.mkdir(parents=True, exist_ok=True)
            target.write_bytes(filled(path, values))
    archive.write(packages / f"pixkit.{version}.nupkg", nuget(values, tree))


main()
