# SPDX-License-Identifier: MIT
"""The pages: HTML that needs no server and nothing from elsewhere."""
import html
import json
import pathlib
import re

from reference_pages import examples

HERE = pathlib.Path(__file__).parent
LANGUAGES = {"vb": "Basic", "vbs": "VBScript", "cpp": "C++", "cs": "C#", "js": "JScript", "ps": "PowerShell", "py": "Python",
             "ahk": "AutoHotkey", "pas": "Pascal", "c": "C"}
KEYWORDS = {
    "vb": r"\b(?:Dim|As|New|If|Then|Else|Not|Set|ByVal|True|False|Nothing|And|Or)\b",
    "cpp": r"\b(?:if|const|auto|int|return|true|false|nullptr)\b",
    "js": r"\b(?:var|new)\b",
    "ps": r"\[ref\]",
    "py": r"\b(?:from|import|for|in|if|is|not|with|as|None|True|False)\b",
    "cs": r"\b(?:if|ref|object|int|byte|string|dynamic|new|null|true|false)\b",
}
KEYWORDS["c"] = KEYWORDS["cpp"]
KEYWORDS["ahk"] = r"\b(?:if|return)\b"
KEYWORDS["pas"] = r"\b(?:begin|end|if|then|nil|True|False)\b"
KEYWORDS["vbs"] = KEYWORDS["vb"].replace("Dim", "Dim|Const")


def write(reference, folder):
    folder.mkdir(parents=True, exist_ok=True)
    writer = Writer(reference)
    for name, text in writer.pages().items():
        (folder / name).write_text(text, encoding="utf-8")
    for name in ("style.css", "script.js"):
        (folder / name).write_text((HERE / name).read_text(encoding="utf-8").replace("/*ENTRIES*/[]", writer.entries()),
                                   encoding="utf-8")


def coloured(code, language):
    """Code with comments, strings and keywords marked."""
    comment = {"vb": r"'[^\n]*", "vbs": r"'[^\n]*", "py": r"#[^\n]*", "ps": r"#[^\n]*", "ahk": r";[^\n]*"}.get(language, r"//[^\n]*")
    tokens = re.compile(rf'(?P<s>"[^"\n]*")|(?P<c>{comment})|(?P<k>{KEYWORDS[language]})')
    parts, end = [], 0
    for match in tokens.finditer(code):
        parts += [html.escape(code[end:match.start()]), f'<span class="{match.lastgroup}">{html.escape(match[0])}</span>']
        end = match.end()
    return "".join(parts) + html.escape(code[end:])


def capital(text):
    return text[0].upper() + text[1:]


