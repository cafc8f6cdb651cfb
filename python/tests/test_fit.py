"""Fits of polynomials and surfaces."""
import numpy as np
import pytest

import tessarn
from results import same_results


@pytest.fixture
def points(random):
    x = np.linspace(-3, 5, 200)
    return x, 1 - 2 * x + 0.5 * x**3 + random.normal(size=x.size) / 10


def test_agrees_with_numpy(points):
    x, y = points
    p = tessarn.polyfit(x, y, 3)
    assert p.ok and p.status == tessarn.Status.ok and p.message == "The result holds."
    np.testing.assert_allclose(np.asarray(p), np.polyfit(x, y, 3), rtol=1e-10)
    np.testing.assert_array_equal(p.coef, np.asarray(p)[::-1])
    np.testing.assert_allclose(p(x), np.polyval(p, x), rtol=1e-12)


def test_standard_errors_are_those_of_numpy(points):
    x, y = points
    _, covariance = np.polyfit(x, y, 3, cov=True)
    p = tessarn.polyfit(x, y, 3)
    np.testing.assert_allclose(p.coef_errors, np.sqrt(np.diag(covariance))[::-1], rtol=1e-9)
    assert p.residual_deviation == pytest.approx(np.sqrt(np.sum((y - p(x)) ** 2) / (x.size - 4)), rel=1e-12)
    residuals = y - p(x)
    assert p.largest_at == np.argmax(np.abs(residuals))
    assert p.largest_residual == pytest.approx(residuals[p.largest_at], rel=1e-12)


def test_weights_are_those_of_numpy(points, random):
    x, y = points
    w = random.uniform(0.1, 2, x.size)
    np.testing.assert_allclose(np.asarray(tessarn.polyfit(x, y, 2, w=w)), np.polyfit(x, y, 2, w=w), rtol=1e-10)


def test_coefficients_unpack_from_the_highest_power():
    slope, height = tessarn.polyfit([0, 1, 2], [1, 3, 5], 1)
    assert (slope, height) == (2, 1)
    p = tessarn.polyfit([0, 1, 2], [1, 3, 5], 1)
    assert len(p) == 2 and p[0] == 2 and p[-1] == 1 and list(p[:]) == [2, 1]
    np.testing.assert_array_equal(np.polynomial.Polynomial(p.coef).coef, [1, 2])
    np.testing.assert_array_equal(np.poly1d(p).c, [2, 1])


def test_values_keep_the_shape():
    p = tessarn.polyfit([0, 1, 2, 3], [1, 3, 7, 13], 2)
    assert isinstance(p(2), float) and p(2) == 7
    assert p(np.float64(2)) == 7 and p(np.array(2)) == 7
    np.testing.assert_array_equal(p([[0, 1], [2, 3]]), [[1, 3], [7, 13]])
    out = np.empty(3)
    assert p([0, 1, 2], out=out) is out and list(out) == [1, 3, 7]
    by_columns = np.empty((2, 2), order="F")
    p([[0, 1], [2, 3]], out=by_columns)
    np.testing.assert_array_equal(by_columns, [[1, 3], [7, 13]])
    x = np.arange(4.0)
    p(x, out=x)
    assert list(x) == [1, 3, 7, 13]
    memory = np.arange(5.0)
    p(memory[:4], out=memory[1:])
    assert list(memory) == [0, 1, 3, 7, 13]


def test_wrong_outputs_are_refused():
    p = tessarn.polyfit([0, 1], [1, 3], 1)
    with pytest.raises(ValueError, match=r"shape of x, \(3,\), not \(2,\)"):
        p([1, 2, 3], out=np.empty(2))
    with pytest.raises(TypeError, match="float64"):
        p([1, 2], out=np.empty(2, dtype=int))
    fixed = np.empty(2)
    fixed.flags.writeable = False
    with pytest.raises(ValueError, match="read-only"):
        p([1, 2], out=fixed)


def test_options(points):
    x, y = points
    assert tessarn.polyfit(x, y, 3, powers="odd").coef[[0, 2]].tolist() == [0, 0]
    p = tessarn.polyfit(x, y, 1, fixed=[7, np.nan])
    assert p.coef[0] == 7 and p.coef_errors[0] == 0 and p.unknowns == 1
    spoilt = y.copy()
    spoilt[3] = np.nan
    assert tessarn.polyfit(x, spoilt, 1).status == tessarn.Status.not_finite
    kept = tessarn.polyfit(x, spoilt, 1, leave_out_not_finite=True)
    assert kept.ok and kept.points_left_out == 1 and kept.points_used == 199


