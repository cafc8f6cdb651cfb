"""The classic classes: their members under their names, and what surprises."""
import copy
import math

import numpy as np
import pytest

import tessarn
from tessarn import binom, cplx, hyperbinom, mat, plane, polarvector3d, sqmat, vector, vector3d, vectormat


def test_one_number_is_an_angle():
    assert (cplx(2.0).re, cplx(2).im) == (math.cos(2), math.sin(2))
    assert cplx(1, 0) + 0.0 == cplx(2, 0)  # 0.0 is the unit number at that angle
    assert cplx(1, 2) * 2 == cplx(2, 4) and 2 * cplx(1, 2) == cplx(2, 4)
    assert cplx(3 + 4j) == cplx(3, 4) and cplx(1, 2) + 1j == cplx(1, 3)


def test_complex_comparisons():
    assert not cplx(1, 2) != cplx(1, 3) and not cplx(1, 2) == cplx(1, 3)
    assert cplx(-4, 0) < cplx(0, 5) and not cplx(3, 4) < cplx(5, 0)


def test_division_by_zero_clears_the_left_operand():
    a = cplx(3, 4)
    assert a / cplx(0, 0) == cplx(0, 0) and a == cplx(0, 0)
    assert cplx(0, -4).sqrt().im > 0


def test_sums_in_place_keep_the_object():
    v = w = vector(1, 2)
    v += vector(1, 1)
    v *= 2
    assert v is w and w == vector(4, 6)


def test_products_of_space_vectors():
    a = vector3d(1, 0, 0)
    assert a * vector3d(2, 5, 5) == 2 and a * 3 == vector3d(3, 0, 0)
    a *= vector3d(0, 1, 0)
    assert a == vector3d(0, 0, 1)
    p = polarvector3d(1, 0.5, 2)
    p += polarvector3d(0, 0, 7)
    assert p == polarvector3d(1, 0.5, 2)
    assert vector3d(p).lenld() == pytest.approx(2)
    assert np.asarray(vector3d(1, 2, 3)).tolist() == [1, 2, 3]


def test_lists():
    points = vectormat([[0, 1], [-1, 7], [2, 4]])
    points += vector(3, 5)
    assert len(points) == points.count == 4 and points[-1] == vector(3, 5)
    points[0] = vector(9, 9)
    points.DeleteErrors(0)  # removes the point that x = -1.0 marks
    assert np.asarray(points).tolist() == [[9, 9], [2, 4], [3, 5]]
    points.sort()
    points.del_(0)
    points -= 100  # beyond the end: the last one
    assert np.asarray(points).tolist() == [[3, 5]]
    points *= 2
    assert points[0] == vector(3, 10)
    with pytest.raises(IndexError):
        points[1]
    assert vectormat().findline(vector(1, 0)) is None
    chain = vectormat([[0, 0], [5, 5], [1, 0], [2, 0]]).findline(vector(1, 0))
    assert len(chain) == 3


def test_matrices_name_the_column_first():
    m = mat([[1, 2, 3], [4, 5, 6]])
    assert (m.getWidth(), m.getHeight()) == (3, 2)
    assert m.get(2, 0) == 3 and m.get(3, 0) == 1  # indices wrap
    m.set(0, 1, math.nan)
    assert m.get(0, 1) == 0
    assert mat([[math.nan]]).get(0, 0) == 0
    assert m == mat(1, 1) and not m != mat(1, 1)  # sizes that differ
    assert (m + mat(1, 1)).getWidth() == 0
    t = mat()
    m.transpose(t)
    np.testing.assert_array_equal(np.asarray(m * t), np.asarray(m) @ np.asarray(t))
    np.testing.assert_array_equal(np.asarray(m @ t), np.asarray(m * t))
    m.transpose(m)
    assert not np.asarray(m).any()
    assert repr(mat([[1, 2]]) * 2) == "mat([[2.0, 4.0]])"


@pytest.mark.parametrize(
    "empty", [mat(), tessarn.mat_cplx(), sqmat(), tessarn.sqmat_cplx()], ids=lambda m: type(m).__name__
)
def test_access_to_a_matrix_without_entries_ends(empty):
    with pytest.raises(IndexError, match="no entries"):
        empty.get(0, 0)
    with pytest.raises(IndexError):
        empty.set(0, 0, cplx(1, 1) if "cplx" in type(empty).__name__ else 1)
    for member in ("cof", "getColumn"):
        if hasattr(empty, member):
            with pytest.raises(IndexError):
                getattr(empty, member)(*(0, 0)[: 2 if member == "cof" else 1])


def test_matrices_that_cannot_be():
    for make in (lambda: mat(2**16, 2**16), lambda: mat().create(2**31, 4), lambda: sqmat(2**16)):
        with pytest.raises(MemoryError):
            make()
    with pytest.raises(TypeError):
        mat(-1, 2)
    with pytest.raises(ValueError, match="square"):
        sqmat([[1, 2]])
    with pytest.raises(ValueError):
        u = mat([[1]])
        u.decompose(u, u, mat())


