# SPDX-License-Identifier: MIT
"""What people wrote about the members: docs/reference/ by subject, and the comments in the C++ header."""
import dataclasses
import re


@dataclasses.dataclass
class Example:
    language: str  # vb, cpp, cs
    flags: set  # noscript: for hosts with windows alone; failing: the call fails on purpose
    code: str


@dataclasses.dataclass
class Page:
    name: str
    subject: str
    notes: str = ""
    arguments: dict = dataclasses.field(default_factory=dict)
    failure: str = ""
    see: list = dataclasses.field(default_factory=list)
    examples: list = dataclasses.field(default_factory=list)


@dataclasses.dataclass
class Subject:
    title: str
    introduction: str
    pages: list


def argument_texts(text):
    """The lines "- `name`: meaning" of a text."""
    return {name: meaning for name, meaning in re.findall(r"^- `(\w+)`: (.*)$", text, re.MULTILINE)}


FAILURE = re.compile(r"^Failure: (.+(?:\n(?!- `\w+`: |See: ).+)*)", re.MULTILINE)


def read_subject(path):
    head, *sections = re.split(r"^## ", path.read_text(encoding="utf-8"), flags=re.MULTILINE)
    title, _, introduction = head.partition("\n")
    subject = Subject(title.lstrip("# ").strip(), introduction.strip(), [])
    for section in sections:
        name, _, body = section.partition("\n")
        page = Page(name.strip(), subject.title)
        for words, code in re.findall(r"^```(.*?)\n(.*?)^```$", body, re.MULTILINE | re.DOTALL):
            language, *flags = words.split()
            page.examples.append(Example(language, set(flags), code.rstrip("\n")))
        prose = re.sub(r"^```.*?^```$", "", body, flags=re.MULTILINE | re.DOTALL)
        page.arguments = argument_texts(prose)
        page.failure = " ".join("".join(FAILURE.findall(prose)).split())
        page.see = re.findall(r"\w+", "".join(re.findall(r"^See: (.*)$", prose, re.MULTILINE)))
        page.notes = re.sub(r"^(- `\w+`: |See: ).*$", "", FAILURE.sub("", prose), flags=re.MULTILINE).strip()
        subject.pages.append(page)
    return subject


def read_header(path):
    """For each public member of the class its comment, and its declarations."""
    text = path.read_text(encoding="utf-8")
    text = text[text.index("public:"):text.index("private:")]
    found, comment, declaration, fresh = {}, [], "", True
    for line in text.splitlines()[1:]:
        stripped = line.strip()
        if not declaration and (not stripped or stripped.startswith("// ---")):
            comment, fresh = [], not stripped
        elif not declaration and stripped.startswith("//"):
            if fresh is None:  # the first line of another comment
                comment = []
            # The lines below a heading belong to the heading.
            if fresh is not False:
                comment.append(line[7:])
                fresh = True
        else:
            # A comment behind the declaration stands for one above it.
            if (behind := re.search(r"[;}] // (.*)$", line)) and fresh is not True:
                comment, line = [behind[1]], line[:behind.start() + 1]
            declaration += line[4:] + "\n"
            if re.search(r"[;}]\s*(//.*)?$", line):
                name = re.search(r"(\w+)\(", declaration)
                if name:
                    entry = found.setdefault(name[1], ([], []))
                    entry[0].extend([] if entry[0] else comment)
                    entry[1].append(re.sub(r"\s*(noexcept )?(?<=[)\w] )\{.*\}$|\s*noexcept;?$", "", declaration.rstrip(";\n")))
                declaration, fresh = "", None
    return found
