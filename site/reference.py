"""Writes the pages of the reference from what Doxygen read in the public headers.

A member without a comment of its own shares the one of the member before it, as in the headers, so that no box is empty. The
overloads for constants and temporaries repeat the members before them and are summed up in their one sentence. A class page
opens with what the file of its name in site/classes says: a picture, a formula.
"""
import re
import sys
import xml.etree.ElementTree as ElementTree

import drawings

# Page: its heading, and the headers whose classes and functions it shows.
CLASSIC = {
    "cplx": ("cplx: a complex number", ["cplx"]),
    "vector": ("vector: a point of the plane", ["vector"]),
    "vector3d": ("vector3d: a point of space", ["vector3d"]),
    "polarvector3d": ("polarvector3d: a point in polar coordinates", ["polarvector3d"]),
    "vectormat": ("vectormat: a list of points", ["list"]),
    "mat": ("mat: matrices", ["mat"]),
    "sqmat_real": ("sqmat<long double>: a square matrix of reals", ["sqmat_real"]),
    "sqmat_complex": ("sqmat<cplx>: a square matrix of complex numbers", ["sqmat_complex", "sqmat"]),
    "binom": ("binom: a polynomial in one variable", ["binom", "poly"]),
    "hyperbinom": ("hyperbinom: a polynomial in two variables", ["hyperbinom"]),
    "geometry": ("line3d and plane: lines and planes in space", ["geometry"]),
    "io": ("Printing", ["io"]),
}
ANALYSIS = {
    "fit": ("fit.h: fits of curves and surfaces", ["fit"]),
    "curve": ("curve.h: zeros, extremes, inflections, bends", ["curve"]),
    "solve": ("solve.h: linear systems", ["solve"]),
    "align": ("align.h: motions between point sets", ["align"]),
    "flat": ("flat.h: flatness", ["flat"]),
    "shapes": ("shapes.h: lines, circles, spheres, cylinders", ["shapes"]),
    "status": ("status.h: whether a result holds", ["status"]),
    "views": ("views.h: arguments without copies", ["views"]),
    "span": ("span.h: views of rows and columns", ["span"]),
    "selfcheck": ("selfcheck.h: is this the same library?", ["selfcheck"]),
    "angles": ("angles.h: correctly rounded angles", ["angles"]),
    "scalar": ("scalar.h: the numbers", ["scalar"]),
}
OPTIONAL = {
    "files": "files.h: tables of points and matrices in files",
    "eigen": "eigen.h: maps to and from Eigen",
    "std": "std.h: ranges, and std::complex",
}
REPEATED = "For constants and temporaries"
LABELS = "Special results|Failure|Throws|Accuracy|Method|Source|Cost|Memory|Statuses(?: [a-z ]+)?"


def escape(text):
    return re.sub(r"([\\*`_|])", r"\\\1", text)


def plain(node):
    return re.sub(r"\s+", " ", "".join(node.itertext())).strip() if node is not None else ""


def inline(node):
    """The text of a paragraph as reStructuredText, with its nested blocks taken out and returned beside it."""
    parts, blocks = [escape(node.text or "")], []
    for child in node:
        if child.tag in ("computeroutput", "ref"):
            parts.append(f"\0``{plain(child)}``\0" if plain(child) else "")
        elif child.tag in ("emphasis", "bold"):
            mark = "*" if child.tag == "emphasis" else "**"
            parts.append(f"\0{mark}{escape(plain(child))}{mark}\0")
        elif child.tag in ("programlisting", "verbatim", "simplesect", "parameterlist", "itemizedlist"):
            blocks.append(child)
        elif child.tag in ("sp", "linebreak", "nonbreakablespace"):
            parts.append(" ")
        else:
            parts.append(escape(plain(child)))
        parts.append(escape(child.tail or ""))
    text = re.sub(r"\s+", " ", "".join(parts)).strip()
    text = re.sub(r"(^|(?<=\s))\0|\0($|(?=\s))", "", text)  # markup needs a mark where a letter stands beside it
    return text.replace("\0", "\\ "), blocks


