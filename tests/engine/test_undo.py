"""Statements that fail after they have begun to write: every file is, byte for byte, what it was before."""

import os
import signal
import subprocess
import time

import h5py
import numpy as np
import pytest
from broken_files import make_fatal

HOST_REFUSED = -8
DAMAGED = -9


@pytest.fixture(autouse=True)
def _failure_in_the_library(kelvo):
    """The HDF5 library does not give back all memory when it cannot write."""
    kelvo.sanitizer_options |= {"detect_leaks": 0}


# One of each form that writes into a file.
WRITING = [
    "CREATE GROUP new/below TRACK ORDER",
    "CREATE DATASET new INT [2000] VALUES (7)",
    "CREATE DATASET new INT [2000] CHUNK [100] DEFLATE 1 VALUES (7)",
    "CREATE ATTRIBUTE g@new DOUBLE [20] VALUES (1)",
    "CREATE ATTRIBUTE plain@new VARCHAR VALUES ('text')",
    "CREATE SOFT LINK new TO /g/x",
    "CREATE HARD LINK new/link TO /g/x",
    "CREATE EXTERNAL LINK new TO other.h5 x",
    "ALTER DATASET grow DIMENSION [+500]",
    "ALTER DATASET grow DIMENSION [10]",
    "RENAME GROUP g TO below/moved",
    "RENAME DATASET plain TO moved/plain",
    "RENAME ATTRIBUTE plain@units TO g@units",
    "RENAME LINK soft TO moved",
    "RENAME EXTERNAL LINK out TO moved",
    "COPY GROUP g TO copy",
    "COPY DATASET plain TO copy",
    "COPY DATASET text TO copy CHUNK [2] SHUFFLE DEFLATE 3",
    "COPY ATTRIBUTE plain@units TO g@copy",
    "COPY LINK soft TO copy",
    "COPY EXTERNAL LINK out TO copy",
    "DROP GROUP g",
    "DROP DATASET plain",
    "DROP DATASET LIKE '%'",
    "DROP ATTRIBUTE plain LIKE '%'",
    "DROP LINK soft",
    "DROP EXTERNAL LINK out",
    "INSERT INTO plain VALUES (-1)",
    "INSERT INTO plain[3:900:2] VALUES (-1)",
    "INSERT INTO grow APPEND FROM v.csv",
    "INSERT INTO text VALUES ('another', 'longer text than before', '')",
    "INSERT INTO plain@units VALUES ('m')",
    "INSERT INTO grow[0:100] SELECT * FROM grow[5:105]",
    "INSERT INTO early FROM v.csv",
]


def make(path, **options):
    with h5py.File(path, "w", **options) as file:
        file["plain"] = np.arange(1000)
        for name in ("units", "note"):
            file["plain"].attrs[name] = "K"
        file.create_dataset("grow", data=np.arange(1000), maxshape=(None,), chunks=(100,))
        file["text"] = ["one", "two", "three"]
        group = file.create_group("g")
        for i in range(20):
            group[f"x{i}"] = i
        file["g/x"] = file["plain"]
        file["soft"] = h5py.SoftLink("/plain")
        file["out"] = h5py.ExternalLink("other.h5", "/x")
        p = h5py.h5p.create(h5py.h5p.DATASET_CREATE)
        p.set_alloc_time(h5py.h5d.ALLOC_TIME_EARLY)
        h5py.h5d.create(file.id, b"early", h5py.h5t.STD_I32LE, h5py.h5s.create_simple((3000,)), p)


@pytest.fixture
def values(kelvo):
    kelvo.path("v.csv").write_text("".join(f"{i}\n" for i in range(3000)))


@pytest.mark.parametrize("libver", ["earliest", "latest"])
@pytest.mark.parametrize("statement", WRITING)
def test_each_write_fails_once(kelvo, values, statement, libver):
    """The first write of the statement, then the second, and so on until it makes no more."""
    path = kelvo.path("a.h5")
    make(path, libver=libver)
    before = path.read_bytes()
    failures = 0
    while failures < 200:
        kelvo.faults = {"pwrite": failures + 1}
        answer = kelvo.run("USE FILE a.h5", statement)
        if answer.status == 0:
            break
        assert (answer.status, answer.message) == (HOST_REFUSED, f'File "{path}" cannot be written: No space left on device')
        assert path.read_bytes() == before
        failures += 1
    assert failures > 0
    assert path.read_bytes() != before


