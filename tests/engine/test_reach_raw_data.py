"""External raw data are read and written only in files in or below the directory of the file that names them."""

import os

import pytest
from reach import MISSING, WRONG_KIND, outside, raw


def test_raw_data_below_the_directory(kelvo, home):
    (home / "sub").mkdir()
    (home / "b.raw").write_bytes(b"\x01\x02")
    (home / "sub/c.raw").write_bytes(b"\x03\x04")
    raw(home / "a.h5", "b.raw", "sub/c.raw")
    assert kelvo.rows("USE FILE home/a.h5", "SELECT * FROM r") == ["1", "2", "3", "4"]
    kelvo.rows("USE FILE home/a.h5", "INSERT INTO r VALUES (5, 6, 7, 8)")
    assert (home / "b.raw").read_bytes() + (home / "sub/c.raw").read_bytes() == b"\x05\x06\x07\x08"


def test_raw_data_beside_the_file_not_in_the_working_directory(kelvo, home):
    kelvo.path("b.raw").write_bytes(b"\x01\x01\x01\x01")
    (home / "b.raw").write_bytes(b"\x02\x02\x02\x02")
    raw(home / "a.h5", "b.raw")
    assert kelvo.rows("USE FILE home/a.h5", "SELECT * FROM r") == ["2", "2", "2", "2"]


READING = ["SELECT * FROM r", "SELECT * FROM r[0]", "INSERT INTO r VALUES (0)"]


@pytest.mark.parametrize("statement", READING)
def test_raw_data_in_a_system_file(kelvo, home, statement):
    raw(home / "a.h5", "/etc/passwd")
    assert kelvo.error("USE FILE home/a.h5", statement) == outside('Dataset "/r"', "/etc/passwd")


@pytest.mark.parametrize("statement", READING)
def test_raw_data_out_of_the_directory(kelvo, home, statement):
    kelvo.path("other/b.raw").write_bytes(b"\x01\x02\x03\x04")
    raw(home / "a.h5", "../other/b.raw")
    assert kelvo.error("USE FILE home/a.h5", statement) == outside('Dataset "/r"', kelvo.path("other/b.raw"))
    assert kelvo.path("other/b.raw").read_bytes() == b"\x01\x02\x03\x04"


@pytest.mark.parametrize("target", ["../other/b.raw", "/etc/passwd"])
def test_raw_data_through_a_symbolic_link(kelvo, home, target):
    kelvo.path("other/b.raw").write_bytes(b"\x01\x02\x03\x04")
    (home / "b.raw").symlink_to(target)
    raw(home / "a.h5", "b.raw")
    assert kelvo.error("USE FILE home/a.h5", "SELECT * FROM r") == outside('Dataset "/r"', home / "b.raw")


def test_the_second_raw_file_counts_too(kelvo, home):
    (home / "b.raw").write_bytes(b"\x01\x02")
    raw(home / "a.h5", "b.raw", "/etc/passwd")
    assert kelvo.error("USE FILE home/a.h5", "SELECT * FROM r") == outside('Dataset "/r"', "/etc/passwd")


def test_raw_data_in_a_named_pipe_does_not_block(kelvo, home):
    os.mkfifo(home / "pipe")
    raw(home / "a.h5", "pipe")
    assert kelvo.error("USE FILE home/a.h5", "SELECT * FROM r") == (
        WRONG_KIND, f'Dataset "/r" reaches for "{home}/pipe", which is not a regular file')


def test_raw_data_are_not_made_elsewhere(kelvo, home):
    """Writing makes a raw data file that is not there: neither outside, nor at the end of a dangling symbolic link."""
    raw(home / "a.h5", "../other/new.raw")
    assert kelvo.error("USE FILE home/a.h5", "INSERT INTO r VALUES (1)") == outside('Dataset "/r"',
                                                                                   kelvo.path("other/new.raw"))
    (home / "link.raw").symlink_to("../other/new.raw")
    raw(home / "b.h5", "link.raw")
    assert kelvo.error("USE FILE home/b.h5", "INSERT INTO r VALUES (1)") == (
        MISSING, f'Dataset "/r" reaches for "{home}/link.raw": No such file or directory')
    assert list(kelvo.path("other").iterdir()) == []
