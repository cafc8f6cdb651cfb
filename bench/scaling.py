#!/usr/bin/env python3
"""Times operations over about three decades of sizes and fits the exponent of their growth.

The exponent is the slope of a straight line through the logarithms of sizes and times, over all sizes and over the last
decade of them; beside it stands the same slope of what the method needs. A row that grows faster than its method, by
more than the tolerances below, is named as a finding; the exit status does not depend on it. The raw results, the table
and the pictures go to the output directory, with --update-docs also to docs/scaling.md and docs/pictures.
"""

import argparse
import json
import math
import os
import pathlib
import statistics
import subprocess
import sys

from plots import MARKS, OURS, PEERS, escape, size_label, time_label
from report import nanoseconds, set_name
from run import ROOT, update_documentation

METHODS = {"n": lambda n: n, "n log n": lambda n: n * math.log(n), "n^2": lambda n: n ** 2, "n^3": lambda n: n ** 3,
           "n^5": lambda n: n ** 5}

# What falls out of the caches is read up to nine times slower: that adds log10(9) / 3 over three decades, and up to
# log10(9) within one.
TOLERANCE, TOLERANCE_OF_DECADE = 0.3, 0.9

PICTURES = [("scaling-lists", "Lists", lambda operation, method: operation.startswith("list")),
            ("scaling-points", "Clouds of points and samples of curves",
             lambda operation, method: method == "n" and not operation.startswith("list")),
            ("scaling-matrices", "Matrices and polynomials", lambda operation, method: method not in ("n", "n log n"))]


def slope(points):
    """Of the line of least squares through the logarithms."""
    logs = [(math.log(x), math.log(y)) for x, y in points]
    mean_x, mean_y = (statistics.fmean(values) for values in zip(*logs))
    return sum((x - mean_x) * (y - mean_y) for x, y in logs) / sum((x - mean_x) ** 2 for x, _ in logs)


class Operation:
    def __init__(self, name, method):
        self.name = name
        self.method = method
        self.times = {}

    def points(self, last_decade=False):
        """Sizes with the medians of their times."""
        least = max(self.times) / 10 if last_decade else 0
        return [(n, statistics.median(t)) for n, t in sorted(self.times.items()) if n >= least]

    def exponent(self, last_decade=False):
        return slope(self.points(last_decade))

    def needed(self, last_decade=False):
        return slope([(n, METHODS[self.method](n)) for n, _ in self.points(last_decade)])

    def finding(self):
        excess, of_decade = (self.exponent(last) - self.needed(last) for last in (False, True))
        if excess > TOLERANCE or of_decade > TOLERANCE_OF_DECADE:
            return (f"{self.name} grows faster than {self.method}: exponent {self.exponent():.2f}, "
                    f"in the last decade {self.exponent(True):.2f}")
        return None


def read(path):
    data = json.loads(path.read_text())
    operations = {}
    for b in data["benchmarks"]:
        if b["run_type"] != "iteration":
            continue
        if b.get("error_occurred"):
            sys.exit(f"error: {b['run_name']}: {b['error_message']}")  # nothing is fitted through a wrong result
        name, size, _, _ = b["run_name"].split("|")
        method = b["label"].split("|", 1)[1]
        operations.setdefault(name, Operation(name, method)).times.setdefault(int(size), []).append(b["cpu_time"])
    return data["context"], list(operations.values())


def table(context, operations):
    columns = ["operation", "sizes", "shortest", "longest", "method", "needed", "exponent", "needed, last decade",
               "exponent, last decade", ""]
    lines = [f"{context['processor']}, one core, kernels for {set_name(context['instruction set'])}; "
             f"{context['date'][:10]}. Times in nanoseconds.", "",
             "| " + " | ".join(columns) + " |", "|---|---|--:|--:|---|--:|--:|--:|--:|---|"]
    for o in operations:
        points = o.points()
        cells = [o.name, f"{points[0][0]:,} to {points[-1][0]:,}",
                 nanoseconds(points[0][1]), nanoseconds(points[-1][1]),
                 o.method, *(f"{e:.2f}" for e in (o.needed(), o.exponent(), o.needed(True), o.exponent(True))),
                 "grows faster" if o.finding() else ""]
        lines.append("| " + " | ".join(cells) + " |")
    return "\n".join(lines) + "\n"


