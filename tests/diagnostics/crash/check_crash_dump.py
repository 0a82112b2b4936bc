#!/usr/bin/env python3
"""Lets a program crash and asks a debugger, which knows nothing of us, what the dump says.

usage: check_crash_dump.py <kind> <function> [--where thread|alone] [--exit N] [--reason TEXT]
                           [--most-bytes N] [--search FOLDER]... --debugger LLDB
                           --symbolizer PROGRAM --image FILE -- <program>...

The dump must name <function> among the frames of the thread that crashed, and the other thread's
place in another one. A thread that has ended must not be there. Of the raw stack, the frames of
<image> are looked up by their offsets; the function must be among them, too.
"""

import argparse
import pathlib
import re
import subprocess
import sys
import tempfile


def threads_of(text):
    """The frames of each thread, innermost first, of a debugger's backtraces; the selected one first."""
    threads = []
    for line in text.splitlines():
        if re.match(r"[* ] thread #\d+", line):
            threads.append((line, []))
        elif threads and re.match(r"[* ]*frame #\d+:", line):
            threads[-1][1].append(line)
    threads.sort(key=lambda thread: not thread[0].startswith("*"))
    return threads


def raw_functions(stack, options):
    """The functions of the image's frames in the text of a raw stack."""
    name = pathlib.PurePath(options.image).name
    offsets = [line.split()[1] for line in stack.splitlines() if line.rstrip().endswith(name)]
    symbolizer = subprocess.run(
        [options.symbolizer, "--relative-address", "--functions", f"--obj={options.image}"] + offsets,
        text=True, capture_output=True, timeout=120)
    return symbolizer.stdout


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("kind")
    parser.add_argument("function")
    parser.add_argument("--where", default="here")
    parser.add_argument("--exit", type=int, default=3)
    parser.add_argument("--reason", default="")
    parser.add_argument("--search", action="append", default=[])
    parser.add_argument("--debugger", required=True)
    parser.add_argument("--most-bytes", type=int, default=1 << 40)
    parser.add_argument("--symbolizer", required=True)
    parser.add_argument("--image", required=True)
    parser.add_argument("program", nargs="+")
    options = parser.parse_args()

    with tempfile.TemporaryDirectory() as folder:
        # A file and no pipe: what the emulator leaves running would keep a pipe open.
        with open(pathlib.Path(folder, "output"), "w+", errors="replace") as output:
            crash = subprocess.run(
                options.program + [options.kind, folder, options.where],
                stdin=subprocess.DEVNULL, stdout=output, stderr=output, timeout=240)
            output.seek(0)
            said = output.read()
        dump = pathlib.Path(folder, "dump.dmp")
        if not dump.exists() or dump.stat().st_size == 0:
            sys.exit(f"no dump; exit code {crash.returncode}\n{said}")
        command = [options.debugger, "--no-lldbinit", "--batch"]
        for search in options.search:
            command += ["-O", f"settings append target.exec-search-paths {search}"]
        debugger = subprocess.run(command + ["-c", str(dump), "-o", "thread backtrace --count 40 all"], text=True,
                                  capture_output=True, errors="replace", timeout=300)
        size = dump.stat().st_size
        raw = pathlib.Path(folder, "stack.txt")
        stack = raw.read_text() if raw.exists() else ""
    problems = []
    if options.exit == 3 and options.function not in raw_functions(stack, options):
        problems.append(f"{options.function} is not in the raw stack:\n{stack}")
    if size > options.most_bytes:
        problems.append(f"the dump has {size} bytes")
    if crash.returncode != options.exit:
        problems.append(f"the program ended with {crash.returncode}, not {options.exit}")
    threads = threads_of(debugger.stdout)
    if not threads or not any(options.function in frame for frame in threads[0][1]):
        problems.append(f"{options.function} is not among the frames of the thread that crashed")
    if not any("wait_in_another_thread" in frame for _, frames in threads[1:] for frame in frames):
        problems.append("the waiting thread is not there")
    nowhere = r"frame #0: 0x0+\s*$"
    if options.where == "alone" and any(re.search(nowhere, frame) for _, frames in threads for frame in frames):
        problems.append("a thread is there that has ended")
    if options.reason and (not threads or options.reason not in threads[0][0]):
        problems.append(f"the stop reason is not {options.reason}")
    if problems:
        sys.exit("\n".join(problems + [debugger.stdout, debugger.stderr[:2000]]))
    print("\n".join([threads[0][0]] + threads[0][1][:12]))


if __name__ == "__main__":
    main()
