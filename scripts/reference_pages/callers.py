# SPDX-License-Identifier: MIT
"""Callers in languages that cannot be compiled everywhere, held to the interface: names and kinds of members, how many arguments
there are and what they are called, the types of those that are written down, and the numbers of enumerators."""
import dataclasses
import re


@dataclasses.dataclass
class Language:
    name: str
    suffixes: tuple
    comment: str  # a regular expression, as the rest
    objects: tuple  # where a variable is said to hold an object: its name is the first group
    string: str = r'"(?:""|[^"\n])*"'
    named: str = ""  # how the name of an argument stands before it
    true: str = "true"
    false: str = "false"
    sigil: str = ""  # before variables
    knows_enumerators: bool = False  # from the type library
    needs_brackets: bool = True  # a method without them is none
    has_references: bool = True  # members can store something in variables
    declares: str = ""  # where the variable NAME is made


_SLASHES = r"//[^\n]*|/\*.*?\*/"
_C_STRING = r'"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])*\''
_BASIC = dict(comment=r"'[^\n]*", true="True", false="False", needs_brackets=False, named=r"(\w+)\s*:=\s*",
              objects=(r"\b(\w+) As (?:New )?(?:pixkit\.)?cPixSheet", r'Set (\w+) = CreateObject\("pixkit'))

LANGUAGES = {language.name: language for language in (
    Language("vb", (".bas", ".frm"), knows_enumerators=True, **_BASIC),
    Language("vbs", (".vbs",), **{**_BASIC, "named": ""}),
    Language("js", (".js",), _SLASHES, (r'\b(\w+) = (?:new ActiveXObject|createObject)\(["\']pixkit', r"\b(\w+) = \w+\.CreateDropShadow\("),
             _C_STRING, has_references=False),
    Language("ps", (".ps1",), r"#[^\n]*", (r"\$(\w+) = New-Object -ComObject pixkit",), r'"[^"\n]*"|\'[^\'\n]*\'', true=r"\$true",
             false=r"\$false", sigil="$"),
    Language("cs", (".cs",), _SLASHES, (r"\bdynamic (\w+)\b(?![^\n]*StdFont)",), r'\$?' + _C_STRING, named=r"(\w+):\s*",
             declares=r"(?:[\w\]>] +|, *)NAME *=(?!=)"),
    Language("py", (".py",), r"#[^\n]*", (r'\b(\w+) = Dispatch\("pixkit',), r'f?"""(?:.*?)"""|f?' + _C_STRING, named=r"(\w+)=(?!=)",
             true="True", false="False", has_references=False,
             declares=r"^[\w, ]*\bNAME\b[\w, ]*=(?!=)|\bfor\b.*\bNAME\b.*\bin\b|\bas NAME:"),
    Language("ahk", (".ahk",), r"(?:^|\s);[^\n]*", (r'\b(\w+) := ComObject\("pixkit',), has_references=False),
    Language("pas", (".pas",), r"//[^\n]*|\{.*?\}", (r"\b(\w+) := CreateOleObject\('pixkit", r"\b(\w+)(?:, \w+)*: _cPixSheet"),
             r"'(?:''|[^'\n])*'", named=r"(\w+)\s*:=\s*", true="True", false="False", knows_enumerators=True, needs_brackets=False),
)}

PLAIN_TYPES = {"Long", "LongPtr", "Byte", "Boolean", "Single", "Double", "String", "Variant", "Object", "Integer", "DataObject"}
ENUMERATOR = re.compile(
    r"(?<![.\w])(?:(?:gscl|img|Alpha(?=None|Simple|Complex)|png|filter|txt|pict|region|resample|trim|scale|Scale(?=To|Stretch)|"
    r"stream(?=Bitmap|Icon|GIF|PNG|TGA|JPG))[A-Z]\w*|[A-Z]+_COLOR\w*)\b(?!\s*:=|: )")
NUMBERS = {"Long", "LongPtr", "Single", "Double", "Byte"}


def cleaned(code, language):
    """The code without comments, its strings emptied; as many lines as before."""
    def replaced(match):
        found = match[0]
        lines = "\n" * found.count("\n")
        return lines if match["comment"] is not None else '""' + lines
    return re.sub(f"(?P<string>{language.string})|(?P<comment>{language.comment})", replaced, code,
                  flags=re.DOTALL | re.MULTILINE)


def arguments_behind(code, start, language):
    """The arguments of the call whose name ends at `start`, and where it ends; None where there is no call."""
    if code[start:start + 1] == "(":
        rest = code[start + 1:]
    elif not language.needs_brackets:
        rest = re.split(r"\n|\bElse\b|:(?!=)", code[start:])[0]
        if not rest.startswith(" "):
            return [], start
    else:
        return None, start
    depth, parts, end = 0, [""], len(rest)
    for place, character in enumerate(rest):
        depth += (character in "([{") - (character in ")]}")
        if depth < 0:
            end = place
            break
        if character == "," and depth == 0:
            parts.append("")
        else:
            parts[-1] += character
    return ([part.strip() for part in parts] if "".join(parts).strip() else []), start + end + 2


def literal_kind(text, language):
    """What an argument that is written down is; empty for everything else."""
    if text == '""':
        return "String"
    if re.fullmatch(f"{language.true}|{language.false}", text):
        return "Boolean"
    if re.fullmatch(r"-?(?:0x[0-9A-Fa-f]+|&H[0-9A-Fa-f]+&?|\d+(?:\.\d+)?(?:e\d+)?)", text):
        return "Number"
    return ""


