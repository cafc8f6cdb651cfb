#!/usr/bin/env python3
"""Fails when an include points against the direction that docs/architecture.md draws.

usage: check_arrows.py [SOURCE_ROOT]
"""
import pathlib
import re
import sys

root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ".")

# What the files of a room may include besides their own room. Longer names come before their parts.
ALLOWED = {
    "include/tessarn": [],
    "simd": [],
    "core": ["tessarn"],
    "matrix/kernels": ["simd"],
    "poly/kernels": ["simd", "core/double_double.inl", "core/half_exponents.inl", "core/power_range.h"],
    "vectors/kernels": ["simd"],
    "geometry/kernels": ["simd"],
    "analysis/kernels": ["simd"],
    "matrix": ["tessarn", "core", "simd", "matrix/kernels/kernels.h"],
    "poly": ["tessarn", "core", "simd", "matrix", "poly/kernels/kernels.h"],
    "vectors": ["tessarn", "core", "simd", "poly", "vectors/kernels/kernels.h"],
    "selfcheck": ["tessarn"],
    "geometry": ["tessarn", "core", "simd", "geometry/kernels/kernels.h"],
    "analysis": ["tessarn", "core", "simd", "matrix", "poly"],
    "plain": ["tessarn"],
    "windows": ["tessarn"],
}


def room_of(path):
    return next((room for room in sorted(ALLOWED, key=len, reverse=True) if path.startswith(room + "/")), None)


wrong, seen = [], 0
for path in sorted(root.rglob("*")):
    if path.suffix not in {".h", ".cpp", ".inl"}:
        continue
    name = path.relative_to(root).as_posix()
    room = room_of(name)
    if room is None or name.startswith("build"):
        continue
    for number, line in enumerate(path.read_text().splitlines(), 1):
        found = re.match(r'\s*#\s*include\s+[<"]((?:tessarn|simd|core|matrix|poly|vectors|geometry|analysis|selfcheck|plain|tests)/[^>"]+)[>"]', line)
        if not found:
            continue
        seen += 1
        target = found.group(1)
        own = "tessarn" if room == "include/tessarn" else room
        if target.startswith(own + "/"):
            continue
        if not any(target == a or target.startswith(a + "/") and "/kernels/" not in target[len(a):] for a in ALLOWED[room]):
            wrong.append(f"{name}:{number}: {room} must not include {target}")

if wrong:
    sys.exit("\n".join(wrong))
if seen < 100:
    sys.exit(f"only {seen} includes found: not the source tree")
print(f"{seen} includes, each along the arrows")