def listing(node):
    if node.tag == "verbatim":
        return (node.text or "").strip("\n").splitlines()
    lines = []
    for line in node.iter("codeline"):
        for space in line.iter("sp"):
            space.text = " "
        lines.append("".join(line.itertext()).rstrip())
    return lines


def labelled(text):
    """A paragraph in which the headers begin lines with 'Cost:' and the like, cut into a field for each."""
    pieces = re.split(rf"(?:^|(?<=[.:)])\s)({LABELS}): ", text)
    out = [pieces[0]] if pieces[0] else []
    out += [f":{label}: {body}" for label, body in zip(pieces[1::2], pieces[2::2])]
    return out


def description(node):
    """The blocks of a comment: paragraphs, code, lists."""
    out = []
    for child in node if node is not None else []:
        if child.tag == "para":
            text, blocks = inline(child)
            out += labelled(text) if text else []
            for block in blocks:
                out += render_block(block)
        else:
            out.append(escape(plain(child)))
    return out


def render_block(block):
    if block.tag in ("programlisting", "verbatim"):
        language = "text" if block.tag == "verbatim" else "cpp"
        return [f".. code-block:: {language}\n\n" + "\n".join("   " + line for line in listing(block))]
    if block.tag == "itemizedlist":
        return ["\n".join("* " + " ".join(description(item)) for item in block.iter("listitem"))]
    if block.tag == "parameterlist":
        return [f":param {plain(item.find('parameternamelist'))}: " + " ".join(description(item.find("parameterdescription")))
                for item in block.iter("parameteritem")]
    kind = {"return": "Result", "see": "See", "note": "Note"}.get(block.get("kind"), block.get("kind"))
    return [f":{kind}: " + " ".join(description(block))]


def introduction(text):
    """Its lines `.. drawing:: NAME CAPTION` become drawings."""
    return re.sub(r"^\.\. drawing:: (\w+) (.*)$", lambda m: ".. raw:: html\n\n   " + drawings.html(m.group(1), m.group(2)), text,
                  flags=re.M)


def comment(member):
    return description(member.find("briefdescription")) + description(member.find("detaileddescription"))


def indent(text, by):
    return "\n".join(" " * by + line if line else line for line in text.splitlines())


def join(blocks):
    """Blocks below each other; neighbouring fields make one list of fields."""
    out = ""
    for i, block in enumerate(blocks):
        close = i and block.startswith(":") and blocks[i - 1].startswith(":")
        out += ("\n" if close else "\n\n" if i else "") + block
    return out


def signature(member, scope):
    """The declaration as a reader writes it: without the class, and without the conditions of templates."""
    kinds = [plain(p.find("type")) for p in member.findall("templateparamlist/param") if p.find("defval") is None]
    names = [plain(p.find("declname")) for p in member.findall("templateparamlist/param") if p.find("defval") is None]
    template = [f"{k} {n}".strip() for k, n in zip(kinds, names)]
    text = f"template <{', '.join(template)}> " if template else ""
    if member.get("explicit") == "yes":
        text += "explicit "
    if member.get("static") == "yes" and scope:
        text += "static "
    if member.get("virt") == "virtual":
        text += "virtual "
    kind = re.sub(r"\b(constexpr|static|virtual|explicit|TESSARN_API) ?|\[\[nodiscard\]\] ?", "", plain(member.find("type")))
    name = member.findtext("name")
    arguments = re.sub(r"\s+", " ", member.findtext("argsstring") or "")
    arguments = re.sub(r"=(default|delete)$", "", arguments).strip()
    text += f"{kind} {name}{arguments}"
    text = re.sub(r" {2,}", " ", text)
    text = re.sub(r"(?<=[&*]) (?=[\w,)])", "", text.replace("< ", "<").replace(" >", ">"))
    return re.sub(r"\s*([&*]+)\s*(?=[\w,)])", r"\1 ", text).replace(" )", ")").replace(" ,", ",").strip()


