"""How LLDB shows the classes of Tessarn: values in their fields' words, matrices row by row, as tools/gdb does.

Loaded by `command script import tessarn_lldb.py`, at the prompt or in ~/.lldbinit. A variable prints on one line; a debugger with
windows opens it into rows, coefficients or points.
"""


import struct

import lldb

LONGEST_LIST = 200  # entries of a row, rows, terms of a polynomial
GONE = "<optimized out>"

# Where the fields of the larger classes stand. A compiler describes these classes only where their virtual tables
# are, in the library, and a library without debug information leaves the debugger without the names.
LAYOUTS = {
    "mat": {"data": (8, "Q"), "width": (16, "I"), "height": (20, "I")},
    "sqmat": {"data": (8, "Q"), "size": (16, "I")},
    "binom": {"cofcnt": (8, "i"), "cof": (16, "Q")},
    "hyperbinom": {"grade": (8, "i"), "cof": (16, "Q")},
    "vectormat": {"points": (8, "Q"), "count": (16, "I"), "capacity": (20, "I")},
}
FRAMES = {
    "line3d": {"start": 8, "end": 40},
    "plane": {"origin": 8, "normal": 40, "axis1": 72, "axis2": 104},
}


class Gone(Exception):
    """The compiler kept the value nowhere, or the memory that holds it cannot be read."""


class Object:
    """A value of the program: one that LLDB describes, or one behind a pointer or a reference to an incomplete class."""

    def __init__(self, value):
        self.value = value.GetNonSyntheticValue()
        self.kind = self.value.type.GetCanonicalType()
        self.address = self.value.GetLoadAddress()
        if self.kind.IsPointerType() or self.kind.IsReferenceType():
            self.address = self.value.GetValueAsUnsigned()
            self.kind = self.kind.GetPointeeType() if self.kind.IsPointerType() else self.kind.GetDereferencedType()
            self.value = value.Dereference().GetNonSyntheticValue()
        self.made_from = value
        self.name = self.kind.GetUnqualifiedType().GetName()
        self.family = self.name.split("<")[0]

    def described(self, name):
        """A field that the compiler describes, else None."""
        part = self.value.GetChildMemberWithName(name) if self.value.IsValid() else None
        if part is None or not part.IsValid():
            return None
        if part.GetError().Fail():
            raise Gone()
        return part

    def real(self, name):
        """A real of a value class."""
        part = self.described(name)
        error = lldb.SBError()
        number = part.GetData().GetDouble(error, 0) if part is not None else 0.0
        if part is None or error.Fail():
            raise Gone()
        return number

    def field(self, name):
        """A count or a pointer, by its name or by its place."""
        offset, letter = LAYOUTS[self.family][name]
        part = self.described(name)
        if part is not None:
            return part.GetValueAsSigned() if letter == "i" else part.GetValueAsUnsigned()
        return self.read(self.at(offset), letter)[0]

    def at(self, offset):
        if self.address == lldb.LLDB_INVALID_ADDRESS:
            raise Gone()
        return self.address + offset

    def read(self, address, layout):
        """Numbers at an address of the program, in the letters of the module struct."""
        process = self.made_from.process
        layout = (">" if process.GetByteOrder() == lldb.eByteOrderBig else "<") + layout
        error = lldb.SBError()
        data = process.ReadMemory(address, struct.calcsize(layout), error)
        if not error.Success():
            raise Gone()
        return struct.unpack(layout, data)

    def reals(self, address, count):
        return [digits(x) for x in self.read(address, "%dd" % count)] if count else []

    def class_named(self, name):
        """The type of this very name; LLDB's own search would take std::vector for vector."""
        found = self.made_from.target.FindTypes(name)
        for i in range(found.GetSize()):
            each = found.GetTypeAtIndex(i)
            if each.GetName() == name and each.GetByteSize():
                return each
        raise Gone()

    def make(self, name, address, kind):
        return self.made_from.CreateValueFromAddress(name, address, kind)

    def entry_type(self):
        if self.name.endswith("<cplx>"):
            return self.class_named("cplx")
        return self.made_from.target.GetBasicType(lldb.eBasicTypeDouble)


def digits(number):
    """The shortest digits that read back as the same real."""
    text = repr(number)
    return text[:-2] if text.endswith(".0") else text


def complex_digits(re, im):
    sign = "-" if digits(im).startswith("-") else "+"
    return "%s %s %si" % (digits(re), sign, digits(im).lstrip("-"))


def shortened(parts, count):
    return "{%s%s}" % (", ".join(parts), ", ..." if count > len(parts) else "")


def guarded(show):
    """LLDB calls a summary with the value and its own dictionary; an exception would show as a traceback."""

    def summary(value, _=None):
        try:
            return show(Object(value))
        except Gone:
            return GONE

    return summary


# ---------------------------------------------------------------------- text


@guarded
def show_complex(z):
    return complex_digits(z.real("re"), z.real("im"))


@guarded
def show_vector(v):
    return "(%s)" % ", ".join(digits(v.real(name)) for name in "xy")


@guarded
def show_vector3d(v):
    return "(%s)" % ", ".join(digits(v.real(name)) for name in "xyz")


@guarded
def show_polar(v):
    return "(%s)" % ", ".join("%s %s" % (name, digits(v.real(name))) for name in ("alpha", "beta", "len"))


