"""Linear systems, inverses and determinants."""
from fractions import Fraction

import numpy as np
import pytest

import tessarn


def test_systems(random):
    a, b = random.normal(size=(30, 30)), random.normal(size=30)
    s = tessarn.solve(a, b)
    assert s.ok and s.x.shape == (30,) and s.rank == 30
    expected = np.linalg.solve(a, b)
    np.testing.assert_allclose(s.x, expected, rtol=1e-10)
    np.testing.assert_array_equal(np.asarray(s), s.x)
    assert (s.error <= 1e-15 * np.abs(s.x).max() * 10).all()
    np.testing.assert_array_equal(tessarn.solve(a.T, b).x, tessarn.solve(a.T.copy(), b).x)


def test_the_bound_of_the_error_holds():
    hilbert = [[Fraction(1, i + j + 1) for j in range(6)] for i in range(6)]
    a = np.array(hilbert, dtype=float)
    exact = [[Fraction(v) for v in row] for row in a]
    x = [Fraction(k + 1) for k in range(6)]
    b = np.array([float(sum(p * q for p, q in zip(row, x))) for row in exact])
    s = tessarn.solve(a, b)
    for row, right in zip(exact, b):  # the residual of the true solution is 0; that of s.x is within its bound
        off = abs(sum(p * Fraction(q) for p, q in zip(row, s.x)) - Fraction(right))
        assert off <= sum(abs(p) * Fraction(e) for p, e in zip(row, s.error))


def test_singular_systems_answer_by_their_status():
    s = tessarn.solve([[1, 2], [2, 4]], [1, 1])
    assert s.status == tessarn.Status.singular and s.x.size == 0 and s.message == "The matrix is singular."
    with pytest.raises(ValueError, match="no solution: The matrix is singular"):
        np.asarray(s)
    assert tessarn.inverse([[1, 2], [2, 4]]).status == tessarn.Status.singular
    assert tessarn.solve([[np.nan]], [1]).status == tessarn.Status.not_finite
    assert tessarn.solve(np.empty((0, 0)), []).status == tessarn.Status.no_unknowns


def test_shapes_are_checked():
    with pytest.raises(ValueError, match=r"a must be square, not of the shape \(2, 3\)"):
        tessarn.solve(np.zeros((2, 3)), [1, 2])
    with pytest.raises(ValueError, match=r"as many rows, not the shapes \(2, 2\) and \(3,\)"):
        tessarn.solve(np.zeros((2, 2)), [1, 2, 3])
    with pytest.raises(ValueError, match="b must have 1 dimension"):
        tessarn.solve(np.eye(2), np.eye(2))
    with pytest.raises(ValueError, match="a must have 2 dimensions"):
        tessarn.determinant([1, 2])
    with pytest.raises(ValueError, match="square"):
        tessarn.inverse(np.zeros((2, 3)))
    with pytest.raises(ValueError, match="square"):
        tessarn.solve(np.zeros((2, 3), complex), [1, 2])


def test_complex_systems(random):
    a = random.normal(size=(5, 5)) + 1j * random.normal(size=(5, 5))
    b = random.normal(size=5)
    s = tessarn.solve(a, b)
    assert isinstance(s, tessarn.ComplexSolution) and s.ok and s.x.dtype == complex
    np.testing.assert_allclose(a @ s.x, b, atol=1e-13)
    np.testing.assert_allclose(tessarn.inverse(a).inverse @ a, np.eye(5), atol=1e-13)


def test_least_squares(random):
    a, b = random.normal(size=(50, 4)), random.normal(size=50)
    s = tessarn.least_squares(a, b)
    x, residues, rank, _ = np.linalg.lstsq(a, b, rcond=None)
    np.testing.assert_allclose(s.x, x, rtol=1e-11)
    assert s.rank == rank == 4 and s.residual == pytest.approx(np.sqrt(residues[0]), rel=1e-12)
    covariance = np.linalg.inv(a.T @ a) * residues[0] / 46
    np.testing.assert_allclose(s.standard_errors, np.sqrt(np.diag(covariance)), rtol=1e-10)
    deficient = tessarn.least_squares([[1, 2], [2, 4], [3, 6]], [1, 2, 3])
    assert deficient.status == tessarn.Status.rank_deficient and deficient.rank == 1


def test_inverse_and_determinant(random):
    a = random.normal(size=(6, 6))
    i = tessarn.inverse(a)
    np.testing.assert_allclose(i.inverse, np.linalg.inv(a), rtol=1e-9)
    assert i.error.shape == (6, 6) and i.ok
    d = tessarn.determinant(a)
    assert float(d) == d.value == pytest.approx(np.linalg.det(a), rel=1e-12) and d.error < abs(d.value) * 1e-15
    assert d.fraction * 2.0**d.exponent == d.value
    large = tessarn.determinant(np.eye(300) * 1e10)
    assert large.status == tessarn.Status.out_of_range and large.exponent == 9965
    with pytest.raises(ValueError):
        float(large)
