#!/usr/bin/env python3
"""Puts the pages of the site together for Sphinx.

usage: pages.py XML TOUR DEMO OUTPUT
XML is what Doxygen wrote, TOUR what the programs of the tour printed and drew, DEMO what `make demo` left. The pages of docs/ and
README.md stay as they are; links to files that are no pages become links to the page that shows them, or plain names.
"""
import html
import pathlib
import re
import shutil
import subprocess
import sys

import reference

SITE = pathlib.Path(__file__).resolve().parent
ROOT = SITE.parent
PLAIN_PAGES = ["README.md", "CONTRIBUTING.md", "CHANGELOG.md"]
GALLERY = [  # what make demo draws: its caption, and the program that drew it
    ("water.svg", "Density of water: eight handbook values, the fit, its residuals and the maximum", "tessarn curve"),
    ("profile.png", "A profile with the circle of curvature at its sharpest bend", "tessarn curve"),
    ("sensor.png", "The characteristic of a sensor, fitted by odd powers", "tessarn curve"),
    ("align.png", "The motion between two sets of points in space", "tessarn align"),
    ("flatness.png", "The flatness of a plate", "tessarn flatness"),
    ("outliers.png", "A scan before and after its wild readings are removed", "tessarn outliers"),
    ("norris.png", "Norris: a line through reference data with certified coefficients", "tessarn curve"),
    ("pontius.png", "Pontius: a parabola through reference data", "tessarn curve"),
    ("wampler1.png", "Wampler 1: a polynomial of degree five", "tessarn curve"),
    ("wampler2.png", "Wampler 2: a polynomial of degree five with small coefficients", "tessarn curve"),
]


OPTIONAL = """## Optional parts

Headers that the library itself does not need.

```{{toctree}}
:maxdepth: 1

{}
```"""


def part(command, name):
    """A piece of a page, between the lines that begin with the given texts."""
    lines = (ROOT / name).read_text().splitlines()
    wanted = re.search(r'(from|after) "([^"]*)" before "([^"]*)"', command)
    kind, first, last = wanted.groups()
    start = next((i for i, line in enumerate(lines) if line.startswith(first)), None)
    if start is None:
        sys.exit(f"{name} has no line that begins with {first!r}")
    start += kind == "after"
    stop = next((i for i in range(start + 1, len(lines)) if lines[i].startswith(last)), None)
    if stop is None:
        sys.exit(f"{name} has no line that begins with {last!r}")
    return "\n".join(lines[start:stop]).strip()


def image(source, alternative, kind):
    return f"```{{image}} {source}\n:alt: {alternative}\n:class: {kind}\n```"


def tour_section(name, caption, tour):
    source = (ROOT / f"examples/tour/{name}.cpp").read_text()
    out = f"```cpp\n{source.strip()}\n```\n\nIt prints\n\n```text\n{(tour / f'{name}.txt').read_text().strip()}\n```\n"
    if caption:
        out += "".join("\n" + image(f"tour/{name}-{theme}.svg", caption, f"only-{theme}") + "\n" for theme in ("light", "dark"))
    return out


def figure(source, alternative, caption, both=False):
    """A picture of the gallery as HTML; one for each theme where there are two."""
    if both:
        pictures = "".join(f'<img class="only-{theme}" src="{source}-{theme}.svg" alt="{html.escape(alternative)}">'
                           for theme in ("light", "dark"))
    else:
        pictures = f'<img src="{source}" alt="{html.escape(alternative)}">'
    return f"<figure>{pictures}<figcaption>{caption}</figcaption></figure>"


def gallery(demo, captions, output):
    (output / "_extra/gallery").mkdir(parents=True, exist_ok=True)
    (output / "_extra/tour").mkdir(parents=True, exist_ok=True)
    figures = []
    for name, caption, program in GALLERY:
        shutil.copy(demo / name, output / "_extra/gallery" / name)
        figures.append(figure(f"gallery/{name}", caption, f"{html.escape(caption)}. <code>{program}</code>"))
    for name, caption in captions.items():
        figures.append(figure(f"tour/{name}", caption, f'{html.escape(caption)}. <a href="tour.html">Tour</a>', both=True))
    return '```{raw} html\n<div class="gallery">\n' + "\n".join(figures) + "\n</div>\n```"


