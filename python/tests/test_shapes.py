"""Motions, planes, lines, circles, spheres and cylinders."""
import numpy as np
import pytest

import tessarn


def turned(random):
    q, _ = np.linalg.qr(random.normal(size=(3, 3)))
    return q * np.sign(np.linalg.det(q))


def test_a_motion_comes_back(random):
    r, t = turned(random), np.array([1.0, 2, 3])
    a = random.normal(size=(50, 3))
    m = tessarn.align(a, 2 * a @ r.T + t, scale=True)
    assert m.ok and m.scale == pytest.approx(2)
    np.testing.assert_allclose(m.rotation, r, atol=1e-14)
    np.testing.assert_allclose(m.translation, t, atol=1e-13)
    np.testing.assert_allclose(m.map(a), 2 * a @ r.T + t, atol=1e-13)
    np.testing.assert_array_equal(m.map(a[0]), m.map(a)[0])
    assert m.distances.shape == (50,) and m.differences.shape == (50, 3)


def test_a_mirror_image_is_asked_for(random):
    a = random.normal(size=(20, 3))
    b = a * [1, 1, -1]
    assert not tessarn.align(a, b).reflected and tessarn.align(a, b).root_mean_square > 0.1
    assert tessarn.align(a, b, reflections=True).reflected


def test_motions_of_the_plane():
    m = tessarn.align([[0, 0], [2, 0]], [[1, 1], [1, 3]])
    assert isinstance(m, tessarn.PlaneAlignment) and m.map([0, 2]).tolist() == [-1, 1]
    np.testing.assert_array_equal(m.rotation, [[0, -1], [1, 0]])


def test_motions_that_are_not_determined():
    line = np.outer(np.arange(4.0), [1, 2, 3])
    m = tessarn.align(line, line)
    assert m.status == tessarn.Status.collinear
    np.testing.assert_allclose(m.map(line), line, atol=1e-12)
    assert tessarn.align(line[:2], line[:2]).status == tessarn.Status.too_few_points
    with pytest.raises(ValueError, match="no motion"):
        tessarn.align(line[:2], line[:2]).map(line)


def test_wrong_shapes_of_pairs():
    with pytest.raises(ValueError, match=r"as many points, not the shapes \(3, 3\) and \(4, 3\)"):
        tessarn.align(np.zeros((3, 3)), np.zeros((4, 3)))
    with pytest.raises(ValueError, match=r"b must have the shape \(n, 2\), not \(3, 3\)"):
        tessarn.align(np.zeros((3, 2)), np.zeros((3, 3)))
    with pytest.raises(ValueError, match=r"a must have the shape \(n, 2\) or \(n, 3\), not \(3, 4\)"):
        tessarn.align(np.zeros((3, 4)), np.zeros((3, 4)))
    with pytest.raises(ValueError, match="w must have a weight for each of the 3 pairs"):
        tessarn.align(np.zeros((3, 3)), np.zeros((3, 3)), w=[1, 2])
    m = tessarn.align(np.eye(3), np.eye(3))
    with pytest.raises(ValueError, match=r"points must have the shape \(3,\) or \(n, 3\)"):
        m.map([[1, 2]])


def test_flatness(random):
    points = random.uniform(-10, 10, (100, 3))
    points[:, 2] = 0.1 * points[:, 0] + random.normal(size=100) / 1000
    f = tessarn.flatness(points)
    assert f.ok and f.least_squares.ok and f.touching.shape == (4,)
    centred = points - points.mean(axis=0)
    normal = np.linalg.svd(centred)[2][2]
    np.testing.assert_allclose(np.abs(f.least_squares.normal @ normal), 1, rtol=1e-14)
    assert f.zone <= f.least_squares.peak_to_valley
    assert f.middle.residuals.max() == pytest.approx(f.zone / 2, rel=1e-12)
    points[7] = np.nan
    assert tessarn.flatness(points).status == tessarn.Status.not_finite
    left_out = tessarn.flatness(points, leave_out_not_finite=True)
    assert left_out.ok and np.isnan(left_out.middle.residuals[7])


def test_round_shapes(random):
    angles = random.uniform(0, 2 * np.pi, 60)
    circle = np.column_stack([3 + 2 * np.cos(angles), 4 + 2 * np.sin(angles)])
    c = tessarn.fit_circle(circle)
    np.testing.assert_allclose([*c.centre, c.radius], [3, 4, 2], atol=1e-13)
    unit = random.normal(size=(80, 3))
    unit /= np.linalg.norm(unit, axis=1)[:, None]
    s = tessarn.fit_sphere(unit * 5 + [1, 2, 3])
    np.testing.assert_allclose([*s.centre, s.radius], [1, 2, 3, 5], atol=1e-13)
    around = np.column_stack([circle, random.uniform(0, 9, 60)])
    r = turned(random)
    y = tessarn.fit_cylinder(around @ r.T)
    assert y.radius == pytest.approx(2) and abs(y.direction @ r[:, 2]) == pytest.approx(1)
    line = tessarn.fit_line(np.outer(np.arange(5.0), [1, 2, 2]) + [0, 0, 1])
    np.testing.assert_allclose(line.direction, [1 / 3, 2 / 3, 2 / 3], rtol=1e-15)
    assert tessarn.fit_circle(circle, w=np.ones(60)).radius == c.radius
    assert tessarn.fit_circle([[0, 0], [1, 1], [2, 2]]).status == tessarn.Status.collinear
    assert tessarn.fit_circle(circle, most_steps=0).status == tessarn.Status.bad_option
