#!/usr/bin/env python3
"""Compiles and runs the example of every class comment, and those of the pages for users.

usage: header_examples.py SOURCE_ROOT STATIC_LIBRARY
Each text between \\code and \\endcode in a public header, and each block of C++ in the pages named below, becomes a function of
one program; its assertions must hold. In docs/moving.md the block declares objects, and every last cell of a table is a
statement with them.
Every class and class template of the public headers must have an example in the comment in front of it.
"""
import pathlib
import re
import subprocess
import sys
import tempfile

root, library = pathlib.Path(sys.argv[1]), sys.argv[2]
headers = [*(root / "include/tessarn").glob("*.h"), *(root / "include/tessarn/files").glob("*.h")]
headers = [h for h in sorted(headers) if h.name != "io.h"]  # io.h declares functions

program = ["#undef NDEBUG", "#include <cassert>", "#include <algorithm>", "#include <cmath>", "#include <numeric>",
           "#include <string>", "#include <vector>", "#include <tessarn/tessarn.h>", "#include <tessarn/eigen.h>",
           "#include <tessarn/files.h>", "#include <tessarn/std.h>"]
calls, without = [], []
for header in headers:
    comment, internal = [], False
    for number, line in enumerate(header.read_text().splitlines(), 1):
        if line.startswith("///"):
            comment.append((number, line[4:]))
            continue
        if re.match(r"(?:namespace|\}  // namespace) .*\bdetail\b", line):
            internal = line.startswith("namespace")
        shown = re.match(r"(?:template <class T>\s*)?class (?:TESSARN_API )?(\w+(?:<[\w ]+>)?) \{", line)
        if shown and not internal and not any(text.startswith("\\code") for _, text in comment):
            without.append(f"{header.name}:{number}: {shown.group(1)}")
        if line.startswith("template <") and comment:
            continue  # the class is on the next line
        inside = False
        for at, text in comment:
            if text.startswith("\\code"):
                name = f"example_{len(calls)}"
                calls.append(name)
                program += [f"static void {name}() {{", f'#line {at + 1} "{header.name}"']
                inside = True
            elif text.startswith("\\endcode"):
                program.append("}")
                inside = False
            elif inside:
                program.append(text)
        comment = []

for page in ("calls", "fitting", "matching", "flatness", "threads"):
    inside, found = False, len(calls)
    for number, line in enumerate((root / f"docs/{page}.md").read_text().splitlines(), 1):
        if line == "```cpp":
            name = f"example_{len(calls)}"
            calls.append(name)
            program += [f"static void {name}() {{", f'#line {number + 1} "{page}.md"']
            inside = True
        elif line == "```" and inside:
            program.append("}")
            inside = False
        elif inside:
            program.append(line)
    if len(calls) == found:
        sys.exit(f"no example in docs/{page}.md")

moving = (root / "docs/moving.md").read_text()
objects = re.search(r"```cpp\n(.*?)```", moving, re.S).group(1)
cells = re.findall(r"^\| .* \| `([^`]*)` \|$", moving, re.M)
rows = len(re.findall(r"^\| `", moving, re.M))
if len(cells) != rows or rows < 40:
    sys.exit(f"docs/moving.md: {rows} calls of others, but {len(cells)} of ours")
program.append('#pragma GCC diagnostic ignored "-Wunused-variable"')
for cell in cells:
    name = f"example_{len(calls)}"
    calls.append(name)
    declares = re.match(r"(mat|sqmat)<", cell)
    program += [f"static void {name}() {{", objects, "{", f"#line {moving[:moving.index(cell)].count(chr(10)) + 1} \"moving.md\"",
                cell + ";" if declares or cell.endswith(";") else f"static_cast<void>({cell});", "}", "}"]

if without:
    sys.exit("no example in front of\n" + "\n".join(without))
if len(calls) < 20:
    sys.exit(f"only {len(calls)} examples found")
program += ["int main() {"] + [f"  {name}();" for name in calls] + ["}"]

with tempfile.TemporaryDirectory() as work:
    source = pathlib.Path(work, "examples.cpp")
    source.write_text("\n".join(program) + "\n")
    for compiler in ("g++", "clang++-22"):
        binary = str(pathlib.Path(work, "examples"))
        subprocess.run([compiler, "-std=c++17", "-Wall", "-Wextra", "-Werror", f"-I{root}/include", "-isystem",
                        "/usr/include/eigen3", str(source), library, "-o", binary], check=True)
        subprocess.run([binary], check=True)
        print(f"{compiler}: {len(calls)} examples of the headers and pages hold")
