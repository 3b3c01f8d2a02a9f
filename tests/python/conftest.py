"""Signals for the tests of the Python package."""

import numpy as np
import pytest


@pytest.fixture(scope="session")
def noise():
    """One second of stereo at 48000 Hz, float32, standard deviation 0.05. Read-only."""
    samples = np.random.default_rng(1).normal(0, 0.05, (48000, 2)).astype("float32")
    samples.flags.writeable = False
    return samples
