# Sphinx reads the pages that site/pages.py has put together in build/docs/source.
import pathlib
import re
import sys

SITE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(SITE))

version_lines = (SITE.parent / "include/tessarn/version.h").read_text()
project = "Tessarn"
release = version = ".".join(re.findall(r"#define TESSARN_VERSION_\w+ (\d+)", version_lines))

extensions = ["myst_parser", "sphinx_copybutton", "formulas", "theme"]
myst_enable_extensions = ["dollarmath", "colon_fence"]
myst_heading_anchors = 3
source_suffix = {".md": "markdown", ".rst": "restructuredtext"}
root_doc = "index"
nitpicky = False
primary_domain = "cpp"
highlight_language = "text"
cpp_id_attributes = ["TESSARN_API"]

html_theme = "furo"
html_title = f"Tessarn {release}"
html_static_path = ["static"]
html_css_files = ["katex/katex.min.css", "site.css"]
html_js_files = ["site.js"]
html_copy_source = False
html_use_index = False
html_show_sourcelink = False
html_show_sphinx = False
html_show_copyright = False
html_theme_options = {"navigation_with_keys": False}
pygments_style = "colours.Light"
pygments_dark_style = "colours.Dark"
html_favicon = "static/favicon.svg"
copybutton_prompt_text = "$ "
html_extra_path = ["../build/docs/source/_extra"]
