"""Opening files: every cause of a failure told apart, and the files that open in spite of looking odd."""

import fcntl
import os
import signal
import socket
import subprocess
import sys

import h5py
import numpy as np
import pytest
from ordinary_user import ORDINARY_USER

DAMAGED = -9


@pytest.fixture
def simple(kelvo):
    """A file with one dataset, in the oldest format."""
    path = kelvo.path("simple.h5")
    with h5py.File(path, "w") as file:
        file["numbers"] = np.arange(3, dtype="int32")
    return path


def refusal(kelvo, name, why):
    return f'File "{kelvo.path(name)}" {why}'


def test_missing_file(kelvo):
    assert kelvo.error("USE FILE none.h5") == (-3, refusal(kelvo, "none.h5", "does not exist"))


def test_missing_directory(kelvo):
    assert kelvo.error("USE FILE no/none.h5") == (-3, refusal(kelvo, "no/none.h5", "does not exist"))


def test_a_file_is_no_directory(kelvo, simple):
    assert kelvo.error("USE FILE simple.h5/x.h5") == (-3, refusal(kelvo, "simple.h5/x.h5", "does not exist"))


def test_directory(kelvo):
    kelvo.path("folder").mkdir()
    assert kelvo.error("USE FILE folder") == (
        -5, refusal(kelvo, "folder", "is a directory (SHOW FILE lists the files in it)"))


def test_dangling_symbolic_link(kelvo):
    kelvo.path("link.h5").symlink_to("none.h5")
    assert kelvo.error("USE FILE link.h5") == (-3, refusal(kelvo, "link.h5", "does not exist"))


def test_symbolic_link_to_itself(kelvo):
    kelvo.path("link.h5").symlink_to("link.h5")
    assert kelvo.error("USE FILE link.h5") == (
        -8, refusal(kelvo, "link.h5", "cannot be opened: Too many levels of symbolic links"))


def test_name_too_long_for_the_host(kelvo):
    name = "n" * 300
    assert kelvo.error(f"USE FILE {name}") == (-8, refusal(kelvo, name, "cannot be opened: File name too long"))


def test_no_permission_to_read(kelvo):
    with h5py.File(kelvo.path("x.h5"), "w") as file:
        file["numbers"] = [1]
    kelvo.path("x.h5").chmod(0)
    assert kelvo.error("USE FILE x.h5", **ORDINARY_USER) == (
        -8, refusal(kelvo, "x.h5", "cannot be opened: Permission denied"))


def test_no_permission_to_write(kelvo):
    with h5py.File(kelvo.path("x.h5"), "w") as file:
        file["numbers"] = [1]
    kelvo.path("x.h5").chmod(0o444)
    assert kelvo.rows("USE FILE x.h5", "SELECT * FROM numbers", **ORDINARY_USER) == ["1"]
    assert kelvo.error("USE FILE x.h5", "CREATE GROUP g", **ORDINARY_USER) == (
        -8, refusal(kelvo, "x.h5", "cannot be opened for writing: Permission denied"))


def test_empty_file(kelvo):
    kelvo.path("empty.h5").touch()
    assert kelvo.error("USE FILE empty.h5") == (DAMAGED, refusal(kelvo, "empty.h5", "is not an HDF5 file: it is empty"))


@pytest.mark.parametrize("content, why", [
    (b"hello, world\n", ""),
    (b"\x00" * 4096, ""),
    (b"CDF\x01" + b"\x00" * 40, ": it looks like netCDF classic (nccopy -k nc4 converts it)"),
    (b"CDF\x02" + b"\x00" * 40, ": it looks like netCDF classic (nccopy -k nc4 converts it)"),
    (b"\x0e\x03\x13\x01" + b"\x00" * 40, ": it looks like HDF4 (h4toh5 converts it)"),
    (b"\x1f\x8b\x08\x00", ": it looks like compressed by gzip; unpack it first"),
    (b"PK\x03\x04rest", ": it looks like a zip archive; unpack it first"),
    (b"BZh91AY", ": it looks like compressed by bzip2; unpack it first"),
    (b"\xfd7zXZ\x00", ": it looks like compressed by xz; unpack it first"),
    (b"\x28\xb5\x2f\xfd\x00", ": it looks like compressed by zstd; unpack it first"),
    (b"version https://git-lfs.github.com/spec/v1\n",
     ": it looks like a pointer of Git LFS; git lfs pull fetches the file"),
    (b"<!DOCTYPE html><title>404</title>", ": it looks like a page of HTML or XML, as a failed download leaves it"),
    (b"\x93NUMPY\x01\x00", ": it looks like a NumPy file"),
    (b"\x89HDF\n\x1a\n" + b"\x00" * 600,
     " any more: its first bytes were changed, as a transfer in text mode does; copy it again from its source"),
    (b"\tHDF\r\n\x1a\n" + b"\x00" * 600,
     " any more: its first bytes were changed, as a transfer in text mode does; copy it again from its source"),
], ids=["text", "zeros", "netcdf-1", "netcdf-2", "hdf4", "gzip", "zip", "bzip2", "xz", "zstd", "git-lfs", "html", "numpy",
        "line-ends-changed", "eighth-bit-dropped"])
