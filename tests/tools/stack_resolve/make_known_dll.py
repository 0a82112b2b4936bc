#!/usr/bin/env python3
"""usage: make_known_dll.py <clang> <llvm-readobj> <source> <folder>

Builds <folder>/known.dll with <folder>/known.pdb, and <folder>/known_dll.h, which tells the tests where
its exported function is and what identity it has."""

import pathlib
import re
import subprocess
import sys

HEADER = """// What known.dll says of itself.
#pragma once

constexpr unsigned int known_entry_offset = {offset};
constexpr char known_dll_guid[] = "{{{guid}}}";
constexpr unsigned int known_dll_age = {age};
"""


def main():
    clang, readobj, source, folder = sys.argv[1:]
    folder = pathlib.Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    subprocess.run([clang, "--target=x86_64-w64-mingw32", "-std=c++20", "-O1", "-g", "-gcodeview", "-fuse-ld=lld-19",
                    "-shared", "-nostdlib", f"-Wl,--pdb={folder}/known.pdb", "-Wl,-Xlink=-pdbaltpath:known.pdb",
                    source, "-o", folder / "known.dll"], check=True)
    text = subprocess.run([readobj, "--coff-debug-directory", "--coff-exports", folder / "known.dll"], check=True,
                          capture_output=True, text=True).stdout
    (folder / "known_dll.h").write_text(HEADER.format(
        offset=re.search(r"Name: known_entry\s+RVA: (0x[0-9A-F]+)", text).group(1),
        guid=re.search(r"PDBGUID: \{([^}]*)\}", text).group(1).replace("-", ""),
        age=re.search(r"PDBAge: (\d+)", text).group(1)), encoding="utf-8")


if __name__ == "__main__":
    main()
