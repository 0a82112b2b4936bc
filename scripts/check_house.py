#!/usr/bin/env python3
"""House rules that no compiler sees, one command each:

layers    folders depend downwards only, and no two files include each other in a circle
systems   only the system layer branches on the operating system or includes its headers
listed    every source, test and public header stands in its folder's CMakeLists.txt
heap      library objects come from the heap door, not from operator new
size      no source, header or test has more than 1,000 lines
light     math headers bring in next to nothing, so that they compile in no time
"""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
LIBRARY = ROOT / "morvantis"
CODE = ("morvantis", "tests", "fuzz", "benchmarks", "examples", "tools", "compat")

# From the ground up. Folders of one rank do not know each other.
RANKS = {"platform/system": 0, "core": 1, "math, ground floor": 1.5, "memory": 2, "strings": 3, "platform": 4, "io": 5,
         "core, upper floor": 6, "net": 7, "math": 7, "diagnostics": 8}
# core's upper floor: object types, timers, random numbers, the GUID generator (the GUID itself is a
# plain value of the ground floor).
UPPER_FLOOR = re.compile(r"core/(\w*object\w*|\w*timer\w*|\w*random\w*|\w*guid_generator\w*)\.(h|cpp)")
# math's ground floor: the value types that streams, buffers and readers exchange. They need core's
# integer types and each other, nothing else.
VALUE_TYPES = re.compile(r"math/(lanes|wrapping|xylint_vec[23]|xylvec2|xylvec3|xylvec3d|xylmat3|xylquaternion)\.h")
# They look upwards because that is their job.
FREE = {"library.h", "core/zublibrary.cpp", "core/load_order.cpp"}
# The two allocator objects and the type registry.
NEW_ALLOWED = re.compile(r"core/load_order\.cpp|core/zubobject\w*\.cpp|memory/xylmemory_allocator_globals\w*\.cpp")
# Public structures with a socket address in them, the export macro, and the C runtime's heap.
SYSTEM_ALLOWED = {"core/xylexport.h", "net/qonetaddress.h", "net/qonet_udp_socket.h", "memory/xylheap_runtime.cpp"}
SYSTEM_MACRO = re.compile(r"_WIN(32|64)|\bWIN32\b|__linux|__unix|__MINGW|_MSC_VER|__CYGWIN__|__APPLE__|__ANDROID__")
SYSTEM_HEADER = re.compile(r"(windows|winsock2|ws2tcpip|unistd|dlfcn|pthread|fcntl|netdb|poll|pwd|dirent|malloc|io|"
                           r"process|direct|spawn|ucontext|link|elf|aio|mmsystem|psapi|tlhelp32|dbghelp|shellapi)\.h"
                           r"|(sys|arpa|netinet|linux|net)/.*")
# All that is not ours and that a math header may bring in; the polygon's brings in its array.
LIGHT = {"emmintrin.h", "cstddef", "iosfwd"}
NOT_LIGHT = {"math/xylconvex_polygon.h"}


def without_comments(text):
    pattern = r'//[^\n]*|/\*.*?\*/|("(?:\\.|[^"\\\n])*")'
    return re.sub(pattern, lambda m: m.group(1) or re.sub(r"[^\n]", "", m.group(0)), text, flags=re.S)


def files_of(*folders):
    for folder in folders:
        for path in sorted((ROOT / folder).rglob("*")):
            if path.suffix in (".h", ".cpp"):
                yield path


def includes_of(path):
    """(line number, included file) of all our includes and the systems'."""
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        match = re.match(r'\s*#\s*include\s*[<"]([^>"]+)[>"]', line)
        if match:
            yield number, match.group(1)


def floor_of(file):
    if file.startswith("platform/system/"):
        return "platform/system"
    if VALUE_TYPES.fullmatch(file):
        return "math, ground floor"
    return "core, upper floor" if UPPER_FLOOR.fullmatch(file) else file.partition("/")[0]


def check_layers():
    problems, graph = [], {}
    for path in files_of("morvantis"):
        file = path.relative_to(LIBRARY).as_posix()
        own = floor_of(file)
        if file not in FREE and own not in RANKS:
            problems.append(f"{file}: unknown folder")
            continue
        for number, included in includes_of(path):
            if not included.startswith("morvantis/"):
                continue
            target = included[len("morvantis/"):]
            graph.setdefault(file, set()).add(target)
            theirs = floor_of(target)
            if file in FREE or target == "core/xyltypes.h" or target == "core/xylexport.h":
                continue
            if target in FREE or (own != theirs and RANKS.get(theirs, 99) >= RANKS[own]):
                problems.append(f"{file}:{number}: {own} looks up to {theirs} ({target})")
    return problems + circles(graph)


def circles(graph):
    problems, done = [], set()

    def visit(file, road):
        if file in road:
            problems.append("circle of includes: " + " -> ".join(road[road.index(file):] + [file]))
        elif file not in done:
            for target in sorted(graph.get(file, ())):
                visit(target, road + [file])
            done.add(file)

    for file in sorted(graph):
        visit(file, [])
    return problems


