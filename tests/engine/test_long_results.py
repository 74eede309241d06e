"""Results of many blocks: what is read for its errors first and again for its rows, rows that go on from block to block,
and reading that fails when a part of the rows has been shown."""

import re
import subprocess

import h5py
import numpy as np
import pytest
from statements import TIMEOUT_SECONDS

COUNT_LINE = re.compile(rb"\x1b\[1m\((\d+) elements? returned in \d+\.\d seconds\)\x1b\[0m\n")
READ_AHEAD = 64 * 1024 * 1024  # bytes of values that are read before the first row
LENGTH = 300_000  # elements of 8 bytes: several blocks, whatever their size


def shown_with_count(kelvo, statement):
    """The rows of a statement and how many elements the program says there were."""
    command = [kelvo.program, "--execute=" + statement]
    output = subprocess.run(command, cwd=kelvo.folder, env=kelvo.environment(), stdin=subprocess.DEVNULL,
                            stdout=subprocess.PIPE, timeout=TIMEOUT_SECONDS, check=True).stdout
    count = COUNT_LINE.search(output)
    assert count is not None and count.end() == len(output)
    return output[:count.start()].decode().split("\n")[:-1], int(count[1])


# Data that lies in the file as it does in memory is read twice; all other data but once. Both must look the same.
LAYOUTS = {"plain": {}, "chunks": {"chunks": (7_001,)}, "deflate": {"chunks": (7_001,), "compression": 1},
           "other byte order": {"dtype": ">i8"}}


@pytest.mark.parametrize("layout", LAYOUTS)
@pytest.mark.parametrize("query, chosen", [
    ("* FROM /x IN a.h5", slice(None)),
    ("VALUE FROM /x IN a.h5", slice(None)),
    ("* FROM /x[1000:299000] IN a.h5", slice(1000, 299_000)),
    ("* FROM /x[5::7] IN a.h5", slice(5, None, 7)),
    ("* FROM /x IN a.h5 LIMIT 250000 OFFSET 40000", slice(40_000, 290_000)),
    ("* FROM /x IN a.h5 LIMIT 5 OFFSET 299998", slice(299_998, None)),
    ("* FROM /x[100:] IN a.h5 LIMIT 3 OFFSET 200000", slice(200_100, 200_103)),
    ("* FROM /x IN a.h5 FORMAT TEXT", slice(None)),
    ("* FROM /x IN a.h5 WHERE VALUE % 2 = 1", slice(1, None, 2))])
def test_rows_come_once(kelvo, layout, query, chosen):
    with h5py.File(kelvo.path("a.h5"), "w") as file:
        file.create_dataset("x", data=np.arange(LENGTH), **LAYOUTS[layout])
    rows, count = shown_with_count(kelvo, "SELECT " + query)
    expected = [str(value) for value in range(LENGTH)[chosen]]
    assert rows == expected
    assert count == len(expected)


def test_plain_compounds_come_once(kelvo):
    values = np.zeros(LENGTH // 2, [("a", "<i4"), ("b", "<i2")])
    values["a"] = np.arange(len(values))
    values["b"] = values["a"] % 1000
    with h5py.File(kelvo.path("a.h5"), "w") as file:
        file["x"] = values
    rows, count = shown_with_count(kelvo, "SELECT * FROM /x IN a.h5")
    assert rows == [f"{{a: {i}, b: {i % 1000}}}" for i in range(len(values))]
    assert count == len(values)


@pytest.mark.parametrize("options", [{}, {"chunks": True}, {"chunks": (1, 10_000), "compression": 1}])
@pytest.mark.parametrize("shape, subset, chosen", [
    ((3, 200_000), "", np.s_[:, :]), ((2, 3, 70_000), "", np.s_[:, :, :]), ((1, 400_001), "", np.s_[:, :]),
    ((4, 150_000), "[1:, 3:149000:2]", np.s_[1:, 3:149_000:2]), ((20, 12_000), "", np.s_[:, :])])
def test_lines_go_on_in_the_next_block(kelvo, options, shape, subset, chosen):
    values = np.arange(np.prod(shape)).reshape(shape)
    with h5py.File(kelvo.path("a.h5"), "w") as file:
        file.create_dataset("x", data=values, **options if len(shape) == 2 else {})
    rows, count = shown_with_count(kelvo, f"SELECT * FROM /x{subset} IN a.h5")
    lines = values[chosen].reshape(-1, values[chosen].shape[-1])
    assert rows == [" ".join(map(str, line)) for line in lines.tolist()]
    assert count == lines.size


def chunked_numbers(kelvo, chunk, chunks, damaged):
    """Chunks that hold 0, 1, 2, … each, of which one cannot be decoded."""
    with h5py.File(kelvo.path("a.h5"), "w") as file:
        dataset = file.create_dataset("x", (chunks * chunk,), "<i8", chunks=(chunk,), compression=1)
        for number in range(chunks):
            dataset[number * chunk:(number + 1) * chunk] = np.arange(chunk)
        dataset.id.write_direct_chunk((damaged * chunk,), b"no deflate stream")


def test_failure_among_what_is_read_ahead_is_the_status(kelvo):
    chunk = 100_000
    chunked_numbers(kelvo, chunk, 90, damaged=READ_AHEAD // 8 // chunk - 1)
    assert kelvo.error("SELECT * FROM /x IN a.h5") == (-9, 'Dataset "/x" cannot be read: inflate() failed')


def test_failure_behind_what_is_read_ahead_ends_the_rows(kelvo):
    """The rows before it are right; the one in its place is none, and nothing of the script runs after that."""
    chunk, damaged = 100_000, 86
    chunked_numbers(kelvo, chunk, 90, damaged)
    typed = b"SELECT * FROM /x IN a.h5\nSHOW EXECUTE STATUS\nexit\n"
    output = subprocess.run([kelvo.program, "--no-status", "--no-path"], cwd=kelvo.folder, env=kelvo.environment(), input=typed,
                            stdout=subprocess.PIPE, timeout=TIMEOUT_SECONDS, check=True).stdout
    message = b"Error when showing result of the operation as the data type is unexpected.\n"
    before, found, after = output.partition(message)
    assert found
    rows = before[before.index(b"0\n1\n2\n"):]
    count = rows.count(b"\n")
    assert READ_AHEAD <= 8 * count <= 8 * damaged * chunk
    of_chunk = "".join(f"{value}\n" for value in range(chunk)).encode()
    assert (of_chunk * (count // chunk + 1)).startswith(rows)
    assert b"\n-9\n" in after
    assert kelvo.run("SELECT * FROM /x IN a.h5", "SHOW USE FILE").output.endswith(message)
