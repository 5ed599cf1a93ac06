#!/usr/bin/env python3
"""Prints one table per subject from Google Benchmark JSON files.

Benchmarks are named SUBJECT/CASE/WHO. Rows are cases; each who has the median of its rate (Mpixel/s, or MB/s where bytes
are counted), and the first column's rate divided by each other one's: above 1 means that the component is faster.
"""
import collections
import json
import statistics
import sys

RATES = (("Mpixel/s", 1.0, "Mpixel/s"), ("bytes_per_second", 1e-6, "MB/s"))


def rates_by_case(paths):
    """{subject: {case: {who: [rates]}}} over every repetition, in order of appearance."""
    subjects = collections.defaultdict(lambda: collections.defaultdict(dict))
    units = {}
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
    return subjects, units


def main():
    subjects, units = rates_by_case(sys.argv[1:])
    for subject, cases in subjects.items():
        whos = sorted({who for case in cases.values() for who in case}, key=lambda who: (not who.startswith("pixkit"), who))
        first = max((who for who in whos if who.startswith("pixkit")), key=len, default=whos[0])
        whos.remove(first)
        print(f"\n{subject}: median {units[subject]}; in brackets {first} divided by it")
        print(f"{'':20}{first:>22}" + "".join(f"{who:>26}" for who in whos))
        for case, by_who in cases.items():
            base = statistics.median(by_who[first]) if first in by_who else None
            line = f"{case:20}" + (f"{base:22.1f}" if base else f"{'-':>22}")
            for who in whos:
                if who not in by_who:
                    line += f"{'-':>26}"
                    continue
                rate = statistics.median(by_who[who])
                line += f"{rate:16.1f}" + (f" ({base / rate:6.2f})" if base else " " * 9)
            print(line)


if __name__ == "__main__":
    main()
