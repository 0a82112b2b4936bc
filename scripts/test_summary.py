#!/usr/bin/env python3
"""Counts the tests of all configurations: test_summary.py <folder of logs> <results of a build>...

A folder of results has ctest's list of tests, ctest.junit, and beside it the cases of each program,
<test>.xml. A test without cases of its own counts as one. A program that failed without a failed
case (it crashed) counts as one failed test more, and so does a configuration that has no results
and a stage that failed with nothing else to show for it.
"""

import pathlib
import sys
import xml.etree.ElementTree as ElementTree


def cases_of_program(file):
    """[passed, failed, skipped] of GoogleTest's results."""
    counts = [0, 0, 0]
    for case in ElementTree.parse(file).getroot().iter("testcase"):
        if case.find("failure") is not None:
            counts[1] += 1
        elif case.find("skipped") is not None or case.get("status") == "notrun":
            counts[2] += 1
        else:
            counts[0] += 1
    return counts


def cases_of_test(test, folder):
    status = test.get("status")
    failed = status == "fail"
    file = folder / f"{test.get('name')}.xml"
    try:
        counts = cases_of_program(file) if file.exists() else [0, 0, 0]
    except ElementTree.ParseError:  # cut short by a crash
        counts = [0, 0, 0]
    if failed and counts[1] == 0:
        counts[1] = 1
    elif sum(counts) == 0:
        counts[0 if status == "run" else 2] = 1
    return counts


def main():
    logs, folders = pathlib.Path(sys.argv[1]), [pathlib.Path(name) for name in sys.argv[2:]]
    total = [0, 0, 0]

    def add(name, counts):
        print(f"{name:16} {counts[0]:6} passed {counts[1]:4} failed {counts[2]:4} skipped")
        for i in range(3):
            total[i] += counts[i]

    for folder in folders:
        name = folder.parent.name
        if not (folder / "ctest.junit").exists():
            add(name, [0, 1, 0])
            continue
        counts = [0, 0, 0]
        for test in ElementTree.parse(folder / "ctest.junit").getroot().iter("testcase"):
            counts = [a + b for a, b in zip(counts, cases_of_test(test, folder))]
        add(name, counts)
    stages = {state: (logs / state).read_text().split() if (logs / state).exists() else []
              for state in ("passed", "failed")}
    own = [len({"fuzz", "tidy"} & set(stages[state])) for state in ("passed", "failed")]
    add("other stages", [*own, 0])
    if stages["failed"] and total[1] == 0:
        total[1] = len(stages["failed"])
    print(f"tests: {total[0]} passed, {total[1]} failed, {total[2]} skipped")
    return 1 if total[1] or total[0] == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