def test_solvers():
    x = mat()
    x.solve(mat([[1, 0], [1, 1], [1, 2]]), mat([[1], [3], [5]]))
    np.testing.assert_allclose(np.asarray(x).ravel(), [1, 2], rtol=1e-14)
    b = mat([[7], [8]])
    sqmat([[1, 2], [2, 4]]).solve(b)  # singular: b stays
    assert np.asarray(b).ravel().tolist() == [7, 8]
    u, s, v = mat(), mat(), mat()
    a = np.array([[1.0, 2], [3, 4], [5, 6]])
    mat(a).decompose(u, s, v)
    np.testing.assert_allclose(np.asarray(u) @ np.asarray(s) @ np.asarray(v).T, a, rtol=1e-14)
    dst = mat()
    mat([[0, 1], [1, 0]]).invert(dst)  # regular, but a zero pivot
    assert not np.isfinite(np.asarray(dst)).all()


def test_complex_squares():
    z = tessarn.sqmat_cplx([[1j, 0], [0, 2]])
    assert complex(z.det()) == 2j and complex(z.get(1, 1)) == 2
    b = tessarn.mat_cplx([[1j], [4]])
    z.solve(b)
    assert np.asarray(b).ravel().tolist() == [1, 2]
    assert complex((z * z).get(0, 0)) == -1
    assert complex(tessarn.sqmat_cplx([[0, 1], [1, 0]]).det()) == 0  # not -1: a zero pivot is skipped


def test_the_classic_match_carries_b_onto_a():
    a = np.array([[0.0, 0, 0], [1, 0, 0], [0, 1, 0], [0, 0, 1]])
    b = a[:, [1, 2, 0]]
    m = sqmat()
    assert m.calc_match(a, b)
    centred = b - b.mean(axis=0)
    np.testing.assert_allclose(m.transform(centred), a - a.mean(axis=0), atol=1e-14)
    out = vector3d()
    m.transform(vector3d(1, 2, 3), out)
    np.testing.assert_array_equal(np.asarray(out), m.transform([[1, 2, 3]])[0])
    with pytest.raises(ValueError, match="as many points"):
        m.calc_match(a, b[1:])


def test_copies_of_polynomials_share():
    p = binom([1, 2])
    shared, shallow, deep = binom(p), copy.copy(p), copy.deepcopy(p)
    p.set(0, 5)
    assert (shared.get(0), shallow.get(0), deep.get(0), p.clone().get(0)) == (5, 5, 1, 5)
    p *= p
    assert shared.get(0) == 5 and p.get(0) == 25
    del p
    assert shared(1) == 7
    h = hyperbinom([[1, 2], [3, 4]])
    alike = hyperbinom(h)
    h.set(0, 0, 9)
    assert alike.get(0, 0) == 9


def test_polynomials():
    p = binom([-2, 0, 1])
    x = np.linspace(-2, 2, 9)
    for name in ("func", "func_1", "func_2", "func_3", "func_4", "arc", "arc_1"):
        member = getattr(p, name)
        np.testing.assert_array_equal(member(x), [member(v) for v in x])
        np.testing.assert_array_equal(member(x[::2]), member(x)[::2])
    assert str(p * binom([1, 1])) == "-2 - 2 x + 1 x^2 + 1 x^3" and (2 * p).get(0) == -4 and (-p).get(2) == -1
    d = binom()
    p.func_1(d)
    assert np.asarray(d).tolist() == [0, 2]
    assert p.find_zero(0, 2, 0.1, 1e-9) == pytest.approx(2**0.5, abs=1e-7)
    assert p.find_zero(5, 6, 0.1, 1e-9) == -1
    fitted = binom()
    fitted.create([[0, 1], [1, 3], [-1, 100], [2, 5]], 2)  # x = -1.0 marks a deleted point
    np.testing.assert_allclose(np.asarray(fitted), [1, 2], rtol=1e-14)
    with pytest.raises(MemoryError):
        binom().func_1(d)


def test_surfaces():
    p = hyperbinom([[1, 3], [2, 4]])
    x, y = np.array([1.0, 2]), np.array([[10.0], [20]])
    np.testing.assert_array_equal(p(x, y), 1 + 2 * x + 3 * y + 4 * x * y)
    assert p(1, 1) == 10 and p.getgrade() == 2
    fitted = hyperbinom()
    fitted.create([[0, 0, 1], [1, 0, 3], [0, 1, 4], [1, 1, 10]], 2)
    np.testing.assert_allclose(np.asarray(fitted), np.asarray(p), atol=1e-13)
    with pytest.raises(ValueError, match="w must have"):
        fitted.create([[0, 0, 1]], [1, 2], 2)


def test_planes_and_segments():
    p = plane([[0, 0, 1], [1, 0, 1], [0, 1, 1], [1, 1, 1]])
    assert p.normal == vector3d(0, 0, 1)
    p.normal.x = 5  # a field, not a copy
    assert p.normal.x == 5
    lid, st = plane(vector3d(0, 0, 2), vector3d(0, 0, 1)), vector()
    assert lid.cross(vector3d(1, 3, 1), st) == vector3d(2, 6, 2) and st == vector(2, 6)
    assert lid.distance([[0, 0, 0], [1, 1, 5]]).tolist() == [-2, 3]
    n = vector3d()
    assert plane.CalcNormale(n, None, [[1, 0, 0], [0, 1, 0]]) and abs(n.z) == pytest.approx(1)
    assert not plane.CalcNormale(n, None, None)
    segment = tessarn.line3d(vector3d(0, 0, 0), vector3d(0, 0, 4))
    assert segment.cut_off(lid) and segment.start == vector3d(0, 0, 2)
    assert plane(np.zeros((2, 3))).normal == vector3d()  # fewer than three points: all fields stay 0
