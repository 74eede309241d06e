"""Fixtures that all Python tests share."""

import os
import shutil
import tempfile
from pathlib import Path

import pytest
from program import Program


@pytest.fixture
def program(tmp_path):
    return Program(tmp_path)


@pytest.fixture
def unprivileged_program():
    """The program run by a user whom file modes concern: not root. Copies, as that user may not reach the originals."""
    folder = Path(tempfile.mkdtemp())
    program = Program(folder)
    if os.geteuid() == 0:
        copies = [shutil.copy(file, folder) for file in (program.executable, program.engine_library)]
        program = Program(folder, *map(Path, copies))
        nobody = 65534
        program.popen_options = {"user": nobody, "group": nobody, "extra_groups": []}
        shutil.chown(folder, nobody, nobody)
    yield program
    for closed in filter(Path.is_dir, folder.iterdir()):
        closed.chmod(0o700)
    shutil.rmtree(folder)
