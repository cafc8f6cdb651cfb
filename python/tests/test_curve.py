"""Zeros and extreme points."""
import numpy as np
import pytest

import tessarn


def test_every_way_to_give_a_polynomial():
    c = [-6.0, 11, -6, 1]  # (x - 1) (x - 2) (x - 3)
    fitted = tessarn.polyfit(np.arange(5), np.polynomial.polynomial.polyval(np.arange(5), c), 3)
    for p in (c, np.array(c), np.repeat(c, 2)[::2], tessarn.binom(c), fitted):
        z = tessarn.zeros(p)
        assert z.ok and z.at.tolist() == [1, 2, 3] and len(z) == 3
    assert fitted.zeros(1.5, 9).at.tolist() == [2, 3]
    assert [e.is_maximum for e in fitted.extremes()] == [True, False]
    assert fitted.inflections().at.tolist() == [2]
    assert len(fitted.curvature_extremes(0, 4)) > 0


def test_zeros_are_enclosed():
    z = tessarn.zeros([-2, 0, 1])
    for place, sign in zip(z, (-1, 1)):
        assert place.lower < place.upper == np.nextafter(place.lower, np.inf)
        assert place.at == pytest.approx(sign * 2**0.5, rel=1e-16) and place.multiplicity == 1
    np.testing.assert_array_equal(np.asarray(z), z.at)
    assert z[-1].at == z[1].at
    with pytest.raises(IndexError):
        z[2]


def test_statuses():
    assert tessarn.zeros([0.0]).status == tessarn.Status.identically_zero
    assert tessarn.zeros([1, 1], 2, 1).status == tessarn.Status.bad_interval
    assert tessarn.zeros([1, np.nan]).status == tessarn.Status.not_finite
    none = tessarn.zeros([1, 0, 1])
    assert none.ok and len(none) == 0 and none.at.shape == (0,)
    with pytest.raises(ValueError, match="p must have 1 dimension"):
        tessarn.zeros([[1, 2]])


def test_the_parabola_is_sharpest_at_its_vertex():
    k = tessarn.curvature_extremes(tessarn.binom([0, 0, 2]), -1, 1)
    assert k[0].at == 0 and k[0].radius == 0.25 and k.curvature.tolist() == [4]
