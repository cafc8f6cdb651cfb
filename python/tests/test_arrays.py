"""What functions take and refuse: types, strides, sizes, threads."""
import threading
import time

import numpy as np
import pytest

import tessarn
from results import same_results

X = np.arange(8.0)
Y = X**2 - 3 * X


@pytest.mark.parametrize("kind", ["int8", "uint64", "float16", "float32", "longdouble", ">f8", ">i4", "bool", "object"])
def test_other_types_are_converted(kind):
    x = np.array([0, 1, 0, 1]).astype(kind)
    assert tessarn.polyfit(x, [1, 3, 1, 3], 1).coef.tolist() == [1, 2]


@pytest.mark.parametrize(
    "x",
    [
        np.array([1j, 2, 3]),
        np.array(["1", "2", "3"]),
        np.array(["2020-01-01"] * 3, dtype="M8[D]"),
        np.array([(1,), (2,), (3,)], dtype=[("a", float)]),
        [object()] * 3,
        None,
        {1, 2, 3},
    ],
    ids=str,
)
def test_what_is_no_real_number_is_refused(x):
    with pytest.raises((TypeError, ValueError)):
        tessarn.polyfit(x, [1, 2, 3], 1)


def test_none_is_nan_as_numpy_converts_it():
    assert tessarn.polyfit([None, 1, 2], [1, 2, 3], 1).status == tessarn.Status.not_finite


def test_ragged_lists_are_refused():
    with pytest.raises(ValueError):
        tessarn.fit_line([[1, 2, 3], [4, 5]])


def views():
    def spread(a):
        wide = np.zeros((a.size, 3))
        wide[:, 1] = a
        return wide[:, 1]

    def unaligned(a):
        return np.frombuffer(b"\0" + a.tobytes(), dtype=np.uint8)[1:].view(a.dtype)

    def fixed(a):
        a = a.copy()
        a.flags.writeable = False
        return a

    return {
        "strided": spread,
        "backwards": lambda a: a[::-1].copy()[::-1],
        "unaligned": unaligned,
        "read-only": fixed,
        "swapped": lambda a: a.astype(">f8"),
        "object": lambda a: a.astype(object),
        "list": list,
        "tuple": tuple,
    }


@pytest.mark.parametrize("name", views())
def test_every_layout_gives_the_same_bits(name):
    view = views()[name]
    assert same_results(tessarn.polyfit(view(X), view(Y), 2), tessarn.polyfit(X, Y, 2))


@pytest.mark.parametrize("order", ["C", "F"])
def test_points_of_either_order(order, random):
    points = random.normal(size=(40, 3))
    for fit in (tessarn.flatness, tessarn.fit_line, tessarn.fit_sphere):
        assert same_results(fit(points), fit(np.asarray(points, order=order)))
        assert same_results(fit(points), fit(points[::-1][::-1]))
        assert same_results(fit(points), fit(np.hstack([points, points])[:, 3:]))


def test_broadcast_arrays_are_views_like_others():
    x = np.broadcast_to(2.0, 5)
    assert tessarn.polyfit(x, x, 0).coef.tolist() == [2]


def test_more_points_than_the_library_counts():
    many = np.broadcast_to(1.0, 2**32)
    with pytest.raises(ValueError, match="more than 4294967295"):
        tessarn.polyfit(many, many, 1)
    with pytest.raises(ValueError, match="more than 4294967295"):
        tessarn.fit_line(np.broadcast_to(1.0, (2**32, 3)))


@pytest.mark.parametrize("shape", [(3,), (4, 2), (4, 4), (3, 4), (2, 3, 3), ()])
def test_points_of_another_shape(shape):
    with pytest.raises(ValueError, match=r"points must have the shape \(n, 3\), not \("):
        tessarn.fit_sphere(np.zeros(shape))


def test_no_points():
    for fit, k in [
        (tessarn.fit_line, 3),
        (tessarn.fit_circle, 2),
        (tessarn.fit_sphere, 3),
        (tessarn.fit_cylinder, 3),
        (tessarn.flatness, 3),
    ]:
        assert fit(np.empty((0, k))).status == tessarn.Status.no_points
    assert tessarn.align(np.empty((0, 2)), np.empty((0, 2))).status == tessarn.Status.no_points


def test_results_cannot_be_written_and_outlive_their_owner():
    p = tessarn.polyfit(X, Y, 2)
    coefficients = p.coef
    with pytest.raises(ValueError, match="read-only"):
        coefficients[0] = 1
    with pytest.raises(AttributeError):
        p.coef = coefficients
    expected = coefficients.copy()
    del p
    np.testing.assert_array_equal(coefficients, expected)


def test_arguments_stay_as_they_are():
    x, y = X.copy(), Y.copy()
    tessarn.polyfit(x, y, 2)
    tessarn.solve(np.outer(x, y) + np.eye(8), y)
    np.testing.assert_array_equal(x, X)
    np.testing.assert_array_equal(y, Y)


def test_threads_give_the_same_bits(random):
    x = random.normal(size=20000)
    y = random.normal(size=20000)
    expected = tessarn.polyfit(x, y, 8)
    found = []

    def work():
        for _ in range(20):
            found.append(same_results(tessarn.polyfit(x, y, 8), expected))

    threads = [threading.Thread(target=work) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert found == [True] * 80


def test_the_lock_is_released(random):
    """While one thread computes, another one runs Python code."""
    points = random.normal(size=(20000, 3))
    steps, interval = [], []

    def fit():
        interval.append(time.monotonic())
        tessarn.fit_cylinder(points)
        interval.append(time.monotonic())

    for _ in range(5):  # on a busy machine the other thread may be kept waiting for a whole fit
        steps.clear()
        interval.clear()
        thread = threading.Thread(target=fit)
        thread.start()
        while thread.is_alive():
            steps.append(time.monotonic())
        begin, end = interval
        # With the lock held there is no step between the call and its return, except next to these two.
        if any(begin + (end - begin) / 4 < step < end - (end - begin) / 4 for step in steps):
            return
    pytest.fail("no step of Python while the library computed")
