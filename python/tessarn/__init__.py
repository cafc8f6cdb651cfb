"""Curves, surfaces, planes and motions from measured points, with the same bits on every machine.

>>> p = tessarn.polyfit([0, 1, 2, 3], [1, 3, 7, 13], 2)
>>> p.coef, p(10), p.status.name
(array([1., 1., 1.]), 111.0, 'ok')

Functions answer with a result that carries a status; they raise ValueError and TypeError for wrong shapes and types alone.
"""
from ._core import *  # noqa: F401,F403
from ._core import __version__ as __version__
