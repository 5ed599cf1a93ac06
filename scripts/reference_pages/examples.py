# SPDX-License-Identifier: MIT
"""The examples: the VBScript that follows from Basic, and what the tests run."""
import re

# What the examples begin with where they do not make the object themselves.
PREAMBLES = {
    "vb": 'Dim sheet As New cPixSheet\nsheet.LoadPicture_File "picture.png"\n',
    "cpp": 'pixkit::cPixSheet sheet;\nsheet.LoadPicture_File("picture.png");\n',
    "cs": 'dynamic sheet = Activator.CreateInstance(Type.GetTypeFromProgID("pixkit.cPixSheet"));\n'
          'sheet.LoadPicture_File("picture.png");\n',
}
MADE_HERE = {"vb": "sheet As New", "cpp": "cPixSheet sheet", "cs": "dynamic sheet"}
CLASSES = {"cPixSheet": "pixkit.cPixSheet", "pixkit.cPixSheet": "pixkit.cPixSheet", "StdFont": "StdFont"}


def whole(example):
    """The example with what it begins with."""
    return ("" if MADE_HERE[example.language] in example.code else PREAMBLES[example.language]) + example.code


def without_strings(line):
    """A line of Basic without its comment, its strings emptied."""
    return re.sub(r'"[^"]*"|(\'.*)', lambda match: "" if match[1] else '""', line)


def to_vbscript(code, numbers):
    """Basic with types becomes VBScript, which has neither types nor the enumerators."""
    lines = []
    for line in code.splitlines():
        if declaration := re.match(r"^(\s*)Dim (.*)$", line):
            names, made = [], []
            for variable in declaration[2].split(", "):
                name, kind = re.match(r"(\w+)(?:\(\))? As (.*)$", variable).groups()
                names.append(name)
                if kind.startswith("New "):
                    made.append(f'{declaration[1]}Set {name} = CreateObject("{CLASSES[kind[4:]]}")')
            lines += [f"{declaration[1]}Dim {', '.join(names)}", *made]
        else:
            lines.append(re.sub(r"(?<=\d)#", "", line.replace("Debug.Print", "WScript.Echo")))
    used = sorted({name for line in lines for name in re.findall(r"\w+", without_strings(line)) if name in numbers})
    constants = [f"Const {', '.join(f'{name} = {numbers[name]}' for name in used)}"] if used else []
    return "\n".join(constants + lines)


def vbscript_program(pages, numbers):
    """A program that runs each example in a procedure of its own and says how many ran."""
    parts, count = ["' Runs the examples of the reference.\n"], 0
    for page in pages:
        for example in page.examples:
            if example.language != "vb" or "noscript" in example.flags:
                continue
            body = "\n".join("    " + line for line in to_vbscript(whole(example), numbers).splitlines())
            check = "" if "failing" in example.flags else f'\n    If sheet.LastErrorText <> "" Then Fail "{page.name}: " & sheet.LastErrorText'
            parts.append(f'Example_{page.name}\nSub Example_{page.name}()\n{body}{check}\nEnd Sub\n')
            count += 1
    parts.append(f'WScript.Echo "all {count} examples ran"\nSub Fail(what)\n    WScript.Echo "failed: " & what\n'
                 "    WScript.Quit 1\nEnd Sub\n")
    return "\n".join(parts)


def cpp_program(pages):
    """A program that runs each example in a function of its own; its exit code says whether all did what they should."""
    functions, calls = [], []
    for page in pages:
        for example in page.examples:
            if example.language != "cpp":
                continue
            body = "\n".join("    " + line for line in whole(example).splitlines())
            check = f'    return succeeded(sheet, "{page.name}");'
            if "failing" in example.flags:
                check = "    return true;"
            elif "text" in example.flags:
                check = check.replace("return", "return !pixkit::platform::canDrawText() ||")
            functions.append(f"bool example_{page.name}() {{\n{body}\n{check}\n}}\n")
            calls.append(f"    isGood = example_{page.name}() && isGood;")
    return _CPP.format(functions="\n".join(functions), calls="\n".join(calls))


_CPP = """// The examples of the reference, made by scripts/reference.py.
#include <any>
#include <iostream>
#include <pixkit/pixkit.h>
#include <string>
#include <vector>

namespace {{

bool succeeded(const pixkit::cPixSheet& sheet, const char* name) {{
    if (sheet.LastErrorText().empty()) return true;
    std::cout << name << ": " << sheet.LastErrorText() << '\\n';
    return false;
}}

{functions}
}} // namespace

int main() {{
    bool isGood = true;
{calls}
    return isGood ? 0 : 1;
}}
"""
