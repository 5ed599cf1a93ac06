# SPDX-License-Identifier: MIT
"""The C++ reference, by Doxygen, of the headers that are installed.

As a program it is Doxygen's filter: it prints a header whose plain comments are such as Doxygen reads.
"""
import pathlib
import re
import subprocess
import sys

CONFIGURATION = """
PROJECT_NAME = pixkit
OUTPUT_DIRECTORY = "{folder}"
HTML_OUTPUT = .
INPUT = {headers}
STRIP_FROM_PATH = "{root}/src" "{root}/include"
INPUT_FILTER = "{python} {filter}"
EXTRACT_ALL = YES
HIDE_FRIEND_COMPOUNDS = YES
EXCLUDE_SYMBOLS = std std::*
BUILTIN_STL_SUPPORT = YES
MACRO_EXPANSION = YES
EXPAND_ONLY_PREDEF = YES
PREDEFINED = PIXKIT_API=
MARKDOWN_SUPPORT = NO
AUTOLINK_SUPPORT = YES
JAVADOC_AUTOBRIEF = YES
WARN_AS_ERROR = FAIL_ON_WARNINGS
QUIET = YES
GENERATE_LATEX = NO
HAVE_DOT = NO
SEARCHENGINE = YES
"""


def write(root, folder):
    """Writes the pages; what Doxygen complains of ends it with another exit code than 0."""
    listed = re.search(r"foreach\(header IN ITEMS (.*?)\)", (root / "src/install.cmake").read_text(), re.DOTALL)[1]
    headers = " ".join(f'"{(root / "src" / name).resolve()}"' for name in listed.split())
    folder.mkdir(parents=True, exist_ok=True)
    configuration = CONFIGURATION.format(folder=folder, headers=headers, root=root, python=sys.executable,
                                         filter=pathlib.Path(__file__).resolve())
    return subprocess.run(["doxygen", "-"], input=configuration, text=True, check=False).returncode


def filtered(text):
    """Comments on lines of their own become ///, those behind code ///<; what Doxygen would take for commands is quoted."""
    for line in text.splitlines():
        code, slashes, comment = re.match(r'((?:[^"/]|"(?:[^"\\]|\\.)*"|/(?!/))*)(//)?(.*)', line).groups()
        if not slashes or comment.strip().startswith("---"):
            yield code
            continue
        comment = comment.replace(" .. ", " to ")  # a full stop would end the line that lists show
        comment = re.sub(r"[\\@<>&#$%]", lambda match: "\\" + match[0], comment)
        behind = code.strip() and not code.rstrip().endswith("{")
        yield f"{code}{'///<' if behind else '///'}{comment}" if behind or not code.strip() else code


if __name__ == "__main__":
    print("\n".join(filtered(pathlib.Path(sys.argv[1]).read_text(encoding="utf-8"))))
