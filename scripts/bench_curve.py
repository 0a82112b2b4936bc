#!/usr/bin/python3
"""Draws a benchmark's time against its argument, one line for each who, from Google Benchmark results."""

import argparse
from collections import defaultdict
from statistics import median

import matplotlib

matplotlib.use("svg")
from matplotlib import pyplot

from bench_table import read_times

WORDS = {"ours": "ours", "bare_list": "bare list", "std_list": "std::list"}


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("results", help="a program's results in JSON")
    parser.add_argument("what", help="the benchmark, without its argument")
    parser.add_argument("picture", help="the SVG file to write")
    parser.add_argument("--argument", required=True, help="what the argument counts")
    arguments = parser.parse_args()

    curves = defaultdict(list)
    for what, by_who in read_times([arguments.results])[0].items():
        name, _, argument = what.rpartition("/")
        if name == arguments.what:
            for who, times in by_who.items():
                curves[who].append((int(argument), median(times)))

    matplotlib.rcParams["svg.hashsalt"] = "the same names in every run"
    figure, axes = pyplot.subplots(figsize=(7, 4))
    for who, points in sorted(curves.items(), key=lambda curve: curve[0] != "ours"):
        axes.plot(*zip(*sorted(points)), marker="o", label=WORDS.get(who, who))
    axes.set(xscale="log", yscale="log", xlabel=arguments.argument, ylabel="nanoseconds")
    axes.grid(which="major", alpha=0.3)
    axes.legend()
    figure.tight_layout()
    figure.savefig(arguments.picture, metadata={"Date": None})


if __name__ == "__main__":
    main()