def wrong_type(member, argument, text, language, interface):
    kind, name = literal_kind(text, language), text.removeprefix(language.sigil)
    number = argument.type in NUMBERS or argument.type in interface.enumerations
    if argument.any_number or argument.type in ("Variant", "Object"):
        return
    if kind == "String" and argument.type != "String" or kind == "Number" and not number \
            or kind == "Boolean" and argument.type != "Boolean":
        yield f"{member.name}: {argument.name} is a {argument.type}, not {text}"
    if name in interface.numbers and argument.type in interface.enumerations:
        if name not in {value for value, _, _ in interface.enumerations[argument.type].values}:
            yield f"{member.name}: {name} is no value of {argument.type}"


def check_arguments(member, given, code, language, interface):
    most = None if any(a.any_number for a in member.arguments) else len(member.arguments)
    needed = sum(not argument.optional for argument in member.arguments)
    if most is not None and len(given) > most:
        yield f"{member.name} takes {most} arguments, not {len(given)}"
        return
    if len(given) < needed:
        yield f"{member.name} needs {needed} arguments, not {len(given)}"
    by_name = {argument.name: argument for argument in member.arguments}
    for place, text in enumerate(given):
        match = re.match(language.named, text) if language.named else None
        argument = by_name.get(match[1]) if match else member.arguments[min(place, len(member.arguments) - 1)]
        if argument is None:
            yield f"{member.name} has no argument {match[1]}"
            continue
        text = text[match.end():] if match else text
        yield from wrong_type(member, argument, text, language, interface)
    if not language.has_references:
        yield from (f"{member.name} stores its result in {argument.name}, which does not reach the caller"
                    for argument in member.arguments if argument.is_result)
    if language.declares:
        texts = [re.sub(f"^{language.named}", "", text).removeprefix("ref ") for text in given]
        yield from (f"{member.name}: nothing declares {text}" for text in texts
                    if re.fullmatch(r"[a-z]\w*", text) and text not in ("true", "false", "null")
                    and not ENUMERATOR.fullmatch(text) and not re.search(language.declares.replace("NAME", text), code, re.MULTILINE))


def check_use(member, code, begin, end, language, interface):
    """Complaints about one place where a member is named, which ends at `end`."""
    before = code[code.rfind("\n", 0, begin) + 1:begin]
    is_statement = not before.strip() or re.search(r"(?:\b(?:Then|Else|then|else|do)|[;{])\s*$", before) is not None
    if is_statement and re.match(r"\s*:?=(?!=)", code[end:]) and not code[end:].lstrip().startswith("=>"):
        if member.kind != "property":
            yield f"{member.name} is a {member.kind}, to which nothing can be assigned"
        return
    if member.kind != "method":
        if code[end:end + 1] == "(":
            yield f"{member.name} is a property, which is not called"
        return
    if not is_statement and not language.needs_brackets and code[end:end + 1] != "(":
        given = []
    else:
        given, _ = arguments_behind(code, end, language)
    if given is None:
        yield f"{member.name} is a method: it is called with brackets"
        return
    yield from check_arguments(member, given, code, language, interface)


def check_constants(code, language, interface):
    """Enumerators that a caller writes down have the numbers of the interface, and there are no others."""
    defined = {}
    for name, number in re.findall(r"(?<![.\w])(\w+)\s*:?=\s*(-?\d+)(?=\s*(?:[,;\n]|$))", code):
        if ENUMERATOR.fullmatch(name):
            defined[name] = int(number)
    for name, number in defined.items():
        if name in interface.numbers and interface.numbers[name] != number:
            yield f"{name} is {interface.numbers[name]}, not {number}"
    for name in dict.fromkeys([*defined, *ENUMERATOR.findall(code)]):
        if name not in interface.numbers:
            yield f"{name} is no enumerator"
        elif name not in defined and not language.knows_enumerators:
            yield f"{name} is not defined: the language does not know enumerators"


def check(code, language, interface):
    """Complaints about a caller."""
    receivers = {"sheet"}
    for pattern in language.objects:
        receivers |= set(re.findall(pattern, code))
    if language.name == "js":  # samples/node names properties by strings
        for name in re.findall(rf"\b(?:{'|'.join(receivers)})\.(?:get|set)\('(\w+)'", code):
            if name not in interface.members or interface.members[name].kind == "method":
                yield f"{name} is no property"
    if language.name == "py":
        try:
            compile(code, "a caller", "exec")
        except SyntaxError as error:
            yield f"line {error.lineno} is no Python"
    code = cleaned(code, language)
    if language.name == "vb":
        for kind in re.findall(r"\bAs (?:New )?([\w.]+)", code):
            if kind.removeprefix("pixkit.") not in {*interface.enumerations, *PLAIN_TYPES, "cPixSheet", "StdFont"}:
                yield f"{kind} is no type"
    yield from check_constants(code, language, interface)
    for match in re.finditer(r"(?<![\w.])(\w+)\.(\w+)", code):
        if match[1] not in receivers or match[2] in ("get", "set") and language.name == "js":
            continue
        member = interface.members.get(match[2])
        if member is None:
            yield f"{match[2]} is no member"
        else:
            yield from check_use(member, code, match.start() - len(language.sigil), match.end(), language, interface)


def language_of(path):
    return next((language for language in LANGUAGES.values() if path.suffix in language.suffixes), None)
