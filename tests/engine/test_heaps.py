"""Strings and sequences of varying length: how they come out of a file's heaps, and what a damaged heap, or a damaged
reference to one, is said to be.

A reference is a count of items in 4 bytes, the heap's address in 8 and the index in the heap in 4. A heap begins with
"GCOL", a version, three bytes and its size in 8 bytes; its objects follow, each with a header of 16 bytes: the index in 2,
6 bytes, the size in 8.
"""

import h5py
import numpy as np
import pytest

DAMAGED = -9
HEADER = 16
VALUES = ["one", "three", "seventeen letters", ""]


def plain(file):
    file["x"] = np.array(VALUES, object)


def filtered(file):
    file.create_dataset("x", data=np.array(VALUES, object), chunks=(3,), compression="gzip")


def member(file):
    text = h5py.string_dtype()
    kind = np.dtype([("id", "i1"), ("inner", [("text", text)]), ("two", text, (2,))])
    file["x"] = np.array([(i, (value,), ["", "?"]) for i, value in enumerate(VALUES)], kind)


def sequence(file):
    dataset = file.create_dataset("x", (4,), h5py.vlen_dtype("<i2"))
    for i, value in enumerate(VALUES):
        dataset[i] = np.frombuffer(value.encode(), "i1")


def converted_sequence(file):
    dataset = file.create_dataset("x", (4,), h5py.vlen_dtype(">i4"))
    for i, value in enumerate(VALUES):
        dataset[i] = np.frombuffer(value.encode(), "i1")


def attribute(file):
    file.create_dataset("x", data=0).attrs["a"] = VALUES


class Damage:
    """A file with the values, and its second value's reference and object, to be changed."""

    def __init__(self, kelvo, content, item_size=1):
        self.kelvo = kelvo
        self.name = "x@a" if content is attribute else "x"
        self.shown = 'Attribute "/x@a"' if content is attribute else 'Dataset "/x"'
        self.path = kelvo.path("x.h5")
        with h5py.File(self.path, "w") as file:
            content(file)
        self.bytes = bytearray(self.path.read_bytes())
        self.heap = self.bytes.find(b"GCOL")
        self.item_size = item_size
        self.size = len(VALUES[1]) * item_size
        count_and_heap = len(VALUES[1]).to_bytes(4, "little") + self.heap.to_bytes(8, "little")
        assert self.bytes.count(count_and_heap) == 1
        self.reference = self.bytes.find(count_and_heap)
        self.index = self.number(self.reference + 12, 4)

    def number(self, at, size):
        return int.from_bytes(self.bytes[at:at + size], "little")

    def put(self, at, size, number):
        self.bytes[at:at + size] = number.to_bytes(size, "little")

    def objects(self):
        """Where the header of each object is, by its index."""
        at, found = self.heap + HEADER, {}
        while self.number(at, 2) != 0:
            found[self.number(at, 2)] = at
            at += HEADER + (self.number(at + 8, 8) + 7) // 8 * 8
        return found

    def message(self):
        self.path.write_bytes(self.bytes)
        status, message = self.kelvo.error("USE FILE x.h5", f"SELECT * FROM {self.name}")
        assert status == DAMAGED
        start = self.shown + " is damaged: a value "
        assert message.startswith(start)
        return message.removeprefix(start)


CONTENTS = [(plain, 1), (member, 1), (sequence, 2), (converted_sequence, 4), (attribute, 1)]


@pytest.fixture(params=CONTENTS, ids=lambda content: content[0].__name__)
def damage(request, kelvo):
    return Damage(kelvo, *request.param)


@pytest.mark.parametrize("change", [-5, -1, 1, 2**31])
def test_length_of_a_reference(damage, change):
    length = len(VALUES[1]) + change
    damage.put(damage.reference, 4, length)
    assert damage.message() == (f"has {length * damage.item_size} bytes, object {damage.index} of the heap at byte "
                                f"{damage.heap} has {damage.size}")


@pytest.mark.parametrize("change", [-1, 1])
def test_length_in_the_heap(damage, change):
    damage.put(damage.objects()[damage.index] + 8, 8, damage.size + change)
    assert damage.message() == (f"has {damage.size} bytes, object {damage.index} of the heap at byte {damage.heap} has "
                                f"{damage.size + change}")


def test_index_of_another_value(damage):
    other = next(index for index, at in damage.objects().items() if damage.number(at + 8, 8) == len(VALUES[2]) * damage.item_size)
    damage.put(damage.reference + 12, 4, other)
    assert damage.message() == (f"has {damage.size} bytes, object {other} of the heap at byte {damage.heap} has "
                                f"{len(VALUES[2]) * damage.item_size}")


@pytest.mark.parametrize("index", [0, 999, 2**32 - 1, 2**16 + 1])
def test_index_that_is_not_there(damage, index):
    damage.put(damage.reference + 12, 4, index)
    assert damage.message() == f"is object {index} of the heap at byte {damage.heap}, which has none of that number"


