"""The tables of results as Markdown and as a page with the pictures."""

import html
import math

from results import SET_NAMES, TRAFFIC

# The rows of the first page: one an area of use, at a size that programs have.
FIRST_PAGE = [("product", 128), ("solve", 16), ("det", 64), ("invert", 4), ("decompose", 16),
              ("least squares, 4 columns", 100), ("calc_match", 1000), ("fit, 4 coefficients", 10000),
              ("surface fit by grade, 10000 points", 3), ("plane fit", 10000)]


class Column:
    """A column: its heading, and the text of a row in it."""

    def __init__(self, heading, text, is_text=False):
        self.heading = heading
        self.text = text
        self.is_text = is_text


def nanoseconds(t):
    """Three digits, with thousands separated; no exponent for what a person may compare by eye."""
    if t is None:
        return ""
    if t < 99.95:
        return f"{t:.3g}" if t >= 9.995 else f"{t:.2f}"
    digits = len(str(int(round(t)))) - 3
    return f"{round(t, -digits):,.0f}"


def ratio_text(r):
    if r is None:
        return ""
    return f"{r:.1f}" if r >= 9.95 else f"{r:.2f}" if r >= 0.095 else f"{r:.2g}"


def call_text(call):
    return nanoseconds(call.median()) if call else ""


def set_name(name):
    return SET_NAMES.get(name, name)


def peer_name(row):
    best = row.best_peer()
    if not best:
        return ""
    return best.name + (" (native)" if best.program() == "native" and best.family in ("Eigen", "other") else "")


def share_text(results, row):
    limit, kind = results.limit(row)
    return f"{100 * limit / row.ours.median():.0f} %" + (" b" if kind == "bytes" else "") if limit else ""


OPERATION = Column("operation", lambda results, row: row.operation, True)
SIZE = Column("size", lambda results, row: f"{row.size:,}")
OURS = Column("Tessarn", lambda results, row: call_text(row.ours))
SPREAD = Column("±", lambda results, row: f"{100 * row.ours.spread():.0f} %")
BEST = Column("best peer", lambda results, row: peer_name(row), True)
ITS_TIME = Column("its time", lambda results, row: call_text(row.best_peer()))
RATIO = Column("ratio", lambda results, row: ratio_text(row.ratio()))
SHARE = Column("share of the limit", share_text)
HASH = Column("hash of the results", lambda results, row: f"`{next(iter(row.hashes.values()))}`", True)
REMARK = Column("remark", lambda results, row: row.note, True)


def set_columns(results):
    """Our time with each instruction set below the best one, and the ratio where the peers were timed for it."""
    def columns(name):
        def ratio(results, row):
            return ratio_text(row.ratio(name)) if row.ours_with(name) else ""
        time = Column(set_name(name), lambda results, row: call_text(row.ours_with(name)))
        return [time, Column("ratio", ratio)] if name in results.peer_sets else [time]
    return [column for name in results.sets()[1:] for column in columns(name)]


def user_columns(results):
    return [OPERATION, SIZE, OURS, BEST, ITS_TIME, RATIO, SHARE, *set_columns(results), HASH, REMARK]


def page_columns(results):
    """All that was measured: those of the users, and the fastest call of each library."""
    def fastest(heading, family):
        return Column(heading, lambda results, row: call_text(row.best_peer(family)))
    return [OPERATION, SIZE, OURS, SPREAD, *set_columns(results), fastest("Eigen", "Eigen"),
            fastest("BLAS, LAPACK", "LAPACK"), fastest("GSL", "GSL"), fastest("other", "other"),
            Column("plain form", lambda results, row: call_text(row.plain)), BEST, RATIO,
            Column("limit", lambda results, row: nanoseconds(results.limit(row)[0])), SHARE, HASH, REMARK]


def measured_rows(results):
    return [r for r in results.rows.values() if r.ours]


