"""Repairs of the theme as Debian packs it, done on the finished pages.

Debian's package leaves the theme's program in two modules, which the pages load as one plain script, and takes one style sheet
from the address of a Debian web server. Its style sheet has lost the rule for readers whose system is set to dark. Captions of the navigation are headings without a level. The search leaves the arguments of functions
out, whose names would come before the pages.
"""
import pathlib
import re

from sphinx.domains.cpp import CPPDomain

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
    dark = re.search(r'body\[data-theme="dark"\] \{([^}]*)\}', text).group(1)
    if "prefers-color-scheme" not in text:
        chosen = 'body:not([data-theme="light"])'
        with sheet.open("a") as out:
            out.write(f"""
@media screen and (prefers-color-scheme: dark) {{
  {chosen} {{{dark}}}
  html {chosen} .only-light {{ display: none !important; }}
  html {chosen} .only-dark {{ display: block !important; }}
}}
""")
    for page in pathlib.Path(app.outdir).rglob("*.html"):
        text = page.read_text()
        page.write_text(text.replace('class="caption" role="heading"', 'class="caption" role="heading" aria-level="2"'))


class _Domain(CPPDomain):
    def get_objects(self):
        return (found for found in super().get_objects() if found[2] not in ("functionParam", "templateParam"))


def setup(app):
    app.add_domain(_Domain, override=True)
    app.connect("build-finished", _finish)
    return {"parallel_read_safe": True, "parallel_write_safe": True}
