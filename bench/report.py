"""The table of results as Markdown and as a page with the pictures."""

import html

from results import TRAFFIC

COLUMNS = ["operation", "size", "Tessarn", "±", "Eigen", "BLAS, LAPACK", "GSL", "other", "plain form",
           "best peer", "ratio", "to reach", "limit", "share", "hash of the results", "remark"]
TEXT_COLUMNS = {"operation", "best peer", "hash of the results", "remark"}


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


def mark(row):
    """Whether the row reaches its ratio: ✓, ✗, or ≈ where the spread of the times hides the answer."""
    ratio = row.ratio()
    if ratio is None:
        return "✗"
    if ratio >= row.reach:
        return "✓"
    hidden = min(0.05, row.ours.spread() + row.best_peer().spread())
    return "≈" if ratio * (1 + hidden) >= row.reach else "✗"


def cells(results, row):
    """The texts of one line, in the order of COLUMNS."""
    best = row.best_peer()
    limit, kind = results.limit(row)
    ratio = row.ratio()
    reach = ""
    if row.reach:
        reach = f"{row.reach:g} {mark(row)}"
        # Who is faster than the rates of the memory has shown that they are no limit; that of the operations is one.
        least = limit if limit and limit < row.ours.median() else results.time_of_operations(row)
        if mark(row) == "✗" and least and best.median() / least < row.reach:
            reach += f", limit {ratio_text(best.median() / least)}"
    name = ""
    if best:
        name = best.name + (" (native)" if best.program() == "native" and best.family in ("Eigen", "other") else "")
    return [
        row.operation, f"{row.size:,}", call_text(row.ours),
        f"{100 * row.ours.spread():.0f} %",
        *(call_text(row.best_peer(f)) for f in ("Eigen", "LAPACK", "GSL", "other")),
        call_text(row.plain), name, ratio_text(ratio), reach,
        nanoseconds(limit) + (" b" if kind == "bytes" else ""),
        f"{100 * limit / row.ours.median():.0f} %" if limit else "",
        f"`{next(iter(row.hashes.values()))}`", row.note,
    ]


def measured_rows(results):
    return [r for r in results.rows.values() if r.ours]


def markdown_table(results):
    lines = ["| " + " | ".join(COLUMNS) + " |",
             "|" + "|".join("---" if c in TEXT_COLUMNS else "--:" for c in COLUMNS) + "|"]
    previous = None
    for row in measured_rows(results):
        line = cells(results, row)
        if line[0] == previous:
            line[0] = ""
        previous = row.operation
        lines.append("| " + " | ".join(line) + " |")
    return "\n".join(lines)


def machine_lines(results):
    """What was measured on what, one line a fact."""
    context = next(iter(results.context.values()))
    lines = [f"{context['processor']}, one core (number {context['core']}), kernels for "
             f"{context['kernels in use']}; {context['date'][:16].replace('T', ' ')}."]
    flags = " and ".join(f"`{c['flags']}`" for c in results.context.values())
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
    return lines


def size_text(size):
    return f"{size >> 20} MiB" if size >= 1 << 20 else f"{size >> 10} KiB"


LEGEND = ("Times in nanoseconds of processor time, the median of the repetitions; ± is half of their range. "
          "Each library stands with its fastest call in the faster of the two programs. The ratio is the time "
          "of the best peer over ours: above 1 we are faster; beside it the ratio to reach, ≈ where it is missed by "
          "less than the spreads of the two times and less than 5 %, and what the limit would give where that is less. "
          "The limit is what the stated arithmetic needs on "
          "this machine, by operations or (b) by bytes, and the share is how much of it is reached. The hash "
          "is that of all bits of our results.")


def markdown(results):
    facts = "\n".join("- " + line for line in machine_lines(results))
    return f"{facts}\n\n{LEGEND}\n\n{markdown_table(results)}\n"


SUMMARY_COLUMNS = ["operation", "size", "Tessarn", "best peer", "its time", "ratio", "to reach", "share",
                   "remark"]


def summary(results):
    """A short table: our time and the best peer's."""
    lines = ["| " + " | ".join(SUMMARY_COLUMNS) + " |",
             "|" + "|".join("---" if c in TEXT_COLUMNS else "--:" for c in SUMMARY_COLUMNS) + "|"]
    previous = None
    for row in measured_rows(results):
        full = dict(zip(COLUMNS, cells(results, row)))
        full["its time"] = call_text(row.best_peer())
        if full["operation"] == previous:
            full["operation"] = ""
        previous = row.operation
        lines.append("| " + " | ".join(full[c] for c in SUMMARY_COLUMNS) + " |")
    return machine_lines(results)[0] + " Times in nanoseconds.\n\n" + "\n".join(lines) + "\n"


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
.reached { color: #1a7a3c; } .missed { color: #b3261e; }
"""


def html_table(results):
    def tag(name, column, text, extra=""):
        kind = "" if column in TEXT_COLUMNS else "number "
        return f'<{name} class="{kind}{extra}">{text}</{name}>'

    head = "".join(tag("th", c, html.escape(c)) for c in COLUMNS)
    lines = [f"<table><thead><tr>{head}</tr></thead><tbody>"]
    previous = None
    for row in measured_rows(results):
        line = []
        for column, text in zip(COLUMNS, cells(results, row)):
            extra = "ours" if column == "Tessarn" else ""
            if column == "to reach":
                extra = "missed" if "✗" in text else "reached"
            if column == "operation" and row.operation == previous:
                text = ""
            line.append(tag("td", column, html.escape(text).replace("`", ""), extra))
        first = "" if row.operation == previous else ' class="first"'
        lines.append(f"<tr{first}>{''.join(line)}</tr>")
        previous = row.operation
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
