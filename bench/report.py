#!/usr/bin/env python3
"""Prints one table per subject from Google Benchmark JSON files.

Benchmarks are named SUBJECT/CASE/WHO. Rows are cases; each who has the median of its rate (Mpixel/s, or MB/s where bytes
are counted), and the first column's rate divided by each other one's: above 1 means that the component is faster. Writers
that tell the size of what they wrote, and how near it is (PSNR), have these in a second line. Where
memcpy of the same bytes was timed in the same runs (the counter "memcpy Mpixel/s"), it has a column of its own, and each
other rate stands as a share of it.
"""
import collections
import json
import statistics
import sys

RATES = (("Mpixel/s", 1.0, "Mpixel/s"), ("bytes_per_second", 1e-6, "MB/s"))


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


def print_table(subject, unit, cases, written):
    whos = sorted({who for case in cases.values() for who in case}, key=lambda who: (not who.startswith("pixkit"), who))
    first = max((who for who in whos if who.startswith("pixkit")), key=len, default=whos[0])
    whos.remove(first)
    whos.insert(0, first)
    against_memcpy = "memcpy" in whos
    in_brackets = "the share of memcpy's" if against_memcpy else f"{first} divided by it"
    print(f"\n{subject}: median {unit}; in brackets {in_brackets}")
    print(f"{'':20}" + "".join(f"{who:>26}" for who in whos))
    for case, by_who in cases.items():
        rates = {who: statistics.median(by_who[who]) for who in whos if who in by_who}
        line = f"{case:20}"
        for who in whos:
            ratio = None
            if who in rates and against_memcpy and who != "memcpy":
                ratio = rates[who] / rates["memcpy"]
            elif who in rates and not against_memcpy and who != first and first in rates:
                ratio = rates[first] / rates[who]
            rate = f"{rates[who]:.1f}" if who in rates else "-"
            line += f"{rate:>16}" + (f" ({ratio:6.2f}) " if ratio else " " * 10)
        print(line.rstrip())
        if any((subject, case, who) in written for who in whos):
            print(f"{'':20}" + "".join(f"{written.get((subject, case, who), ''):>26}" for who in whos).rstrip())


def main():
    subjects, units, written = rates_by_case(sys.argv[1:])
    for subject, cases in subjects.items():
        print_table(subject, units[subject], cases, written)


if __name__ == "__main__":
    main()
