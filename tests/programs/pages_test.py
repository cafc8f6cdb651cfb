#!/usr/bin/env python3
"""Every option that --help shows is in the manual page and in the completion of each shell, and no other one.

usage: pages_test.py TESSARN PAGES SELFCHECK SELFCHECK_PAGE
"""
import pathlib
import re
import shutil
import subprocess
import sys

tessarn, pages = sys.argv[1], pathlib.Path(sys.argv[2])
selfcheck, selfcheck_page = sys.argv[3], pathlib.Path(sys.argv[4])
commands = ["curve", "align", "flatness", "outliers", "selfcheck"]
option = re.compile(r"(?<![\w-])(--?[a-z][\w-]*)")


def of_help(arguments):
    text = subprocess.run([tessarn, *arguments, "--help"], capture_output=True, text=True, check=True).stdout
    found = set()
    for line in text.splitlines():
        if re.match(r"  -", line):
            found |= set(option.findall(line.split(" ")[2]))
    return found


def of_manual(name):
    text = (pages / f"{name}.1").read_text().replace("\\-", "-")
    body = text[text.index(".SH OPTIONS"):text.index(".SH EXIT STATUS")]
    heads = [line for line in body.splitlines() if line.startswith("\\fB-")]
    return {o for line in heads for o in re.findall(r"\\fB(-[\w-]+)\\fR", line)}


def of_bash(command):
    script = f'source {pages}/tessarn.bash; COMP_WORDS=(tessarn {command} -); COMP_CWORD=$((${{#COMP_WORDS[@]}} - 1)); ' \
             '_tessarn; printf "%s\\n" "${COMPREPLY[@]}"'
    out = subprocess.run(["bash", "-c", script], capture_output=True, text=True, check=True).stdout
    return set(out.split())


def of_zsh(command):
    text = (pages / "_tessarn").read_text()
    start = text.index(f"    {command})\n") if command else text.index("_describe")
    end = text.index(";;", start) if command else text.index("\nelse", start)
    return set(re.findall(r"^ +'(-[\w-]+)\[", text[start:end], re.M))


def of_fish(command):
    wanted = f"'__fish_seen_subcommand_from {command}'" if command else "__fish_use_subcommand"
    found = set()
    for line in (pages / "tessarn.fish").read_text().splitlines():
        if f"-n {wanted} " in line:
            head = line.split(" -d ")[0]
            found |= {"-" + name for name in re.findall(r" -s (\S+)", head)}
            found |= {"--" + name for name in re.findall(r" -l (\S+)", head)}
    return found


wrong = []
for command in ["", *commands]:
    expected = of_help([command] if command else [])
    if len(expected) < 3:
        sys.exit(f"only {sorted(expected)} in the help of {command}")
    page = f"tessarn-{command}" if command else "tessarn"
    for where, found in {"manual": of_manual(page), "bash": of_bash(command), "zsh": of_zsh(command),
                         "fish": of_fish(command)}.items():
        if found != expected:
            wrong.append(f"{page}, {where}: missing {sorted(expected - found)}, unknown {sorted(found - expected)}")
    if shutil.which("groff"):
        groff = ["groff", "-man", "-Tutf8", "-ww", "-z", str(pages / f"{page}.1")]
        said = subprocess.run(groff, capture_output=True, text=True)
        if said.stderr:
            wrong.append(f"{page}: groff says {said.stderr}")
bash = subprocess.run(["bash", "-c", f'source {pages}/tessarn.bash; COMP_WORDS=(tessarn fl); COMP_CWORD=1; _tessarn; '
                       'echo "${COMPREPLY[@]}"'], capture_output=True, text=True, check=True).stdout.strip()
usage = subprocess.run([selfcheck, "--wrong"], capture_output=True, text=True).stdout
told = set(re.findall(r"^\\fB(--\w+)\\fR", selfcheck_page.read_text().replace("\\-", "-"), re.M))
if told != set(option.findall(usage)) or len(told) != 2:
    wrong.append(f"tessarn-selfcheck: its page has {sorted(told)}, it takes {usage}")
if bash != "flatness":
    wrong.append(f"bash completes fl by {bash!r}")
if wrong:
    sys.exit("\n".join(wrong))
print("the options of six helps are those of the manual pages and of three completions")
