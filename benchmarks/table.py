#!/usr/bin/env python3
"""Prints what the benchmarks measured, each operator beside its peers, from Google Benchmark's JSON.

Names are Operator/subject/case.../size. The subject `morvane` is the operator itself, subjects that begin with
`morvane-` are other roads to the same result, all others are peers. Times are medians over the repetitions. The
ratio is the time of `morvane` over that of the fastest peer: below 1, morvane is faster.
"""

import argparse
import json
import sys
from collections import defaultdict

MILLISECONDS = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}
OWN = "morvane"


def read_medians(data):
    """{operator: {(case, size): {subject: (milliseconds, pixels per second or None)}}}, in the order of the file."""
    operators = defaultdict(lambda: defaultdict(dict))
    for run in data["benchmarks"]:
        if run.get("aggregate_name") != "median" or run.get("error_occurred"):
            continue
        operator, subject, *case, size = run["run_name"].split("/")
        milliseconds = run["real_time"] * MILLISECONDS[run["time_unit"]]
        operators[operator]["/".join(case), int(size)][subject] = milliseconds, run.get("items_per_second")
    return operators


def is_peer(subject):
    return subject != OWN and not subject.startswith(OWN + "-")


def best_peer(medians):
    """The fastest peer of one case, None where there is none."""
    return min((subject for subject in medians if is_peer(subject)), key=lambda s: medians[s][0], default=None)


def row(case, size, medians, others):
    """One line of a table, as texts; a dash where nothing was measured."""
    own = medians.get(OWN)
    peer = best_peer(medians)
    megapixels = f"{own[1] / 1e6:.1f}" if own and own[1] else "-"
    ratio = f"{own[0] / medians[peer][0]:.2f}" if own and peer else "-"
    times = [f"{medians[s][0]:.3f}" if s in medians else "-" for s in (OWN, *others)]
    return [case, str(size), times[0], megapixels, *times[1:], ratio, peer or "-"]


def table(operator, cases):
    """The lines of one operator's table."""
    others = list(dict.fromkeys(s for medians in cases.values() for s in medians if s != OWN))
    rows = [["case", "size", f"{OWN} ms", "Mpx/s", *(f"{s} ms" for s in others), "ratio", "to"]]
    for (case, size), medians in sorted(cases.items()):
        rows.append(row(case, size, medians, others))
    widths = [max(map(len, column)) for column in zip(*rows)]
    texts = {0, len(widths) - 1}
    lines = [operator]
    for cells in rows:
        padded = (c.ljust(w) if i in texts else c.rjust(w) for i, (c, w) in enumerate(zip(cells, widths)))
        lines.append("  " + "  ".join(padded).rstrip())
    return lines


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("json", type=argparse.FileType(), help="what --benchmark_out wrote; - for the standard input")
    operators = read_medians(json.load(parser.parse_args().json))
    if not operators:
        print("table.py: no medians in the input: run with --benchmark_repetitions of 2 or more", file=sys.stderr)
        return 1
    print("\n\n".join("\n".join(table(operator, cases)) for operator, cases in operators.items()))
    return 0


if __name__ == "__main__":
    sys.exit(main())
