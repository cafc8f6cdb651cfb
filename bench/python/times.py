"""Times of the module beside NumPy and SciPy, for the same data in one run."""
import timeit

import numpy
import scipy.linalg
import scipy.optimize
import scipy.spatial.transform

import tessarn

RANDOM = numpy.random.default_rng(1)


def svd_alignment(a, b):
    """The motion from a to b, as it is written with NumPy (W. Kabsch, 1976)."""
    ca, cb = a.mean(axis=0), b.mean(axis=0)
    u, _, vt = numpy.linalg.svd((a - ca).T @ (b - cb))
    sign = numpy.sign(numpy.linalg.det(u @ vt))
    rotation = vt.T @ numpy.diag([1, 1, sign]) @ u.T
    return rotation, cb - rotation @ ca


def svd_plane(points):
    centre = points.mean(axis=0)
    return centre, numpy.linalg.svd(points - centre, full_matrices=False)[2][2]


def svd_line(points):
    centre = points.mean(axis=0)
    return centre, numpy.linalg.svd(points - centre, full_matrices=False)[2][0]


def searched_round(points):
    """A circle or a sphere by SciPy's search for the least sum of squared distances."""
    start = numpy.append(points.mean(axis=0), points.std())
    return scipy.optimize.least_squares(lambda p: numpy.linalg.norm(points - p[:-1], axis=1) - p[-1], start).x


def scipy_alignment(a, b):
    return scipy.spatial.transform.Rotation.align_vectors(b - b.mean(axis=0), a - a.mean(axis=0))


def fits():
    for degree in (1, 3, 8):
        for n in (20, 1000, 100000):
            x, y = RANDOM.uniform(2, 8, n), RANDOM.normal(size=n)
            yield ("polynomial fit", f"degree {degree}, {n:,} points", {
                "polyfit": lambda: tessarn.polyfit(x, y, degree), "numpy.polyfit": lambda: numpy.polyfit(x, y, degree),
                "Polynomial.fit": lambda: numpy.polynomial.Polynomial.fit(x, y, degree)})  # fmt: skip
    for n in (100, 10000):
        x, y, z = RANDOM.uniform(-1, 1, (3, n))
        yield ("surface fit, 3 x 3 terms", f"{n:,} points", {
            "fit_surface": lambda: tessarn.fit_surface(x, y, z, 3),
            "numpy polyvander2d, lstsq": lambda: numpy.linalg.lstsq(
                numpy.polynomial.polynomial.polyvander2d(x, y, [2, 2]), z, rcond=None)})  # fmt: skip


def evaluations():
    c = RANDOM.normal(size=6)
    p, fit = tessarn.binom(c), tessarn.polyfit(RANDOM.normal(size=50), RANDOM.normal(size=50), 5)
    for n in (1, 1000, 100000):
        x = RANDOM.uniform(-1, 1, n)
        yield ("values of a polynomial, degree 5", f"{n:,}", {
            "binom": lambda: p(x), "PolynomialFit": lambda: fit(x), "numpy.polyval": lambda: numpy.polyval(c, x),
            "numpy.polynomial polyval": lambda: numpy.polynomial.polynomial.polyval(x, c)})  # fmt: skip
    roots = RANDOM.uniform(-3, 3, 5)
    coefficients = numpy.poly(roots)[::-1]
    yield ("real zeros", "degree 5", {"zeros": lambda: tessarn.zeros(coefficients),
                                      "numpy.roots": lambda: numpy.roots(coefficients[::-1])})  # fmt: skip


def systems():
    for n in (3, 10, 50, 200):
        a, b = RANDOM.normal(size=(n, n)), RANDOM.normal(size=n)
        m, right = tessarn.sqmat(a), b[:, None]

        def classic():
            x = tessarn.mat(right)
            m.solve(x)
            return x

        yield ("solve", f"{n}", {"solve": lambda: tessarn.solve(a, b), "sqmat.solve": classic,
                                 "numpy.linalg.solve": lambda: numpy.linalg.solve(a, b),
                                 "scipy.linalg.solve": lambda: scipy.linalg.solve(a, b)})  # fmt: skip
    for n in (3, 10, 50):
        a = RANDOM.normal(size=(n, n))
        m, rows = tessarn.sqmat(a), tessarn.mat(a)
        ours = {"inverse": lambda: tessarn.inverse(a)}
        if n < 50:  # the adjugate takes n^5 steps
            ours["mat.invert"] = lambda: rows.invert(tessarn.mat())
        yield ("inverse", f"{n}", {**ours, "numpy.linalg.inv": lambda: numpy.linalg.inv(a),
                                   "scipy.linalg.inv": lambda: scipy.linalg.inv(a)})  # fmt: skip
        yield ("determinant", f"{n}", {"determinant": lambda: tessarn.determinant(a), "sqmat.det": m.det,
                                       "numpy.linalg.det": lambda: numpy.linalg.det(a),
                                       "scipy.linalg.det": lambda: scipy.linalg.det(a)})  # fmt: skip
    for m, n in ((20, 3), (1000, 10), (10000, 4)):
        a, b = RANDOM.normal(size=(m, n)), RANDOM.normal(size=m)
        left, right = tessarn.mat(a), tessarn.mat(b[:, None])
        yield ("least squares", f"{m:,} x {n}", {
            "least_squares": lambda: tessarn.least_squares(a, b), "mat.solve": lambda: tessarn.mat().solve(left, right),
            "numpy.linalg.lstsq": lambda: numpy.linalg.lstsq(a, b, rcond=None),
            "scipy.linalg.lstsq": lambda: scipy.linalg.lstsq(a, b)})  # fmt: skip


