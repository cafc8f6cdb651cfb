#!/usr/bin/env python3
"""Puts the rows of tools/certify.sh into the table of a page: certificate.py PAGE ROWS

A line of ROWS is NAME|HOW|OPERATIONS|DIFFERING|DATE. A row of the page that ROWS does not have keeps its place and its date;
a new one goes to the end.
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


def main():
    page, rows = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    text = page.read_text()
    before, rest = text.split(BEGIN, 1)
    old, after = rest.split(END, 1)
    table = {}
    for line in old.splitlines():
        if line.startswith("|") and len(cells(line)) == 5 and cells(line)[2].isdigit():
            table[cells(line)[0]] = cells(line)
    for line in rows.read_text().splitlines():
        row = line.split("|")
        table[row[0]] = row
    body = "".join("| %s |\n" % " | ".join(row) for row in table.values())
    title = "Last run on %s, %s, %d cores.\n\n" % (datetime.date.today().isoformat(), processor(), os.cpu_count())
    page.write_text(before + BEGIN + title + HEAD + body + END + after)


if __name__ == "__main__":
    main()