class Reference:
    def __init__(self, xml):
        self.xml = xml
        self.compounds = {}
        for path in xml.glob("*.xml"):
            if path.name.startswith(("class", "struct", "namespace")):
                definition = ElementTree.parse(path).getroot().find("compounddef")
                self.compounds[definition.findtext("compoundname")] = definition
        self.seen = set()

    def functions(self, members, scope):
        """Members in groups: one with a comment, and those without that follow it."""
        groups = []
        for member in members:
            said = comment(member)
            if said or not groups:
                groups.append(([member], said))
            else:
                groups[-1][0].append(member)
        out = []
        for group, said in groups:
            lines = []
            for member in group:
                text = signature(member, scope)
                if (scope, text) not in self.seen:
                    self.seen.add((scope, text))
                    lines.append(text)
            if lines:
                head = (".. cpp:function:: " + ("\n" + " " * 18).join(lines))
                out.append(head + ("\n\n" + indent(join(said), 3) if said else ""))
        return out

    @staticmethod
    def table(head, rows):
        if not rows:
            return []
        lines = [".. list-table::", "   :header-rows: 1", "   :class: fields", ""]
        for row in [head] + rows:
            lines += [("   * - " if i == 0 else "     - ") + (indent(cell, 7).strip() or " ") for i, cell in enumerate(row)]
        return ["\n".join(lines)]

    def fields(self, members):
        """Fields as a table; those declared on one line share the comment at its end."""
        rows, waiting = [], []
        for member in members:
            waiting.append(member)
            said = comment(member)
            following = members[members.index(member) + 1:][:1]
            line = member.find("location").get("line")
            if not said and following and following[0].find("location").get("line") == line:
                continue
            names = ", ".join(f"``{m.findtext('name')}``" for m in waiting)
            kind = plain(waiting[0].find("type")).replace("< ", "<").replace(" >", ">")
            start = re.sub(r"^=?\s*", "", waiting[0].findtext("initializer") or "")
            what = " ".join(said) + (f" Starts as ``{start}``." if start not in ("", "{}") else "")
            rows.append((names, f"``{kind}``", what.strip()))
            waiting = []
        return self.table(("field", "type", "meaning"), rows)

    def compound(self, name, introduction="", heading=True):
        definition = self.compounds[name]
        short = name.split("::")[-1].replace("< ", "<").replace(" >", ">")
        said = comment(definition)
        kind = definition.get("kind")
        template = definition.find("templateparamlist")
        prefix = "template <> " if "<" in short else "template <class T> " if template is not None else ""
        out = []
        if heading:
            title = f"``{short}``"
            out.append(f"{title}\n{'-' * len(title)}")
        out += said
        if introduction:
            out.append(introduction)
        body = []
        sections = definition.findall("sectiondef")
        order = {"public-attrib": 0, "public-type": 1, "public-func": 2, "public-static-func": 3, "user-defined": 4}
        for section in sorted(sections, key=lambda s: order.get(s.get("kind"), 9)):
            title, members = section.findtext("header"), section.findall("memberdef")
            kind_of = section.get("kind")
            if kind_of == "public-attrib":
                body += self.fields(members)
            elif kind_of == "user-defined" and title == REPEATED:
                body.append(f".. rubric:: {title}")
                body += description(section.find("description"))
            elif kind_of in ("public-func", "public-static-func", "user-defined", "related"):
                if title:
                    body.append(f".. rubric:: {escape(title)}")
                    body += description(section.find("description"))
                body += self.functions([m for m in members if m.get("kind") == "function"], short)
        declared = f".. cpp:{'struct' if kind == 'struct' else 'class'}:: {prefix}{short}"
        out.append(declared + "\n\n" + indent(join(body), 3))
        return out

    def free(self, header):
        """Enumerations and functions outside classes, in the order of the header."""
        path = f"include/tessarn/{header}.h"
        files = ElementTree.parse(self.xml / f"{header.replace('_', '__')}_8h.xml").getroot()
        members, seen = [], set()
        for definition in [files] + [c for n, c in self.compounds.items() if c.get("kind") == "namespace"]:
            for member in definition.iter("memberdef"):
                if member.get("id") not in seen and member.find("location").get("file") == path and \
                        member.get("kind") != "define":
                    seen.add(member.get("id"))
                    members.append(member)
        return sorted(members, key=lambda m: int(m.find("location").get("line")))

    def page(self, title, headers, introductions):
        self.seen = set()
        out = [f"{title}\n{'=' * len(title)}", f"``#include <tessarn/{headers[0]}.h>``"]
        top = ElementTree.parse(self.xml / f"{headers[0].replace('_', '__')}_8h.xml").getroot().find("compounddef")
        intro = {p.stem: introduction(p.read_text().strip()) for p in introductions.glob("*.rst")}
        functions, classes = [], []
        inner = [c.text for h in headers for c in
                 ElementTree.parse(self.xml / f"{h.replace('_', '__')}_8h.xml").getroot().iter("innerclass")]
        inner = [c for c in inner if not c.endswith("::iterator")]
        analysis = any(c.startswith("tessarn::") for c in inner) or not inner
        if analysis:
            out += description(top.find("detaileddescription"))
            if headers[0] in intro:
                out.append(intro[headers[0]])
        for header in headers:
            for member in self.free(header):
                kind = member.get("kind")
                name = member.findtext("name")
                if kind == "enum":
                    rows = [(f"``{v.findtext('name')}``", " ".join(comment(v))) for v in member.findall("enumvalue")]
                    classes += [f"``{name}``\n{'-' * (len(name) + 4)}"] + comment(member)
                    classes += [f".. cpp:enum-class:: {name}"] + self.table(("value", "meaning"), rows)
                elif kind == "typedef":
                    functions.append(f".. cpp:type:: {name}\n\n" + indent(join(comment(member)), 3))
                elif kind == "variable":
                    functions.append(f".. cpp:var:: {plain(member.find('type')).replace('constexpr ', '')} {name}\n\n" +
                                     indent(join(comment(member)), 3))
                elif kind == "function":
                    functions.append(member)
        namespace = "tessarn" if analysis and headers[0] != "io" else None
        out.append(f".. cpp:namespace:: {namespace or 'NULL'}")
        rendered, run = [], []
        for item in functions + [None]:
            if item is not None and not isinstance(item, str):
                run.append(item)
                continue
            rendered += self.functions(run, "")
            run = []
            rendered += [item] if item else []
        single = len(inner) == 1 and not analysis
        bodies = []
        for name in inner:
            bodies += self.compound(name, intro.get(re.sub(r"\W+", "_", name.split("::")[-1]).strip("_"), ""), not single)
        if rendered:
            function = any(block.startswith(".. cpp:function") for block in rendered)
            heading = "Types and constants" if not function else "Functions" if not single else "Operators and functions"
            rendered = [f"{heading}\n{'-' * len(heading)}"] + rendered
        out += rendered + classes + bodies if analysis else bodies + classes + rendered
        return join(out) + "\n"


def write(xml, introductions, output):
    """Writes all pages, and one for each header that has no place in the lists above; the names of these are the result."""
    output.mkdir(parents=True, exist_ok=True)
    reference = Reference(xml)
    listed = {**CLASSIC, **ANALYSIS}
    shown = {header for _, headers in listed.values() for header in headers}
    parents = {"tessarn", "vectors", "matrix", "version", "export", "sqmat"}  # headers that only bring others, or macros
    others = sorted({p.name[:-7].replace("__", "_") for p in xml.glob("*_8h.xml")} - shown - parents)
    for name, (title, headers) in {**listed, **{other: (OPTIONAL.get(other, f"{other}.h"), [other]) for other in others}}.items():
        (output / f"{name}.rst").write_text(reference.page(title, headers, introductions))
    return others