def shapes():
    for n in (10, 1000, 100000):
        a = RANDOM.normal(size=(n, 3))
        b = a[:, [1, 2, 0]] + RANDOM.normal(size=(n, 3)) / 1000
        yield ("motion of points onto others", f"{n:,}", {
            "align": lambda: tessarn.align(a, b), "sqmat.calc_match": lambda: tessarn.sqmat().calc_match(b, a),
            "numpy SVD": lambda: svd_alignment(a, b),
            "Rotation.align_vectors": lambda: scipy_alignment(a, b)})  # fmt: skip
        flat = a * [10, 10, 0.01]
        yield ("plane through points", f"{n:,}", {
            "flatness": lambda: tessarn.flatness(flat), "plane": lambda: tessarn.plane(flat),
            "numpy SVD": lambda: svd_plane(flat)})  # fmt: skip
        yield ("line through points", f"{n:,}", {"fit_line": lambda: tessarn.fit_line(flat),
                                                 "numpy SVD": lambda: svd_line(flat)})  # fmt: skip
    for n in (20, 1000):
        unit = RANDOM.normal(size=(n, 3)) + 0.01
        unit /= numpy.linalg.norm(unit, axis=1)[:, None]
        sphere = unit * RANDOM.normal(5, 0.01, (n, 1)) + [1, 2, 3]
        flat = unit[:, :2] / numpy.linalg.norm(unit[:, :2], axis=1)[:, None] * RANDOM.normal(5, 0.01, (n, 1))
        yield ("circle", f"{n:,} points", {"fit_circle": lambda: tessarn.fit_circle(flat),
                                           "scipy least_squares": lambda: searched_round(flat)})  # fmt: skip
        yield ("sphere", f"{n:,} points", {"fit_sphere": lambda: tessarn.fit_sphere(sphere),
                                           "scipy least_squares": lambda: searched_round(sphere)})  # fmt: skip


def measured(calls):
    """The least time of each call over rounds in turn, in microseconds."""
    numbers = {}
    for name, call in calls.items():
        call()
        numbers[name] = max(1, int(0.02 / max(timeit.timeit(call, number=1), 1e-7)))
    best = dict.fromkeys(calls, float("inf"))
    for _ in range(7):
        for name, call in calls.items():
            best[name] = min(best[name], timeit.timeit(call, number=numbers[name]) / numbers[name] * 1e6)
    return best


def rows():
    for group in (fits, evaluations, systems, shapes):
        for what, size, calls in group():
            yield {"what": what, "size": size, "us": measured(calls)}


def is_peer(name):
    return name.startswith(("numpy", "scipy", "Polynomial.", "Rotation."))


def short(us):
    return f"{us:,.1f}" if us < 100 else f"{us:,.0f}"


def ratio(r):
    return f"{r:.2f}" if r >= 0.1 else f"{r:.3f}"


def table(found):
    lines = [
        "| what | size | Tessarn, µs | best of NumPy and SciPy, µs | their time over ours |",
        "|---|---|---|---|--:|",
    ]
    for row in found:
        peer = min((name for name in row["us"] if is_peer(name)), key=row["us"].get)
        ours = [name for name in row["us"] if not is_peer(name)]
        cells = " · ".join(f"`{name}` {short(row['us'][name])}" for name in ours)
        ratios = " · ".join(ratio(row["us"][peer] / row["us"][name]) for name in ours)
        lines.append(f"| {row['what']} | {row['size']} | {cells} | `{peer}` {short(row['us'][peer])} | {ratios} |")
    return "\n".join(lines) + "\n"
