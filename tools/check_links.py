#!/usr/bin/env python3
"""Fails when a link of a Markdown page points to a file or a heading that does not exist.

usage: check_links.py [SOURCE_ROOT]
"""
import pathlib
import re
import subprocess
import sys

root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ".").resolve()


def anchors(page):
    headings = re.findall(r"^#+ (.*)$", page.read_text(), re.M)
    return {re.sub(r"[^\w\- ]", "", h.lower()).replace(" ", "-") for h in headings}


pages = [root / p for p in subprocess.run(["git", "-C", str(root), "ls-files", "*.md"], capture_output=True,
                                          text=True, check=True).stdout.split()
         if not p.startswith("site/")]  # the pages of the site are checked where they are put together
broken, links = [], 0
for page in pages:
    for target in re.findall(r"\]\(([^)\s]+)\)", page.read_text()):
        if re.match(r"[a-z]+:", target):
            continue
        links += 1
        file, _, anchor = target.partition("#")
        found = (page.parent / file).resolve() if file else page
        if not found.exists() or anchor and anchor not in anchors(found):
            broken.append(f"{page.relative_to(root)}: {target}")
if broken:
    sys.exit("broken links:\n" + "\n".join(broken))
if links < 10:
    sys.exit(f"only {links} links found")
print(f"{links} links in {len(pages)} pages lead somewhere")
