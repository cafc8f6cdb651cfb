"""One log-log picture an operation, time against size, drawn by gnuplot."""

import math
import re
import subprocess

from results import SET_NAMES

# A dark blue for ours; peers in colours that stay apart also for the colour-blind (M. Okabe, K. Ito, 2008).
OURS = "#12355b"
PEERS = ["#d55e00", "#009e73", "#cc79a7", "#56b4e9", "#e69f00", "#8c6d31"]
MARKS = [5, 9, 13, 11, 15, 4]
PLAIN = "#9aa3ad"
LIMIT = "#5f6b78"

UNITS = [(1e9, "s"), (1e6, "ms"), (1e3, "µs"), (1, "ns")]


def slug(text):
    return re.sub(r"[^a-z0-9]+", "-", text.lower()).strip("-")


def time_label(exponent):
    value = 10.0 ** exponent
    for unit, name in UNITS:
        if value >= unit:
            return f"{value / unit:g} {name}"
    return f"{value:g} ns"


def size_label(size):
    exponent = round(math.log10(size))
    if size >= 10000 and size == 10 ** exponent:
        return f"10^{{{exponent}}}"
    return str(size)


def escape(text):
    return text.replace("\\", "\\\\").replace('"', '\\"').replace("_", "\\\\_")


def series(results, rows):
    """(title, style, points) for every line of the picture, ours last so that it lies on top."""
    names = []
    for row in rows:
        names += [c.name for c in row.peers() if c.name not in names]
    lines = []

    def points(select):
        return [(r.size, t) for r in rows if (t := select(r)) is not None]

    def median(call):
        return call.median() if call else None

    lines.append(("limit of the machine", f'lc rgb "{LIMIT}" lw 1.5 dt (2,3) pt 0',
                  points(lambda r: results.limit(r)[0])))
    lines.append(("plain form", f'lc rgb "{PLAIN}" lw 2 dt (8,4) pt 7 ps 0.5', points(lambda r: median(r.plain))))
    for k, name in enumerate(names):
        style = f'lc rgb "{PEERS[k % len(PEERS)]}" lw 2 pt {MARKS[k % len(MARKS)]} ps 0.7'
        lines.append((name, style, points(
            lambda r: median(next((c for c in r.peers() if c.name == name), None)))))
    lesser = [name for name in results.sets()[1:] if any(r.ours_with(name) for r in rows)]
    for name, dashes in zip(reversed(lesser), reversed(["6,3", "2,2", "1,3"][:len(lesser)])):
        lines.append((f"Tessarn, {SET_NAMES.get(name, name)}", f'lc rgb "{OURS}" lw 2 dt ({dashes}) pt 6 ps 0.5',
                      points(lambda r, name=name: median(r.ours_with(name)))))
    lines.append(("Tessarn", f'lc rgb "{OURS}" lw 3.5 pt 7 ps 0.8', points(lambda r: median(r.ours))))
    return [line for line in lines if line[2]]


def script(results, operation, rows, path):
    lines = series(results, rows)
    times = [t for _, _, p in lines for _, t in p]
    low, high = math.floor(math.log10(min(times)) - 0.05), math.ceil(math.log10(max(times)) + 0.05)
    sizes = [r.size for r in rows]
    margin = (max(sizes) / min(sizes)) ** 0.06 if len(sizes) > 1 else 2
    ytics = ", ".join(f'"{time_label(e)}" 1e{e}' for e in range(low, high + 1))
    xtics = ", ".join(f'"{size_label(s)}" {s}' for s in sizes)
    text = [
        'set terminal svg size 760,440 font "Helvetica,14" enhanced background "#ffffff" linewidth 1',
        f'set output "{path}"',
        "set encoding utf8",
        "set logscale xy",
        f'set title "{escape(operation)}" left font ",17" textcolor rgb "#1b2430" offset 0,-0.2',
        f"set xrange [{min(sizes) / margin}:{max(sizes) * margin}]",
        f"set yrange [1e{low}:1e{high}]",
        f"set xtics ({xtics}) nomirror scale 0.5 textcolor rgb \"#3c4856\"",
        f"set ytics ({ytics}) nomirror scale 0.5 textcolor rgb \"#3c4856\"",
        'set border 3 lc rgb "#8a94a0"',
        'set grid xtics ytics lt 1 lc rgb "#e6eaef" lw 1',
        'set key outside right center Left reverse spacing 1.35 samplen 2.2 textcolor rgb "#1b2430" invert',
        "set rmargin 30",
    ]
    blocks, plots = [], []
    for k, (title, style, points) in enumerate(lines):
        blocks.append(f"$d{k} << EOD\n" + "\n".join(f"{x} {y}" for x, y in points) + "\nEOD")
        plots.append(f'$d{k} using 1:2 with linespoints {style} title "{escape(title)}"')
    return "\n".join(text + blocks) + "\nplot " + ", \\\n  ".join(plots) + "\n"


def draw(results, directory):
    """Writes one SVG an operation; returns (operation, file name) in the order of the table."""
    directory.mkdir(parents=True, exist_ok=True)
    operations = {}
    for row in results.rows.values():
        if row.ours:
            operations.setdefault(row.operation, []).append(row)
    pictures = []
    for operation, rows in operations.items():
        name = slug(operation) + ".svg"
        rows.sort(key=lambda r: r.size)
        subprocess.run(["gnuplot"], input=script(results, operation, rows, directory / name), text=True, check=True)
        pictures.append((operation, name))
    return pictures
