#!/usr/bin/env python3
"""Prints line coverage by folder from llvm-cov's summary: coverage_table.py <json> <root> <goal in %>"""

import json
import pathlib
import re
import sys
from collections import defaultdict

with open(sys.argv[1], encoding="utf-8") as stream:
    files = json.load(stream)["data"][0]["files"]
root, goal = pathlib.Path(sys.argv[2]), float(sys.argv[3])
folders = defaultdict(lambda: [0, 0])
weak = []
for file in files:
    # The compiler writes names below the source tree, as seen from the build tree.
    below = re.fullmatch(r"(?:.*/)?morvantis/(.+)", file["filename"])
    if not below or not (root / below.group(1)).exists():
        continue
    lines = file["summary"]["lines"]
    name = pathlib.Path(below.group(1))
    for key in (name.parent.as_posix(), "all"):
        folders[key][0] += lines["covered"]
        folders[key][1] += lines["count"]
    if lines["count"] and lines["covered"] / lines["count"] < goal / 100:
        weak.append((lines["covered"] / lines["count"], name, lines["count"] - lines["covered"]))
for share, name, missing in sorted(weak):
    print(f"{share:7.1%}  {name}, {missing} lines not reached")
every = folders.pop("all", [0, 0])
for name, (covered, count) in [*sorted(folders.items()), ("morvantis/", every)]:
    print(f"{covered / max(count, 1):7.1%}  {covered:6} of {count:6} lines  {name}")
sys.exit(0 if every[1] and every[0] / every[1] * 100 >= goal else 1)
