#!/usr/bin/env python3
"""Fails when a page of the site links to a page or a place that does not exist, or loads anything from another host.

usage: links.py SITE
"""
import html.parser
import pathlib
import re
import sys
import urllib.parse


class Page(html.parser.HTMLParser):
    def __init__(self, text):
        super().__init__()
        self.anchors, self.links, self.loads = {""}, [], []
        self.feed(text)

    def handle_starttag(self, tag, attributes):
        values = dict(attributes)
        self.anchors.add(values.get("id"))
        self.anchors.add(values.get("name") if tag == "a" else None)
        if tag == "a" and values.get("href"):
            self.links.append(values["href"])
        elif tag == "link" and values.get("rel") not in ("index", "search", "next", "prev", "canonical"):
            self.loads.append(values.get("href"))
        elif tag in ("img", "script", "iframe", "source", "video", "object", "embed"):
            self.loads.append(values.get("src") or values.get("data"))


def main():
    site = pathlib.Path(sys.argv[1]).resolve()
    pages = {p: Page(p.read_text()) for p in site.rglob("*.html")}
    faults, links = [], 0
    for path, page in pages.items():
        name = path.relative_to(site)
        for target in filter(None, page.loads):
            if re.match(r"([a-z]+:)?//", target):
                faults.append(f"{name} loads {target}")
        for target in page.links + [t for t in page.loads if t]:
            parts = urllib.parse.urlsplit(target)
            if parts.scheme or parts.netloc:
                continue
            links += 1
            file = (path.parent / urllib.parse.unquote(parts.path)).resolve() if parts.path else path
            if not file.exists():
                faults.append(f"{name}: {target} does not exist")
            elif file in pages and urllib.parse.unquote(parts.fragment) not in pages[file].anchors and parts.fragment:
                faults.append(f"{name}: {target} has no such place")
    for path in list(site.rglob("*.css")):
        for target in re.findall(r"url\(\s*['\"]?([^'\")]+)", path.read_text()):
            if re.match(r"([a-z]+:)?//", target):
                faults.append(f"{path.relative_to(site)} loads {target}")
            elif not target.startswith(("data:", "#")):
                links += 1
                if not (path.parent / target.split("?")[0].split("#")[0]).exists():
                    faults.append(f"{path.relative_to(site)}: {target} does not exist")
    if faults:
        sys.exit("\n".join(sorted(set(faults))))
    if links < 500 or len(pages) < 40:
        sys.exit(f"only {links} links in {len(pages)} pages")
    print(f"{links} links in {len(pages)} pages lead somewhere, and nothing comes from another host")


if __name__ == "__main__":
    main()
