"""Fixtures that all Python tests share."""

from pathlib import Path

import pytest
from ordinary_user import ORDINARY_USER
from program import Program


@pytest.fixture
def program(tmp_path):
    return Program(tmp_path)


@pytest.fixture
def unprivileged_program(program):
    """The program run by a user whom file modes concern."""
    program.popen_options = ORDINARY_USER
    yield program
    for closed in filter(Path.is_dir, program.folder.iterdir()):
        closed.chmod(0o700)