def test_not_an_hdf5_file(kelvo, content, why):
    kelvo.path("other").write_bytes(content)
    assert kelvo.error("USE FILE other") == (DAMAGED, refusal(kelvo, "other", f"is not an HDF5 file{why}"))


@pytest.mark.parametrize("libver, missing", [("earliest", 1), ("earliest", 700), ("latest", 1), ("latest", 100)])
def test_truncated_file(kelvo, libver, missing):
    path = kelvo.path("cut.h5")
    with h5py.File(path, "w", libver=libver) as file:
        file["numbers"] = np.arange(1000)
    size = path.stat().st_size
    os.truncate(path, size - missing)
    assert kelvo.error("USE FILE cut.h5") == (DAMAGED, refusal(
        kelvo, "cut.h5", f"is truncated: it has {size - missing} of {size} bytes; copy it again from its source"))


@pytest.mark.parametrize("libver", ["earliest", "latest"])
def test_truncated_file_behind_a_user_block(kelvo, libver):
    path = kelvo.path("cut.h5")
    with h5py.File(path, "w", libver=libver, userblock_size=1024) as file:
        file["numbers"] = np.arange(1000)
    size = path.stat().st_size
    os.truncate(path, size - 10)
    assert kelvo.error("USE FILE cut.h5") == (DAMAGED, refusal(
        kelvo, "cut.h5", f"is truncated: it has {size - 10} of {size} bytes; copy it again from its source"))


LEFT_OPEN = ("is still open for writing, or was left open by a program that crashed (wait for its writer, or clear the "
             "mark with h5clear -s)")


def test_left_open_by_a_crashed_program(kelvo):
    program = ("import h5py, os, signal\n"
               "file = h5py.File('left.h5', 'w', libver='latest')\n"
               "file['numbers'] = [1, 2, 3]\n"
               "file.flush()\n"
               "os.kill(os.getpid(), signal.SIGKILL)\n")
    crashed = subprocess.run([sys.executable, "-c", program], cwd=kelvo.folder, check=False)
    assert crashed.returncode == -signal.SIGKILL
    assert kelvo.error("USE FILE left.h5") == (DAMAGED, refusal(kelvo, "left.h5", LEFT_OPEN))
    subprocess.run(["h5clear", "-s", kelvo.path("left.h5")], check=True, capture_output=True)
    assert kelvo.rows("USE FILE left.h5", "SELECT * FROM numbers") == ["1", "2", "3"]


def test_still_open_for_writing(kelvo):
    with h5py.File(kelvo.path("busy.h5"), "w", libver="latest") as file:
        file["numbers"] = [1, 2, 3]
        file.flush()
        assert kelvo.error("USE FILE busy.h5") == (DAMAGED, refusal(kelvo, "busy.h5", LEFT_OPEN))
    assert kelvo.rows("USE FILE busy.h5", "SELECT * FROM numbers") == ["1", "2", "3"]


def test_locked_by_another_program(kelvo, simple):
    descriptor = os.open(simple, os.O_RDWR)
    fcntl.flock(descriptor, fcntl.LOCK_EX)
    try:
        # Readers take no lock, so nobody's lock stands in their way.
        assert kelvo.rows("USE FILE simple.h5", "SELECT * FROM numbers") == ["0", "1", "2"]
        assert kelvo.error("USE FILE simple.h5", "CREATE GROUP g") == (DAMAGED, refusal(
            kelvo, "simple.h5", "is locked by another program; try again when that has closed it"))
    finally:
        os.close(descriptor)
    assert kelvo.rows("USE FILE simple.h5", "CREATE GROUP g", "SHOW GROUP") == ["g"]


