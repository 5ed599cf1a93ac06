#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Adds up what scripts/test.sh ran and prints "N passed, N failed" (and ", N skipped") as the last line.

    count_tests.py LOG-FOLDER

A test of CTest counts as what its program says: the tests of a GoogleTest program, whose results lie in
build/*/results/NAME.json, the "N passed, N failed" (and ", N skipped") that a script ends with, or else one. Each line of
the log folder's failed-steps is one failure more.
"""
import json
import pathlib
import re
import sys
import xml.etree.ElementTree


def results_of(case, folder):
    """Passed, failed and skipped tests of one test of CTest."""
    succeeded = case.get("status") == "run"
    own = folder / "results" / f"{case.get('name')}.json"
    output = case.findtext("system-out") or ""
    said = re.findall(r"^(\d+) passed, (\d+) failed(?:, (\d+) skipped)?\s*$", output, re.MULTILINE)
    left_out = case.find("skipped")
    if left_out is not None and left_out.get("message", "").startswith("SKIP_RETURN_CODE"):
        return 0, 0, 1
    passed, failed, skipped = int(succeeded), 0, 0
    if own.exists():
        tests = [test for suite in json.loads(own.read_text())["testsuites"] for test in suite["testsuite"]]
        skipped = sum(test["result"] == "SKIPPED" for test in tests)
        failed = sum("failures" in test for test in tests)
        passed = sum(test["result"] == "COMPLETED" for test in tests) - failed
    elif said:
        passed, failed, skipped = (int(number or 0) for number in said[-1])
    # A program that failed although none of its tests did, or that ran none at all.
    if failed == 0 and (not succeeded or passed == 0):
        failed = 1
    return passed, failed, skipped


def main():
    logs = pathlib.Path(sys.argv[1])
    presets = {p["name"]: p for p in json.loads(pathlib.Path("CMakePresets.json").read_text())["testPresets"]}
    passed = failed = skipped = 0
    steps = logs / "failed-steps"
    failures = steps.read_text().splitlines() if steps.exists() else []
    failed += len(failures)
    reports = sorted(logs.glob("*.xml"))
    for report in reports:
        preset = report.stem
        inherited = preset
        while "configurePreset" not in presets[inherited]:
            inherited = presets[inherited]["inherits"]
        folder = pathlib.Path("build") / presets[inherited]["configurePreset"]
        for case in xml.etree.ElementTree.parse(report).getroot().iter("testcase"):
            good, bad, left_out = results_of(case, folder)
            passed, failed, skipped = passed + good, failed + bad, skipped + left_out
            if bad:
                failures.append(f"{preset}: {case.get('name')}: {bad}")
    for failure in failures:
        print("failed:", failure)
    if not reports:
        failed += 1
    print(f"{passed} passed, {failed} failed" + (f", {skipped} skipped" if skipped else ""))
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