@pytest.mark.parametrize("statement", WRITING)
def test_full_disk(kelvo, values, statement):
    path = kelvo.path("a.h5")
    make(path)
    before = path.read_bytes()
    for more in (0, 700, 5000):
        answer = kelvo.run_on_full_disk(len(before) + more, "USE FILE a.h5", statement)
        if answer.status != 0:
            assert answer.status == HOST_REFUSED
            assert path.read_bytes() == before
        path.write_bytes(before)


def test_user_block(kelvo):
    path = kelvo.path("a.h5")
    make(path, userblock_size=512)
    content = bytearray(path.read_bytes())
    content[:512] = b"user" * 128
    path.write_bytes(content)
    kelvo.faults = {"pwrite": 3}
    assert kelvo.error("USE FILE a.h5", "INSERT INTO text VALUES ('another', 'text', '')")[0] == HOST_REFUSED
    assert path.read_bytes() == content


def test_family(kelvo):
    """New members are removed, and the old ones are what they were."""
    with h5py.File(kelvo.path("part%d.h5"), "w", driver="family", memb_size=4096) as file:
        file.create_dataset("grow", data=np.arange(1000), maxshape=(None,), chunks=(100,))
    before = {part: part.read_bytes() for part in kelvo.folder.glob("part*.h5")}
    for number in (1, 4, 8, 12):
        kelvo.faults = {"pwrite": number}
        status, _ = kelvo.error("USE FILE part%d.h5", "INSERT INTO grow APPEND SELECT * FROM grow")
        assert status == HOST_REFUSED
        assert {part: part.read_bytes() for part in kelvo.folder.glob("part*.h5")} == before
    kelvo.faults = {}
    kelvo.rows("USE FILE part%d.h5", "INSERT INTO grow APPEND SELECT * FROM grow")
    with h5py.File(kelvo.path("part%d.h5"), "r", driver="family", memb_size=4096) as file:
        assert np.array_equal(file["grow"], np.tile(np.arange(1000), 2))


def test_another_file(kelvo):
    """The file is opened for the statement alone, and what fails is its closing."""
    make(kelvo.path("a.h5"))
    make(kelvo.path("b.h5"))
    before = kelvo.path("b.h5").read_bytes()
    refused = (HOST_REFUSED, f'File "{kelvo.path("b.h5")}" cannot be written: No space left on device')
    failed = 0
    while failed < 200:
        kelvo.faults = {"pwrite": failed + 1}
        answer = kelvo.run("USE FILE a.h5", "COPY GROUP g TO copied IN b.h5")
        if answer.status == 0:
            break
        assert (answer.status, answer.message) == refused
        assert kelvo.path("b.h5").read_bytes() == before
        failed += 1
    assert failed > 3


def test_new_file(kelvo):
    kelvo.faults = {"pwrite": 1}
    assert kelvo.error("CREATE FILE a.h5")[0] == HOST_REFUSED
    assert not kelvo.path("a.h5").exists()
    make(kelvo.path("a.h5"))
    before = kelvo.path("a.h5").read_bytes()
    for number in (1, 3, 9):
        kelvo.faults = {"pwrite": number}
        assert kelvo.error("COPY FILE a.h5 TO b.h5 REPACK")[0] == HOST_REFUSED
        assert sorted(path.name for path in kelvo.folder.glob("*.h5*")) == ["a.h5"]
    kelvo.faults = {"pwrite": 1}
    assert kelvo.error("CREATE OR REPLACE FILE a.h5")[0] == HOST_REFUSED
    assert kelvo.path("a.h5").read_bytes() == before


def test_what_is_dropped_at_the_end_is_cut_off(kelvo):
    """Not before the statement has succeeded, but then."""
    with h5py.File(kelvo.path("a.h5"), "w") as file:
        file["x"] = [1, 2]
        file["large"] = np.zeros(100_000)
    size = kelvo.path("a.h5").stat().st_size
    kelvo.rows("USE FILE a.h5", "DROP DATASET large")
    assert kelvo.path("a.h5").stat().st_size < size - 799_000
    with h5py.File(kelvo.path("a.h5")) as file:
        assert list(file) == ["x"] and list(file["x"]) == [1, 2]


