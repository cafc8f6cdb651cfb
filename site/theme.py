"""Repairs of the theme as Debian packs it, done on the finished pages.

Debian's package leaves the theme's program in two modules, which the pages load as one plain script, and takes one style sheet
from the address of a Debian web server. Captions of the navigation are headings without a level.
"""
import pathlib
import re

NORMALIZE = pathlib.Path("/usr/share/javascript/normalize.css/normalize.css")


def _finish(app, exception):
    if exception:
        return
    static = pathlib.Path(app.outdir, "_static")
    program, parts = static / "scripts/furo.js", static / "scripts/gumshoe-patched.js"
    text = program.read_text()
    if parts.exists() and text.startswith("import Gumshoe"):
        program.write_text("(function () {\n" + re.sub(r"^export default .*$", "", parts.read_text(), flags=re.M) + "\n" +
                           text.split("\n", 1)[1] + "\n})();\n")
    sheet = static / "styles/furo.css"
    text = sheet.read_text()
    if "/javascript/normalize.css/normalize.css" in text:
        (static / "styles/normalize.css").write_text(NORMALIZE.read_text())
        sheet.write_text(text.replace("/javascript/normalize.css/normalize.css", "normalize.css"))
    for page in pathlib.Path(app.outdir).rglob("*.html"):
        text = page.read_text()
        page.write_text(text.replace('class="caption" role="heading"', 'class="caption" role="heading" aria-level="2"'))


def setup(app):
    app.connect("build-finished", _finish)
    return {"parallel_read_safe": True, "parallel_write_safe": True}
