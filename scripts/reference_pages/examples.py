# SPDX-License-Identifier: MIT
"""The examples: the VBScript that follows from Basic, and what the tests run."""
import re

# What the examples begin with where they do not make the object themselves.
PREAMBLES = {
    "vb": 'Dim sheet As New cPixSheet\nsheet.LoadPicture_File "picture.png"\n',
    "cpp": 'pixkit::cPixSheet sheet;\nsheet.LoadPicture_File("picture.png");\n',
    "cs": 'dynamic sheet = Activator.CreateInstance(Type.GetTypeFromProgID("pixkit.cPixSheet"));\n'
          'sheet.LoadPicture_File("picture.png");\n',
    "py": 'from win32com.client import Dispatch\nsheet = Dispatch("pixkit.cPixSheet")\nsheet.LoadPicture_File("picture.png")\n',
}
MADE_HERE = {"vb": "sheet As New", "cpp": "cPixSheet sheet", "cs": "dynamic sheet", "py": "sheet = Dispatch"}
CLASSES = {"cPixSheet": "pixkit.cPixSheet", "pixkit.cPixSheet": "pixkit.cPixSheet", "StdFont": "StdFont"}


def whole(example):
    """The example with what it begins with."""
    made_here = MADE_HERE.get(example.language, "")
    return ("" if made_here in example.code else PREAMBLES[example.language]) + example.code


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
            if example.language not in ("vb", "vbs") or "noscript" in example.flags:
                continue
            code = to_vbscript(whole(example), numbers) if example.language == "vb" else example.code
            body = "\n".join("    " + line for line in code.splitlines())
            check = "" if "failing" in example.flags else f'\n    If sheet.LastErrorText <> "" Then Fail "{page.name}: " & sheet.LastErrorText'
            parts.append(f'Example_{page.name}\nSub Example_{page.name}()\n{body}{check}\nEnd Sub\n')
            count += 1
    parts.append(f'WScript.Echo "all {count} examples ran"\nSub Fail(what)\n    WScript.Echo "failed: " & what\n'
                 "    WScript.Quit 1\nEnd Sub\n")
    return "\n".join(parts)


def jscript_program(pages):
    """What runs the examples in JScript under Windows' script host."""
    codes = [example.code for page in pages for example in page.examples if example.language == "js" and not example.flags]
    return "\n".join(["// Runs the examples of the reference.", *codes, f'WScript.Echo("all {len(codes)} examples ran");', ""])


def component_programs(pages):
    """For each example that calls the component from C or C++ a program by the name of its file."""
    return {f"{'-'.join([example.language, *sorted(example.flags)])}.{example.language}": _COMPONENT.format(code=example.code)
            for page in pages for example in page.examples if example.flags & {"interface", "wrapper"}}


def cpp_program(pages):
    """A program that runs each example in a function of its own; its exit code says whether all did what they should."""
    functions, calls = [], []
    for page in pages:
        for example in page.examples:
            if example.language != "cpp" or example.flags & {"interface", "wrapper"}:
                continue
            name = re.sub(r"\W+", "_", page.name)
            body = "\n".join("    " + line for line in whole(example).splitlines())
            check = f'    return succeeded(sheet, "{page.name}");'
            if "failing" in example.flags:
                check = "    return true;"
            elif "text" in example.flags:
                check = check.replace("return", "return !pixkit::platform::canDrawText() ||")
            functions.append(f"bool example_{name}() {{\n{body}\n{check}\n}}\n")
            calls.append(f"    isGood = example_{name}() && isGood;")
    return _CPP.format(functions="\n".join(functions), calls="\n".join(calls))


_COMPONENT = """/* An example of the reference, made by scripts/reference.py. */
#define INITGUID
#ifdef __cplusplus
#include "pixkit_client.h"
#include <cstdio>
#else
#include "pixkit_com.h"
#include <stdio.h>
#endif

int main(void) {{
    CoInitialize(NULL);
    {{
{code}
    }}
    CoUninitialize();
    return 0;
}}
"""

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
