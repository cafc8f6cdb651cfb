"""Numbers that every run draws alike."""
import numpy as np
import pytest


@pytest.fixture
def random() -> np.random.Generator:
    return np.random.default_rng(20)
