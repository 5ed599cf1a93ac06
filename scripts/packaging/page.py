#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Makes one page of HTML, which needs nothing else, of a text in Markdown as the project's documents have it.

    page.py TEXT.md PAGE.html

Known are headings, paragraphs, lists, tables and blocks of code, and in them `code`, **bold** and links; links to other
documents become their text, since those are not beside the page.
"""
import html
import pathlib
import re
import sys

STYLE = (pathlib.Path(__file__).resolve().parent.parent / "reference_pages" / "style.css").read_text(encoding="utf-8")
OWN_STYLE = "body { max-width: 54rem; margin: 0 auto; padding: 1rem 1.6rem 4rem; }"


def inline(text):
    def one(match):
        code, bold, label, target = match.groups()
        if code is not None:
            return f"<code>{html.escape(code)}</code>"
        if bold is not None:
            return f"<b>{inline(bold)}</b>"
        return f'<a href="{html.escape(target)}">{inline(label)}</a>' if "://" in target else inline(label)

    parts, end = [], 0
    for match in re.finditer(r"`([^`]+)`|\*\*(.+?)\*\*|\[([^\]]+)\]\(([^)]+)\)", text):
        parts += [html.escape(text[end:match.start()]), one(match)]
        end = match.end()
    return "".join(parts) + html.escape(text[end:])


def table(lines):
    rows = [[cell.strip() for cell in line.strip().strip("|").split("|")] for line in lines]
    head = "".join(f"<th>{inline(cell)}</th>" for cell in rows[0])
    body = "".join("<tr>" + "".join(f"<td>{inline(cell)}</td>" for cell in row) + "</tr>\n" for row in rows[2:])
    return f"<table><thead><tr>{head}</tr></thead>\n<tbody>{body}</tbody></table>"


def block(lines):
    """A paragraph's lines: what they are, their beginning tells."""
    heading = re.match(r"(#+) (.*)", lines[0])
    if heading:
        level = len(heading[1])
        return f"<h{level}>{inline(heading[2])}</h{level}>" + (block(lines[1:]) if lines[1:] else "")
    if lines[0].startswith("|"):
        return table(lines)
    if lines[0].startswith("- "):
        items = [" ".join(item.split()) for item in re.split(r"\n- ", "\n".join(lines)[2:])]
        return "<ul>" + "".join(f"<li>{inline(item)}</li>\n" for item in items) + "</ul>"
    return f"<p>{inline(' '.join(lines))}</p>"


def body(text):
    for part in re.split(r"^(```.*?^```$)", text, flags=re.MULTILINE | re.DOTALL):
        if part.startswith("```"):
            yield f"<pre>{html.escape(part.split(chr(10), 1)[1][:-4])}</pre>"
        else:
            yield from (block(lines.split("\n")) for lines in re.split(r"\n\s*\n", part.strip()) if lines)


def main():
    text = pathlib.Path(sys.argv[1]).read_text(encoding="utf-8")
    title = html.escape(re.match(r"# (.*)", text)[1])
    pathlib.Path(sys.argv[2]).write_text(
        f'<!DOCTYPE html>\n<html lang="en"><head><meta charset="utf-8"><title>{title}</title>\n'
        f'<meta name="viewport" content="width=device-width"><style>\n{STYLE}{OWN_STYLE}\n</style></head>\n<body>\n'
        + "\n".join(body(text)) + "\n</body></html>\n", encoding="utf-8")


main()
