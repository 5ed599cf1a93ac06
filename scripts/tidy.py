#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Looks at source files with clang-tidy, which .clang-tidy tells what to look for.

    tidy.py BUILD-FOLDER FILE...

Nearly all of clang-tidy's time goes into the standard headers, which it looks through again for every file. So files go
together, as one unit that includes them. Only where they cannot (two have functions of one name), or where
something is found, does each file go alone. A file that passed is not looked at again until it, a header that it
includes, the way it is compiled or the settings change (marks in ~/.cache/pixkit-tidy).
"""
import concurrent.futures
import functools
import hashlib
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile
import time

together = 12
# What is wrong about Windows: handles are pointers behind a name, the analyzer does not follow a VARIANT's nameless
# unions, and a class of the component's has the same name in the interface.
on_windows = "-misc-misplaced-const,-clang-analyzer-core.UndefinedBinaryOperatorResult,-bugprone-forward-declaration-namespace"
root = pathlib.Path.cwd()
cache = pathlib.Path(os.environ.get("XDG_CACHE_HOME") or pathlib.Path(os.environ.get("HOME", "/tmp")) / ".cache")
marks = cache / "pixkit-tidy"
folders = [root / folder for folder in ("src", "include", "tests", "tests/support")]


@functools.cache
def target_of(compiler):
    """What clang needs to know to stand in for a cross-compiler: the machine, and where that one has its library."""
    triple = re.match(r"\w+-w64-mingw32(?=-g\+\+)", pathlib.Path(compiler).name)
    if not triple:
        return []
    said = subprocess.run([compiler, "-xc++", "-E", "-v", os.devnull], capture_output=True, text=True, check=True).stderr
    library = re.findall(r"^ (\S*/c\+\+\S*)$", said, re.MULTILINE)
    return ["--target=" + triple[0], "-nostdinc++", *(word for folder in library for word in ("-isystem", folder))]


def commands_of(build):
    """File to the arguments that matter to clang-tidy."""
    commands = {}
    for entry in json.loads((build / "compile_commands.json").read_text()):
        words = shlex.split(entry["command"])
        compiler = next(word for word in words if not word.endswith("ccache"))
        keep, words = list(target_of(compiler)), iter(words[1:])
        for word in words:
            if word in ("-isystem", "-include"):
                name = next(words)
                if not name.endswith("cmake_pch.hxx"):  # compiled by another compiler, and hides what is not included
                    keep += [word, name]
            elif word.startswith(("-I", "-D", "-U", "-std", "-m")) and not word.startswith("-mincoming"):  # GCC's alone
                keep.append(word)
        commands[entry["file"]] = tuple(keep)
    return commands


@functools.cache
def own_includes(file):
    names = re.findall(r'^ *#include "([^"]+)"', file.read_text(), re.MULTILINE)
    found = (next((f / n for f in [file.parent, *folders] if (f / n).exists()), None) for n in names)
    return [path.resolve() for path in found if path]


def state_of(file, settings, command):
    """Of all that the answer depends on."""
    files, ahead = {file}, [file]
    while ahead:
        new = [header for header in own_includes(ahead.pop()) if header not in files]
        files.update(new)
        ahead += new
    state = hashlib.sha256((settings + shlex.join(command).replace(str(root), "")).encode())
    for each in sorted(files):
        state.update(each.read_bytes())
    return marks / state.hexdigest()[:40]


def run(file, command, checks):
    done = subprocess.run(["clang-tidy", "--quiet", f"--config-file={root}/.clang-tidy", f"--checks={checks}", str(file),
                           "--", *command], capture_output=True, text=True)
    return done.returncode == 0, done.stdout


def look_at(unit):
    """A unit is files and their marks, all compiled in one way. Returns what was found."""
    files, command = unit
    # The ways through a test's many lines take long, and it runs under sanitizers anyway.
    checks = "-clang-analyzer-*" if files[0][0].is_relative_to(root / "tests") else ""
    if any(word.startswith("--target=") for word in command):
        checks += "," + on_windows
    if len(files) > 1:
        with tempfile.NamedTemporaryFile("w", suffix=".cpp", prefix="pixkit-tidy-") as source:
            source.write("".join(f'#include "{file}" // NOLINT\n' for file, _ in files))
            source.flush()
            passed, output = run(source.name, command, checks)
        if passed:
            for _, mark in files:
                mark.touch()
            return ""
        # The rest go without those that are spoken of; if nothing tells them apart, one half without the other.
        spoken_of = set(re.findall(r"^(/[^:]+):\d+:\d+: (?:error|warning)", output, re.MULTILINE))
        apart = [entry for entry in files if str(entry[0]) in spoken_of]
        if len(apart) in (0, len(files)):
            apart = files[: len(files) // 2]
        rest = [entry for entry in files if entry not in apart]
        return look_at((rest, command)) + look_at((apart, command))
    file, mark = files[0]
    passed, output = run(file, command, checks)
    if passed:
        mark.touch()
    return output if not passed else ""


def main():
    build = pathlib.Path(sys.argv[1])
    marks.mkdir(parents=True, exist_ok=True)
    settings = subprocess.run(["clang-tidy", "--version"], capture_output=True, text=True, check=True).stdout
    settings += (root / ".clang-tidy").read_text() + pathlib.Path(__file__).read_text()
    commands = commands_of(build)
    groups = {}
    for name in sorted(sys.argv[2:]):
        file = root / name
        command = commands[str(file)]
        mark = state_of(file, settings, command)
        if mark.exists():
            mark.touch()
        else:
            groups.setdefault((command, file.relative_to(root).parts[0]), []).append((file, mark))
    units = []
    for (command, _), files in groups.items():
        count = -(-len(files) // together)
        units += [(files[i::count], command) for i in range(count)]
    units.sort(key=lambda unit: -len(unit[0]))
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        found = [output for output in pool.map(look_at, units) if output]
    print("".join(found), end="")
    for mark in marks.iterdir():
        if mark.stat().st_mtime < time.time() - 30 * 86400:
            mark.unlink()
    sys.exit(bool(found))


main()
