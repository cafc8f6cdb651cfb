"""Formulas become HTML and MathML while the site is built, so that a page needs a style sheet and no program for them.

One node process renders them all through KaTeX: a formula goes in as a line of JSON and comes back as one. A formula that KaTeX
does not understand fails the build.
"""
import json
import pathlib
import subprocess

SITE = pathlib.Path(__file__).resolve().parent
_renderer = None


def _render(tex, display):
    global _renderer
    if _renderer is None:
        _renderer = subprocess.Popen(["node", str(SITE / "formulas.js")], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
    _renderer.stdin.write(json.dumps({"tex": tex, "display": display}) + "\n")
    _renderer.stdin.flush()
    answer = json.loads(_renderer.stdout.readline())
    if "error" in answer:
        raise ValueError(f"{tex}: {answer['error']}")
    return answer["html"]


def _inline(self, node):
    from docutils import nodes

    self.body.append(f'<span class="math">{_render(node.astext(), False)}</span>')
    raise nodes.SkipNode


def _block(self, node):
    from docutils import nodes

    self.body.append(f'<div class="math" tabindex="0" role="group" aria-label="formula">{_render(node.astext(), True)}</div>')
    raise nodes.SkipNode


def setup(app):
    app.add_html_math_renderer("katex", (_inline, None), (_block, None))
    app.config.html_math_renderer = "katex"
    return {"parallel_read_safe": True, "parallel_write_safe": False}
