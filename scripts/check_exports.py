#!/usr/bin/env python3
"""Compares the names that the built library exports with what it should export.

What it should export: the functions of exports/lz4-functions.txt and the C++ names of
exports/cpp-names.txt, no more and no fewer; and each C++ name belongs to something that a public
header marks. scripts/update-exports.sh writes the second list anew, so that a change of the
interface is seen in review.

The names in the list are demangled, with u64 and i64 for the 64-bit integers, whose mangling
differs between systems. A name that only one system has is preceded by [linux] or [windows].
Virtual tables, type information and the like are compiled where a class needs them: they stand in
no list, but their class must be marked.
"""

import argparse
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
LZ4_LIST = ROOT / "exports/lz4-functions.txt"
CPP_LIST = ROOT / "exports/cpp-names.txt"
ARTEFACT = re.compile(r"(vtable|VTT|typeinfo name|typeinfo|construction vtable|guard variable|"
                      r"virtual thunk to|non-virtual thunk to|covariant return thunk to) ?")
MARK = r"\b(?:MORVANTIS_API|EASTL_API)\b"


def exported_names(binary):
    """The names in the dynamic symbol table, as the linker sees them."""
    if binary.suffix == ".dll":
        text = subprocess.run(["objdump", "-p", binary], check=True, capture_output=True, text=True).stdout
        table = text.partition("[Ordinal/Name Pointer] Table")[2]
        return re.findall(r"^\s*\[\s*\d+\]\s+(?:\+base\[\s*\d+\]\s+)?(?:[0-9a-f]{4}\s+)?(\S+)$", table, re.M)
    text = subprocess.run(["nm", "-D", "--defined-only", binary], check=True, capture_output=True, text=True).stdout
    return [line.split()[-1].partition("@")[0] for line in text.splitlines()]


def demangled(names):
    text = subprocess.run(["c++filt"], input="\n".join(names), check=True, capture_output=True, text=True).stdout
    return [normalised(line) for line in text.splitlines()]


def normalised(name):
    name = re.sub(r"\bunsigned long( long)?\b", "u64", name)
    name = re.sub(r"\blong( long)?\b(?! double)", "i64", name)
    return name.replace("__int128", "i128")


def without_comments(text):
    return re.sub(r"//[^\n]*|/\*.*?\*/", "", text, flags=re.S)


def marked_names():
    """(types, functions and variables) that the public headers mark."""
    types, others = set(), set()
    for header in [*ROOT.glob("morvantis/**/*.h"), *ROOT.glob("compat/**/*.h")]:
        text = re.sub(r"^\s*#[^\n]*(\\\n[^\n]*)*", "", without_comments(header.read_text()), flags=re.M)
        for match in re.finditer(MARK + r"\s*([^;{=(]*)", text):
            before = text[max(0, match.start() - 40):match.start()]
            declaration = match.group(1)
            if re.search(r"\b(class|struct|union)\s*(alignas\([^)]*\)\s*)?$", before):
                types.add(re.match(r"(?:alignas\s*\w*\s*)?(\w+)", declaration).group(1))
            elif "operator" in declaration:
                others.add("operator")
            else:
                words = re.findall(r"[A-Za-z_]\w*", re.sub(r"\[[^\]]*\]", "", declaration))
                if words:
                    others.add(words[-1])
    return types, others


def has_marked_owner(name, types, others):
    name = ARTEFACT.sub("", name)
    if name.startswith("for "):
        name = name[4:]
    scope = re.split(r"\((?!anonymous)", name, maxsplit=1)[0]
    words = re.findall(r"[A-Za-z_]\w*", scope)
    return any(word in types for word in words) or bool(words and words[-1] in others) or (
        "operator" in words and "operator" in others)


def read_list(path, system=None):
    names = set()
    for line in path.read_text().splitlines():
        line = line.strip()
        tag = re.match(r"\[(\w+)\] ", line)
        if not line or line.startswith("#") or (tag and tag.group(1) != system):
            continue
        names.add(line[tag.end():] if tag else line)
    return names


def split_exports(binary):
    """(LZ4 names, C++ names for the list, artefacts of classes)"""
    names = exported_names(binary)
    if not names:
        sys.exit(f"{binary}: no dynamic symbols found")
    lz4 = {name for name in names if name.startswith("LZ4")}
    rest = demangled([name for name in names if name not in lz4])
    artefacts = {name for name in rest if ARTEFACT.match(name)}
    return lz4, set(rest) - artefacts, artefacts


def differences(what, actual, expected):
    return [f"one too many: {what} {name}" for name in sorted(actual - expected)] + [
        f"one too few: {what} {name}" for name in sorted(expected - actual)]


def check(system, binary):
    lz4, names, artefacts = split_exports(binary)
    types, others = marked_names()
    problems = differences("LZ4", lz4, read_list(LZ4_LIST))
    problems += differences("C++", names, read_list(CPP_LIST, system))
    problems += [f"exported without a mark in a public header: {name}"
                 for name in sorted(names | artefacts) if not has_marked_owner(name, types, others)]
    defined = {word for name in names
               for word in re.findall(r"[A-Za-z_]\w*", re.split(r"\((?!anonymous)", name, maxsplit=1)[0])[-1:]}
    problems += [f"marked in a public header, but not there: {name}"
                 for name in sorted(others - defined - {"operator"})]
    for problem in problems:
        print(problem)
    if problems:
        print(f"{binary}: {len(problems)} differences. If the interface was meant to change, run "
              "scripts/update-exports.sh and commit exports/cpp-names.txt.")
    else:
        print(f"{binary.name}: {len(lz4)} names of LZ4, {len(names)} C++ names, "
              f"{len(artefacts)} class artefacts, all as listed and marked")
    return 1 if problems else 0


def update(linux_binary, windows_binary):
    linux, windows = (split_exports(binary)[1] for binary in (linux_binary, windows_binary))
    lines = [(name, "") for name in linux & windows]
    lines += [(name, "[linux] ") for name in linux - windows]
    lines += [(name, "[windows] ") for name in windows - linux]
    CPP_LIST.write_text("# C++ names that the library exports; scripts/update-exports.sh writes this list.\n"
                        + "".join(f"{tag}{name}\n" for name, tag in sorted(lines)))
    print(f"{CPP_LIST.relative_to(ROOT)}: {len(lines)} names")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    commands = parser.add_subparsers(dest="command", required=True)
    checker = commands.add_parser("check", help="compare a binary with the lists")
    checker.add_argument("system", choices=("linux", "windows"))
    checker.add_argument("binary", type=pathlib.Path)
    updater = commands.add_parser("update", help="write the list of C++ names from both binaries")
    updater.add_argument("linux", type=pathlib.Path)
    updater.add_argument("windows", type=pathlib.Path)
    arguments = parser.parse_args()
    if arguments.command == "update":
        return update(arguments.linux, arguments.windows)
    return check(arguments.system, arguments.binary)


if __name__ == "__main__":
    sys.exit(main())
