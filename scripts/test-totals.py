#!/usr/bin/env python3
"""Prints how many tests passed, failed and were skipped in all builds, as one line. Fails if any test failed or none passed.

    scripts/test-totals.py BUILD_FOLDER...

A build folder has the report of ctest, `ctest.xml`, in which a program of GoogleTest cases is one entry, and for each of these
programs the report of its cases, `results/PROGRAM.xml`. The cases are counted instead of the entry. A program that failed
without a case that failed, because it crashed, ran into its time limit or leaked, counts as a failure. So does a build
without a report.
"""

import pathlib
import sys
import xml.etree.ElementTree as ElementTree
from collections import Counter


def outcome(case):
    """The outcome of one test in either kind of report."""
    if case.find("failure") is not None or case.find("error") is not None:
        return "failed"
    if case.find("skipped") is not None or case.get("status") in ("notrun", "disabled"):
        return "skipped"
    return "passed"


def outcomes(report):
    return Counter(outcome(case) for case in ElementTree.parse(report).iter("testcase"))


def totals(build):
    report = build / "ctest.xml"
    if not report.exists():
        return Counter(failed=1)
    total = Counter()
    for entry in ElementTree.parse(report).iter("testcase"):
        cases = build / "results" / f"{entry.get('name')}.xml"
        if cases.exists():
            counted = outcomes(cases)
            if outcome(entry) == "failed" and counted["failed"] == 0:
                counted["failed"] = 1
            total += counted
        else:
            total[outcome(entry)] += 1
    return total


def main():
    total = sum((totals(pathlib.Path(build)) for build in sys.argv[1:]), Counter())
    skipped = f", {total['skipped']} skipped" if total["skipped"] else ""
    print(f"\n{total['passed']} passed, {total['failed']} failed{skipped}")
    sys.exit(0 if total["failed"] == 0 and total["passed"] > 0 else 1)


main()