def test_reading_does_not_lock(kelvo, simple):
    """A writer is not kept out by a session that only reads; nothing is locked between statements either."""
    with subprocess.Popen([os.environ["KELVO_PROGRAM"], "--no-status"], cwd=kelvo.folder, env=kelvo.environment(),
                          stdin=subprocess.PIPE, stdout=subprocess.PIPE) as session:
        session.stdin.write(b"USE FILE simple.h5\nSELECT * FROM numbers\nCREATE GROUP g\nSHOW GROUP\n")
        session.stdin.flush()
        # The last statement's row says that the ones before are done. What is typed is repeated behind a prompt.
        while session.stdout.readline() != b"g\n":
            pass
        descriptor = os.open(simple, os.O_RDWR)
        fcntl.flock(descriptor, fcntl.LOCK_EX | fcntl.LOCK_NB)
        os.close(descriptor)
        session.stdin.write(b"exit\n")
        session.stdin.close()
        session.stdout.read()


@pytest.mark.parametrize("libver", ["earliest", "latest"])
def test_made_by_a_newer_library(kelvo, libver):
    path = kelvo.path("newer.h5")
    with h5py.File(path, "w", libver=libver) as file:
        file["numbers"] = [1]
    content = bytearray(path.read_bytes())
    content[8] = 4  # the superblock's version
    path.write_bytes(content)
    assert kelvo.error("USE FILE newer.h5") == (
        -7, refusal(kelvo, "newer.h5", "was made by a newer HDF5 library; update the one in use"))


def test_named_pipe_does_not_block(kelvo):
    os.mkfifo(kelvo.path("pipe.h5"))
    assert kelvo.error("USE FILE pipe.h5") == (-5, refusal(kelvo, "pipe.h5", "is a named pipe, not a regular file"))


def test_socket(kelvo, monkeypatch):
    monkeypatch.chdir(kelvo.folder)  # a socket's path has at most 107 bytes
    with socket.socket(socket.AF_UNIX) as listener:
        listener.bind("socket.h5")
        assert kelvo.error("USE FILE socket.h5") == (-5, refusal(kelvo, "socket.h5", "is a socket, not a regular file"))


def test_device(kelvo):
    assert kelvo.error("USE FILE /dev/zero") == (-5, 'File "/dev/zero" is a device, not a regular file')


def test_open_for_reading_under_another_name(kelvo, simple):
    """HDF5 cannot have one file open for reading and writing at once."""
    kelvo.path("alias.h5").symlink_to("simple.h5")
    assert kelvo.error("USE FILE alias.h5", "USE FILE simple.h5", "CREATE GROUP g") == (
        DAMAGED, refusal(kelvo, "simple.h5", "is open for reading in this program; close it there first"))


def test_control_bytes_in_a_name_stay_on_the_line(kelvo):
    assert kelvo.error('USE FILE "a\tb"') == (-3, f'File "{kelvo.folder}/a\\x09b" does not exist')


@pytest.mark.parametrize("size", [512, 1024, 65536])
def test_user_block(kelvo, size):
    with h5py.File(kelvo.path("block.h5"), "w", userblock_size=size) as file:
        file["numbers"] = [1, 2]
    with open(kelvo.path("block.h5"), "r+b") as file:
        file.write(b"MATLAB 7.3 MAT-file")
    assert kelvo.rows("USE FILE block.h5", "SELECT * FROM numbers") == ["1", "2"]
    kelvo.rows("USE FILE block.h5", "INSERT INTO numbers VALUES (3, 4)")
    with h5py.File(kelvo.path("block.h5")) as file:
        assert file.userblock_size == size
        assert list(file["numbers"]) == [3, 4]


@pytest.mark.parametrize("pattern, second", [("part%d.h5", "part1.h5"), ("part%03d.h5", "part001.h5"),
                                             ("%5d", "    1")])
def test_family(kelvo, pattern, second):
    values = np.arange(5000, dtype="int32")
    with h5py.File(kelvo.path(pattern), "w", driver="family", memb_size=4096) as file:
        file["numbers"] = values
    assert kelvo.path(second).exists()
    assert kelvo.rows(f"USE FILE {pattern}", "SELECT * FROM numbers") == [str(value) for value in values]
    assert kelvo.rows(f"SELECT * FROM /numbers[4999] IN {pattern}") == ["4999"]
    kelvo.rows(f"USE FILE {pattern}", "INSERT INTO numbers[4999] VALUES (-1)")
    with h5py.File(kelvo.path(pattern), "r", driver="family", memb_size=4096) as file:
        assert file["numbers"][4999] == -1


