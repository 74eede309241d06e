"""Fixtures that the engine's Python tests share."""

import pytest

pytest.register_assert_rewrite("statements", "oracle", "notation", "examples")
from statements import Kelvo  # noqa: E402 -- only what is imported after that is rewritten


@pytest.fixture
def kelvo(tmp_path):
    return Kelvo(tmp_path)