@guarded
def show_frame(frame):
    return "{%s}" % ", ".join("%s = %s" % (part.GetName(), show_vector3d(part)) for part in vectors_of(frame))


@guarded
def show_rows(matrix):
    width, height = sizes(matrix)
    if matrix.family == "hyperbinom":
        text = "grade %d" % matrix.field("grade")
    else:
        text = "%d columns x %d rows" % (width, height)
    shown = ["%s = %s" % (name, show_row(matrix, address, width)) for address, name in rows(matrix)]
    return "%s = %s" % (text, shortened(shown, height)) if shown else text


def show_row(matrix, address, width):
    kind, count = matrix.entry_type(), min(width, LONGEST_LIST)
    if kind.GetName() != "cplx":
        return shortened(matrix.reals(address, count), width)
    entries = (matrix.make("entry", address + i * kind.GetByteSize(), kind) for i in range(count))
    return shortened([show_complex(entry) for entry in entries], width)


@guarded
def show_points(points):
    count = points.field("count")
    text = "%d points, room for %d" % (count, points.field("capacity"))
    shown = ["%s = %s" % (point.GetName(), show_vector(point)) for point in points_of(points)]
    return "%s = %s" % (text, shortened(shown, count)) if shown else text


@guarded
def show_polynomial(polynomial):
    """c0 + c1 x + c2 x^2 ..."""
    count = polynomial.field("cofcnt")
    if count < 1:
        return "empty polynomial"
    terms = polynomial.reals(polynomial.field("cof"), min(count, LONGEST_LIST))
    text = terms[0]
    for i, c in enumerate(terms[1:], 1):
        power = " x" if i == 1 else " x^%d" % i
        text += " %s %s%s" % ("-" if c.startswith("-") else "+", c.lstrip("-"), power)
    return text if count <= LONGEST_LIST else text + " + ..."


# ---------------------------------------------------------------------- parts, which windows open


def sizes(matrix):
    """Columns and rows."""
    if matrix.family == "mat":
        return matrix.field("width"), matrix.field("height")
    size = matrix.field("size") if matrix.family == "sqmat" else max(matrix.field("grade"), 0)
    return size, size


def rows(matrix):
    """Address and name of each row; row j of a polynomial in two variables holds the coefficients of y^j."""
    width, height = sizes(matrix)
    name, data = ("y^%d", "cof") if matrix.family == "hyperbinom" else ("row %d", "data")
    start = matrix.field(data)
    if start == 0 or width == 0:
        return []
    length = width * matrix.entry_type().GetByteSize()
    return [(start + y * length, name % y) for y in range(min(height, LONGEST_LIST))]


def rows_of(matrix):
    kind = matrix.entry_type().GetArrayType(sizes(matrix)[0])
    return [matrix.make(name, address, kind) for address, name in rows(matrix)]


def points_of(points):
    kind, start = points.class_named("vector"), points.field("points")
    count = min(points.field("count"), LONGEST_LIST)
    return [points.make("[%d]" % i, start + i * kind.GetByteSize(), kind) for i in range(count)]


def terms_of(polynomial):
    count = min(polynomial.field("cofcnt"), LONGEST_LIST)
    start, kind = polynomial.field("cof"), polynomial.entry_type()
    return [polynomial.make("x^%d" % i, start + i * kind.GetByteSize(), kind) for i in range(count)]


def vectors_of(frame):
    places = FRAMES[frame.family]
    if frame.described(next(iter(places))) is not None:
        return [frame.described(name) for name in places]
    kind = frame.class_named("vector3d")
    return [frame.make(name, frame.at(offset), kind) for name, offset in places.items()]


class Children:
    """Parts of a value, for which LLDB asks by their numbers."""

    made = None

    def __init__(self, value, _):
        self.value = value
        self.parts = []

    def update(self):
        try:
            self.parts = type(self).made(Object(self.value))
        except Gone:
            self.parts = []
        return False  # the program may have changed the value: ask again at the next stop

    def num_children(self):
        return len(self.parts)

    def has_children(self):
        return bool(self.parts)

    def get_child_index(self, name):
        return next((i for i, part in enumerate(self.parts) if part.GetName() == name), -1)

    def get_child_at_index(self, index):
        return self.parts[index] if 0 <= index < len(self.parts) else None


class Rows(Children):
    made = rows_of


class Points(Children):
    made = points_of


class Terms(Children):
    made = terms_of


class Vectors(Children):
    made = vectors_of


VIEWS = (
    ("cplx", "show_complex", None),
    ("vector", "show_vector", None),
    ("vector3d", "show_vector3d", None),
    ("polarvector3d", "show_polar", None),
    ("vectormat", "show_points", "Points"),
    ("mat<(long double|cplx)>", "show_rows", "Rows"),
    ("sqmat<(long double|cplx)>", "show_rows", "Rows"),
    ("binom", "show_polynomial", "Terms"),
    ("hyperbinom", "show_rows", "Rows"),
    ("line3d", "show_frame", "Vectors"),
    ("plane", "show_frame", "Vectors"),
)


def __lldb_init_module(debugger, _):
    for name, summary, children in VIEWS:
        place = (__name__, summary, "-w tessarn -x '^%s$'" % name)
        debugger.HandleCommand("type summary add -F %s.%s %s" % place)
        if children:
            debugger.HandleCommand("type synthetic add -l %s.%s -w tessarn -x '^%s$'" % (__name__, children, name))
    debugger.HandleCommand("type category enable tessarn")
