#!/usr/bin/env python3
"""Counts what a run of ctest did, and prints it as one line: N passed, N failed, N skipped.

A case of ctest that ran many tests in one process has left a report of its own, <name>.xml, in the reports folder;
its tests are counted in place of the case. A process that died has left none, and counts as one failure.
"""

import argparse
import sys
import xml.etree.ElementTree as ElementTree
from collections import Counter
from pathlib import Path


def count_report(root):
    """The outcomes of the tests in one report of GoogleTest."""
    outcomes = Counter()
    for case in root.iter("testcase"):
        if case.find("failure") is not None:
            outcomes["failed"] += 1
        elif case.get("status") == "notrun" or case.get("result") == "skipped":
            outcomes["skipped"] += 1
        else:
            outcomes["passed"] += 1
    return outcomes


def count_run(junit, reports):
    """The outcomes of a run of ctest: `junit` is its JUnit tree, `reports` maps names of cases to their reports."""
    total = Counter()
    for case in junit.iter("testcase"):
        name = case.get("name")
        outcome = {"run": "passed", "fail": "failed"}.get(case.get("status"), "skipped")
        if name not in reports:
            total[outcome] += 1
            continue
        inner = count_report(reports[name])
        # The process failed though no test did: a sanitizer or a leak, which no test may hide.
        if outcome == "failed" and inner["failed"] == 0:
            inner["failed"] += 1
        total += inner
    return total


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("junit", type=Path, help="what ctest --output-junit wrote")
    parser.add_argument("reports", type=Path, help="the folder of the cases' own reports")
    arguments = parser.parse_args()

    junit = ElementTree.parse(arguments.junit).getroot()
    reports = {path.stem: ElementTree.parse(path).getroot() for path in arguments.reports.glob("*.xml")}
    total = count_run(junit, reports)
    print(f"{total['passed']} passed, {total['failed']} failed, {total['skipped']} skipped")
    return 1 if total["failed"] else 0


if __name__ == "__main__":
    sys.exit(main())
