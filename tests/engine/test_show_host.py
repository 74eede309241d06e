"""SHOW FILE, DIRECTORY, FILE VALIDITY and FILE SIZE: the host's files, against os and pathlib."""

import os

import h5py
import pytest
from ordinary_user import ORDINARY_USER


@pytest.fixture
def folder(kelvo):
    (kelvo.path("d") / "sub" / "deep").mkdir(parents=True)
    (kelvo.path("d") / "empty").mkdir()
    for name in ("b.h5", "a.txt", ".hidden", "sub/c.h5", "sub/deep/d.h5", "sub.x"):
        (kelvo.path("d") / name).write_text("x" * 10)
    (kelvo.path("d") / "to_dir").symlink_to("sub")
    (kelvo.path("d") / "to_file").symlink_to("b.h5")
    (kelvo.path("d") / "dangling").symlink_to("nowhere")
    return kelvo


def test_files_and_directories(folder):
    assert folder.rows("SHOW FILE d") == [".hidden", "a.txt", "b.h5", "sub.x", "to_file"]
    assert folder.rows("SHOW DIRECTORY d") == ["empty", "sub", "to_dir"]
    assert folder.rows("USE DIRECTORY d/sub", "SHOW FILE", "SHOW DIRECTORY") == ["c.h5", "deep"]
    assert folder.rows("USE DIRECTORY d/sub", "SHOW DIRECTORY ..") == ["empty", "sub", "to_dir"]


def test_recursive_does_not_go_through_symbolic_links(folder):
    (folder.path("d") / "sub" / "up").symlink_to("..")
    found = [os.path.relpath(os.path.join(where, name), folder.path("d"))
             for where, _, names in os.walk(folder.path("d")) for name in names]
    assert sorted(folder.rows("SHOW FILE d RECURSIVE")) == sorted(name for name in found if name != "dangling")
    assert folder.rows("SHOW DIRECTORY d RECURSIVE") == ["empty", "sub", "sub/deep", "sub/up", "to_dir"]


def test_patterns(folder):
    assert folder.rows("SHOW FILE d LIKE '%.h5'") == ["b.h5"]
    assert folder.rows("SHOW FILE d RECURSIVE LIKE '%.h5'") == ["b.h5", "sub/c.h5", "sub/deep/d.h5"]
    assert folder.rows("SHOW FILE d GLOB '*.h5'", "SHOW FILE d GLOB '*/*.h5'") == ["b.h5", "sub/c.h5"]
    assert folder.rows("SHOW FILE d GLOB '**/d.h5'") == ["sub/deep/d.h5"]


def test_home_directory(folder):
    assert folder.rows("SHOW DIRECTORY ~/d/sub") == ["deep"]


def test_validity(kelvo):
    with h5py.File(kelvo.path("good.h5"), "w") as file:
        file["x"] = range(1000)
    kelvo.path("text.h5").write_text("no")
    kelvo.path("empty.h5").write_bytes(b"")
    kelvo.path("cut.h5").write_bytes(kelvo.path("good.h5").read_bytes()[:3000])
    kelvo.path("d").mkdir()
    names = ["good.h5", "text.h5", "empty.h5", "cut.h5", "d"]
    assert kelvo.rows(*(f"SHOW FILE VALIDITY {name}" for name in names)) == ["YES", "NO", "NO", "NO", "NO"]
    assert kelvo.rows("USE FILE good.h5", "SHOW FILE VALIDITY good.h5") == ["YES"]


def test_file_that_is_being_written_is_valid(kelvo):
    with h5py.File(kelvo.path("a.h5"), "w", libver="latest") as file:
        file["x"] = 1
        file.flush()
        assert kelvo.row("SHOW FILE VALIDITY a.h5") == "YES"
        assert kelvo.rows("CREATE FILE IF NOT EXISTS a.h5") == []


def test_file_size(kelvo):
    with h5py.File(kelvo.path("a.h5"), "w", userblock_size=512) as file:
        file["x"] = range(100)
    kelvo.path("text").write_text("12345")
    size = str(os.path.getsize(kelvo.path("a.h5")))
    assert kelvo.rows("SHOW FILE SIZE a.h5", "SHOW FILE SIZE text", "USE FILE a.h5", "SHOW FILE SIZE") == [
        size, "5", size]


@pytest.mark.parametrize("statement, error", [
    ("SHOW FILE nope", (-3, 'Directory "{}/nope" does not exist')),
    ("SHOW DIRECTORY nope", (-3, 'Directory "{}/nope" does not exist')),
    ("SHOW FILE d/b.h5", (-5, '"{}/d/b.h5" is a file, not a directory')),
    ("SHOW FILE d BY ORDER",
     (-1, 'Expected LIKE, GLOB, RECURSIVE or the end of the statement, found "BY"', 13)),
    ("SHOW FILE VALIDITY nope", (-3, 'File "{}/nope" does not exist')),
    ("SHOW FILE VALIDITY", (-1, "Expected a file, found the end of the statement", 19)),
    ("SHOW FILE SIZE nope", (-3, 'File "{}/nope" does not exist')),
    ("SHOW FILE SIZE d", (-5, 'File "{}/d" is a directory (SHOW FILE lists the files in it)')),
])
def test_errors(folder, statement, error):
    status, message, *position = error
    assert folder.error(statement) == (status, message.format(folder.folder), *position)


def test_directory_that_may_not_be_read(kelvo):
    kelvo.path("closed").mkdir(mode=0)
    kelvo.path("below").mkdir()
    (kelvo.path("below") / "closed").mkdir(mode=0)
    refusal = f'Directory "{kelvo.folder}/%s" cannot be read: Permission denied'
    assert kelvo.error("SHOW FILE closed", **ORDINARY_USER) == (-8, refusal % "closed")
    assert kelvo.error("SHOW FILE below RECURSIVE", **ORDINARY_USER) == (-8, refusal % "below/closed")
    assert kelvo.rows("SHOW DIRECTORY below", **ORDINARY_USER) == ["closed"]
    assert kelvo.error("USE DIRECTORY closed", **ORDINARY_USER) == (
        -8, f'Directory "{kelvo.folder}/closed" cannot be used: Permission denied')
