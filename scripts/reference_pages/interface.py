# SPDX-License-Identifier: MIT
"""The interface as src/com/pixkit.idl describes it: members with their arguments, enumerations with their values."""
import dataclasses
import re

# What a type of the description is called in Basic, whose names script hosts and forms share.
TYPES = {
    "long": "Long", "VARIANT_BOOL": "Boolean", "BSTR": "String", "float": "Single", "double": "Double",
    "unsigned char": "Byte", "VARIANT": "Variant", "LONG_PTR": "LongPtr", "IDispatch*": "Object",
    "_cPixSheet*": "cPixSheet", "IPictureDisp*": "StdPicture", "IFontDisp*": "StdFont",
    "SAFEARRAY(unsigned char)": "Byte()", "SAFEARRAY(long)": "Long()", "SAFEARRAY(BSTR)": "String()",
    "SAFEARRAY(VARIANT)": "Variant()",
}


@dataclasses.dataclass
class Argument:
    name: str
    type: str  # as in Basic; an enumeration under its own name
    optional: bool
    default: str  # as in Basic; empty where there is none
    comes_back: bool  # whether the member may store something in it
    any_number: bool = False  # the last argument of a member that takes any number of them

    @property
    def is_result(self):
        """Whether callers call the member for what it stores in this, a number or an array."""
        plain = self.type in ("Byte()", "Long()", "String()", "Long", "Boolean")
        return self.comes_back and not self.optional and plain and self.name != "inStream"


@dataclasses.dataclass
class Member:
    name: str
    summary: str
    arguments: list
    result: str  # as in Basic; empty where there is none
    kind: str  # method, property, read-only property
    identifier: int


@dataclasses.dataclass
class Enumeration:
    name: str
    summary: str
    values: list  # of (name, number, text)


class Interface:
    def __init__(self, path):
        text = path.read_text(encoding="utf-8")
        self.enumerations = {e.name: e for e in map(_enumeration, re.finditer(
            r'typedef \[[^\]]*helpstring\("([^"]*)"\)\]\s*enum (\w+) \{(.*?)\}', text, re.DOTALL))}
        self.numbers = {name: number for e in self.enumerations.values() for name, number, _ in e.values}
        self.members = {}
        self.complaints = []
        body = text[text.index("interface _cPixSheet : IDispatch"):]
        for attributes, name, arguments in re.findall(r"\[([^\]]*)\]\s*HRESULT (\w+)\((.*?)\);", body, re.DOTALL):
            self._add(attributes, name, arguments)

    def _add(self, attributes, name, arguments):
        summary = re.search(r'helpstring\("([^"]*)"\)', attributes)
        if not summary or not summary[1]:
            self.complaints.append(f"pixkit.idl: {name} has no helpstring")
        if re.search(r"\bpropput(ref)?\b", attributes):
            self.members[name].kind = "property"
            return
        parsed, result = [], ""
        for argument in _split(arguments):
            flags, kind, own = re.match(r"\[(.*)\]\s*(.*?)\s*(\w+)$", argument, re.DOTALL).groups()
            if "retval" in flags:
                result = self._type(kind.removesuffix("*"))
                continue
            by_reference = re.search(r"\bout\b", flags) is not None
            parsed.append(Argument(own, self._type(kind.removesuffix("*") if by_reference else kind),
                                   "optional" in flags, self._default(flags, kind), by_reference))
        if "vararg" in attributes:
            parsed[-1].any_number = parsed[-1].optional = True
        kind = "read-only property" if "propget" in attributes else "method"
        number = int(re.search(r"\bid\((\d+)\)", attributes)[1])
        self.members[name] = Member(name, summary[1] if summary else "", parsed, result, kind, number)

    def _type(self, kind):
        kind = " ".join(kind.split())
        if kind in self.enumerations:
            return kind
        if kind not in TYPES:
            self.complaints.append(f"pixkit.idl: what {kind} is in Basic is not known")
        return TYPES.get(kind, kind)

    @staticmethod
    def _default(flags, kind):
        value = re.search(r"defaultvalue\((.*?)\)", flags)
        if not value:
            return "Nothing" if "optional" in flags else ""
        if "VARIANT_BOOL" in kind:
            return "False" if value[1] == "0" else "True"
        return str(int(value[1], 16) - 2**32) if value[1].startswith("0x8") else value[1]


def _enumeration(match):
    values = []
    for name, number, text in re.findall(r"^\s*(\w+) = (-?\d+),?(?: // (.*))?$", match[3], re.MULTILINE):
        values.append((name, int(number), text))
    return Enumeration(match[2], match[1], values)


def _split(arguments):
    """The arguments between commas outside of brackets."""
    depth, parts = 0, [""]
    for character in arguments:
        depth += (character in "[(") - (character in "])")
        if character == "," and depth == 0:
            parts.append("")
        else:
            parts[-1] += character
    return [part.strip() for part in parts if part.strip()]
