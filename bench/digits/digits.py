#!/usr/bin/env python3
"""The tables of correct digits and times of docs/accuracy.md: what the program prints, and NumPy's polyfit beside it.

usage: digits.py PROGRAM [--update-docs]; NumPy is Debian's, of the python3 that has it.
"""

import json
import math
import pathlib
import re
import subprocess
import sys
import timeit
import warnings
from fractions import Fraction

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
LIBRARIES = ["Tessarn", "classic", "GSL", "Eigen QR", "Eigen SVD", "dgelsd", "NumPy"]


def correct_digits(exact, value):
    off = abs(Fraction(value) / exact - 1) if math.isfinite(value) else Fraction(1)
    return 17.0 if off == 0 else min(17.0, -math.log10(off))


def numpy_row(numpy, problem):
    warnings.simplefilter("ignore")  # polyfit may call a fit poorly conditioned
    x, y, degree = numpy.array(problem["x"]), numpy.array(problem["y"]), problem["degree"]
    fitted = numpy.polyfit(x, y, degree)[::-1]
    digits = min(correct_digits(Fraction(e), float(v)) for e, v in zip(problem["exact"], fitted))
    best = min(timeit.repeat(lambda: numpy.polyfit(x, y, degree), number=200, repeat=9)) / 200
    return {"set": problem["problem"], "library": "NumPy", "digits": digits, "ns": best * 1e9}


def cell(row):
    if row is None:
        return ""
    return f"{max(row['digits'], 0):.1f} · {row['ns'] / 1000:.1f}"


def table(rows):
    sets = list(dict.fromkeys(r["set"] for r in rows))
    lines = ["| set | " + " | ".join(LIBRARIES) + " |", "|---" * (len(LIBRARIES) + 1) + "|"]
    for name in sets:
        by_library = {r["library"]: r for r in rows if r["set"] == name}
        lines.append(f"| {name} | " + " | ".join(cell(by_library.get(l)) for l in LIBRARIES) + " |")
    return "\n".join(lines) + "\n"


def table_of_times(rows):
    sizes = list(dict.fromkeys(r["n"] for r in rows))
    lines = ["| coefficients | " + " | ".join(f"{n:,} points" for n in sizes) + " |", "|---" * (len(sizes) + 1) + "|"]
    for count in dict.fromkeys(r["coefficients"] for r in rows):
        cells = [f"{r['ours'] / 1000:,.1f} · {r['ours'] / r['classic']:.1f}" for r in rows if r["coefficients"] == count]
        lines.append(f"| {count} | " + " | ".join(cells) + " |")
    return "\n".join(lines) + "\n"


def put(page, name, text):
    begin, end = f"<!-- {name}: begin -->", f"<!-- {name}: end -->"
    return re.sub(re.escape(begin) + ".*?" + re.escape(end), lambda _: f"{begin}\n{text}{end}", page, flags=re.DOTALL)


def main():
    output = subprocess.run([sys.argv[1]], check=True, capture_output=True, text=True).stdout
    rows = [json.loads(line) for line in output.splitlines()]
    try:
        import numpy
        rows += [numpy_row(numpy, r) for r in rows if "problem" in r]
    except ImportError:
        print("no NumPy here: its column stays empty")
    digits = table([r for r in rows if "library" in r])
    times = table_of_times([r for r in rows if "classic" in r])
    print(digits, times, sep="\n")
    if "--update-docs" in sys.argv:
        page = ROOT / "docs/accuracy.md"
        page.write_text(put(put(page.read_text(), "digits", digits), "times", times))


if __name__ == "__main__":
    main()