def check_systems():
    problems = []
    for path in files_of(*CODE):
        file = path.relative_to(ROOT).as_posix()
        inside = file.removeprefix("morvantis/")
        if inside.startswith("platform/system/") and path.parent.name in ("windows", "linux"):
            continue
        if inside in SYSTEM_ALLOWED:
            continue
        for number, line in enumerate(without_comments(path.read_text(encoding="utf-8")).splitlines(), 1):
            if re.match(r"\s*#\s*(if|elif)", line) and SYSTEM_MACRO.search(line):
                problems.append(f"{file}:{number}: branch on the operating system")
        # Tests and benchmarks may have files of their own for each system.
        if path.is_relative_to(LIBRARY):
            problems += [f"{file}:{number}: system header {name}"
                         for number, name in includes_of(path) if SYSTEM_HEADER.fullmatch(name)]
    return problems


def build_list(path):
    """Text of the nearest CMakeLists.txt above a file, without comments."""
    folder = path.parent
    while not (folder / "CMakeLists.txt").exists():
        folder = folder.parent
    return re.sub(r"#[^\n]*", "", (folder / "CMakeLists.txt").read_text(encoding="utf-8")), folder


def is_listed(path, text, folder):
    file = path.relative_to(folder).as_posix()
    forms = [file]
    system = re.fullmatch(r"(.*?)(windows|linux)/(\w+)(\.\w+)", file)
    if system:  # chosen by the build: by a variable, or the family's name stands in a list
        text = re.sub(r"\$\{\w*system\}", system.group(2), text)
        forms.append(system.group(3))
    heap = re.fullmatch(r"(.*_)(mimalloc|runtime)\.cpp", file)
    if heap:
        forms.append(heap.group(1) + "${MORVANTIS_HEAP}.cpp")
    return any(re.search(rf"(?<![\w./]){re.escape(form)}(?![\w./])", text) for form in forms)


def check_listed():
    problems, public = [], []
    for path in files_of("morvantis", "tests", "fuzz", "benchmarks", "examples", "tools"):
        text, folder = build_list(path)
        file = path.relative_to(ROOT).as_posix()
        if path.suffix == ".cpp" and not is_listed(path, text, folder):
            problems.append(f"{file} stands in no CMakeLists.txt")
        if path.suffix == ".h" and path.is_relative_to(LIBRARY) and "platform/system/" not in file:
            listed = is_listed(path, text, folder)
            if listed:
                public.append(file)
            elif file != "morvantis/core/xylexport.h" and re.search(
                    r"\bMORVANTIS_API\b", without_comments(path.read_text(encoding="utf-8"))):
                problems.append(f"{file} exports something, but morvantis_headers() does not have it")
    every = LIBRARY / "library.h"
    brought_in = {name for _, name in includes_of(every)} if every.exists() else set(public)
    problems += [f"morvantis/library.h does not bring in {file}"
                 for file in public if file not in brought_in and file != "morvantis/library.h"]
    return problems


def check_heap():
    problems = []
    for path in files_of("morvantis"):
        file = path.relative_to(LIBRARY).as_posix()
        if NEW_ALLOWED.fullmatch(file):
            continue
        text = re.sub(r'"(?:\\.|[^"\\\n])*"', '""', without_comments(path.read_text(encoding="utf-8")))
        for number, line in enumerate(text.splitlines(), 1):
            if line.lstrip().startswith("#"):
                continue
            if re.search(r"\bnew\b(?!\s*\()", line) and "operator new" not in line:
                problems.append(f"{file}:{number}: operator new: {line.strip()}")
            if re.search(r"(?<!=\s)\bdelete\b(?!\s*[;,)])", line) and "operator delete" not in line:
                problems.append(f"{file}:{number}: operator delete: {line.strip()}")
            if re.search(r"\b(std::)?(malloc|calloc|realloc|make_unique|make_shared)\s*[(<]", line) and (
                    file != "memory/xylheap_runtime.cpp" and not file.startswith("platform/system/")):
                problems.append(f"{file}:{number}: memory past the heap door: {line.strip()}")
    return problems


def check_size():
    return [f"{path.relative_to(ROOT)}: {count} lines" for path in files_of(*CODE)
            if (count := len(path.read_text(encoding="utf-8").splitlines())) > 1000]


def foreign_includes(file, seen):
    """What a header of ours includes that is not ours, directly or through others of ours."""
    for _, included in includes_of(LIBRARY / file):
        if not included.startswith("morvantis/"):
            yield included
        elif (target := included[len("morvantis/"):]) not in seen:
            seen.add(target)
            yield from foreign_includes(target, seen)


def check_light():
    return [f"morvantis/{file}: brings in {foreign}"
            for file in sorted(path.relative_to(LIBRARY).as_posix() for path in LIBRARY.glob("math/*.h"))
            if file not in NOT_LIGHT
            for foreign in sorted(set(foreign_includes(file, {file})) - LIGHT)]


def main():
    rules = {"layers": check_layers, "systems": check_systems, "listed": check_listed, "heap": check_heap,
             "size": check_size, "light": check_light}
    if len(sys.argv) != 2 or sys.argv[1] not in rules:
        sys.exit(__doc__)
    problems = rules[sys.argv[1]]()
    for problem in problems:
        print(problem)
    print(f"{sys.argv[1]}: {len(problems)} problems")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
