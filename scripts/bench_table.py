#!/usr/bin/env python3
"""Prints the ratios ours / peer of Google Benchmark results that follow benchmarks/README.md."""

import argparse
import fnmatch
import json
import os
import re
import statistics
import sys
from collections import defaultdict

# What Google Benchmark appends to a name: arguments and options.
APPENDED = re.compile(r"-?\d+$|[\w .-]+:-?[\d.]+$|real_time$|process_time$|manual_time$|repeats:\d+$")


def split_name(name):
    """`heap/ours/16/threads:2` -> (`heap/16/threads:2`, `ours`)"""
    parts = name.split("/")
    tail = []
    while len(parts) > 2 and APPENDED.fullmatch(parts[-1]):
        part = parts.pop()
        if not part.startswith("repeats:"):
            tail.insert(0, part)
    who = parts.pop()
    return "/".join(parts + tail), who


def read_times(files):
    """Times in nanoseconds: {what: {who: [time, ...]}}, in the order of the files."""
    units = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}
    times = defaultdict(lambda: defaultdict(list))
    errors = []
    for file in files:
        with open(file, encoding="utf-8") as stream:
            content = json.load(stream)
        for run in content["benchmarks"]:
            if run.get("error_occurred"):
                errors.append(f"{run['name']}: {run.get('error_message', 'failed')}")
            elif run.get("run_type") == "iteration":
                what, who = split_name(run["name"])
                clock = "real_time" if re.search(r"/(real|manual)_time", run["name"]) else "cpu_time"
                times[what][who].append(run[clock] * units[run["time_unit"]])
    return times, errors


def read_goals(path):
    goals = []
    with open(path, encoding="utf-8") as stream:
        for line in stream:
            words = line.split("#")[0].split()
            if words:
                goals.append((words[0], words[1], float(words[2])))
    return goals


def table_rows(times, goals, errors):
    """Rows of the table, the goals that found a benchmark, and how many were missed."""
    rows, used, missed = [], set(), 0
    for what, by_who in times.items():
        if "ours" not in by_who or len(by_who) < 2:
            errors.append(f"{what}: needs `ours` and a peer, has {', '.join(by_who)}")
            continue
        ours = statistics.median(by_who["ours"])
        for who, theirs in by_who.items():
            if who == "ours":
                continue
            ratio = ours / statistics.median(theirs)
            limits = [g for g in goals if fnmatch.fnmatchcase(what, g[0]) and fnmatch.fnmatchcase(who, g[1])]
            used.update(limits)
            limit = min((g[2] for g in limits), default=None)
            verdict = "" if limit is None else ("met" if ratio <= limit else "MISSED")
            missed += verdict == "MISSED"
            rows.append((what, who, f"{ours:.4g}", f"{statistics.median(theirs):.4g}", f"{ratio:.3f}",
                         "" if limit is None else f"{limit:.2f}", verdict))
    return rows, used, missed


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--goals", required=True)
    parser.add_argument("--some", action="store_true", help="not all programs ran: goals may stay unused")
    parser.add_argument("files", nargs="*")
    arguments = parser.parse_args()

    times, errors = read_times(f for f in arguments.files if os.path.exists(f))
    goals = read_goals(arguments.goals)
    rows, used, missed = table_rows(times, goals, errors)
    head = ("what", "peer", "ours ns", "peer ns", "ratio", "goal", "")
    widths = [max(len(row[i]) for row in [head, *rows]) for i in range(len(head))]
    for row in [head, *rows]:
        cells = [cell.ljust(w) if i < 2 or i == 6 else cell.rjust(w)
                 for i, (cell, w) in enumerate(zip(row, widths))]
        print("  ".join(cells).rstrip())
    if not arguments.some:
        errors += [f"no benchmark for the goal: {g[0]} {g[1]}" for g in goals if g not in used]
    if not rows:
        errors.append("nothing was measured")
    for error in errors:
        print(f"error: {error}")
    print(f"{len(rows)} ratios, {missed} goals missed, {len(errors)} errors")
    return 1 if missed or errors else 0


if __name__ == "__main__":
    sys.exit(main())
