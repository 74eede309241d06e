"""Files broken on purpose: every statement over them ends, in rows or in an error, and the program goes on."""

import random
import re
import subprocess

import h5py
import numpy as np
import pytest
from broken_files import CONTENTS, make, make_fatal, statements

DAMAGED = -9
STATUS = re.compile(rb"\(status (-?\d+)\)\.")
SIGNATURES = [b"TREE", b"SNOD", b"HEAP", b"GCOL", b"OHDR", b"OCHK", b"FRHP", b"FHDB", b"BTHD", b"BTLF", b"EAHD", b"FAHD"]
TIMEOUT_SECONDS = 60


@pytest.fixture(autouse=True)
def _damage_in_the_library(kelvo):
    """The HDF5 library does not give back all memory when it meets damage, and copies from where its index of strings
    leads, which the engine survives."""
    kelvo.sanitizer_options |= {"detect_leaks": 0, "replace_intrin": 0}


def random_damage(content, rng):
    """Some bytes changed where there are any: most of a small file is unused space."""
    broken = bytearray(content)
    used = [at for at, byte in enumerate(content) if byte]
    for _ in range(rng.choice([1, 2, 4, 16])):
        at = rng.choice(used)
        damage = rng.choice([bytes([rng.randrange(256)]), bytes([content[at] ^ 1 << rng.randrange(8)]), b"\xff" * 8,
                             rng.randbytes(4), bytes(4)])
        broken[at:at + len(damage)] = damage
    return bytes(broken[:len(content)])