class Writer:
    def __init__(self, reference):
        self.reference = reference
        self.interface = reference.interface
        self.targets = {name: f"{name}.html" for name in (*self.interface.members, *self.interface.enumerations)}
        for enumeration in self.interface.enumerations.values():
            self.targets.update({name: f"{enumeration.name}.html#{name}" for name, _, _ in enumeration.values})

    def pages(self):
        made = {"index.html": self.index()}
        for name in self.interface.members:
            made[f"{name}.html"] = self.member(name)
        for enumeration in self.interface.enumerations.values():
            made[f"{enumeration.name}.html"] = self.enumeration(enumeration)
        return made

    def entries(self):
        """What the search knows: name, page, line, and the words that lead there."""
        found = []
        for name, member in self.interface.members.items():
            words = " ".join(argument.name for argument in member.arguments) + " " + self.reference.pages[name].subject
            found.append([name, self.targets[name], member.summary, words])
        for enumeration in self.interface.enumerations.values():
            found.append([enumeration.name, self.targets[enumeration.name], enumeration.summary, ""])
            found += [[name, self.targets[name], text, str(number)] for name, number, text in enumeration.values]
        return json.dumps(found, ensure_ascii=False, separators=(",", ":"))

    # --- text

    def link(self, name, label=None):
        label = html.escape(label or name)
        return f'<a href="{self.targets[name]}">{label}</a>' if name in self.targets else label

    def inline(self, text, own=""):
        """A line of text as HTML: `code`, and names that have a page lead there."""
        def name(match):
            word = match[0]
            # Names that are words, too, such as Width, only lead somewhere where they are marked as code.
            is_name = word != own and word in self.targets and re.search(r"[a-z][A-Z]|_", word)
            return self.link(word) if is_name else word

        parts = re.split(r"`([^`]*)`", text)
        for i, part in enumerate(parts):
            if i % 2:
                parts[i] = f"<code>{self.link(part) if part != own else html.escape(part)}</code>"
            else:
                parts[i] = re.sub(r"\b\w+\b", name, html.escape(part, quote=False))
        return "".join(parts)

    def prose(self, lines, own):
        """The comment of a declaration: paragraphs, and points that begin with "- "."""
        text = "\n".join(lines)
        text = re.sub(r"\s*\((?:(?:codecs|platform|shared|loading|saving|docs|render)/|std::)[^()]*\)", "", text)
        text = re.sub(r";\s+shared/\w+\.h\s+has\s+the\s+formulas", "", text)
        text = re.sub(r"(?<!\w)\*(?=\w)", "", text)
        # Words of the header that callers of the component have under other names: null is no object, or no address.
        nothing = "0" if self.interface.members[own].result == "LongPtr" else "Nothing"
        words = {"true": "True", "false": "False", "null": nothing, "Null": nothing}
        text = re.sub(r"\b(?:true|false|null|Null)\b", lambda match: words[match[0]], text)
        blocks = [""]  # each a paragraph or a point
        for line in text.splitlines():
            if line.startswith("- ") or not line or (blocks[-1].startswith("- ") and not line.startswith(" ")):
                blocks.append("")
            blocks[-1] += line.strip() + " "
        out = []
        for block in filter(str.strip, blocks):
            is_point = block.startswith("- ")
            out.append(f"<li>{self.inline(block[2:], own)}</li>" if is_point else f"<p>{self.inline(block, own)}</p>")
        return re.sub(r"(?:<li>.*</li>\n?)+", lambda match: f"<ul>\n{match[0]}</ul>", "\n".join(out))

    # --- parts of a page

    def page(self, title, body, summary):
        subjects = "".join(
            f'<details{" open" if any(p.name == title for p in subject.pages) else ""}><summary>{html.escape(subject.title)}'
            f'</summary>{"".join(self.entry(p.name, title) for p in subject.pages)}</details>'
            for subject in self.reference.subjects)
        enumerations = "".join(self.entry(name, title) for name in self.interface.enumerations)
        is_open = " open" if title in self.interface.enumerations else ""
        return f"""<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
<meta name="description" content="{html.escape(summary)}">
<title>{html.escape(title)} – pixkit</title>
<link rel="stylesheet" href="style.css">
</head>
<body>
<header><a class="home" href="index.html">pixkit</a>
<div class="search"><input id="search" type="search" placeholder="Search (press /)" aria-label="Search" autocomplete="off">
<ol id="found" hidden></ol></div></header>
<div class="columns">
<nav>{subjects}<details{is_open}><summary>Enumerations</summary>{enumerations}</details></nav>
<main>
{body}
</main>
</div>
<script src="script.js"></script>
</body>
</html>
"""

    def entry(self, name, current):
        return f'<a class="here" aria-current="page" href="{name}.html">{name}</a>' if name == current else self.link(name)

    def index(self):
        parts = ["<h1>pixkit reference</h1>",
                 f"<p>The class <code>cPixSheet</code>, whose objects hold one picture each: {len(self.interface.members)} members by "
                 "subject, and the enumerations of their arguments. Scripts and forms make an object by the name "
                 "<code>pixkit.cPixSheet</code>; C++ programs have the same class in <code>pixkit/pixkit.h</code>.</p>",
                 "<p>Nothing is raised where a member fails: it gives the value that its page states, and "
                 f"{self.link('LastErrorText')} says why. Through COM, arguments that cannot be what they are meant for, "
                 "and too many or too few of them, are errors.</p>"]
        for subject in self.reference.subjects:
            parts += [f"<h2>{html.escape(subject.title)}</h2>",
                      f"<p>{self.inline(' '.join(subject.introduction.split()))}</p>",
                      self.table(["Member", "What it does"],
                                 [[f"<code>{self.link(page.name)}</code>", self.inline(self.interface.members[page.name].summary)]
                                  for page in subject.pages])]
        parts += ["<h2>Enumerations</h2>",
                  self.table(["Enumeration", "What it says"],
                             [[f"<code>{self.link(e.name)}</code>", self.inline(e.summary)] for e in self.interface.enumerations.values()])]
        languages = self.reference.languages
        parts += [f"<h2>{html.escape(languages.title)}</h2>",
                  f"<p>{self.inline(' '.join(languages.introduction.split()))}</p>"]
        for page in languages.pages:
            parts += [f"<h3>{html.escape(page.name)}</h3>", f"<p>{self.inline(' '.join(page.notes.split()))}</p>"]
            parts += [f"<pre><code>{coloured(e.code, e.language)}</code></pre>" for e in page.examples]
        return self.page("Reference", "\n".join(parts), "The reference of the imaging component pixkit")

    @staticmethod
    def table(heads, rows, identifiers=None):
        head = "".join(f"<th>{name}</th>" for name in heads)
        body = "".join(
            f"<tr{f' id={chr(34)}{identifiers[i]}{chr(34)}' if identifiers else ''}>"
            + "".join(f'<td data-head="{name}">{cell}</td>' for name, cell in zip(heads, row)) + "</tr>"
            for i, row in enumerate(rows))
        return f'<table><thead><tr>{head}</tr></thead><tbody>{body}</tbody></table>'

    def declaration(self, member):
        shown = []
        for argument in member.arguments:
            default = f" = {argument.default}" if argument.default else ""
            text = f"{'ByRef ' if argument.comes_back else ''}{argument.name} As {argument.type}{default}"
            text = f"ParamArray {argument.name}()" if argument.any_number else text
            shown.append(f"[{text}]" if argument.optional and not argument.any_number else text)
        brackets = f"({', '.join(shown)})"
        if len(brackets) > 70:
            brackets = "(\n    " + ",\n    ".join(shown) + ")"
        if member.kind != "method":
            return f"Property {member.name} As {member.result}" + ("  ' read-only" if member.kind != "property" else "")
        return f"Function {member.name}{brackets} As {member.result}" if member.result else f"Sub {member.name}{brackets}"

    def arguments(self, member, page):
        rows = []
        for argument in member.arguments:
            default = argument.default or ("any number" if argument.any_number else "needed")
            if default == str(-2**31):
                default = "stays"
            meaning = self.inline(capital(self.reference.meaning(page, argument)))
            rows.append([f"<code>{argument.name}</code>", f"<code>{self.link(argument.type)}</code>",
                         f"<code>{self.link(default)}</code>" if argument.default else default, meaning])
        return self.table(["Argument", "Type", "Default", "Meaning"], rows)

    def examples(self, page):
        shown = []
        for example in page.examples:
            code = examples.whole(example)
            shown.append((example.language, code))
            if example.language == "vb" and "noscript" not in example.flags:
                shown.append(("vbs", examples.to_vbscript(code, self.interface.numbers)))
        return "\n".join(f'<figure data-language="{language}"><figcaption>{LANGUAGES[language]}</figcaption>'
                         f'<pre><code>{coloured(code, language)}</code></pre></figure>' for language, code in shown)

    def member(self, name):
        member, page = self.interface.members[name], self.reference.pages[name]
        comment, declarations = self.reference.header[name]
        parts = [f'<p class="above">{html.escape(page.subject)} · {member.kind} · {member.identifier}</p><h1>{name}</h1>',
                 f'<p class="summary">{self.inline(member.summary, name)}.</p>',
                 f'<pre class="declaration"><code>{html.escape(self.declaration(member))}</code></pre>']
        if member.arguments:
            parts += ["<h2>Arguments</h2>", self.arguments(member, page)]
        parts += ["<h2>When it fails</h2>", f"<p>{self.inline(capital(page.failure), name)}</p>",
                  "<h2>In detail</h2>"]
        if page.notes:
            parts.append(f"<p>{self.inline(' '.join(page.notes.split()), name)}</p>")
        parts.append(self.prose(comment, name))
        stored = [argument for argument in member.arguments if "receives" in self.reference.meaning(page, argument)]
        if stored:
            *first, last = [f"<code>{argument.name}</code>" for argument in stored]
            names = " and ".join(filter(None, [", ".join(first), last]))
            notes = [f"JScript, AutoHotkey and Python pass variables by value: what comes back in {names} does not reach theirs."]
            if any(argument.type.endswith("()") for argument in stored):
                notes.append("A variable that holds nothing yet receives an array of Variants: in C# <code>object[]</code>, "
                             "of two dimensions <code>object[,]</code>.")
            parts.append(f'<p class="note">{" ".join(notes)}</p>')
        parts += ["<h2>Examples</h2>", self.examples(page), "<h2>C++ declaration</h2>"]
        parts += [f"<pre><code>{coloured(declaration + ';', 'cpp')}</code></pre>" for declaration in declarations]
        if page.see:
            parts.append("<h2>See also</h2><p>" + ", ".join(f"<code>{self.link(other)}</code>" for other in page.see) + "</p>")
        return self.page(name, "\n".join(parts), member.summary)

    def enumeration(self, enumeration):
        takers = [name for name, member in self.interface.members.items()
                  if enumeration.name in (member.result, *(argument.type for argument in member.arguments))]
        rows = [[f"<code>{name}</code>", f"<code>{number}</code>", self.inline(capital(text))]
                for name, number, text in enumeration.values]
        parts = [f'<p class="above">Enumeration</p><h1>{enumeration.name}</h1>',
                 f'<p class="summary">{self.inline(enumeration.summary)}.</p>',
                 self.table(["Name", "Value", "Meaning"], rows, [name for name, _, _ in enumeration.values])]
        if takers:
            parts.append("<h2>Where it is used</h2><p>" + ", ".join(f"<code>{self.link(name)}</code>" for name in takers) + "</p>")
        return self.page(enumeration.name, "\n".join(parts), enumeration.summary)
