"""What the host refuses, statement by statement: status -8, the thing, and the host's own reason."""

import os
import shutil
import subprocess

import h5py
import pytest
from ordinary_user import ORDINARY_USER


@pytest.fixture
def folder(kelvo):
    """A file that can be read, one that cannot, and a directory where nothing can be made, renamed or dropped."""
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        made["x"] = [1, 2]
    kelvo.path("secret.csv").write_text("1\n2\n")
    kelvo.path("secret.csv").chmod(0)
    closed = kelvo.path("closed")
    (closed / "d").mkdir(parents=True)
    (closed / "f.csv").write_text("1\n")
    closed.chmod(0o555)
    yield kelvo
    closed.chmod(0o755)


@pytest.mark.parametrize("statement, message", [
    ("CREATE DIRECTORY closed/x", 'Directory "{}/closed/x" cannot be created: Permission denied'),
    ("CREATE FILE closed/x.h5", 'File "{}/closed/x.h5" cannot be created: Permission denied'),
    ("CREATE OR REPLACE FILE closed/x.h5", 'File "{}/closed/x.h5" cannot be created: Permission denied'),
    ("CREATE FILE none/x.h5", 'File "{}/none/x.h5" cannot be created: No such file or directory'),
    ("CREATE DIRECTORY a.h5/x", 'Directory "{}/a.h5/x" cannot be created: Not a directory'),
    ("RENAME FILE a.h5 TO closed/", 'File "{0}/a.h5" cannot be renamed to "{0}/closed/a.h5": Permission denied'),
    ("RENAME FILE closed/f.csv TO f.csv", 'File "{0}/closed/f.csv" cannot be renamed to "{0}/f.csv": Permission denied'),
    ("RENAME DIRECTORY closed/d TO d", 'Directory "{0}/closed/d" cannot be renamed to "{0}/d": Permission denied'),
    ("COPY FILE a.h5 TO closed/", 'File "{}/closed/a.h5" cannot be created: Permission denied'),
    ("COPY FILE a.h5 TO closed/ REPACK", 'File "{}/closed/a.h5" cannot be created: Permission denied'),
    ("COPY FILE secret.csv TO b.csv", 'File "{}/secret.csv" cannot be opened: Permission denied'),
    ("DROP FILE closed/f.csv", 'File "{}/closed/f.csv" cannot be dropped: Permission denied'),
    ("DROP FILE closed LIKE '%'", 'File "{}/closed/f.csv" cannot be dropped: Permission denied'),
    ("DROP DIRECTORY closed/d", 'Directory "{}/closed/d" cannot be dropped: Permission denied'),
    ("SELECT * FROM x INTO closed/o.csv", 'File "{}/closed/o.csv" cannot be created: Permission denied'),
    ("SELECT * FROM x INTO OR REPLACE closed/f.csv", 'File "{}/closed/f.csv" cannot be created: Permission denied'),
    ("INSERT INTO x FROM secret.csv", 'File "{}/secret.csv" cannot be read: Permission denied'),
])
def test_refusals(folder, statement, message):
    # What is in use is neither renamed nor copied.
    in_use = ["USE FILE a.h5"] if " x " in statement else []
    assert folder.error(*in_use, statement, **ORDINARY_USER) == (-8, message.format(folder.folder))
    assert sorted(os.listdir(folder.folder)) == ["a.h5", "closed", "secret.csv"]
    assert sorted(os.listdir(folder.path("closed"))) == ["d", "f.csv"]
    with h5py.File(folder.path("a.h5")) as made:
        assert made["x"][...].tolist() == [1, 2]


def test_directory_in_use_that_is_gone(kelvo):
    gone = kelvo.path("gone")
    gone.mkdir()

    def go_there():
        os.chdir(gone)
        shutil.rmtree(gone)

    run = subprocess.run([kelvo.program, "--no-status", "--execute=SHOW USE DIRECTORY"], env=kelvo.environment(),
                         preexec_fn=go_there, capture_output=True, text=True)
    assert (run.returncode, run.stdout, run.stderr) == (
        1, "The directory in use cannot be read: No such file or directory (USE DIRECTORY puts another one in use) "
           "(status -8).\n", "")