def structural_damage(content, rng):
    """Each structure that bears a signature, changed just behind it; and blocks wiped out."""
    for signature in SIGNATURES:
        at = content.find(signature)
        if at >= 0:
            for offset in (4, 8, 16):
                for damage in (b"\xff" * 8, rng.randbytes(2)):
                    begin = at + offset
                    yield content[:begin] + damage + content[begin + len(damage):]
    for begin in range(0, len(content), max(512, len(content) // 6)):
        yield content[:begin] + bytes(512) + content[begin + 512:]
        yield content[:begin + 100]


def read_all(kelvo, lines):
    """What is printed for the lines, whatever fails among them."""
    text = "\n".join(["USE FILE broken.h5", *lines, "exit", ""])
    finished = subprocess.run([kelvo.program, "--no-status"], input=text.encode(), cwd=kelvo.folder,
                              env=kelvo.environment(), stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              timeout=TIMEOUT_SECONDS, check=False)
    return finished.returncode, finished.stderr, finished.stdout


def check_all_is_answered(kelvo, content, lines, name):
    kelvo.path("broken.h5").write_bytes(content)
    status, stderr, output = read_all(kelvo, lines)
    if (status, stderr) != (0, b""):
        kept = kelvo.path(f"{name}.h5")
        kept.write_bytes(content)
        pytest.fail(f"{kept}: the program ended with {status}: "
                    f"{stderr.decode(errors='replace')}{kelvo.findings()}")
    assert {int(found) for found in STATUS.findall(output)} <= {-2, -3, -5, -6, -7, -8, -9, -10}


@pytest.fixture(params=[(content, libver) for content in CONTENTS for libver in ("earliest", "latest")],
                ids=lambda param: f"{param[0].__name__}-{param[1]}")
def whole(request, kelvo):
    content, libver = request.param
    make(content, kelvo.path("whole.h5"), libver)
    return kelvo.path("whole.h5").read_bytes(), statements(kelvo.path("whole.h5"))


def test_the_whole_file_is_read(kelvo, whole):
    """The statements do read it: only the links that lead nowhere are refused."""
    content, lines = whole
    kelvo.path("broken.h5").write_bytes(content)
    status, stderr, output = read_all(kelvo, lines)
    assert (status, stderr) == (0, b"")
    assert {int(found) for found in STATUS.findall(output)} <= {-3}


def test_random_damage(kelvo, whole):
    content, lines = whole
    rng = random.Random(len(content) + 1)
    for case in range(12):
        check_all_is_answered(kelvo, random_damage(content, rng), lines, f"random-{case}")


def test_structural_damage(kelvo, whole):
    content, lines = whole
    rng = random.Random(len(content))
    for case, broken in enumerate(structural_damage(content, rng)):
        check_all_is_answered(kelvo, broken, lines, f"structural-{case}")


# --- single damages, and what is said of them ---


def beyond_itself(path):
    return f'File "{path}" is damaged: it says more than there is of it'


def patched(path, old, new):
    content = path.read_bytes()
    assert content.count(old) == 1
    path.write_bytes(content.replace(old, new))


def test_checksum(kelvo):
    with h5py.File(kelvo.path("x.h5"), "w", libver="latest") as file:
        file["x"] = [1]
    content = bytearray(kelvo.path("x.h5").read_bytes())
    content[content.find(b"OHDR") + 8] ^= 0xFF
    kelvo.path("x.h5").write_bytes(content)
    assert kelvo.error("USE FILE x.h5", "SHOW DATASET") == (
        DAMAGED, 'Group "/" cannot be opened: incorrect metadata checksum after all read attempts')


def test_filtered_chunk(kelvo):
    with h5py.File(kelvo.path("x.h5"), "w") as file:
        dataset = file.create_dataset("x", data=np.arange(100), chunks=(50,), fletcher32=True)
        file.flush()
        at = dataset.id.get_chunk_info(1).byte_offset
    content = bytearray(kelvo.path("x.h5").read_bytes())
    content[at] ^= 0xFF
    kelvo.path("x.h5").write_bytes(content)
    assert kelvo.rows("USE FILE x.h5", "SELECT * FROM x[0:2]") == ["0", "1"]
    status, message = kelvo.error("USE FILE x.h5", "SELECT * FROM x")
    assert status == DAMAGED
    assert message.startswith('Dataset "/x" cannot be read: ')


def test_strings_whose_heap_is_damaged(kelvo):
    """The HDF5 library, which reads virtual datasets, would look for the next string for ever."""
    with h5py.File(kelvo.path("x.h5"), "w") as file:
        file["x"] = ["one", "two"]
        layout = h5py.VirtualLayout((2,), h5py.string_dtype())
        layout[:] = h5py.VirtualSource(".", "x", (2,))
        file.create_virtual_dataset("virtual", layout)
    content = bytearray(kelvo.path("x.h5").read_bytes())
    heap = content.rfind(b"GCOL", 0, content.find(b"one\0"))
    content[heap + 24:heap + 32] = b"\xff" * 8  # the size of its first object
    kelvo.path("x.h5").write_bytes(content)
    assert kelvo.error("USE FILE x.h5", "SELECT * FROM virtual") == (
        DAMAGED, f"The file is damaged: its heap at byte {heap} cannot be read")


def test_a_statement_that_the_library_does_not_survive(kelvo):
    """It fails, and what follows finds everything in order: the file can be used, read and written."""
    make_fatal(kelvo.path("broken.h5"))
    copy = "COPY DATASET v TO h IN copy.h5 CHUNK [1]"
    kelvo.rows("CREATE FILE copy.h5")
    assert kelvo.error("USE FILE broken.h5", copy) == (DAMAGED, beyond_itself(kelvo.path("broken.h5")))
    status, stderr, output = read_all(kelvo, [
        copy, "SELECT * FROM sound", copy, "INSERT INTO sound[0] VALUES (7)", copy, "SHOW USE FILE",
        "SELECT * FROM sound", "USE FILE copy.h5", "CREATE GROUP made", "SHOW GROUP"])
    assert (status, stderr) == (0, b"")
    assert STATUS.findall(output) == [b"-9"] * 3
    with h5py.File(kelvo.path("broken.h5")) as file:
        assert list(file["sound"]) == [7, 2, 3]
    with h5py.File(kelvo.path("copy.h5")) as file:
        assert list(file) == ["made"]


def test_contiguous_data_beyond_the_end(kelvo):
    """The HDF5 library would give zeros."""
    with h5py.File(kelvo.path("x.h5"), "w") as file:
        dataset = file.create_dataset("x", data=np.arange(1000, dtype="int64"))
        file.flush()
        at = dataset.id.get_offset()
    path = kelvo.path("x.h5")
    layout = b"\x03\x01"  # version 3, contiguous; the address follows
    patched(path, layout + at.to_bytes(8, "little"), layout + (0x10000000).to_bytes(8, "little"))
    assert kelvo.error("USE FILE x.h5", "SELECT * FROM x") == (
        DAMAGED, 'Dataset "/x" is damaged: its 8000 bytes from byte 268435456 on go beyond the end of the file')


def test_fewer_bytes_than_elements(kelvo):
    with h5py.File(kelvo.path("x.h5"), "w") as file:
        file.create_dataset("x", data=np.arange(1234, dtype="int64"))
    path = kelvo.path("x.h5")
    patched(path, (1234 * 8).to_bytes(8, "little"), (1233 * 8).to_bytes(8, "little"))
    assert kelvo.error("USE FILE x.h5", "SELECT * FROM x") == (
        DAMAGED, 'Dataset "/x" is damaged: it stores 9864 bytes of 1234 elements of 8')


def test_chunks_of_another_rank(kelvo):
    """The HDF5 library takes the dataset's extents for as many as a chunk has."""
    with h5py.File(kelvo.path("x.h5"), "w") as file:
        file.create_dataset("x", data=np.arange(1234, dtype="int64"), chunks=(100,))
    dataspace = b"\x01\x01\x01" + bytes(5) + (1234).to_bytes(8, "little")  # version 1, of one dimension
    patched(kelvo.path("x.h5"), dataspace, b"\x01\x00\x00" + dataspace[3:])
    assert kelvo.error("USE FILE x.h5", "SELECT * FROM x") == (
        DAMAGED, 'Dataset "/x" is damaged: its chunks have 1 dimensions in place of 0')


def test_more_elements_than_can_be_counted(kelvo):
    with h5py.File(kelvo.path("x.h5"), "w") as file:
        file.create_dataset("x", (2**31 + 1, 2**31 + 3, 7), "int8", chunks=(64, 64, 7))
    path = kelvo.path("x.h5")
    content = path.read_bytes()
    extent = (2**31 + 1).to_bytes(8, "little")
    assert content.count(extent) == 2  # and the maximum extent, which is the same
    path.write_bytes(content.replace(extent, (2**40).to_bytes(8, "little")))
    assert kelvo.error("USE FILE x.h5", "SELECT * FROM x[0]") == (
        DAMAGED, 'Dataset "/x" is damaged: its extents make more elements than can be counted')


def test_extent_beyond_its_maximum(kelvo):
    with h5py.File(kelvo.path("x.h5"), "w") as file:
        file.create_dataset("x", (1233,), "int8", maxshape=(1234,), chunks=(64,))
    patched(kelvo.path("x.h5"), (1233).to_bytes(8, "little"), (2**50).to_bytes(8, "little"))
    assert kelvo.error("USE FILE x.h5", "SELECT COUNT(*) FROM x") == (
        DAMAGED, f'Dataset "/x" is damaged: an extent of it is {2**50}, more than its maximum of 1234')


@pytest.mark.parametrize("kind, precision, offset", [("<i8", 64, 3), ("<i4", 33, 0), ("<f4", 32, 1)])
def test_bits_outside_of_the_element(kelvo, kind, precision, offset):
    """The HDF5 library would take them from the memory behind it."""
    with h5py.File(kelvo.path("x.h5"), "w") as file:
        file["x"] = np.arange(3).astype(kind)
    size = int(kind[2:])
    whole = size.to_bytes(4, "little") + bytes(2) + (8 * size).to_bytes(2, "little")
    damaged = size.to_bytes(4, "little") + offset.to_bytes(2, "little") + precision.to_bytes(2, "little")
    patched(kelvo.path("x.h5"), whole, damaged)
    assert kelvo.error("USE FILE x.h5", "SELECT * FROM x") == (
        DAMAGED, f"The data type is damaged: its bits do not lie in its {size} bytes")


def nested_sequences(path, depth):
    kind = h5py.h5t.NATIVE_INT8
    for _ in range(depth):
        kind = h5py.h5t.vlen_create(kind)
    with h5py.File(path, "w") as file:
        h5py.h5d.create(file.id, b"x", kind, h5py.h5s.create_simple((1,)))


def test_types_that_nest_too_deep(kelvo):
    nested_sequences(kelvo.path("deep.h5"), 63)
    assert len(kelvo.rows("USE FILE deep.h5", "SELECT * FROM x")) == 1
    nested_sequences(kelvo.path("deeper.h5"), 64)
    assert kelvo.error("USE FILE deeper.h5", "SELECT * FROM x") == (
        -7, "Types that nest more than 64 deep cannot be read")


def test_groups_in_a_circle(kelvo):
    with h5py.File(kelvo.path("x.h5"), "w") as file:
        file.create_group("a/b")
        file["a/b/a"] = file["a"]
        file["x"] = [1]
        file["a/x"] = file["x"]
    assert kelvo.rows("USE FILE x.h5", "SELECT * FROM a/b/a/b/a/x", "SHOW GROUP a/b/a") == ["1", "b"]
