#!/usr/bin/env python3
"""Proves what runs when the library is loaded.

1. No object file of the library but load_order.cpp's has a dynamic initialiser.
2. load_order.cpp, compiled without optimisation so that nothing is moved, initialises the objects
   of tests/house/load_order.txt in that order, none missing and none more.
3. In the linked library that one initialiser runs, then the heap's own start-up, and nothing else.
"""

import argparse
import pathlib
import re
import subprocess
import sys

STARTUP = re.compile(r"^_GLOBAL__(sub_)?I_|^__cxx_global_var_init")
HEAP_STARTUP = "_mi_process_init"
RUNTIME = {"frame_dummy", "register_frame_ctor", "__frame_dummy_init_array_entry", "init_have_lse_atomics"}


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def has_initialiser(objects):
    """The object files that have entries in a section of start-up functions."""
    found, current = [], None
    for line in output_of("objdump", "-h", *objects).splitlines():
        file = re.match(r"(\S+):\s+file format", line)
        if file:
            current = file.group(1)
        section = re.match(r"\s*\d+ (\.init_array|\.ctors|\.preinit_array|\.CRT\$X[CIL])\S*\s+([0-9a-f]+)", line)
        if section and int(section.group(2), 16) > 0 and current not in found:
            found.append(current)
    return found


def data_objects(object_file):
    """{section or symbol: demangled name}: every object has a section of its own, by -fdata-sections."""
    names = {}
    for line in output_of("nm", "-C", "--format=sysv", object_file).splitlines():
        cells = [cell.strip() for cell in line.split("|")]
        if len(cells) == 7 and cells[2].upper() in "BDGSRV" and not cells[0].startswith("."):
            names[cells[0]] = names[cells[6]] = cells[0]
    return names


def references(object_file, names):
    """{function: the objects and exit functions that its code names, in that order}"""
    found, current = {}, []
    for line in output_of("objdump", "-drC", "--no-show-raw-insn", object_file).splitlines():
        function = re.match(r"[0-9a-f]+ <(.*)>:$", line)
        if function:
            current = found.setdefault(function.group(1), [])
        reloc = re.match(r"\s+[0-9a-f]+: (?:R_X86_64|IMAGE_REL_AMD64)\S*\s+(.*?)(?:[+-]0x[0-9a-f]+)?$", line)
        if reloc and reloc.group(1) in names:
            current.append(names[reloc.group(1)])
        exit_function = re.search(r"<(__tcf_\d+)>$", line)
        if exit_function and not function:
            current.append(exit_function.group(1))
    return found


def initialised_objects(object_file):
    """Names of the objects with a dynamic initialiser or an exit clean-up, in order."""
    code = references(object_file, data_objects(object_file))
    order = []
    for function in code:
        if re.match(r"__static_initialization_and_destruction|__cxx_global_var_init", function):
            for name in code[function]:
                order += code[name] if name.startswith("__tcf_") else [name]
    return [name for name in dict.fromkeys(order) if not name.startswith(("guard variable", "vtable"))]


def start_up_of_elf(binary):
    header = re.search(r"\.init_array\s+INIT_ARRAY\s+([0-9a-f]+)\s+[0-9a-f]+\s+([0-9a-f]+)",
                       output_of("readelf", "-SW", binary))
    begin, size = int(header.group(1), 16), int(header.group(2), 16)
    entries = {}
    for line in output_of("readelf", "-rW", binary).splitlines():
        cells = line.split()
        if len(cells) >= 4 and cells[2] == "R_X86_64_RELATIVE" and begin <= int(cells[0], 16) < begin + size:
            entries[int(cells[0], 16)] = int(cells[3], 16)
    return [entries[place] for place in sorted(entries)]


def start_up_of_dll(binary):
    """The list of constructors, which the run-time walks from its end to its start."""
    place = int(re.search(r"^([0-9a-f]+) \w __CTOR_LIST__$", output_of("nm", binary), re.M).group(1), 16)
    dump = output_of("objdump", "-s", f"--start-address={place:#x}", f"--stop-address={place + 512:#x}", binary)
    hexadecimal = "".join("".join(line[:line.index("  ")].split()[1:])
                          for line in dump.splitlines() if re.match(r" [0-9a-f]+ [0-9a-f]{2}", line))
    values = [int.from_bytes(bytes.fromhex(hexadecimal[i:i + 16]), "little") for i in range(0, 512, 16)]
    if values[0] != 2**64 - 1:
        sys.exit(f"{binary}: __CTOR_LIST__ does not begin with -1")
    return list(reversed(values[1:values.index(0)]))


def start_up_functions(binary):
    """Names of the functions that run at load, in order, without those of the C run-time."""
    symbols = {}
    for line in output_of("nm", binary).splitlines():
        match = re.fullmatch(r"([0-9a-f]+) [tT] ([^.]\S*)", line)
        if match:
            symbols.setdefault(int(match.group(1), 16), []).append(match.group(2))
    addresses = start_up_of_dll(binary) if binary.suffix == ".dll" else start_up_of_elf(binary)
    names = [symbols.get(address, [f"{address:#x}"])[0] for address in addresses]
    return [name for name in names if name not in RUNTIME]


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--binary", type=pathlib.Path, required=True)
    parser.add_argument("--expected", type=pathlib.Path, required=True)
    parser.add_argument("--unoptimised", required=True, help="load_order.cpp's object file at -O0")
    parser.add_argument("--objects", type=pathlib.Path, required=True, help="file with the paths of all objects")
    arguments = parser.parse_args()

    problems = []
    objects = arguments.objects.read_text().split()
    if not any("load_order.cpp" in file for file in objects):
        problems.append("load_order.cpp is not among the library's object files")
    problems += [f"dynamic initialiser outside core/load_order.cpp: {file}"
                 for file in has_initialiser(objects) if "load_order.cpp" not in file]

    lines = [line.strip() for line in arguments.expected.read_text().splitlines()
             if line.strip() and not line.startswith("#")]
    is_dll = arguments.binary.suffix == ".dll"
    expected = [line.removeprefix("windows: ") for line in lines if is_dll or not line.startswith("windows: ")]
    actual = initialised_objects(arguments.unoptimised)
    if actual != expected:
        problems.append(f"core/load_order.cpp initialises {actual},\n  {arguments.expected.name} has {expected}")

    functions = start_up_functions(arguments.binary)
    ours = [name for name in functions if STARTUP.match(name)]
    wanted = ours[:1] + [HEAP_STARTUP]
    if len(ours) != (1 if expected else 0) or functions != wanted:
        problems.append(f"{arguments.binary.name} runs {functions} at load; one initialiser of "
                        f"core/load_order.cpp and then {HEAP_STARTUP} were expected")
    print("\n".join(problems) if problems
          else f"{len(objects)} object files, {len(actual)} objects, at load: {', '.join(functions)}")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
