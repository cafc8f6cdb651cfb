"""Correct digits on NIST's linear data sets, against the exact rational solution of their decimal data."""
import csv
import math
import pathlib
import warnings
from fractions import Fraction

import numpy
import scipy.linalg

import tessarn

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
# The data set, its number of coefficients, and whether the constant is one of them; as tests/analysis/reference_sets.h.
POLYNOMIALS = [("norris", 2, True), ("pontius", 3, True), ("noint1", 2, False), ("noint2", 2, False), ("filip", 11, True),
               ("wampler1", 6, True), ("wampler2", 6, True), ("wampler3", 6, True), ("wampler4", 6, True),
               ("wampler5", 6, True)]  # fmt: skip


def rows_of(name):
    """The decimal numbers of a data set, row by row, without comments and titles."""
    for folder in ("tests/analysis/data", "examples/data"):
        path = ROOT / folder / f"{name}.csv"
        if path.exists():
            rows = []
            for row in csv.reader(line for line in path.read_text().splitlines() if not line.startswith("#")):
                try:
                    rows.append([Fraction(cell.strip()) for cell in row])
                except ValueError:
                    continue  # the titles of the columns
            return rows
    raise FileNotFoundError(name)


def exact_solution(design, y):
    """The least-squares solution in rational numbers, from the normal equations."""
    n = len(design[0])
    table = [
        [sum(row[i] * row[k] for row in design) for k in range(n)] + [sum(row[i] * v for row, v in zip(design, y))]
        for i in range(n)
    ]
    for i in range(n):
        pivot = next(r for r in range(i, n) if table[r][i] != 0)
        table[i], table[pivot] = table[pivot], table[i]
        for r in range(n):
            if r != i and table[r][i] != 0:
                f = table[r][i] / table[i][i]
                table[r] = [a - f * b for a, b in zip(table[r], table[i])]
    return [table[i][n] / table[i][i] for i in range(n)]


def correct_digits(exact, found):
    def of_one(e, v):
        off = abs(Fraction(float(v)) / e - 1) if math.isfinite(v) else Fraction(1)
        return 17.0 if off == 0 else min(17.0, -math.log10(off))

    return max(0.0, min(map(of_one, exact, found)))


def floats(rows):
    return numpy.array([[float(v) for v in row] for row in rows])


def polynomial_row(name, count, constant):
    points = rows_of(name)
    first = 0 if constant else 1
    exact = exact_solution([[x**k for k in range(first, count)] for x, _ in points], [y for _, y in points])
    x, y = floats(points).T
    design = numpy.vander(x, count, increasing=True)[:, first:]
    powers = "all" if constant else "no_constant"
    found = {"Tessarn": tessarn.polyfit(x, y, count - 1, powers=powers).coef[first:]}
    if constant:
        found["numpy.polyfit"] = numpy.polyfit(x, y, count - 1)[::-1]
        found["Polynomial.fit"] = numpy.polynomial.Polynomial.fit(x, y, count - 1).convert().coef
    found["numpy.linalg.lstsq"] = numpy.linalg.lstsq(design, y, rcond=0)[0]
    found["scipy.linalg.lstsq"] = scipy.linalg.lstsq(design, y, cond=0)[0]
    return {"set": name, "digits": {k: correct_digits(exact, v) for k, v in found.items()}}


def longley_row():
    rows = rows_of("longley")
    y = [row[0] for row in rows]
    design = [[Fraction(1)] + row[1:] for row in rows]
    exact = exact_solution(design, y)
    a, b = floats(design), floats([[v] for v in y])[:, 0]
    found = {"Tessarn": tessarn.least_squares(a, b).x, "numpy.linalg.lstsq": numpy.linalg.lstsq(a, b, rcond=0)[0],
             "scipy.linalg.lstsq": scipy.linalg.lstsq(a, b, cond=0)[0]}  # fmt: skip
    return {"set": "longley", "digits": {k: correct_digits(exact, v) for k, v in found.items()}}


def rows():
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")  # a fit may be called poorly conditioned
        return [polynomial_row(*p) for p in POLYNOMIALS] + [longley_row()]


def table(found):
    columns = ["Tessarn", "numpy.polyfit", "Polynomial.fit", "numpy.linalg.lstsq", "scipy.linalg.lstsq"]
    lines = [
        "| set | " + " | ".join(c if c == "Tessarn" else f"`{c}`" for c in columns) + " |",
        "|---" + "|--:" * len(columns) + "|",
    ]
    for row in found:
        cells = [f"{row['digits'][c]:.1f}" if c in row["digits"] else "" for c in columns]
        lines.append(f"| {row['set']} | " + " | ".join(cells) + " |")
    return "\n".join(lines) + "\n"
