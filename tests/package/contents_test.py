#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Looks at what scripts/package.sh made: each archive has what it should and nothing else, manifests name the files that there
are, checksums and the list of contents (SPDX) are right.

    contents_test.py PACKAGES            as scripts/package.sh makes them
    contents_test.py PACKAGES --built    as with --built: reports may name folders of the build, and lintian is not asked
"""
import hashlib
import io
import json
import pathlib
import re
import struct
import subprocess
import sys
import tarfile
import xml.etree.ElementTree as xml
import zipfile

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
PACKAGES = pathlib.Path(sys.argv[1])
BUILT = sys.argv[2:] == ["--built"]
VERSION = ".".join(re.findall(r"PIXKIT_VERSION_(?:MAJOR|MINOR|REVISION) (\d+)", (ROOT / "src/shared/version.h").read_text()))


def git(*arguments):
    return subprocess.run(["git", *arguments], cwd=ROOT, check=True, capture_output=True, text=True).stdout.split("\n")[:-1]


FOUR_PARTS = "{}.{}.0.{}".format(*VERSION.split("."))  # as manifests have it
TRACKED = git("ls-files")
ZIP = PACKAGES / f"pixkit-{VERSION}-windows.zip"
complaints = []


def expect(is_so, complaint):
    if not is_so:
        complaints.append(complaint)


def same(what, found, wanted):
    found, wanted = set(found), set(wanted)
    expect(found == wanted, f"{what}: unexpected {sorted(found - wanted)}, missing {sorted(wanted - found)}")


def windows():
    with zipfile.ZipFile(ZIP) as archive:
        entries = {entry.filename.split("/", 1)[1]: entry for entry in archive.infolist()}
        contents = {name: archive.read(entry) for name, entry in entries.items()}
    expect(all(name.startswith(f"pixkit-{VERSION}/") for name in archive.namelist()), "zip: files outside of the folder")
    expect(list(entries) == sorted(entries), "zip: not in order")
    expect(len({entry.date_time for entry in entries.values()}) == 1, "zip: several times")
    wanted = [f"{bits}/pixkit.{kind}" for bits in ("x86", "x64") for kind in ("dll", "exe", "manifest", "tlb")]
    wanted += ["README.html", "command.html", "cpp.html", "LICENSE.txt", "THIRD-PARTY.txt", "install-user.cmd", "uninstall-user.cmd", "include/pixkit_com.h",
               "include/pixkit_client.h", "include/automation.h"]
    wanted += [name for name in TRACKED if name.startswith("samples/") and name != "samples/example.cpp"]
    same("zip", [name for name in entries if not name.startswith("reference/")], wanted)
    members = re.findall(r"HRESULT (\w+)\(", (ROOT / "src/com/pixkit.idl").read_text(encoding="utf-8"))
    same("zip, reference", [], {f"reference/{name}.html" for name in members} - entries.keys())
    for bits, machine in (("x86", 0x14C), ("x64", 0x8664)):
        for kind in ("dll", "exe"):
            image = contents[f"{bits}/pixkit.{kind}"]
            start = struct.unpack_from("<I", image, 0x3C)[0]
            expect(struct.unpack_from("<HHII", image, start + 4)[::2] == (machine, 0), f"{bits}/pixkit.{kind}: machine or time")
            expect(BUILT or not any(path in image for path in (b"/usr/", b"../src/", str(ROOT).encode())), f"{bits}/pixkit.{kind}: paths")
        assembly = xml.fromstring(contents[f"{bits}/pixkit.manifest"])
        expect({"x86": "x86", "x64": "amd64"}[bits] == assembly[0].get("processorArchitecture"), f"{bits}: manifest of the other one")
        expect(assembly[0].get("version") == FOUR_PARTS, f"{bits}: manifest of another version")
    for name in ("install-user.cmd", "uninstall-user.cmd"):
        expect(contents[name].count(b"\n") == contents[name].count(b"\r\n") and contents[name].isascii(), f"{name}: line ends")
    return contents


def versions():
    """What documents and samples ask for in manifests is this version: Windows gives no other. 1.0.0.0 is their own."""
    for name in TRACKED:
        if name.startswith(("docs/", "samples/")) and not name.endswith(".png"):
            others = set(re.findall(r"\b\d+\.\d+\.0\.\d+\b", (ROOT / name).read_text(encoding="utf-8"))) - {FOUR_PARTS, "1.0.0.0"}
            expect(not others, f"{name}: other versions: {others}")


def nuget(contents):
    with zipfile.ZipFile(PACKAGES / f"pixkit.{VERSION}.nupkg") as archive:
        parts = {name: archive.read(name) for name in archive.namelist()}
    native = [f"{bits}/pixkit.{kind}" for bits in ("x86", "x64") for kind in ("dll", "manifest", "tlb")]
    same("nupkg", parts, ["[Content_Types].xml", "_rels/.rels", "pixkit.nuspec", "build/native/pixkit.targets", "README.md",
                          "LICENSE.txt", "THIRD-PARTY.txt", *(f"build/native/include/{name}.h" for name in ("pixkit_com", "pixkit_client", "automation")),
                          *(f"runtimes/win-{name.replace('/', '/native/')}" for name in native)])
    for name in native:
        expect(parts[f"runtimes/win-{name.replace('/', '/native/')}"] == contents[name], f"nupkg: another {name}")
    for name in ("[Content_Types].xml", "_rels/.rels", "pixkit.nuspec", "build/native/pixkit.targets"):
        xml.fromstring(parts[name])
    # Its page names what is in it.
    for name in re.findall(r"`([\w./-]+[./][\w./-]*)`", parts["README.md"].decode()):
        expect(any(re.search(rf"(^|/){re.escape(name)}", part) for part in parts), f"nupkg, README.md: no {name}")
    kinds = {entry.get("Extension") for entry in xml.fromstring(parts["[Content_Types].xml"])}
    expect(all(name.rsplit(".", 1)[1] in kinds for name in parts if name[0] != "["), "nupkg: a part without a type")


def manifests():
    files = {path.relative_to(PACKAGES).as_posix(): path.read_text(encoding="utf-8")
             for folder in ("winget", "chocolatey") for path in (PACKAGES / folder).rglob("*.*")}
    same("manifests", files, [name.removeprefix("packaging/") for name in TRACKED
                              if name.startswith(("packaging/winget", "packaging/chocolatey"))])
    for name, text in files.items():
        expect(not re.search(r"@\w+@", text), f"{name}: not filled in")
        expect(VERSION in text or name.endswith("uninstall.ps1"), f"{name}: not of this version")
    setup = hashlib.sha256((PACKAGES / f"pixkit-{VERSION}-setup.exe").read_bytes()).hexdigest().upper()
    for name in ("winget/pixkit.pixkit.installer.yaml", "chocolatey/tools/chocolateyinstall.ps1"):
        expect(setup in files[name], f"{name}: another installer's checksum")
    expect(xml.fromstring(files["chocolatey/pixkit.nuspec"])[0][1].text == VERSION, "chocolatey/pixkit.nuspec")


DOCUMENTS = ["changelog.Debian.gz", "changelog.gz", "copyright"]
DEBIAN = {
    "pixkit": (r"^/usr/bin/pixkit$|^/usr/share/(man/man1/pixkit\.1\.gz|bash-completion/completions/pixkit|zsh/vendor-completions/_pixkit"
               r"|fish/vendor_completions\.d/pixkit\.fish)$", 5),
    "libpixkit3": (rf"^/usr/lib/[^/]*/libpixkit\.so\.3(\.{VERSION.split('.', 1)[1]})?$", 2),
    "libpixkit-dev": (r"^/usr/include/pixkit/.*\.h$|^/usr/lib/[^/]*/(cmake/pixkit/[\w-]+\.cmake|libpixkit\.so|pkgconfig/pixkit\.pc)$", 12),
}


def debian():
    for package, (pattern, least) in DEBIAN.items():
        path = next(PACKAGES.glob(f"{package}_{VERSION}-1_*.deb"), None)
        if path is None:
            expect(False, f"no {package}_{VERSION}-1_*.deb")
            continue
        data = subprocess.run(["dpkg-deb", "--fsys-tarfile", path], check=True, capture_output=True).stdout
        with tarfile.open(fileobj=io.BytesIO(data)) as files:
            members = [member for member in files if not member.isdir()]
        names = [member.name.removeprefix(".") for member in members]
        documents = [f"/usr/share/doc/{package}/{name}" for name in (*DOCUMENTS, *(["cpp.html"] if "dev" in package else []))]
        same(package, [name for name in names if not re.search(pattern, name)], documents)
        expect(len(names) - len(documents) >= least, f"{package}: few files: {names}")
        expect({(member.uname, member.gname) for member in members} == {("root", "root")}, f"{package}: owners")
        expect(len({member.mtime for member in members}) == 1, f"{package}: several times")
        recommends = subprocess.run(["dpkg-deb", "-f", path, "Recommends"], check=True, capture_output=True, text=True).stdout
        expect("dev" in package or "libturbojpeg0" in recommends, f"{package}: does not recommend what it borrows")
        description = subprocess.run(["dpkg-deb", "-f", path, "Description"], check=True, capture_output=True, text=True).stdout
        expect(all(re.fullmatch(r" \S.{0,78}", line) for line in description.split("\n")[1:-1]), f"{package}: lines of its description")
    if BUILT:
        return
    # Nothing of this is meant for Debian's own archive, where a first version closes a report that asks for it.
    told = subprocess.run(["lintian", "--allow-root", "--fail-on", "error,warning", "--suppress-tags",
                           "initial-upload-closes-no-bugs", *PACKAGES.glob("*.deb")], capture_output=True,
                          text=True, check=False)
    expect(told.returncode == 0, f"lintian: {told.stdout}{told.stderr}")


def source():
    with tarfile.open(PACKAGES / f"pixkit-{VERSION}.tar.xz") as archive:
        members = [member for member in archive if not member.isdir()]
    same("source archive", [member.name.split("/", 1)[1] for member in members], git("ls-tree", "-r", "--name-only", "HEAD"))
    expect({(member.uname, member.gname, member.mtime) for member in members} == {("root", "root", members[0].mtime)}, "source: owners")


def spdx(contents):
    document = json.loads((PACKAGES / f"pixkit-{VERSION}.spdx.json").read_text(encoding="utf-8"))
    heads = {"spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT", "name": f"pixkit-{VERSION}"}
    expect(heads.items() <= document.items(), "spdx: head")
    expect(re.fullmatch(r"https?://[^#]+", document["documentNamespace"]), "spdx: namespace")
    expect(re.fullmatch(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ", document["creationInfo"]["created"]), "spdx: time")
    expect(all(re.match(r"(Tool|Organization|Person): ", one) for one in document["creationInfo"]["creators"]), "spdx: creators")
    elements = document["packages"] + document["files"]
    identifiers = [element["SPDXID"] for element in elements]
    expect(len(set(identifiers)) == len(identifiers), "spdx: an identifier twice")
    expect(all(re.fullmatch(r"SPDXRef-[A-Za-z0-9.-]+", name) for name in identifiers), "spdx: identifiers")
    for relation in document["relationships"]:
        expect({relation["spdxElementId"], relation["relatedSpdxElement"]} <= {*identifiers, "SPDXRef-DOCUMENT"}, f"spdx: {relation}")
        expect(relation["relationshipType"] in {"DESCRIBES", "CONTAINS", "STATIC_LINK", "DYNAMIC_LINK"}, f"spdx: {relation}")
    for package in document["packages"]:
        expect({"name", "versionInfo", "downloadLocation", "filesAnalyzed", "licenseConcluded", "licenseDeclared", "copyrightText"} <=
               package.keys() and package["versionInfo"] != "NOASSERTION", f"spdx: {package}")
    inside = {f"{ZIP.name}/pixkit-{VERSION}/{name}": data for name, data in contents.items() if re.search(r"\.(dll|exe)$", name)}
    named = {}
    for file in document["files"]:
        name = file["fileName"].removeprefix("./")
        data = inside[name] if name in inside else (PACKAGES / name).read_bytes()
        named[name] = file["SPDXID"]
        sums = {one["algorithm"]: one["checksumValue"] for one in file["checksums"]}
        expect(sums == {"SHA1": hashlib.sha1(data).hexdigest(), "SHA256": hashlib.sha256(data).hexdigest()}, f"spdx: {name}")
    released = [path.relative_to(PACKAGES).as_posix() for path in PACKAGES.rglob("*") if path.is_file()]
    same("spdx", named, [*inside, *(name for name in released if name != "SHA256SUMS" and not name.endswith(".spdx.json"))])
    packages = {package["SPDXID"]: package for package in document["packages"]}
    concluded = {file["SPDXID"]: set(file["licenseConcluded"].split(" AND ")) for file in document["files"]}
    for name, identifier in named.items():
        linked = [relation["relatedSpdxElement"] for relation in document["relationships"]
                  if relation["spdxElementId"] == identifier and relation["relationshipType"] == "STATIC_LINK"]
        least = 6 if name in inside and name.endswith("exe") else 5 if name in inside else 1 if re.match(r".*-setup|pixkit_", name) else 0
        expect(len(linked) == least, f"spdx: what is in {name}: {linked}")
        # Whoever has the file has what is linked into it, and what is linked into what it contains.
        licences = {licence for one in linked for licence in packages[one]["licenseConcluded"].split(" AND ")}
        expect(licences | {"MIT"} <= concluded[identifier], f"spdx: licences of {name}: {concluded[identifier]}")
    for end in ("-windows.zip", "-setup.exe", ".nupkg"):
        name = next(name for name in named if name.endswith(end))
        expect(concluded[named[f"{ZIP.name}/pixkit-{VERSION}/x64/pixkit.dll"]] <= concluded[named[name]], f"spdx: licences of {name}")


def sums():
    lines = [line.split("  ") for line in (PACKAGES / "SHA256SUMS").read_text().splitlines()]
    same("SHA256SUMS", [name for _, name in lines],
         [path.relative_to(PACKAGES).as_posix() for path in PACKAGES.rglob("*") if path.is_file() and path.name != "SHA256SUMS"])
    for value, name in lines:
        expect(hashlib.sha256((PACKAGES / name).read_bytes()).hexdigest() == value, f"SHA256SUMS: {name}")


files = windows()
versions()
nuget(files)
manifests()
debian()
source()
spdx(files)
sums()
print("\n".join(complaints) or "all packages hold what they should")
sys.exit(bool(complaints))