def texts(results, columns, rows):
    """The texts line by line; the name of an operation stands in its first line alone."""
    previous = None
    for row in rows:
        line = [c.text(results, row) for c in columns]
        yield row, ["" if c is OPERATION and row.operation == previous else text for c, text in zip(columns, line)]
        previous = row.operation


def markdown_table(results, columns, rows):
    lines = ["| " + " | ".join(c.heading for c in columns) + " |",
             "|" + "|".join("---" if c.is_text else "--:" for c in columns) + "|"]
    lines += ["| " + " | ".join(line) + " |" for _, line in texts(results, columns, rows)]
    return "\n".join(lines)


def geometric_means(results):
    """For each set its name, the geometric mean of the ratios and the number of rows; the rows against a peer whose size
    is an argument repeat others and are left out."""
    for place, name in enumerate(results.sets()):
        if place > 0 and name not in results.peer_sets:
            continue
        ratios = [ratio for row in measured_rows(results) if " any " not in row.operation
                  for ratio in [row.ratio(name if place > 0 else None)] if ratio]
        yield name, math.exp(sum(map(math.log, ratios)) / len(ratios)), len(ratios)


def machine_lines(results):
    """What was measured on what, one line a fact."""
    context = next(iter(results.context.values()))
    lines = [f"{context['processor']}, one core (number {context['core']}), kernels for "
             f"{set_name(context['instruction set'])}; {context['date'][:16].replace('T', ' ')}."]
    flags = " and ".join(dict.fromkeys(f"`{c['flags']}`" for c in results.context.values()))
    lines.append(f"{context['compiler']}; headers and peers of headers with {flags}, the library with "
                 f"`{context['library flags']}`.")
    versions = [f"{key.removeprefix('version ')} {value.removeprefix('OpenBLAS ')}"
                for key, value in context.items() if key.startswith("version ")]
    lines.append("Versions: " + "; ".join(versions) + ".")
    rates = [f"{call} with {size} bits {results.rate(row):.1f} GFLOP/s"
             for (call, size), row in sorted(results.machine.items()) if call not in TRAFFIC]
    copies, reads, moves = (", ".join(f"{size_text(size)} {results.rate(row):.0f} GB/s"
                                      for (call, size), row in sorted(results.machine.items()) if call == kind)
                            for kind in TRAFFIC)
    if rates:
        lines.append("Limits of the machine, measured in the same run: " + ", ".join(rates) +
                     f"; copies (bytes read and written) of {copies}; reads of {reads}; "
                     f"moves in place (bytes read and written) of {moves}.")
    means = list(geometric_means(results))
    lines.append("Geometric mean of the ratios, the rows against any number and any grade apart: "
                 + ", ".join(f"{set_name(name)} {mean:.2f}" for name, mean, _ in means)
                 + f", over {means[0][2]} rows each. Rows that are compiled into the caller count alike for every set.")
    return lines


def size_text(size):
    return f"{size >> 20} MiB" if size >= 1 << 20 else f"{size >> 10} KiB"


LEGEND = (
    "Times in nanoseconds of processor time, the median of the repetitions. Each library stands with its fastest "
    "call, compiled for every processor or (native) for this one; where none has the operation, the plain form does. The ratio is the "
    "time of the best peer over ours: above 1 we are faster. The limit is what the stated arithmetic needs on "
    "this machine, by operations or (b) by bytes, and the share is how much of it is reached. The columns of "
    "other instruction sets are the same program made to use the kernels of a lesser processor. Their ratios are "
    "against the peers on such a processor: headers are compiled for it, and OpenBLAS takes its kernels for Haswell "
    "(AVX2) or Prescott (baseline), from runs of their own. They are empty where everything is compiled into the "
    "caller. The hash is that of all bits of our results: it was the same with "
    "every instruction set and however the caller was compiled, else the run fails.")


def markdown(results):
    facts = "\n".join("- " + line for line in machine_lines(results))
    return f"{facts}\n\n{LEGEND}\n\n{markdown_table(results, user_columns(results), measured_rows(results))}\n"


