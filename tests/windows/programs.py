#!/usr/bin/env python3
"""tessarn.exe prints, byte for byte, what the program prints on this machine, and draws by the same commands of gnuplot.

usage: programs.py NATIVE DATA FOLDER GNUPLOT GNUPLOT_EXE TESSARN_EXE RUNNER...
"""
import math
import os
import pathlib
import subprocess
import sys

native, data, folder, gnuplot, gnuplot_exe, exe = sys.argv[1:7]
runner = sys.argv[7:]
folder = pathlib.Path(folder)
compared = 0


def run(command, given, path):
    environment = {**os.environ, **path}
    done = subprocess.run(command, input=given, capture_output=True, cwd=folder, env=environment)
    return done.returncode, done.stdout, done.stderr


def both(*arguments, given=b"", code=0, here={}, there={}):
    """The answers of the two programs, which must agree, errors included."""
    global compared
    compared += 1
    expected = run([native, *arguments], given, here)
    found = run([*runner, exe, *arguments], given, there)
    if expected != found or found[0] != code:
        sys.exit(f"{arguments}: expected {code} and\n{expected}\nfound\n{found}")
    return found


def points(name, rows, header=""):
    (folder / name).write_text(header + "".join(",".join(f"{v:.17g}" for v in row) + "\n" for row in rows))
    return name


folder.mkdir(parents=True, exist_ok=True)
helix = [(math.cos(t / 4), math.sin(t / 4), t / 10) for t in range(40)]
turned = [(1 - y, 2 + x, 3 + z) for x, y, z in helix]
plate = [(x, y, 0.01 * math.sin(3 * x + y)) for x in range(12) for y in range(12)]
scan = [(x / 4, x / 20 + (5 if x % 17 == 3 else 0.01 * math.cos(x))) for x in range(120)]
water, norris = f"{data}/water.csv", f"{data}/norris.csv"
a, b = points("helix.csv", helix), points("turned.csv", turned)
plate, scan = points("plate.csv", plate, "x (mm),y (mm),z (µm)\n"), points("scan.csv", scan)
(folder / "bad.csv").write_text("1,2\n2,3x\n")

commands = {
    "curve": [water, "-m", "5"],
    "align": [a, b],
    "flatness": [plate],
    "outliers": [scan, "--deviation", "2"],
}
for command, arguments in commands.items():
    both(command, *arguments)
    both(command, *arguments, "--json")
    both(command, "--help")
both("curve", norris, "-m", "2", "--certified", f"{data}/norris_certified.csv")
both("curve", "-", "-m", "2", given=b"\xef\xbb\xbft;h\r\n0;1\r\n1;3,5\r\n2;7\r\n3;13\r\n")
both("--help")
both("--version")
both("selfcheck", "--line")
both("curve", "missing.csv", code=2)
both("curve", "bad.csv", code=2)
both("curve", water, "--no-such-option", code=2)
both("curve", water, "--plot", "p.gif", code=2)

given = run([*runner, exe, "curve", water, "--plot", "p.svg"], b"", {})
if given[0] != 1 or b"tessarn curve: gnuplot failed or is not installed, there is no picture p.svg" not in given[2] or list(folder.glob("p.*")):
    sys.exit(f"without gnuplot: {given}")
with_gnuplot = {"here": {"PATH": os.path.dirname(gnuplot)}, "there": {"WINEPATH": os.path.dirname(gnuplot_exe)}}
for command, arguments in commands.items():
    for kind in ("svg",) if command != "curve" else ("svg", "png", "pdf"):
        pictures = []
        for program, path in (([native], with_gnuplot["here"]), ([*runner, exe], with_gnuplot["there"])):
            done = run([*program, command, *arguments, "--plot", f"p.{kind}"], b"", path)
            if done[0] != 0:
                sys.exit(f"{command} {kind}: {done}")
            pictures.append((folder / f"p.{kind}").read_bytes())
            (folder / f"p.{kind}").unlink()
        if pictures[0] != pictures[1] or len(pictures[0]) < 500:
            sys.exit(f"{command}: the commands for gnuplot differ")
        compared += 1
print(f"{compared} runs agree byte for byte")
