"""Pickling, copies, texts and dictionaries of every class and result."""
import copy
import pickle

import numpy as np
import pytest

import tessarn
from results import same, same_results

CLOUD = np.random.default_rng(4).normal(size=(20, 3))


def pickled(o):
    """The object by every protocol of pickling, also by the oldest, which pybind11 alone does not stand."""
    return [pickle.loads(pickle.dumps(o, protocol)) for protocol in range(pickle.HIGHEST_PROTOCOL + 1)]


def results():
    x, y, z = CLOUD.T
    a = CLOUD[:3]
    return [
        tessarn.polyfit(x, y, 3), tessarn.polyfit([], [], 3), tessarn.fit_robust(x, y, 1),
        tessarn.fit_surface(x, y, z, 2), tessarn.fit_robust_surface(x, y, z, 2),
        tessarn.zeros([2, -3, 0, 1]), tessarn.extremes([0, -3, 0, 1]), tessarn.zeros([2, -3, 0, 1])[0],
        tessarn.curvature_extremes([0, 0, 1]), tessarn.solve(a, [1, 2, 3]), tessarn.solve(np.zeros((2, 2)), [1, 2]),
        tessarn.solve(a + 1j, [1, 2, 3]), tessarn.least_squares(CLOUD, x), tessarn.inverse(a), tessarn.inverse(a + 1j),
        tessarn.determinant(a), tessarn.align(CLOUD, CLOUD * 2), tessarn.align(CLOUD[:, :2], CLOUD[:, 1:]),
        tessarn.flatness(CLOUD), tessarn.flatness(CLOUD).middle, tessarn.fit_line(CLOUD),
        tessarn.fit_circle(CLOUD[:, :2]), tessarn.fit_sphere(CLOUD), tessarn.fit_cylinder(CLOUD),
    ]  # fmt: skip


def kinds(objects):
    return [type(o).__name__ for o in objects]


@pytest.mark.parametrize("result", results(), ids=kinds(results()))
def test_results(result):
    for other in (*pickled(result), copy.copy(result), copy.deepcopy(result)):
        assert same_results(result, other)
        assert repr(other) == repr(result)
    assert repr(result).startswith(type(result).__name__ + ":")
    names = result.as_dict().keys()
    assert all(
        same(result.as_dict()[n], getattr(result, n)) for n in names if n not in ("fit", "middle", "least_squares")
    )


def classic():
    t = tessarn
    p = t.vector3d(1, 2, 3)
    return [
        t.cplx(1, -2), t.vector(1, 2), p, t.polarvector3d(0.5, 0.25, 2), t.vectormat([[0, 1], [2, 3]]), t.vectormat(),
        t.mat([[1, 2, 3], [4, 5, 6]]), t.mat(), t.mat_cplx([[1j, 2]]), t.sqmat([[1, 2], [3, 4]]), t.sqmat(),
        t.sqmat_cplx([[1j, 2], [3, 4]]), t.binom([1, 2, 3]), t.binom(), t.hyperbinom([[1, 2], [3, 4]]), t.hyperbinom(),
        t.line3d(p, t.vector3d()), t.plane(p, t.vector3d(0, 0, 1)),
    ]  # fmt: skip


@pytest.mark.parametrize("number", range(len(classic())), ids=kinds(classic()))
def test_classes(number):
    original = classic()[number]
    for other in (*pickled(original), copy.copy(original), copy.deepcopy(original)):
        assert type(other) is type(original) and repr(other) == repr(original) and str(other) == str(original)
    if not isinstance(original, (tessarn.plane, tessarn.line3d)):
        assert repr(eval(repr(original), vars(tessarn))) == repr(original)


def test_nan_survives_the_pickling_of_a_matrix():
    m = tessarn.mat([[np.inf], [1]])
    m.invert(dst := tessarn.mat())
    assert same(np.asarray(pickle.loads(pickle.dumps(dst))), np.asarray(dst))


def test_statuses_are_pickled():
    assert pickle.loads(pickle.dumps(tessarn.Status.singular)) is not None
    assert pickle.loads(pickle.dumps(tessarn.Status.singular)) == tessarn.Status.singular


def test_what_cannot_be_pickled_says_so():
    for protocol in range(pickle.HIGHEST_PROTOCOL + 1):
        with pytest.raises(TypeError, match="cannot pickle"):
            pickle.dumps(tessarn.selfcheck(), protocol)
