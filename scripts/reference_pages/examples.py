# SPDX-License-Identifier: MIT
"""The examples: their checks against the interface, the VBScript that follows from Basic, and what the tests run."""
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


def arguments_of(line, start):
    """How many arguments a call of Basic has whose name ends at `start`, and those that are named."""
    rest = line[start:]
    in_brackets = rest.startswith("(")
    if not in_brackets:  # a statement; behind Else there may be more
        rest = "(" + re.split(r"\bElse\b", rest)[0]
    depth, count, text = 0, 1, ""
    for character in rest[1:]:
        depth += (character in "([") - (character in ")]")
        if depth < 0:
            break
        count += character == "," and depth == 0
        text += character
    return (count if text.strip() else 0), re.findall(r"(\w+):=", text)


def check_calls(line, receivers, interface):
    """Complaints about the members that a line calls: those there are not, too many or too few arguments."""
    for match in re.finditer(r"\b(\w+)\.(\w+)", line):
        if match[1] not in receivers:
            continue
        member = interface.members.get(match[2])
        if member is None:
            yield f"{match[2]} is no member"
            continue
        before, behind = line[:match.start()], line[match.end():]
        is_statement = not before.strip() or re.search(r"\b(Then|Else)\s*$", before)
        if member.kind != "method" or not (behind.startswith("(") or is_statement):
            continue
        count, named = arguments_of(line, match.end())
        needed = sum(not argument.optional for argument in member.arguments)
        if count > len(member.arguments) and not any(argument.any_number for argument in member.arguments):
            yield f"{member.name} takes {len(member.arguments)} arguments, not {count}"
        if count < needed:
            yield f"{member.name} needs {needed} arguments, not {count}"
        for name in named:
            if name not in {argument.name for argument in member.arguments}:
                yield f"{member.name} has no argument {name}"


PLAIN_TYPES = {"Long", "LongPtr", "Byte", "Boolean", "Single", "Double", "String", "Variant", "Object", "Integer", "DataObject"}
ENUMERATOR = re.compile(
    r"(?<![.\w])(?:(?:gscl|img|Alpha|png|filter|txt|pict|region|resample|trim|scale|Scale(?=To|Stretch))[A-Z]\w*|[A-Z]+_COLOR\w*)\b(?!:=)")


def check_code(code, interface):
    """Complaints about an example in Basic, VBScript or C#."""
    receivers = {"sheet", *re.findall(r"\b(\w+) As (?:New )?(?:pixkit\.)?cPixSheet", code),
                 *re.findall(r'Set (\w+) = CreateObject\("pixkit', code)}
    defined = interface.numbers.keys() | set(re.findall(r"\b(\w+) = -?\d+(?=,|$)", code, re.MULTILINE))
    for line in map(without_strings, code.splitlines()):
        for kind in re.findall(r"\bAs (?:New )?([\w.]+)", line):
            if kind not in interface.enumerations and kind not in CLASSES and kind not in PLAIN_TYPES:
                yield f"{kind} is no type"
        yield from (f"{name} is no enumerator" for name in ENUMERATOR.findall(line) if name not in defined)
        yield from check_calls(line, receivers, interface)


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
