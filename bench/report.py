#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Prints one table per subject from Google Benchmark JSON files.

Benchmarks are named SUBJECT/CASE/WHO. Rows are cases; each who has the median of its rate (Mpixel/s, or MB/s where bytes
are counted), and the component's rate in that row divided by each other one's: above 1 means that the component is faster.
Calls that are timed alone (the counter "ns") stand as they are. Writers
that tell the size of what they wrote, and how near it is (PSNR), have these in a second line. Where
memcpy of the same bytes was timed in the same runs (the counter "memcpy Mpixel/s"), it has a column of its own, and each
other rate stands as a share of it.

report.py [--page=FILE] JSON...     writes the tables into that page, too
"""
import collections
import json
import pathlib
import statistics
import sys

RATES = (("Mpixel/s", 1.0, "Mpixel/s"), ("bytes_per_second", 1e-6, "MB/s"), ("ns", 1.0, "ns"))


def rates_by_case(paths):
    """{subject: {case: {who: [rates]}}} over every repetition, in order of appearance; the units; what was written."""
    subjects = collections.defaultdict(lambda: collections.defaultdict(dict))
    units = {}
    written = {}
    for path in paths:
        with open(path, encoding="utf-8") as file:
            runs = sorted(json.load(file)["benchmarks"], key=lambda run: run["family_index"])  # interleaving shuffles them
        for run in runs:
            if run.get("run_type") != "iteration" or run.get("error_occurred"):
                continue
            subject, case, who = run["name"].split("/")[:3]
            for key, scale, unit in RATES:
                if key in run:
                    subjects[subject][case].setdefault(who, []).append(run[key] * scale)
                    units[subject] = unit
                    break
            megabytes = run.get("MB", run.get("bytes", 0) / 1e6)
            if megabytes:
                written[subject, case, who] = f"{megabytes:.3f} MB" + (f" {run['PSNR']:.1f} dB" if "PSNR" in run else "")
            if "memcpy Mpixel/s" in run:
                subjects[subject][case].setdefault("memcpy", []).append(run["memcpy Mpixel/s"])
    return subjects, units, written


def table(subject, unit, cases, written):
    """A title and rows of cells, the first of which is the heading."""
    whos = sorted({who for case in cases.values() for who in case}, key=lambda who: (not who.startswith("pixkit"), who))
    against_memcpy = "memcpy" in whos
    title = f"{subject}: median {unit}"
    if unit != "ns":
        title += "; in brackets " + ("the share of memcpy's" if against_memcpy else f"{whos[0]} divided by it")
    rows = [["", *whos]]
    for case, by_who in cases.items():
        rates = {who: statistics.median(by_who[who]) for who in whos if who in by_who}
        first = next((who for who in whos if who in rates and who.startswith("pixkit")), None)
        cells = [case]
        for who in whos:
            ratio = None
            if who not in rates or unit == "ns":
                pass
            elif against_memcpy and who != "memcpy":
                ratio = rates[who] / rates["memcpy"]
            elif first not in (None, who) and not against_memcpy:
                ratio = rates[first] / rates[who]
            cells.append((f"{rates[who]:.1f}" if who in rates else "-") + (f" ({ratio:.2f})" if ratio else ""))
        rows.append(cells)
        if any((subject, case, who) in written for who in whos):
            rows.append(["", *(written.get((subject, case, who), "") for who in whos)])
    return title, rows


def as_text(title, rows):
    return f"\n{title}\n" + "\n".join(
        f"{row[0]:20}{''.join(f'{cell:>26}' for cell in row[1:])}".rstrip() for row in rows)


def as_markdown(title, rows):
    lines = ["| " + " | ".join(row) + " |" for row in rows]
    lines.insert(1, "|---|" + "---:|" * (len(rows[0]) - 1))
    return f"\n**{title}**\n\n" + "\n".join(lines)


def put_into(page, tables, contexts):
    """Replaces what stands in the page between the two comments that enclose its figures."""
    begin, end = "<!-- figures -->\n", "<!-- end of figures -->\n"
    text = page.read_text(encoding="utf-8")
    head, rest = text.split(begin)
    machines = {f"{context['date'][:10]}, {context['num_cpus']} processors of {context['mhz_per_cpu']} MHz" for context in contexts}
    figures = f"Measured on {', '.join(sorted(machines))}.\n" + "\n".join(as_markdown(*each) for each in tables) + "\n"
    page.write_text(head + begin + figures + end + rest.split(end)[1], encoding="utf-8")


def main():
    arguments = sys.argv[1:]
    page = pathlib.Path(arguments.pop(0).removeprefix("--page=")) if arguments and arguments[0].startswith("--page=") else None
    subjects, units, written = rates_by_case(arguments)
    tables = [table(subject, units[subject], cases, written) for subject, cases in subjects.items()]
    for each in tables:
        print(as_text(*each))
    if page:
        put_into(page, tables, [json.loads(pathlib.Path(path).read_text(encoding="utf-8"))["context"] for path in arguments])


if __name__ == "__main__":
    main()