def with_links(text, page, pages, header_pages):
    """Links of a page of the repository as they hold in the site."""

    def replaced(match):
        label, target = match.groups()
        if re.match(r"[a-z]+:|#", target):
            return match.group(0)
        path, _, anchor = target.partition("#")
        full = (pathlib.PurePosixPath(page).parent / path).as_posix()
        parts = []
        for step in full.split("/"):
            if step == ".." and parts:
                parts.pop()
            elif step != ".":
                parts.append(step)
        full = "/".join(parts)
        up = "../" * page.count("/")
        header = re.fullmatch(r"include/tessarn/(\w+)\.h", full)
        if label == target and full in pages:  # the name of a file says less on the site than the heading of its page
            label = re.search(r"^# (.*)$", (ROOT / full).read_text(), re.M).group(1)
        if full.startswith("docs/pictures/") or full in pages:
            return f"[{label}]({up}{full}{'#' + anchor if anchor else ''})"
        if header and header.group(1) in header_pages:
            return f"[{label}]({up}reference/{header_pages[header.group(1)]}.rst)"
        if full in ("README.md", "examples", "examples/"):
            return f"[{label}]({up}{'index' if full == 'README.md' else 'gallery'}.md)"
        if not (ROOT / full).exists():
            sys.exit(f"{page}: {target} does not exist")
        return label if "`" in label else f"`{label}`"

    parts = re.split(r"(^```.*?^```$|`[^`\n]+`(?!\]))", text, flags=re.M | re.S)
    return "".join(p if i % 2 else re.sub(r"\[([^\]\[]*)\]\(([^)\s]+)\)", replaced, p) for i, p in enumerate(parts))


def main():
    xml, tour, demo, output = (pathlib.Path(a) for a in sys.argv[1:5])
    shutil.rmtree(output, ignore_errors=True)
    output.mkdir(parents=True)
    optional = reference.write(xml, SITE / "classes", output / "reference")
    header_pages = {h: page for pages in (reference.CLASSIC, reference.ANALYSIS) for page, (_, hs) in pages.items() for h in hs}
    captions = dict(re.findall(r'<!-- tour (\w+) "([^"]*)" -->', (SITE / "pages/tour.md").read_text()))
    subprocess.run(["/usr/bin/python3", str(SITE / "pictures.py"), str(tour), str(ROOT / "README.md"), str(output / "tour")], check=True)

    sources = {str(p.relative_to(SITE / "pages")): p for p in (SITE / "pages").rglob("*.md")}
    documents = {f"docs/{p.name}": p for p in (ROOT / "docs").glob("*.md")}
    documents.update({name: ROOT / name for name in PLAIN_PAGES if name != "README.md"})
    pages = set(sources) | set(documents)
    for name, path in {**documents, **sources}.items():
        text = path.read_text()
        if name in documents:
            text = with_links(text, name, pages, header_pages)
        if name == "reference/index.md":
            text = text.replace("<!-- analysis -->", "\n".join(reference.ANALYSIS)).replace("<!-- classic -->", "\n".join(reference.CLASSIC))
            text = text.replace("<!-- optional -->", OPTIONAL.format("\n".join(optional)) if optional else "")
        if name == "index.md":
            unnamed = sorted(d[:-3] for d in documents if d.startswith("docs/") and f"\n{d[:-3]}\n" not in text)
            text = text.replace("<!-- other pages -->", "\n".join(unnamed))
        text = re.sub(r"<!-- part (\S+) (.*?) -->",
                      lambda m: with_links(part(m.group(2), m.group(1)), m.group(1), pages, header_pages), text)
        text = re.sub(r'<!-- tour (\w+)(?: "([^"]*)")? -->', lambda m: tour_section(m.group(1), m.group(2), tour), text)
        if "<!-- speed -->" in text:
            machine = re.search(r"<!-- benchmarks: begin -->\n(.*)", (ROOT / "README.md").read_text()).group(1).replace(" Times in nanoseconds.", "")
            text = text.replace("<!-- speed -->", "\n\n".join(image(f"tour/speed-{theme}.svg", "Bars of ten operations, with the time of the "
                                "best peer divided by ours", f"only-{theme}") for theme in ("light", "dark")) + f"\n\n{machine}")
        text = re.sub(r"<!-- file (\S+) -->", lambda m: f"```{{raw}} html\n{(ROOT / m.group(1)).read_text()}```", text)
        if "<!-- gallery -->" in text:
            text = text.replace("<!-- gallery -->", gallery(demo, captions, output))
        to = output / name
        to.parent.mkdir(parents=True, exist_ok=True)
        to.write_text(text)
    shutil.copytree(ROOT / "docs/pictures", output / "docs/pictures")
    for picture in (output / "tour").glob("*.svg"):
        shutil.copy(picture, output / "_extra/tour")


if __name__ == "__main__":
    main()