def test_index_twice_in_the_heap(damage):
    objects = damage.objects()
    other = next(index for index in objects if index != damage.index)
    damage.put(objects[other], 2, damage.index)
    assert damage.message() == f"is in the heap at byte {damage.heap}, whose objects do not fit together"


@pytest.mark.parametrize("address", [8, 2**20, 2**40, 2**63, 2**64 - 1])
def test_address_where_no_heap_is(damage, address):
    damage.put(damage.reference + 4, 8, address)
    assert damage.message() == f"is in the heap at byte {address}, where none is"


def test_no_address(damage):
    """Elements that were never written have none, but no length either."""
    damage.put(damage.reference + 4, 8, 0)
    assert damage.message() == f"of {damage.size} bytes is in no heap"


@pytest.mark.parametrize("at, byte", [(0, 0), (3, 0x7F), (4, 2)])
def test_signature_and_version(damage, at, byte):
    damage.bytes[damage.heap + at] = byte
    assert damage.message() == f"is in the heap at byte {damage.heap}, where none is"


@pytest.mark.parametrize("size", [0, 15, 36, 4088, 5000, 2**20, 2**63, 2**64 - 1])
def test_size_of_a_heap(damage, size):
    assert damage.number(damage.heap + 8, 8) == 4096
    damage.bytes += b"\xff" * 8192  # what lies behind the heap is no part of one
    damage.put(40, 8, len(damage.bytes))
    damage.put(damage.heap + 8, 8, size)
    assert damage.message() == f"is in the heap at byte {damage.heap}, whose objects do not fit together"


def test_truncated_heap(damage):
    """The file says itself that it ends where it does."""
    content = bytes(damage.bytes)
    heap = content[damage.heap:damage.heap + 4096]
    moved = len(content)
    damage.bytes = bytearray(content + heap[:2048])
    damage.put(damage.reference + 4, 8, moved)
    damage.put(40, 8, len(damage.bytes))
    assert damage.message() == f"is in the heap at byte {moved}, whose objects do not fit together"


def test_object_beyond_its_heap(damage):
    damage.put(damage.objects()[damage.index] + 8, 8, 2**62)
    assert damage.message() == f"is in the heap at byte {damage.heap}, whose objects do not fit together"


def test_filtered_references(kelvo):
    """The references are in compressed chunks: only the heap can be changed."""
    with h5py.File(kelvo.path("x.h5"), "w") as file:
        filtered(file)
    content = bytearray(kelvo.path("x.h5").read_bytes())
    heap = content.find(b"GCOL")
    content[heap:heap + 4] = b"LOCG"
    kelvo.path("x.h5").write_bytes(content)
    assert kelvo.error("USE FILE x.h5", "SELECT * FROM x") == (
        DAMAGED, f'Dataset "/x" is damaged: a value is in the heap at byte {heap}, where none is')


@pytest.mark.parametrize("statement", [
    "INSERT INTO y SELECT * FROM x", "COPY DATASET x TO z CHUNK [2]", "COPY ATTRIBUTE y@b TO x@c",
    "SELECT * FROM x INTO x.json", "SELECT * FROM x ORDER BY VALUE", "SELECT COUNT(*) FROM x WHERE VALUE LIKE 'a%'"])
def test_what_else_reads_values(kelvo, statement):
    """Also where the statement writes the file at the same time."""
    text = h5py.string_dtype()
    with h5py.File(kelvo.path("x.h5"), "w") as file:
        file["x"] = np.array(["one", "two"], object)
        file.create_dataset("y", (2,), text).attrs.create("b", ["one", "two"], dtype=text)
    content = bytearray(kelvo.path("x.h5").read_bytes())
    heap = content.find(b"GCOL")
    content[heap + 5] = 1
    kelvo.path("x.h5").write_bytes(content)
    shown = 'Attribute "/y@b"' if "y@b" in statement else 'Dataset "/x"'
    assert kelvo.error("USE FILE x.h5", statement) == (
        DAMAGED, f"{shown} is damaged: a value is in the heap at byte {heap}, where none is")
    assert kelvo.path("x.h5").read_bytes() == content


def test_the_engine_reads_what_it_has_just_written(kelvo):
    assert kelvo.rows("CREATE FILE x.h5", "USE FILE x.h5", "CREATE DATASET x VARCHAR [2] VALUES ('a', 'bc')",
                      "INSERT INTO x[1] SELECT * FROM x[0]", "SELECT * FROM x", "COPY DATASET x TO y CHUNK [1]",
                      "INSERT INTO x[0] VALUES ('something longer')", "INSERT INTO y SELECT * FROM x", "SELECT * FROM y") == [
        "a", "a", "something longer", "a"]
