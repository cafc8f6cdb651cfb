#!/usr/bin/env python3
"""Draws the pictures of the tour and of the benchmarks, each for a light and for a dark page: pictures.py DATA README OUTPUT.

The benchmarks are the rows of the table in README, as the benchmarks' own command wrote them there.
"""
import json
import pathlib
import re
import sys

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plt

THEMES = {
    "light": {"ink": "#24292f", "grid": "#d8dee4", "series": ["#0b63b6", "#c2410c", "#15803d", "#7c3aed", "#57606a"]},
    "dark": {"ink": "#d0d7de", "grid": "#3a4149", "series": ["#6cb6ff", "#ff9b5e", "#6bc46d", "#c49bff", "#9aa4af"]},
}
EQUAL = {"03_bend", "07_align", "09_circle"}  # x and y in one unit
AXES = {"08_flat": ("x in mm", "above the middle plane in µm"), "03_bend": ("x in mm", "y in mm"), "04_robust": ("x", "y"),
        "07_align": ("x in mm", "y in mm"), "05_surface": ("x", "height"), "02_zeros": ("x", "p(x)")}


def draw(name, series, theme, path):
    colours = THEMES[theme]
    figure, axes = plt.subplots(figsize=(7, 4.2))
    figure.patch.set_alpha(0)
    axes.set_facecolor("none")
    labels, markers = {}, iter("osxD^v")
    for one in series:
        known = one["label"] in labels
        colour = labels.setdefault(one["label"], colours["series"][len(labels) % 5])
        x, y = zip(*one["xy"])
        label = None if known else one["label"]
        if one["kind"] == "points":
            axes.plot(x, y, next(markers), color=colour, label=label, markersize=7, markeredgewidth=1.6,
                      zorder=3)
        else:
            axes.plot(x, y, color=colour, label=label, linewidth=1.6)
    if name in EQUAL:
        axes.set_aspect("equal", adjustable="datalim")
    across, up = AXES.get(name, ("x", "y"))
    axes.set_xlabel(across)
    axes.set_ylabel(up)
    axes.grid(color=colours["grid"], linewidth=0.7)
    axes.legend(frameon=False, labelcolor=colours["ink"], loc="lower center", bbox_to_anchor=(0.5, 1), ncol=5)
    axes.tick_params(colors=colours["ink"])
    for item in (axes.xaxis.label, axes.yaxis.label):
        item.set_color(colours["ink"])
    for spine in axes.spines.values():
        spine.set_color(colours["grid"])
    figure.tight_layout()
    figure.savefig(path, metadata={"Date": None, "Creator": None})
    plt.close(figure)


def draw_speed(rows, theme, path):
    colours = THEMES[theme]
    figure, axes = plt.subplots(figsize=(7, 0.42 * len(rows) + 1))
    figure.patch.set_alpha(0)
    axes.set_facecolor("none")
    ratios = [ratio for _, ratio in rows]
    places = range(len(rows), 0, -1)
    axes.barh(places, [ratio - 1 for ratio in ratios], left=1, height=0.62,
              color=[colours["series"][0 if ratio >= 1 else 1] for ratio in ratios])
    for place, ratio in zip(places, ratios):
        axes.text(max(ratio, 1) + 0.05, place, f"{ratio:.2f}", va="center", color=colours["ink"])
    axes.axvline(1, color=colours["ink"], linewidth=1)
    axes.set_yticks(list(places), [name for name, _ in rows])
    axes.set_xlim(0, max(ratios) + 0.4)
    axes.set_xlabel("time of the best peer / time of this library")
    axes.xaxis.label.set_color(colours["ink"])
    axes.tick_params(colors=colours["ink"], length=0)
    for spine in axes.spines.values():
        spine.set_visible(False)
    figure.tight_layout()
    figure.savefig(path, metadata={"Date": None, "Creator": None})
    plt.close(figure)


def main():
    data, readme, output = (pathlib.Path(a) for a in sys.argv[1:4])
    output.mkdir(parents=True, exist_ok=True)
    matplotlib.rcParams.update({"svg.hashsalt": "tour", "font.size": 10, "font.family": "DejaVu Sans"})
    for path in sorted(data.glob("*.json")):
        series = json.loads(path.read_text())
        for theme in THEMES:
            draw(path.stem, series, theme, output / f"{path.stem}-{theme}.svg")
    table = re.search(r"<!-- benchmarks: begin -->(.*)<!-- benchmarks: end -->", readme.read_text(), re.S).group(1)
    rows = [[cell.strip() for cell in line.strip("|").split("|")] for line in table.splitlines() if line.startswith("| ")][1:]
    if len(rows) < 5:
        sys.exit("the table of the benchmarks has no rows")
    for theme in THEMES:
        draw_speed([(f"{row[0]}, {row[1]}", float(row[-1])) for row in rows], theme, output / f"speed-{theme}.svg")


if __name__ == "__main__":
    main()
