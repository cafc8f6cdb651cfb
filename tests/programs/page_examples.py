#!/usr/bin/env python3
"""docs/program.md shows what the program prints: the commands of its console blocks are run, and the lines below compared.

A line of three points stands for any lines, none included. usage: page_examples.py TESSARN SOURCES FOLDER
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys

tessarn, sources, folder = map(pathlib.Path, sys.argv[1:])
shutil.rmtree(folder, ignore_errors=True)
(folder / "bin").mkdir(parents=True)
(folder / "bin/tessarn").symlink_to(tessarn)
(folder / "examples").symlink_to(sources / "examples")
environment = {**os.environ, "PATH": f"{folder}/bin:{os.environ['PATH']}"}

blocks = re.findall(r"^```console\n\$ (.*)\n([^`]*)^```$", (sources / "docs/program.md").read_text(), re.M)
for command, shown in blocks:
    done = subprocess.run(["bash", "-c", command], cwd=folder, env=environment, capture_output=True, text=True)
    printed = done.stdout + done.stderr
    pattern = "".join("(.*\n)*?" if line == "..." else re.escape(line) + "\n" for line in shown.splitlines())
    if not re.fullmatch(pattern, printed):
        sys.exit(f"{command} prints\n{printed}and not\n{shown}")
if len(blocks) < 3 or not (folder / "water.svg").exists():
    sys.exit("the page has lost its examples")
print(f"{len(blocks)} commands print what the page shows")
