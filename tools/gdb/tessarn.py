"""How gdb prints the classes of Tessarn: values in their fields' words, matrices row by row.

Loaded by `source tessarn.py`, or by gdb itself where the library is installed under its prefix.
"""


import gdb
import gdb.printing

LONGEST_LIST = 200  # entries of a row, terms of a polynomial


def number(value):
    """The shortest digits that read back as the same real."""
    if value.is_optimized_out:
        return "<optimized out>"
    text = repr(float(value))
    return text[:-2] if text.endswith(".0") else text


def array(pointer, count):
    """The count objects at a pointer as one array, which gdb prints by its own rules."""
    return pointer.dereference().cast(pointer.type.target().array(int(count) - 1))


# Where the fields of the larger classes stand. A compiler describes these classes only where their virtual tables
# are, in the library, and a library without debug information leaves the debugger without the names.
LAYOUTS = {
    "mat": {"data": (8, "entry"), "width": (16, "count"), "height": (20, "count")},
    "sqmat": {"data": (8, "entry"), "size": (16, "count")},
    "binom": {"cofcnt": (8, "count"), "cof": (16, "entry")},
    "hyperbinom": {"grade": (8, "count"), "cof": (16, "entry")},
    "vectormat": {"points": (8, "entry"), "count": (16, "count"), "capacity": (20, "count")},
    "line3d": {"start": (8, "vector3d"), "end": (40, "vector3d")},
    "plane": {
        "origin": (8, "vector3d"),
        "normal": (40, "vector3d"),
        "axis1": (72, "vector3d"),
        "axis2": (104, "vector3d"),
    },
}


def entry_type(name):
    if name.endswith("<cplx>"):
        return gdb.lookup_type("cplx")
    return gdb.lookup_type("vector" if name == "vectormat" else "double")


def class_name(value):
    return value.type.strip_typedefs().unqualified().name


def field(value, name):
    """A field by its name, or by its place."""
    if value.type.strip_typedefs().code in (gdb.TYPE_CODE_REF, gdb.TYPE_CODE_RVALUE_REF):
        value = value.referenced_value()
    if value.type.strip_typedefs().fields():
        return value[name]
    full_name = class_name(value)
    offset, kind = LAYOUTS[full_name.split("<")[0]][name]
    target = entry_type(full_name).pointer() if kind == "entry" else gdb.lookup_type({"count": "int"}.get(kind, kind))
    bytes_at = value.address.cast(gdb.lookup_type("char").pointer()) + offset
    return bytes_at.cast(target.pointer()).dereference()


class Fields:
    """A value class: its fields in parentheses."""

    names = ()

    def __init__(self, value):
        self.value = value

    def to_string(self):
        return "(%s)" % ", ".join(number(self.value[name]) for name in self.names)


class Vector(Fields):
    names = ("x", "y")


class Vector3d(Fields):
    names = ("x", "y", "z")


class Polar(Fields):
    names = ("alpha", "beta", "len")

    def to_string(self):
        return "(alpha %s, beta %s, len %s)" % tuple(number(self.value[name]) for name in self.names)


class Complex(Fields):
    names = ("re", "im")

    def to_string(self):
        re_part, im_part = (number(self.value[name]) for name in self.names)
        sign = "-" if im_part.startswith("-") else "+"
        return "%s %s %si" % (re_part, sign, im_part.lstrip("-"))


class Frame:
    """Lines and planes: their vectors, without the virtual table."""

    names = ()

    def __init__(self, value):
        self.value = value

    def children(self):
        for name in self.names:
            yield name, field(self.value, name)


class Line(Frame):
    names = ("start", "end")


class Plane(Frame):
    names = ("origin", "normal", "axis1", "axis2")


class PointList:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        return "%d points, room for %d" % (int(field(self.value, "count")), int(field(self.value, "capacity")))

    def children(self):
        for i in range(min(int(field(self.value, "count")), LONGEST_LIST)):
            yield "[%d]" % i, (field(self.value, "points") + i).dereference()


class Rows:
    """A matrix: its sizes, then one child a row."""

    def __init__(self, value):
        self.value = value

    def sizes(self):
        return int(field(self.value, "width")), int(field(self.value, "height"))

    def to_string(self):
        return "%d columns x %d rows" % self.sizes()

    def children(self):
        width, height = self.sizes()
        data = field(self.value, "data")
        if int(data) == 0 or width == 0:
            return
        for y in range(min(height, LONGEST_LIST)):
            yield "row %d" % y, array(data + y * width, width)


class SquareRows(Rows):
    def sizes(self):
        size = int(field(self.value, "size"))
        return size, size


class Table(Rows):
    """A polynomial in two variables: row j holds the coefficients of y^j."""

    def sizes(self):
        grade = max(int(field(self.value, "grade")), 0)
        return grade, grade

    def to_string(self):
        return "grade %d" % int(field(self.value, "grade"))

    def children(self):
        grade, _ = self.sizes()
        for j in range(min(grade, LONGEST_LIST)):
            yield "y^%d" % j, array(field(self.value, "cof") + j * grade, grade)


class Polynomial:
    """c0 + c1 x + c2 x^2 ..."""

    def __init__(self, value):
        self.value = value

    @staticmethod
    def power(i):
        return "" if i == 0 else " x" if i == 1 else " x^%d" % i

    def to_string(self):
        count = int(field(self.value, "cofcnt"))
        if count < 1:
            return "empty polynomial"
        text = ""
        for i in range(min(count, LONGEST_LIST)):
            c = number((field(self.value, "cof") + i).dereference())
            if i == 0:
                text = c
            else:
                text += " %s %s%s" % ("-" if c.startswith("-") else "+", c.lstrip("-"), self.power(i))
        return text if count <= LONGEST_LIST else text + " + ..."


def build():
    printers = gdb.printing.RegexpCollectionPrettyPrinter("tessarn")
    for name, printer in (
        ("cplx", Complex),
        ("vector", Vector),
        ("vector3d", Vector3d),
        ("polarvector3d", Polar),
        ("vectormat", PointList),
        ("mat<(long double|cplx)>", Rows),
        ("sqmat<(long double|cplx)>", SquareRows),
        ("binom", Polynomial),
        ("hyperbinom", Table),
        ("line3d", Line),
        ("plane", Plane),
    ):
        printers.add_printer(name, "^%s$" % name, printer)
    return printers


gdb.printing.register_pretty_printer(gdb.current_objfile(), build(), replace=True)
