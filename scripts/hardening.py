#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Fails when a program or library of a build lacks what cmake/Hardening.cmake asks for, as its own headers tell.

    hardening.py BUILD-FOLDER [sanitized]

Windows: no place of its own (with relocations, and among 64-bit addresses where it has them), data is never executed
nor code written, guarded stacks, no structured exceptions in 32 bits, nothing imported of the compiler's. Linux: the
same, by position-independent code, a stack that is not executed, tables read-only once all functions are found, which
is at once, the checked functions of FORTIFY (not under sanitizers, which check themselves), and no run path.
"""
import pathlib
import re
import struct
import subprocess
import sys


def faults_of_pe(path, image):
    start = struct.unpack_from("<I", image, 0x3C)[0]
    _, count, _, _, _, optional_size, characteristics = struct.unpack_from("<HHIIIHH", image, start + 4)
    optional = start + 24
    is_64 = struct.unpack_from("<H", image, optional)[0] == 0x20B
    flags = struct.unpack_from("<H", image, optional + 70)[0]
    directories = [struct.unpack_from("<II", image, optional + (112 if is_64 else 96) + 8 * i) for i in range(6)]
    wanted = {0x40: "DYNAMIC_BASE", 0x100: "NX_COMPAT"}
    wanted |= {0x20: "HIGH_ENTROPY_VA"} if is_64 else {0x400: "NO_SEH"}
    yield from (f"no {name}" for flag, name in wanted.items() if not flags & flag)
    if characteristics & 1 or not directories[5][1]:
        yield "no relocations"
    sections = [struct.unpack_from("<8sIIIIIIHHI", image, optional + optional_size + 40 * i) for i in range(count)]
    for section in sections:
        if section[9] & 0xA0000000 == 0xA0000000:
            yield f"section {section[0]} is written and executed"
    # DLLs other than the component's are a few lines for tests, where the compiler finds no array to guard.
    if (path.suffix == ".exe" or path.stem == "pixkit") and b"stack smashing detected" not in image:
        yield "no stack protector"

    def offset(address):
        return next(address - first + place for _, _, first, size, place, *_ in sections if 0 <= address - first < size)

    descriptor = offset(directories[1][0])
    while name := struct.unpack_from("<I", image, descriptor + 12)[0]:
        imported = image[offset(name):].split(b"\0", 1)[0].decode()
        if imported.startswith("lib"):
            yield f"imports {imported}"
        descriptor += 20


def faults_of_elf(path, sanitized):
    told = subprocess.run(["readelf", "-W", "-h", "-l", "-d", "--dyn-syms", path], check=True, capture_output=True,
                          text=True, env={"LC_ALL": "C"}).stdout
    wanted = {"position-independent code": r"Type: +DYN", "bound at once": r"\(FLAGS_1\).*\bNOW\b",
              "RELRO": r"^ +GNU_RELRO ", "stack that is data": r"^ +GNU_STACK .* RW +\S+$",
              "stack protector": r"\b__stack_chk_fail\b"}
    if not sanitized:
        wanted["FORTIFY"] = r"\b__\w+_chk\b(?<!__stack_chk)"
    yield from (f"no {name}" for name, pattern in wanted.items() if not re.search(pattern, told, re.MULTILINE))
    unwanted = {"memory that is written and executed": r"^ +LOAD .* RWE ", "run path": r"\((RUNPATH|RPATH)\)",
                "relocated code": r"\(TEXTREL\)"}
    yield from (f"has {name}" for name, pattern in unwanted.items() if re.search(pattern, told, re.MULTILINE))


def main():
    build, sanitized = pathlib.Path(sys.argv[1]), "sanitized" in sys.argv[2:]
    checked = failed = 0
    for path in sorted(build.rglob("*")):
        # Not of this project: what CMake tries out, what uses the installed library, and the system in the folder of Wine.
        if not path.is_file() or {"CMakeFiles", "package", "wine", "wine-display", "temporary"} & set(path.parts):
            continue
        with path.open("rb") as file:
            start = file.read(18)
            is_elf = start[:4] == b"\x7fELF" and start[16] in (2, 3)
            if not is_elf and start[:2] != b"MZ":
                continue
            faults = list(faults_of_elf(path, sanitized) if is_elf else faults_of_pe(path, start + file.read()))
        checked += 1
        failed += bool(faults)
        for fault in faults:
            print(f"{path.relative_to(build)}: {fault}")
    print(f"{checked - failed} passed, {failed} failed")
    sys.exit(failed > 0 or checked == 0)


main()
