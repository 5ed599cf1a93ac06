#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes what is in a release as an SPDX 2.3 document, pixkit-VERSION.spdx.json: its files with checksums, and what of other
people's work is inside them or linked with them.

    sbom.py VERSION PACKAGES [WINDOWS-TREE]
"""
import hashlib
import json
import os
import pathlib
import re
import subprocess
import sys
import time
import uuid

GCC = "GPL-3.0-or-later WITH GCC-exception-3.1"
# Debian's package that it came from, name, licence, and in which files it is: inside (STATIC_LINK), or loaded by them.
WINDOWS_PARTS = [
    ("gcc-mingw-w64-{cpu}-posix-runtime", "libgcc", GCC, "dll exe"),
    ("gcc-mingw-w64-{cpu}-posix-runtime", "libstdc++", GCC, "dll exe"),
    ("gcc-mingw-w64-{cpu}-posix-runtime", "libssp", GCC, "dll exe"),
    ("mingw-w64-{cpu}-dev", "winpthreads", "MIT AND BSD-3-Clause", "dll exe"),
    ("mingw-w64-{cpu}-dev", "mingw-w64-runtime", "ZPL-2.1", "dll exe"),
    ("libcli11-dev", "CLI11", "BSD-3-Clause", "exe deb"),
]
# The installer's own code, and what it decompresses with.
NSIS = ("nsis", "NSIS", "Zlib AND CPL-1.0 WITH LZMA-exception", "setup")
# What of these is in files of such names.
HOLDERS = {"-windows.zip": "dll exe", "-setup.exe": "dll exe setup", ".nupkg": "dll", "pixkit.dll": "dll", "pixkit.exe": "exe"}
LINUX_PARTS = [
    ("libfreetype6", "FreeType", "FTL OR GPL-2.0-or-later"),
    ("libfontconfig1", "fontconfig", "HPND-sell-variant"),
    ("libfribidi0", "FriBidi", "LGPL-2.1-or-later"),
    ("libharfbuzz0b", "HarfBuzz", "MIT-Modern-Variant"),
    ("libunibreak1", "libunibreak", "Zlib"),
]


def version_of(package):
    told = subprocess.run(["dpkg-query", "-W", "-f", "${Version}", package], capture_output=True, text=True, check=False)
    return told.stdout or "NOASSERTION"


def parts_in(name):
    """Other people's work that a file of the release, or in its archive, has inside itself."""
    kinds = "deb" if name.startswith("pixkit_") else next((kinds for end, kinds in HOLDERS.items() if name.endswith(end)), "")
    return [part for part in (*WINDOWS_PARTS, NSIS) if set(kinds.split()) & set(part[3].split())]


def licences_in(name):
    return list(dict.fromkeys(["MIT", *(licence for part in parts_in(name) for licence in part[2].split(" AND "))]))


class Document:
    def __init__(self, version):
        self.version = version
        self.packages, self.files, self.relations = {}, [], []

    def relate(self, one, kind, other):
        relation = {"spdxElementId": one, "relationshipType": kind, "relatedSpdxElement": other}
        if relation not in self.relations:
            self.relations.append(relation)

    def package(self, name, version, licence):
        identifier = "SPDXRef-Package-" + re.sub(r"[^A-Za-z0-9.-]", "-", f"{name}-{version}")
        self.packages[identifier] = {
            "SPDXID": identifier, "name": name, "versionInfo": version, "downloadLocation": "NOASSERTION",
            "filesAnalyzed": False, "licenseConcluded": licence, "licenseDeclared": licence, "copyrightText": "NOASSERTION"}
        return identifier

    def file(self, name, contents, kind):
        identifier = f"SPDXRef-File-{len(self.files) + 1}"
        licences = licences_in(name)
        self.files.append({
            "SPDXID": identifier, "fileName": f"./{name}", "fileTypes": [kind], "licenseConcluded": " AND ".join(licences),
            "licenseInfoInFiles": licences, "copyrightText": "2026 the pixkit authors" if licences == ["MIT"] else "NOASSERTION",
            "checksums": [{"algorithm": "SHA1", "checksumValue": hashlib.sha1(contents).hexdigest()},
                          {"algorithm": "SHA256", "checksumValue": hashlib.sha256(contents).hexdigest()}]})
        return identifier

    def describe_files(self, package):
        """What a package that contains all files so far has to say of them (SPDX 2.3, 7.9)."""
        sums = sorted(file["checksums"][0]["checksumValue"] for file in self.files)
        licences = sorted({licence for file in self.files for licence in file["licenseInfoInFiles"]})
        self.packages[package] |= {
            "filesAnalyzed": True, "licenseConcluded": " AND ".join(licences), "licenseInfoFromFiles": licences,
            "packageVerificationCode": {"packageVerificationCodeValue": hashlib.sha1("".join(sums).encode()).hexdigest()}}

    def text(self):
        # The same files have the same name for their document.
        name = uuid.uuid5(uuid.NAMESPACE_URL, json.dumps([file["checksums"] for file in self.files]))
        made = time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(int(os.environ["SOURCE_DATE_EPOCH"])))
        return json.dumps({
            "spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT", "name": f"pixkit-{self.version}",
            "documentNamespace": f"https://spdx.org/spdxdocs/pixkit-{self.version}-{name}",
            "creationInfo": {"created": made, "creators": ["Organization: the pixkit authors", "Tool: pixkit-package.sh"]},
            "packages": list(self.packages.values()), "files": self.files, "relationships": self.relations}, indent=1) + "\n"


def main():
    version, packages = sys.argv[1], pathlib.Path(sys.argv[2])
    document = Document(version)
    own = document.package("pixkit", version, "MIT")
    document.relate("SPDXRef-DOCUMENT", "DESCRIBES", own)
    archives = {}
    for path in sorted(packages.rglob("*")):
        if path.is_file():
            kind = "ARCHIVE" if path.suffix in {".zip", ".deb", ".xz", ".nupkg"} else "BINARY" if path.suffix == ".exe" else "TEXT"
            archives[path.name] = document.file(path.relative_to(packages).as_posix(), path.read_bytes(), kind)
            document.relate(own, "CONTAINS", archives[path.name])
    document.describe_files(own)
    windows = f"pixkit-{version}-windows.zip"
    if windows in archives:
        for bits, cpu in (("x86", "i686"), ("x64", "x86-64")):
            for kind in ("dll", "exe"):
                contents = (pathlib.Path(sys.argv[3]) / bits / f"pixkit.{kind}").read_bytes()
                inside = document.file(f"{windows}/pixkit-{version}/{bits}/pixkit.{kind}", contents, "BINARY")
                document.relate(archives[windows], "CONTAINS", inside)
                for package, name, licence, _ in parts_in(f"pixkit.{kind}"):
                    part = document.package(name, version_of(package.format(cpu=cpu)), licence)
                    document.relate(inside, "STATIC_LINK", part)
    for name, identifier in archives.items():
        for part in parts_in(name):
            if part == NSIS or name.startswith("pixkit_"):  # for the others the programs in the archive say it
                document.relate(identifier, "STATIC_LINK", document.package(part[1], version_of(part[0]), part[2]))
        if name.startswith(("libpixkit3_", "pixkit_")):
            for package, part, licence in LINUX_PARTS:
                document.relate(identifier, "DYNAMIC_LINK", document.package(part, version_of(package), licence))
    (packages / f"pixkit-{version}.spdx.json").write_text(document.text(), encoding="utf-8")


main()
