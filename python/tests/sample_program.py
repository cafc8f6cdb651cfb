"""A program of a user, for the type checker: it is run by the tests as well."""
from typing import List

import numpy as np
import numpy.typing as npt

import tessarn


def sharpest(x: npt.NDArray[np.float64], y: npt.NDArray[np.float64]) -> List[float]:
    fit: tessarn.PolynomialFit = tessarn.polyfit(x, y, 4, w=np.ones(x.size))
    if not fit.ok:
        raise ValueError(fit.message)
    places: tessarn.CurvePoints = fit.curvature_extremes(float(x[0]), float(x[-1]))
    return [place.at for place in places if place.is_maximum]


def main() -> None:
    x = np.linspace(-1, 1, 21)
    found = sharpest(x, x**4 + x**2)
    assert len(found) == 1 and abs(found[0]) < 1e-5
    motion = tessarn.align(np.eye(3), np.eye(3) + 1)
    moved: npt.NDArray[np.float64] = motion.map([0, 0, 0])
    assert moved.tolist() == [1, 1, 1]
    p = tessarn.binom([1, 2, 3])
    total: tessarn.binom = p * p + 2 * p
    assert total.getcofcnt() == 5
    status: tessarn.Status = tessarn.fit_line([[0, 0, 0]]).status
    print(status.name, tessarn.selfcheck().passed)


if __name__ == "__main__":
    main()
