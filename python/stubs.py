#!/usr/bin/env python3
"""Writes the type stubs of the compiled module, from the signatures in its docstrings.

usage: stubs.py FOLDER [--check]   FOLDER holds the package `tessarn` with the built module

The stubs stand in python/tessarn/_core.pyi; with --check nothing is written, and the script fails when they differ.
"""

import importlib
import inspect
import pathlib
import re
import sys

STUBS = pathlib.Path(__file__).resolve().parent / "tessarn" / "_core.pyi"

HEADER = """# Written by python/stubs.py from the compiled module.
from typing import Any, Dict, Iterator, List, Optional, Tuple, Union, overload

import numpy as np
import numpy.typing as npt
from numpy.typing import ArrayLike

__version__: str

# A float for a number, an array for an array.
Numbers = Any
"""

# Types as the docstrings of pybind11 name them, and as type checkers know them.
TYPES = [
    (r"tessarn\._core\.", ""),
    (r"numpy\.ndarray\[numpy\.float64\]", "npt.NDArray[np.float64]"),
    (r"numpy\.ndarray\[numpy\.complex128\]", "npt.NDArray[np.complex128]"),
    (r"numpy\.ndarray\[(?:numpy\.)?uint32\]", "npt.NDArray[np.uint32]"),
    (r"\biterator\b|\bIterator\b", "Iterator[Any]"),
    (r"\bdict\b", "Dict[str, Any]"),
    (r"\btuple\b", "Tuple[Any, ...]"),
]
# Arguments of these names may be any object; what they give back is known better than `object`.
ARGUMENTS = {
    "out": "Optional[npt.NDArray[np.float64]]",
    "dtype": "Any",
    "index": "Any",
    "p": "Any",
    "memo": "Dict[int, Any]",
}
RESULTS = {
    "solve": "Any",
    "inverse": "Any",
    "align": "Any",
    "__getitem__": "Any",
    "__array__": "npt.NDArray[Any]",
}
COMPARISONS = {"__eq__", "__ne__"}
LEFT_OUT = {
    "__setstate__",
    "__getstate__",
    "__new__",
    "__doc__",
    "__module__",
    "__hash__",
    "__dict__",
    "__weakref__",
    "__reduce__",
    "__reduce_ex__",
}


def named(text):
    for pattern, replacement in TYPES:
        text = re.sub(pattern, replacement, text)
    return text


def split(text):
    """The parts of a list of parameters, at the commas outside brackets and quotes."""
    parts, depth, quoted, part = [], 0, False, ""
    for c in text:
        quoted ^= c == "'"
        if not quoted:
            depth += c in "[(" or -(c in "])")
        if c == "," and depth == 0 and not quoted:
            parts.append(part.strip())
            part = ""
        else:
            part += c
    return parts + [part.strip()] if part.strip() else parts


def parameter(text):
    """One parameter with the type that a checker is told; defaults other than None are left open."""
    if text == "*" or ":" not in text:
        return text
    name, rest = text.split(":", 1)
    kind, _, default = rest.partition(" = ")
    kind = named(kind.strip())
    if name == "self" and kind != "object":
        return "self"
    if kind == "object":
        kind = "Any" if name == "self" else ARGUMENTS.get(name, "Any")
    if name == "self":
        return "self"
    if default.endswith("inf"):
        default = "..."
    return f"{name}: {kind}" + (f" = {default}" if default else "")


def signatures(function, name):
    """The parameters and the result of each overload."""
    found = re.findall(rf"^(?:\d+\. )?{re.escape(name)}\((.*)\) -> (.*)$", function.__doc__ or "", re.MULTILINE)
    return [([parameter(p) for p in split(parameters)], named(result)) for parameters, result in found]


def ignored(name, parameters, many):
    """Comparisons of the classes take less than those of object do, as in C++."""
    narrower = name in COMPARISONS and not many and not parameters[-1].endswith("Any")
    return "  # type: ignore[override]" if narrower else ""


def function_stub(function, name, margin, static=False, owner=""):
    lines = []
    overloads = signatures(function, name)
    for parameters, result in overloads:
        if name.startswith("__") and not static and (not parameters or parameters[0] != "self"):
            parameters = ["self"] + [re.sub(r"^arg0: ", "other: ", p) for p in parameters if p != "self"]
        if name == "__init__":
            result = "None"
        result = RESULTS.get(name, result) if result == "object" else result
        if name == "__iter__" and owner == "CurvePoints":
            result = "Iterator[CurvePoint]"
        if static:
            lines.append(margin + "@staticmethod")
        if len(overloads) > 1:
            lines.append(margin + "@overload")
        end = ignored(name, parameters, len(overloads) > 1)
        lines.append(f"{margin}def {name}({', '.join(parameters)}) -> {result}: ...{end}")
    if len(overloads) > 1 and name in COMPARISONS:
        lines[0] += "  # type: ignore[override]"
    return lines


def property_type(member):
    found = re.search(r"-> (.*)$", (member.fget.__doc__ or "").strip().split("\n")[0])
    return named(found.group(1)) if found else "Any"


def class_stub(kind):
    lines = [f"class {kind.__name__}:"]
    for name, member in sorted(vars(kind).items()):
        if name in LEFT_OUT:
            continue
        if isinstance(member, property):
            if member.fset:
                lines.append(f"    {name}: {property_type(member)}")
            else:
                lines += ["    @property", f"    def {name}(self) -> {property_type(member)}: ..."]
        elif isinstance(member, staticmethod):
            lines += function_stub(member.__func__, name, "    ", static=True)
        elif inspect.isroutine(member):
            lines += function_stub(member, name, "    ", owner=kind.__name__)
        elif isinstance(member, kind):  # a value of an enumeration
            lines.append(f"    {name}: {kind.__name__}")
    return lines if len(lines) > 1 else [lines[0] + " ..."]


def text_of(module):
    lines = [HEADER]
    members = {name: member for name, member in sorted(vars(module).items()) if not name.startswith("_")}
    for member in members.values():
        if inspect.isclass(member):
            lines += class_stub(member) + [""]
    for name, member in members.items():
        if inspect.isroutine(member):
            lines += function_stub(member, name, "")
    return "\n".join(lines) + "\n"


def main():
    sys.path.insert(0, sys.argv[1])
    text = text_of(importlib.import_module("tessarn._core"))
    if "--check" in sys.argv:
        if text != STUBS.read_text():
            sys.exit(f"{STUBS.name} is not what the module says: run python/stubs.py")
    else:
        STUBS.write_text(text)


if __name__ == "__main__":
    main()