def test_prediction(points):
    x, y = points
    p = tessarn.polyfit(x, y, 3)
    at = p.predict([0.0, 100.0], 2)
    np.testing.assert_array_equal(at.value, p([0.0, 100.0]))
    assert at.mean[1] > at.mean[0] > 0 and (at.observation > at.mean).all()
    assert isinstance(p.predict(0, 2).mean, float)


@pytest.mark.parametrize(
    "x, y, degree, status",
    [
        ([], [], 1, "no_points"),
        ([1], [1], 1, "too_few_points"),
        ([2, 2, 2], [1, 2, 3], 1, "too_few_distinct"),
        ([0, np.inf], [1, 2], 1, "not_finite"),
        ([0, 1], [1, 2], 2000, "bad_option"),
    ],
)
def test_points_that_determine_nothing(x, y, degree, status):
    p = tessarn.polyfit(x, y, degree)
    assert not p.ok and p.status.name == status and p.message and p.coef.size == 0
    for ask in (lambda: p(1), lambda: np.asarray(p), lambda: list(p), lambda: p.zeros(), lambda: p.expanded()):
        with pytest.raises(ValueError, match="no coefficients"):
            ask()
    assert status in repr(p)


def test_wrong_shapes_are_named():
    with pytest.raises(ValueError, match=r"x and y must have one length, not \(2,\) and \(3,\)"):
        tessarn.polyfit([1, 2], [1, 2, 3], 1)
    with pytest.raises(ValueError, match=r"y must have 1 dimension, not the shape \(2, 1\)"):
        tessarn.polyfit([1, 2], [[1], [2]], 1)
    with pytest.raises(ValueError, match=r"x and w must have one length"):
        tessarn.polyfit([1, 2], [1, 2], 1, w=[1])
    with pytest.raises(ValueError, match="deg must be 0 or more"):
        tessarn.polyfit([1, 2], [1, 2], -1)
    with pytest.raises(ValueError, match="fixed must have deg"):
        tessarn.polyfit([1, 2], [1, 2], 1, fixed=[1])
    with pytest.raises(ValueError, match="powers must be"):
        tessarn.polyfit([1, 2], [1, 2], 1, powers="even")
    with pytest.raises(TypeError):
        tessarn.polyfit([1, 2], [1, 2], 1.5)
    with pytest.raises(TypeError):
        tessarn.polyfit([1, 2], [1, 2], 1, [1, 1])  # weights are named


def test_a_robust_fit_leaves_an_outlier(points):
    x, y = points
    y[50] = 1e6
    f = tessarn.fit_robust(x, y, 3)
    assert f.ok and f.weights[50] == 0 and f.weights.shape == x.shape
    np.testing.assert_allclose(f.fit.coef, [1, -2, 0, 0.5], atol=0.05)
    assert f(0) == f.fit(0)
    assert tessarn.fit_robust(x, y, 3, weigh_by="huber").weights[50] > 0
    with pytest.raises(ValueError, match="weigh_by"):
        tessarn.fit_robust(x, y, 3, weigh_by="none")


def test_surfaces(random):
    x, y = random.uniform(-1, 1, (2, 300))
    z = 1 + 2 * x - 3 * y + 4 * x * y
    p = tessarn.fit_surface(x, y, z, 3)
    assert p.ok and p.coef.shape == (3, 3)
    np.testing.assert_allclose(p(x, y), np.polynomial.polynomial.polyval2d(x, y, p.coef), atol=1e-13)
    np.testing.assert_allclose(p.coef[:2, :2], [[1, -3], [2, 4]], atol=1e-13)
    assert isinstance(p(0.5, 0.5), float) and p(np.zeros(4), 0.5).shape == (4,)
    np.testing.assert_allclose(p.expanded()(x, y), p(x, y), atol=1e-12)
    assert tessarn.fit_surface(x, y, z, 3, total_degree=True).unknowns == 6
    z[0] = 1e5
    assert tessarn.fit_robust_surface(x, y, z, 2).weights[0] == 0
    with pytest.raises(ValueError, match="x and z must have one length"):
        tessarn.fit_surface(x, y, z[1:], 2)


def test_strides_change_no_bit(random):
    table = random.normal(size=(50, 4))
    dense = tessarn.polyfit(table[:, 1].copy(), table[:, 3].copy(), 4)
    assert same_results(dense, tessarn.polyfit(table[:, 1], table[:, 3], 4))
    assert same_results(dense, tessarn.polyfit(table[::-1, 1][::-1], list(table[:, 3]), 4))
