"""Fixtures that the engine's Python tests share."""

import pytest
from statements import Kelvo


@pytest.fixture
def kelvo(tmp_path):
    return Kelvo(tmp_path)
