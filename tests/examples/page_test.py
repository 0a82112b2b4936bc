"""Opens the page that the engine host writes in a headless browser and uses it as a visitor would.

usage: page_test.py <engine_host>

Three pages: one of a run, one of records with hostile numbers, one of a file that breaks off. Into
a copy of each goes page_checks.js, which turns, steps, clicks and looks, and leaves its findings in
the document. Ends with 77 where there is no browser.
"""

import json
import math
import os
import pathlib
import re
import shutil
import struct
import subprocess
import sys
import tempfile

NAN, INF, HUGE = math.nan, math.inf, 3.4e38
CHECKS = pathlib.Path(__file__).with_name("page_checks.js").read_text(encoding="utf-8")


def find_browser():
    names = [os.environ.get("MORVANTIS_BROWSER"), "chromium", "chromium-browser", "google-chrome"]
    return next((path for path in map(shutil.which, filter(None, names)) if path), None)


def line(start, delta, stamp=0.0, duration=0.0, color=0xFFFFFFFF):
    return struct.pack("<6fIIff", *start, *delta, color, color, stamp, duration)


def quad(corners, color=0xFF40FF40):
    return struct.pack("<12fI", *(number for corner in corners for number in corner), color)


def text(position, letters, screen_space=0, offset=(0, 0)):
    return struct.pack("<B3fIiiffI", screen_space, *position, 0xFFFFFFFF, *offset, 0, 0, len(letters)) + letters


def frame(tick, time, lines=(), grounds=(), quads=(), objects=(), texts=()):
    lists = (lines, grounds, quads, (), (), objects, texts)
    return struct.pack("<If", tick, time) + b"".join(
        struct.pack("<I", len(records)) + b"".join(records) for records in lists)


def hostile_recording():
    """Good records of each kind among bad ones, in the second frame; the first is empty."""
    bad = (NAN, INF, -INF, HUGE, -HUGE)
    lines = [line((0, 0, 0), (9, 0, 0), color=0xFF12AB34)]
    quads = [quad([(0, 0, 0), (5, 0, 0), (5, 5, 0), (0, 5, 0)])]
    objects = [struct.pack("<4fI", 10, 10, 30, 30, 0xFF0000FF)]
    texts = [text((0, 0, 5), b"<b>good &amp; \xe4")]
    for one in bad:
        lines += [line((one, 0, 0), (1, 1, 1)), line((0, 0, 0), (1, one, one), one, one)]
        quads += [quad([(0, 0, 0), (one, 0, 0), (one, one, 0), (0, 0, one)])]
        objects += [struct.pack("<4fI", one, one, one, one, 0x80FF0000)]
        texts += [text((one, one, one), b"bad"), text((one, one, 0), b"bad", 1, (2**31 - 1, -2**31))]
    lines += [line((i % 90 - 45, i / 200 - 45, 0), (HUGE, -HUGE, 1)) for i in range(2000)]
    return struct.pack("<I", 0x31524845) + frame(1, 0) + frame(2, NAN, lines, lines[:40], quads, objects, texts)


def show(browser, page, kind, folder):
    """The checks' findings: [[name, is_right, detail], ...]."""
    html = page.read_text(encoding="utf-8")
    assert html.count("</body>") == 1
    script = f"<script>const KIND = {json.dumps(kind)};\n{CHECKS}</script>\n</body>"
    tested = folder / f"{kind}.html"
    tested.write_text(html.replace("</body>", script), encoding="utf-8")
    command = [browser, "--headless", "--no-sandbox", "--disable-gpu", "--window-size=1280,720",
               f"--user-data-dir={folder / 'profile'}", "--virtual-time-budget=20000", "--dump-dom",
               tested.as_uri()]
    answer = subprocess.run(command, capture_output=True, text=True, errors="replace", timeout=120, check=False)
    verdict = re.search(r'<script id="verdict" type="application/json">(.*?)</script>', answer.stdout, re.S)
    if not verdict:
        return [["the checks came to an end", False, answer.stdout[-500:] + answer.stderr[-2000:]]]
    return json.loads(verdict.group(1))


def main():
    browser = find_browser()
    if not browser:
        print("skipped: no browser (chromium)")
        return 77
    with tempfile.TemporaryDirectory() as scratch:
        folder = pathlib.Path(scratch)

        def run(out, *options):
            subprocess.run([sys.argv[1], "--out", str(folder / out), *options], check=True, timeout=120,
                           stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            return folder / out / "frames.html"

        pages = {"run": run("run", "--frames", "3", "--agents", "30")}
        hostile = folder / "hostile.records"
        hostile.write_bytes(hostile_recording())
        pages["hostile"] = run("hostile", "--draw", str(hostile))
        # The program says that this one is damaged, with its exit code too.
        whole = (folder / "run" / "frames.records").read_bytes()
        damaged = folder / "damaged.records"
        damaged.write_bytes(whole[:len(whole) * 3 // 4])
        try:
            run("damaged", "--draw", str(damaged))
            print("FAILED a damaged file ends well")
            return 1
        except subprocess.CalledProcessError:
            pages["damaged"] = folder / "damaged" / "frames.html"

        failures = 0
        for kind, page in pages.items():
            for name, is_right, detail in show(browser, page, kind, folder):
                failures += not is_right
                print("passed" if is_right else "FAILED", f"{kind}: {name}", "" if is_right else detail)
        return 1 if failures else 0


sys.exit(main())
