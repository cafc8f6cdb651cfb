#!/usr/bin/env python3
"""Times and correct digits of the Python module beside NumPy and SciPy, on one core.

usage: build/python-environment/bin/python bench/python/compare.py [--update-docs]

`make python` makes the environment. With --update-docs the tables of docs/python.md are replaced.
"""
import datetime
import os
import pathlib
import re
import sys

for name in ("OPENBLAS_NUM_THREADS", "OMP_NUM_THREADS", "BLIS_NUM_THREADS"):
    os.environ[name] = "1"  # before NumPy is loaded

import numpy  # noqa: E402
import scipy  # noqa: E402

import digits  # noqa: E402
import tessarn  # noqa: E402
import times  # noqa: E402

PAGE = pathlib.Path(__file__).resolve().parent.parent.parent / "docs" / "python.md"


def machine():
    """One line about what was compared, and where."""
    with open("/proc/cpuinfo") as lines:
        processor = next((line.split(":")[1].strip() for line in lines if line.startswith("model name")), "unknown")
    with open("/proc/self/maps") as lines:
        blas = sorted(set(re.findall(r"[^/\s]+/lib(?:openblas|blis|mkl_rt|blas)[^/\s]*", lines.read())))
    return (
        f"{processor}, one core; tessarn {tessarn.__version__}, NumPy {numpy.__version__}, SciPy {scipy.__version__}, "
        f"BLAS: {', '.join(blas)}; {datetime.date.today()}.\n\n"
    )


def put(page, name, text):
    begin, end = f"<!-- {name}: begin -->", f"<!-- {name}: end -->"
    return re.sub(re.escape(begin) + ".*?" + re.escape(end), lambda _: f"{begin}\n{text}{end}", page, flags=re.DOTALL)


def main():
    correct = digits.table(digits.rows())
    timed = machine() + times.table(times.rows())
    print(correct, timed, sep="\n")
    if "--update-docs" in sys.argv:
        PAGE.write_text(put(put(PAGE.read_text(), "digits", correct), "times", timed))


if __name__ == "__main__":
    main()
