#!/usr/bin/env python3
"""Puts the rows of tools/certify.sh into the table of a page: certificate.py PAGE ROWS

A line of ROWS is NAME|HOW|OPERATIONS|DIFFERING|DATE. The table takes the order of ROWS; a row of the page that ROWS does not
have keeps its date and stands behind the one that it stood behind.
"""
import datetime
import os
import pathlib
import re
import sys

BEGIN, END = "<!-- begin certificate -->\n", "<!-- end certificate -->"
HEAD = "| build | ran | operations | with other bits | on |\n|---|---|--:|--:|---|\n"


def processor():
    """The name of the processor, without its clock."""
    try:
        for line in open("/proc/cpuinfo"):
            if line.startswith("model name"):
                return re.sub(r"\s*(\(R\)|\(TM\)|CPU|@.*)", "", line.split(":", 1)[1]).strip()
    except OSError:
        pass
    return "an unknown processor"


def cells(line):
    return [cell.strip() for cell in line.strip().strip("|").split("|")]


def merged(old, new):
    table = list(new)
    behind = 0
    for row in old:
        names = [each[0] for each in table]
        if row[0] in names:
            behind = names.index(row[0]) + 1
        else:
            table.insert(behind, row)
            behind += 1
    return table


def main():
    page, rows = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    text = page.read_text()
    before, rest = text.split(BEGIN, 1)
    old, after = rest.split(END, 1)
    table = merged([cells(line) for line in old.splitlines() if re.match(r"\|.*\| \d+ \| \d+ \|", line)],
                   [line.split("|") for line in rows.read_text().splitlines()])
    body = "".join("| %s |\n" % " | ".join(row) for row in table)
    title = "Last run on %s, %s, %d cores.\n\n" % (datetime.date.today().isoformat(), processor(), os.cpu_count())
    page.write_text(before + BEGIN + title + HEAD + body + END + after)


if __name__ == "__main__":
    main()