def summary(results):
    """The ten rows of the first page."""
    context = next(iter(results.context.values()))
    rows = [results.rows[key] for key in FIRST_PAGE if key in results.rows]
    return (f"{context['processor']}, one core, kernels for {set_name(context['instruction set'])}; "
            f"{context['date'][:10]}. Times in nanoseconds.\n\n"
            + markdown_table(results, [OPERATION, SIZE, OURS, BEST, ITS_TIME, RATIO], rows) + "\n")


def missed_targets(results, targets):
    """One line a row whose ratio is below its target by more than the spread of the two times, at most 5 %."""
    lines = []
    for row in measured_rows(results):
        target, ratio = targets.get(row.operation, {}).get(str(row.size)), row.ratio()
        if target is None or ratio is None:
            continue
        hidden = min(0.05, row.ours.spread() + row.best_peer().spread())
        if ratio * (1 + hidden) >= target:
            continue
        line = f"{row.operation} {row.size}: ratio {ratio_text(ratio)}, target {target:g}"
        limit, _ = results.limit(row)
        # Who is faster than the rates of the memory has shown that they are no limit; that of the operations is one.
        least = limit if limit and limit < row.ours.median() else results.time_of_operations(row)
        if least and row.best_peer().median() / least < target:
            line += f", at the limit of the machine {ratio_text(row.best_peer().median() / least)}"
        lines.append(line)
    return lines


STYLE = """
body { font: 15px/1.5 "Helvetica Neue", Helvetica, Arial, sans-serif; color: #1b2430; margin: 2.5em auto;
       max-width: 1500px; padding: 0 1.5em; }
h1 { font-weight: 600; margin-bottom: .2em; } h2 { font-weight: 600; margin-top: 2em; }
code { font-size: 12px; } p, li { max-width: 62em; }
.pictures { display: grid; grid-template-columns: repeat(auto-fill, minmax(440px, 1fr)); gap: 1em; }
.pictures img { width: 100%; border: 1px solid #e3e7ec; border-radius: 4px; }
.table { overflow-x: auto; }
table { border-collapse: collapse; font-size: 13px; font-variant-numeric: tabular-nums; white-space: nowrap; }
th { text-align: left; background: #f3f5f8; position: sticky; top: 0; }
td, th { padding: 3px 10px; border-bottom: 1px solid #e3e7ec; } td.number, th.number { text-align: right; }
tr.first td { border-top: 2px solid #b9c2cd; } td.ours { font-weight: 600; }
"""


def html_table(results):
    columns = page_columns(results)

    def tag(name, column, text):
        kind = ("" if column.is_text else "number ") + ("ours" if column is OURS else "")
        return f'<{name} class="{kind.strip()}">{html.escape(text).replace("`", "")}</{name}>'

    head = "".join(tag("th", c, c.heading) for c in columns)
    lines = [f"<table><thead><tr>{head}</tr></thead><tbody>"]
    for _, line in texts(results, columns, measured_rows(results)):
        first = ' class="first"' if line[0] else ""
        lines.append(f"<tr{first}>" + "".join(tag("td", c, text) for c, text in zip(columns, line)) + "</tr>")
    return "\n".join(lines) + "</tbody></table>"


def page(results, pictures):
    facts = "".join(f"<li>{html.escape(line).replace('`', '')}</li>" for line in machine_lines(results))
    images = "\n".join(f'<a href="{p}"><img src="{p}" alt="{html.escape(title)}"></a>' for title, p in pictures)
    return f"""<!DOCTYPE html>
<html lang="en"><head><meta charset="utf-8"><title>Tessarn: benchmarks</title><style>{STYLE}</style></head>
<body><h1>Tessarn: benchmarks</h1>
<ul>{facts}</ul>
<h2>Time against size</h2>
<div class="pictures">{images}</div>
<h2>All rows</h2>
<p>{html.escape(LEGEND)}</p>
<div class="table">{html_table(results)}</div>
</body></html>
"""
