#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The reference of the component, from the description of its interface and the texts in docs/reference/.

    reference.py [FOLDER]           writes the pages (build/reference): open index.html
    reference.py --check [FOLDER]   looks whether every member, argument and enumerator has a text, the examples and samples
                                    call what there is, and the links of the pages lead somewhere
    reference.py --callers FILE     looks whether the check of callers finds what a file says (tests/data/callers)
    reference.py --cxx [FOLDER]     writes the C++ reference (build/reference/cxx), with Doxygen
    reference.py --vbscript FILE    writes a script that runs the examples; --jscript FILE likewise
    reference.py --cpp FILE         writes a C++ program that runs the examples
    reference.py --component FOLDER writes the programs in C and C++ that run the examples of how the component is called
    reference.py --wrapper FILE     writes the header of the component for C++ programs

What a member does in detail is the comment at its declaration in src/surface/cPixSheet.h; a helpstring in
src/com/pixkit.idl says it in a line; docs/reference/ has what is left: arguments, failures, examples.
"""
import pathlib
import re
import sys
import tempfile

from reference_pages import callers, cxx, examples, pages, wrapper
from reference_pages.interface import Interface
from reference_pages.texts import argument_texts, read_header, read_subject

ROOT = pathlib.Path(__file__).resolve().parent.parent


class Reference:
    """All that the pages are made of."""

    def __init__(self):
        folder = ROOT / "docs" / "reference"
        self.interface = Interface(ROOT / "src" / "com" / "pixkit.idl")
        self.header = read_header(ROOT / "src" / "surface" / "cPixSheet.h")
        self.common = argument_texts((folder / "arguments.md").read_text(encoding="utf-8"))
        self.subjects = [read_subject(path) for path in sorted(folder.glob("[0-9]*.md"))]
        self.languages = read_subject(folder / "languages.md")
        self.pages = {page.name: page for subject in self.subjects for page in subject.pages}
        self.all_pages = [*self.pages.values(), *self.languages.pages]

    def meaning(self, page, argument):
        return page.arguments.get(argument.name) or self.common.get(argument.name, "")


def missing_texts(reference):
    interface = reference.interface
    yield from interface.complaints
    for name in interface.members.keys() - reference.pages.keys():
        yield f"docs/reference: nothing about {name}"
    for name in reference.pages.keys() - interface.members.keys():
        yield f"docs/reference: {name} is no member"
    for enumeration in interface.enumerations.values():
        yield from (f"pixkit.idl: no comment behind {name}" for name, _, text in enumeration.values if not text)
    used = set()
    for name in sorted(interface.members.keys() & reference.pages.keys()):
        page, names = reference.pages[name], [argument.name for argument in interface.members[name].arguments]
        # Where results come back in arguments, languages differ in how they get there.
        wanted = ["vb", "cpp"] + ["cs", "py"] * any(argument.is_result for argument in interface.members[name].arguments)
        used.update(argument for argument in names if argument not in page.arguments)
        yield from (f"{name}: no text for {a.name}" for a in interface.members[name].arguments if not reference.meaning(page, a))
        yield from (f"{name}: there is no argument {argument}" for argument in page.arguments if argument not in names)
        yield from (f"{name}: no example in {language}" for language in wanted
                    if language not in {example.language for example in page.examples})
        yield from (f"{name}: see {other}, which there is not" for other in page.see
                    if other not in interface.members and other not in interface.enumerations)
        if not page.failure:
            yield f"{name}: what does it give when it fails?"
        if not "".join(reference.header.get(name, ([], []))[0]):
            yield f"cPixSheet.h: no comment at {name}"
    yield from (f"arguments.md: no member needs {name}" for name in reference.common.keys() - used)


def wrong_callers(reference):
    """Examples, here and in README.md, and the samples in languages that callers.py knows."""
    def check(where, language, code):
        yield from (f"{where}: {complaint}" for complaint in
                    callers.check(code, callers.LANGUAGES[language], reference.interface))

    for page in reference.all_pages:
        for example in page.examples:
            if example.language not in ("c", "cpp"):  # compilers look at those
                yield from check(f"{page.name}, {example.language}", example.language, examples.whole(example))
    for code in re.findall(r"^```vb\n(.*?)^```$", (ROOT / "README.md").read_text(encoding="utf-8"), re.MULTILINE | re.DOTALL):
        yield from check("README.md", "vb", code)
    checked = set()
    for path in sorted((ROOT / "samples").rglob("*")):
        if (language := callers.language_of(path)) and "node_modules" not in path.parts:
            checked.add(language.name)
            yield from check(path.relative_to(ROOT), language.name, path.read_text(encoding="utf-8"))
    yield from (f"samples: none in {name}" for name in callers.LANGUAGES.keys() - checked)


def check_the_check(reference, path):
    """Lines "language code ~ complaint" get exactly that complaint, or none."""
    wrong = count = 0
    for line in path.read_text(encoding="utf-8").splitlines():
        if not line or line.startswith("#"):
            continue
        code, _, expected = line.rpartition(" ~")
        name, code = code.split(maxsplit=1)
        found = list(callers.check(code + "\n", callers.LANGUAGES[name], reference.interface))
        count += 1
        if found != [expected.strip()] * bool(expected.strip()):
            wrong += 1
            print(f"{name}: {code}: expected {expected.strip() or 'no complaint'}, found {'; '.join(found) or 'none'}")
    print(f"reference: {count} callers, {wrong} judged wrongly")
    return 1 if wrong or not count else 0


def dead_links(folder):
    for path in sorted(folder.glob("*.html")):
        text = path.read_text(encoding="utf-8")
        for link in re.findall(r'(?:href|src)="([^"#]*)', text):
            if link and not (folder / link).exists():
                yield f"{path.name} leads to {link}, which there is not"
        if re.search(r'(?:src|href)="(?:https?:)?//', text):
            yield f"{path.name} needs something from elsewhere"


def check(reference, folder):
    complaints = [*missing_texts(reference), *wrong_callers(reference)]
    if not complaints:
        pages.write(reference, folder)
        complaints = list(dead_links(folder))
    for complaint in complaints:
        print("reference:", complaint)
    print(f"reference: {len(reference.pages)} members, {len(reference.interface.enumerations)} enumerations, "
          f"{len(complaints)} complaints")
    return 1 if complaints else 0


def main(arguments):
    if arguments[:1] == ["--wrapper"]:  # of the interface alone, so that no text can keep it from being built
        pathlib.Path(arguments[1]).write_text(wrapper.header(Interface(ROOT / "src" / "com" / "pixkit.idl")), encoding="utf-8")
        return 0
    reference = Reference()
    match arguments:
        case ["--check"]:
            with tempfile.TemporaryDirectory() as folder:
                return check(reference, pathlib.Path(folder))
        case ["--check", folder]:
            return check(reference, pathlib.Path(folder))
        case ["--callers", file]:
            return check_the_check(reference, pathlib.Path(file))
        case ["--cxx", *folder]:
            return cxx.write(ROOT, pathlib.Path(*folder[:1] or [ROOT / "build" / "reference" / "cxx"]))
        case ["--vbscript", file]:
            pathlib.Path(file).write_text(examples.vbscript_program(reference.all_pages, reference.interface.numbers))
        case ["--jscript", file]:
            pathlib.Path(file).write_text(examples.jscript_program(reference.languages.pages))
        case ["--cpp", file]:
            pathlib.Path(file).write_text(examples.cpp_program(reference.all_pages))
        case ["--component", folder]:
            for name, text in examples.component_programs(reference.languages.pages).items():
                (pathlib.Path(folder) / name).write_text(text)
        case [] | [_] if not arguments or not arguments[0].startswith("-"):
            folder = pathlib.Path(arguments[0]) if arguments else ROOT / "build" / "reference"
            pages.write(reference, folder)
            print(f"reference: {folder / 'index.html'}")
        case _:
            print(__doc__, file=sys.stderr)
            return 2
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