def test_family_in_a_folder_with_a_percent_sign(kelvo):
    """The library takes a family's name for a format of printf; a folder's name is none."""
    folder = kelvo.path("100%s")
    folder.mkdir()
    with h5py.File(kelvo.path("part%d.h5"), "w", driver="family", memb_size=2048) as file:
        file["numbers"] = np.arange(600)
    for part in kelvo.folder.glob("part*.h5"):
        part.rename(folder / part.name)
    assert kelvo.rows("SELECT * FROM /numbers[1:3] IN 100%s/part%d.h5") == ["1", "2"]


def test_family_with_a_part_missing(kelvo):
    with h5py.File(kelvo.path("part%d.h5"), "w", driver="family", memb_size=4096) as file:
        file["numbers"] = np.arange(5000)
    last = max(kelvo.folder.glob("part*.h5"), key=lambda path: int(path.stem[4:]))
    last.unlink()
    status, message = kelvo.error("USE FILE part%d.h5")
    assert status == DAMAGED
    assert message.startswith(refusal(kelvo, "part%d.h5", "is truncated: it has "))


@pytest.mark.parametrize("version", ["earliest", "latest"])
def test_one_file_of_a_family(kelvo, version):
    with h5py.File(kelvo.path("part%d.h5"), "w", driver="family", memb_size=4096, libver=version) as file:
        file["numbers"] = np.arange(5000)
    assert kelvo.error("USE FILE part0.h5") == (DAMAGED, refusal(
        kelvo, "part0.h5", "is one file of a family (with %d in the place of its number the name opens them all)"))


def test_one_file_of_the_split_driver(kelvo):
    with h5py.File(kelvo.path("run"), "w", driver="split") as file:
        file["numbers"] = np.arange(50)
    assert kelvo.error("USE FILE run-m.h5") == (-7, refusal(
        kelvo, "run-m.h5", "is one file of several that were written by the split or multi driver; this engine reads "
        "single files and families"))


@pytest.mark.parametrize("name", ["part%d.h5", "%s", "%n%n%d", "%d%d", "a%.h5", "%99999999999999999999d", "%"])
def test_names_that_could_be_formats(kelvo, name):
    assert kelvo.error(f"USE FILE {name}") == (-3, refusal(kelvo, name, "does not exist"))


@pytest.mark.parametrize("pattern, first", [("part%d.h5", "part0.h5"), ("run1_%03d.h5", "run1_000.h5")])
def test_one_file_of_a_family_of_an_old_library(kelvo, pattern, first):
    """Which wrote no driver's name into it."""
    with h5py.File(kelvo.path(pattern), "w", driver="family", memb_size=4096) as file:
        file["numbers"] = np.arange(5000)
    content = bytearray(kelvo.path(first).read_bytes())
    driver_address = slice(48, 56)  # in a superblock of version 0
    content[driver_address] = b"\xff" * 8
    content = content.replace(b"NCSAfami", bytes(8))
    kelvo.path(first).write_bytes(content)
    assert kelvo.error(f"USE FILE {first}") == (DAMAGED, refusal(
        kelvo, first, "is one file of a family (with %d in the place of its number the name opens them all)"))


def test_truncated_file_beside_another_one(kelvo):
    for name in ("run9.h5", "run10.h5"):
        with h5py.File(kelvo.path(name), "w") as file:
            file["numbers"] = np.arange(5000)
    content = kelvo.path("run9.h5").read_bytes()
    kelvo.path("run9.h5").write_bytes(content[:4096])
    assert kelvo.error("USE FILE run9.h5") == (DAMAGED, refusal(
        kelvo, "run9.h5", f"is truncated: it has 4096 of {len(content)} bytes; copy it again from its source"))


def test_file_that_only_looks_like_a_family(kelvo):
    with h5py.File(kelvo.path("run%d.h5"), "w") as file:
        file["numbers"] = [7]
    assert kelvo.rows("USE FILE run%d.h5", "SELECT * FROM numbers") == ["7"]


def test_home_directory(kelvo, simple):
    assert kelvo.rows("USE FILE ~/simple.h5", "SHOW USE FILE") == [str(simple)]
    assert kelvo.error("USE FILE ~/none.h5") == (-3, refusal(kelvo, "none.h5", "does not exist"))


@pytest.mark.parametrize("name, valid", [
    ("simple.h5", "YES"), (".", "NO"), ("text", "NO"), ("cut.h5", "NO")])
def test_validity(kelvo, simple, name, valid):
    kelvo.path("text").write_text("text")
    kelvo.path("cut.h5").write_bytes(simple.read_bytes()[:-1])
    assert kelvo.row(f"SHOW FILE VALIDITY {name}") == valid
