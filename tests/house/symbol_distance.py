"""Writes a header with the distance in bytes from one function of a binary to another.

usage: symbol_distance.py <nm> <binary> <from> <to> <header>
"""

import subprocess
import sys

nm, binary, start, end, header = sys.argv[1:]
places = {}
for line in subprocess.run([nm, binary], check=True, capture_output=True, text=True).stdout.splitlines():
    cells = line.split()
    if len(cells) == 3:
        places[cells[2]] = int(cells[0], 16)
with open(header, "w", encoding="utf-8") as stream:
    stream.write("// From xyl_heap_free() to mi_is_in_heap_region(), in bytes.\n#pragma once\n\n"
                 f"constexpr long long mimalloc_distance = {places[end] - places[start]};\n")