def picture(title, operations, path):
    sizes = sorted({n for o in operations for n in o.times})
    times = [t for o in operations for _, t in o.points()]
    low, high = math.floor(math.log10(min(times))), math.ceil(math.log10(max(times)))
    decades = range(math.floor(math.log10(sizes[0])), math.ceil(math.log10(sizes[-1])) + 1)
    xtics = ", ".join(f'"{size_label(10 ** e)}" {10 ** e}' for e in decades)
    ytics = ", ".join(f'"{time_label(e)}" 1e{e}' for e in range(low, high + 1))
    colours = [OURS, *PEERS]
    blocks, lines = [], []
    for k, o in enumerate(operations):
        blocks.append(f"$d{k} << EOD\n" + "\n".join(f"{n} {t}" for n, t in o.points()) + "\nEOD")
        dashes = "" if k < len(colours) else " dt (6,3)"
        lines.append(f'$d{k} using 1:2 with linespoints lc rgb "{colours[k % len(colours)]}" lw 2{dashes} '
                     f'pt {MARKS[k % len(MARKS)]} ps 0.7 title "{escape(f"{o.name} ({o.exponent(True):.2f})")}"')
    text = ['set terminal svg size 900,480 font "Helvetica,14" enhanced background "#ffffff"', f'set output "{path}"',
            "set encoding utf8", "set logscale xy",
            f'set title "{title}: time against size" font ",17"',
            f"set xrange [{sizes[0] * 0.8}:{sizes[-1] * 1.25}]", f"set yrange [1e{low}:1e{high}]",
            f"set xtics ({xtics}) nomirror", f"set ytics ({ytics}) nomirror", "set border 3",
            'set grid xtics ytics lt 1 lc rgb "#e6eaef" lw 1',
            'set key outside right center Left reverse spacing 1.35 title "(exponent in the last decade)" left',
            *blocks, "plot " + ", \\\n  ".join(lines), ""]
    subprocess.run(["gnuplot"], input="\n".join(text), text=True, check=True)


def draw(operations, directory):
    directory.mkdir(parents=True, exist_ok=True)
    for name, title, belongs in PICTURES:
        chosen = [o for o in operations if belongs(o.name, o.method)]
        if chosen:
            picture(title, chosen, directory / f"{name}.svg")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", type=pathlib.Path, default=ROOT / "build/bench/bench/bench_default")
    parser.add_argument("--output", type=pathlib.Path, default=ROOT / "build/bench", help="where results go")
    parser.add_argument("--filter", default="", help="only the operations that match this regular expression")
    parser.add_argument("--report-only", action="store_true", help="from the raw results of the last run")
    parser.add_argument("--update-docs", action="store_true", help="put table and pictures into the documentation")
    options = parser.parse_args()
    options.output.mkdir(parents=True, exist_ok=True)
    raw = options.output / "results-scaling.json"
    if not options.report_only:
        command = [options.program, "--scaling", f"--benchmark_out={raw}", "--benchmark_out_format=json",
                   "--benchmark_min_time=0.02", "--benchmark_repetitions=3"]
        if options.filter:
            command.append(f"--benchmark_filter=^({options.filter})")
        subprocess.run(command, env=dict(os.environ, OPENBLAS_NUM_THREADS="1"), check=True, stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL)
    context, operations = read(raw)
    text = table(context, operations)
    print(text)
    draw(operations, options.output / "plots")
    findings = [f for o in operations if (f := o.finding())]
    print("\n".join("finding: " + f for f in findings) or "no operation grows faster than its method")
    if options.update_docs and options.filter:
        sys.exit("error: the documents want all operations, without --filter")
    if options.update_docs:
        pictures = "".join(f"\n![{title}](pictures/{name}.svg)\n" for name, title, _ in PICTURES)
        update_documentation({"docs/scaling.md": text + pictures})
        draw(operations, ROOT / "docs/pictures")


if __name__ == "__main__":
    main()