def test_more_than_fits_memory(kelvo):
    """What is written over is 80 MB, of which a part is kept in a temporary file."""
    count = 10_000_000
    with h5py.File(kelvo.path("a.h5"), "w") as file:
        file["x"] = np.arange(count, dtype="i8")
    before = kelvo.path("a.h5").read_bytes()
    np.save(kelvo.path("v.npy"), np.arange(count, dtype="i8")[::-1])
    kelvo.faults = {"pwrite": 75}
    assert kelvo.error("USE FILE a.h5", "INSERT INTO x FROM v.npy")[0] == HOST_REFUSED
    assert kelvo.path("a.h5").read_bytes() == before
    kelvo.faults = {}
    kelvo.rows("USE FILE a.h5", "INSERT INTO x FROM v.npy")
    with h5py.File(kelvo.path("a.h5")) as file:
        assert np.array_equal(file["x"], np.arange(count, dtype="i8")[::-1])


# --- damaged files ---

def test_drop_that_fails_halfway(kelvo):
    """The last of the datasets cannot be dropped: the first ones are there again."""
    with h5py.File(kelvo.path("a.h5"), "w") as file:
        for name in "abcd":
            file.create_dataset(name, data=np.arange(50), chunks=(10,))
        file.flush()
        address = h5py.h5o.get_info(file["d"].id).addr
    content = bytearray(kelvo.path("a.h5").read_bytes())
    content[content.rfind(b"TREE")] ^= 0xFF  # the index of the last one's chunks
    kelvo.path("a.h5").write_bytes(content)
    status, message = kelvo.error("USE FILE a.h5", "DROP DATASET LIKE '%'")
    assert status == DAMAGED and message.startswith('"/d" cannot be dropped: ')
    assert kelvo.path("a.h5").read_bytes() == content
    assert kelvo.rows("USE FILE a.h5", "SHOW DATASET") == list("abcd")
    assert address < len(content)


def test_statement_that_the_library_does_not_survive(kelvo):
    content = make_fatal(kelvo.path("a.h5"))
    fatal = (DAMAGED, f'File "{kelvo.path("a.h5")}" is damaged: it says more than there is of it')
    assert kelvo.error("USE FILE a.h5", "COPY DATASET v TO h CHUNK [1]") == fatal
    assert kelvo.error("USE FILE a.h5", "SELECT * FROM v INTO b.csv") == fatal
    assert kelvo.path("a.h5").read_bytes() == content
    assert [path.name for path in kelvo.folder.glob("*.*") if path.name != ".statements"] == ["a.h5"]


# --- signals ---

def start(kelvo, *statements):
    script = kelvo.path("script")
    script.write_text("\n".join(statements) + "\n")
    return subprocess.Popen([kelvo.program, "--no-status", "--execute-file=script"], cwd=kelvo.folder,
                            env=kelvo.environment(), stdout=subprocess.DEVNULL)


def test_interrupt_in_the_middle(kelvo):
    """The statement comes to its end, or has not been."""
    old, new = np.arange(300_000), np.arange(300_000)[::-1]
    np.savetxt(kelvo.path("v.csv"), new, fmt="%d")
    for delay in (0.005, 0.02, 0.04, 0.08):
        with h5py.File(kelvo.path("a.h5"), "w") as file:
            file["x"] = old
        program = start(kelvo, "USE FILE a.h5", "INSERT INTO x FROM v.csv")
        time.sleep(delay)
        program.send_signal(signal.SIGINT)
        program.wait(timeout=60)
        with h5py.File(kelvo.path("a.h5")) as file:
            found = file["x"][()]
        assert np.array_equal(found, old) or np.array_equal(found, new)


def test_kill_between_statements(kelvo):
    """The file is closed, whole and not locked."""
    make(kelvo.path("a.h5"), libver="latest")
    program = subprocess.Popen([kelvo.program, "--no-status"], cwd=kelvo.folder, env=kelvo.environment(),
                               stdin=subprocess.PIPE, stdout=subprocess.PIPE)
    program.stdin.write(b"USE FILE a.h5\nDROP DATASET plain\nSHOW DATASET\n")
    program.stdin.flush()
    while program.stdout.readline() != b"text\n":  # the last one shown
        pass
    program.kill()
    program.communicate()
    with h5py.File(kelvo.path("a.h5"), "r+") as file:
        assert sorted(file) == ["early", "g", "grow", "out", "soft", "text"]
        assert np.array_equal(file["g/x"], np.arange(1000))
    assert not [name for name in os.listdir(kelvo.folder) if "kelvo" in name]
