"""No call ends the interpreter, whatever it is given: it answers, or raises one of Python's own exceptions."""
import pathlib
import random
import subprocess
import sys

import numpy as np
import pytest

import tessarn

EXPECTED = (TypeError, ValueError, IndexError, MemoryError, OverflowError, AttributeError, NotImplementedError)
NUMBERS = [0, 1, -1, 7, 2**31, 2**32, 2**40, -(2**40), 0.5, -0.0, 1e-300, 1e300, np.nan, np.inf, -np.inf, True]


def objects():
    t, points = tessarn, np.random.default_rng(0).normal(size=(8, 3))
    p = t.vector3d(1, 2, 3)
    return [
        *(t.cplx(1, -2), t.vector(np.nan, np.inf), p, t.vector3d(np.nan, 0, np.inf), t.polarvector3d(0.5, 0.25, 2)),
        *(t.vectormat([[0, 1], [2, 3], [-1, 2], [np.nan, 1]]), t.vectormat(), t.mat([[1, 2, 3], [4, 5, 6]]), t.mat()),
        *(t.mat(0, 3), t.mat(3, 0), t.mat_cplx([[1j, 2]]), t.mat_cplx(), t.sqmat([[1, 2], [3, 4]]), t.sqmat()),
        *(t.sqmat_cplx([[1j, 2], [3, 4]]), t.sqmat_cplx(), t.binom([1, 2, 3]), t.binom(), t.binom([np.nan, np.inf])),
        *(t.hyperbinom([[1, 2], [3, 4]]), t.hyperbinom(), t.line3d(p, p), t.plane(p, t.vector3d(0, 0, 1)), t.plane()),
        *(t.polyfit([0, 1, 2], [1, 3, 5], 1), t.polyfit([], [], 1), t.fit_surface(*points.T, 2)),
        *(t.zeros([2, -3, 0, 1]), t.solve(points[:3], [1, 2, 3]), t.align(points, points), t.flatness(points)),
        *(t.align(points[:1], points[:1]), t.fit_circle(points[:, :2]), t.fit_robust(*points.T[:2], 1), t.selfcheck()),
    ]


def arguments():
    arrays = [[], [1, 2, 3], [[1, 2], [3, 4]], np.zeros((0, 2)), np.zeros((0, 3)), np.zeros((0, 0)), np.ones((5, 2))]
    arrays += [np.full((5, 3), np.nan), np.arange(6.0)[::-2], np.zeros(3, complex), np.eye(3)]
    return [*NUMBERS, *arrays, None, "x", object(), {}, *objects()]


def is_moderate(value, least, most):
    return not isinstance(value, (int, float)) or value == 0 or least <= abs(value) <= most


def call(name, member, given):
    """One call, with sizes for which there is memory, and scans that end within the test."""
    if any(word in name for word in ("find_", "scalar", "antifunction")):
        given = [v for v in given if is_moderate(v, 0.1, 3)]
    elif isinstance(member, type) or any(word in name for word in ("create", "resize", "reserve")):
        given = [v for v in given if is_moderate(v, 0, 1000)]
    try:
        repr(member(*given))
    except EXPECTED:
        pass


def many_calls(seed, count):
    choose = random.Random(seed)
    functions = [(n, getattr(tessarn, n)) for n in dir(tessarn) if not n.startswith("_")]
    for k in range(count):
        if k % 200 == 0:  # what earlier calls have changed
            pool, holders = arguments(), objects()
        if choose.random() < 0.3:
            name, member = choose.choice(functions)
        else:
            holder = choose.choice(holders)
            name = choose.choice([n for n in dir(type(holder)) if n not in ("__class__", "__init_subclass__")])
            member = getattr(holder, name)
        if callable(member):
            call(name, member, [choose.choice(pool) for _ in range(choose.randint(0, 4))])


@pytest.mark.parametrize("seed", range(2))
def test_no_call_ends_the_interpreter(seed):
    folders = [str(pathlib.Path(tessarn.__file__).parent.parent), str(pathlib.Path(__file__).parent)]
    program = f"import sys; sys.path[:0] = {folders!r}; import test_hostile; test_hostile.many_calls({seed}, 1500)"
    done = subprocess.run([sys.executable, "-W", "ignore", "-c", program], text=True, capture_output=True)
    assert done.returncode == 0, done.stderr
