"""Strings and sequences of varying length: how they come out of a file's heaps, and what a damaged heap, or a damaged
reference to one, is said to be.

A reference is a count of items in 4 bytes, the heap's address in 8 and the index in the heap in 4. A heap begins with
"GCOL", a version, three bytes and its size in 8 bytes; its objects follow, each with a header of 16 bytes: the index in 2,
6 bytes, the size in 8.
"""

import os
import subprocess

import h5py
import numpy as np
import pytest
from hypothesis import given, settings
from hypothesis import strategies as st
from oracle import Element, difference

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
    "COPY DATASET x TO z", "COPY GROUP / TO z", "COPY DATASET y TO z", "COPY FILE x.h5 TO z.h5 REPACK",
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
    shown = 'Attribute "/y@b"' if "COPY ATTRIBUTE y" in statement or "COPY DATASET y" in statement else 'Dataset "/x"'
    assert kelvo.error("USE FILE x.h5", statement) == (
        DAMAGED, f"{shown} is damaged: a value is in the heap at byte {heap}, where none is")
    assert kelvo.path("x.h5").read_bytes() == content


def test_the_engine_reads_what_it_has_just_written(kelvo):
    assert kelvo.rows("CREATE FILE x.h5", "USE FILE x.h5", "CREATE DATASET x VARCHAR [2] VALUES ('a', 'bc')",
                      "INSERT INTO x[1] SELECT * FROM x[0]", "SELECT * FROM x", "COPY DATASET x TO y CHUNK [1]",
                      "INSERT INTO x[0] VALUES ('something longer')", "INSERT INTO y SELECT * FROM x", "SELECT * FROM y") == [
        "a", "a", "something longer", "a"]


# --- sound files ---

TEXT = h5py.string_dtype()
NUMBERS = [">i4", "<i2", "u1", "<f8", ">f4", "<f2", ">u8", h5py.enum_dtype({"A": 0, "B": 1}, ">i2")]
ITEMS = [*map(np.dtype, NUMBERS), np.dtype([("a", "i1"), ("b", ">f8"), ("c", "<u2", (2,))])]
SEQUENCES = [h5py.vlen_dtype(item) for item in ITEMS]
LENGTHS = [0, 0, 1, 2, 7, 8, 9, 100, 3000, 5000, 70_000, 300_000]  # up to more than a heap that is held as a whole
SMALL = LENGTHS[:8]


@st.composite
def compounds(draw):
    """Of members with and without varying parts, one level deeper at the most."""
    def members(kinds):
        chosen = draw(st.lists(st.sampled_from(kinds), min_size=1, max_size=4))
        return np.dtype([(f"{len(kinds)}.{i}", *kind) for i, kind in enumerate(chosen)])
    kinds = [("i1",), (">f8",), ("S3",), (TEXT,), (TEXT, (3,)), *[(one,) for one in SEQUENCES]]
    return members([*kinds, (members(kinds),)])


def value_of(random, dtype, lengths=SMALL):
    """Any value of the type; without `random` that of an element that was never written."""
    if h5py.check_string_dtype(dtype) and dtype.kind == "O":
        return bytes(random.integers(1, 256, random.choice(lengths), "u1")).decode("latin-1") if random else None
    item = h5py.check_vlen_dtype(dtype)
    if item is not None:
        length = int(random.choice(lengths)) // item.itemsize if random else 0
        return np.array([value_of(random, item) for _ in range(length)], item)
    if dtype.subdtype:
        return [value_of(random, dtype.base) for _ in range(dtype.shape[0])]
    if not dtype.names:
        number = random.integers(0, 2 if h5py.check_enum_dtype(dtype) else 100) if random else 0
        return str(number or "").encode() if dtype.kind == "S" else number
    value = np.zeros(1, dtype)
    for name in dtype.names:
        value[name][0] = value_of(random, dtype[name])
    return value[0]


@st.composite
def storages(draw, count):
    if count == 0 or draw(st.booleans()):
        return {}
    return {"chunks": (draw(st.integers(1, count)),), "compression": draw(st.sampled_from([None, "gzip", "lzf"])),
            "shuffle": draw(st.booleans()), "maxshape": draw(st.sampled_from([None, (None,)]))}


@given(st.data())
@settings(max_examples=100)
def test_random_values(kelvo_factory, data):
    """Some are never written, some are written over, so that heaps have gaps and indexes no order."""
    kelvo = kelvo_factory()
    dtype = data.draw(st.sampled_from([TEXT, *SEQUENCES]) | compounds())
    count = data.draw(st.integers(0, 12))
    random = np.random.default_rng(data.draw(st.integers(0, 2**32)))
    lengths = data.draw(st.sampled_from([SMALL, LENGTHS]))
    with h5py.File(kelvo.path("x.h5"), "w", libver=data.draw(st.sampled_from(["earliest", "latest"])),
                   userblock_size=data.draw(st.sampled_from([0, 512, 4096]))) as file:
        dataset = file.create_dataset("x", (count,), dtype, **data.draw(storages(count)))
        values = ["" if h5py.check_string_dtype(dtype) else value_of(None, dtype)] * count
        for place in data.draw(st.lists(st.integers(0, count - 1), max_size=3 * count)) if count else []:
            dataset[place] = values[place] = value_of(random, dtype, lengths)
        element = Element(dataset.id.get_type(), dataset.dtype, file)
        expected = [element.row(value) for value in values]
    start, step = data.draw(st.integers(0, 4)), data.draw(st.integers(1, 3))
    assert difference(kelvo.rows("SELECT * FROM x IN x.h5"), expected) is None
    assert difference(kelvo.rows(f"SELECT * FROM x[{start}::{step}] IN x.h5"), expected[start::step]) is None


def addresses_of(size, path):
    creation = h5py.h5p.create(h5py.h5p.FILE_CREATE)
    creation.set_sizes(size, size)
    return h5py.File(h5py.h5f.create(bytes(path), h5py.h5f.ACC_TRUNC, creation))


PLACES = {
    "addresses of 4 bytes": ("x.h5", lambda path: addresses_of(4, path)),
    "user block": ("x.h5", lambda path: h5py.File(path, "w", userblock_size=2048)),
    "family": ("x%d.h5", lambda path: h5py.File(path, "w", driver="family", memb_size=1000)),
}


@pytest.mark.parametrize("place", PLACES)
def test_where_heaps_are(kelvo, place):
    """Each is found, whatever lies before it, and however many files it is in; and is missed where it is not."""
    name, create = PLACES[place]
    with create(kelvo.path(name)) as file:
        file["x"] = np.array(["one", "two" * 700, ""], object)
        file.create_dataset("y", (2,), h5py.vlen_dtype(">i2"))[1] = [1, 2]
        file.create_dataset("z", data=[file["x"].ref, file["y"].ref], dtype=h5py.ref_dtype)
        file.create_dataset("r", data=[file["y"].regionref[:1]], dtype=h5py.regionref_dtype)
    assert kelvo.rows(*(f"SELECT * FROM {dataset} IN {name}" for dataset in "xyzr")) == [
        "one", "two" * 700, "", "", "1 2", "/x", "/y", "/y[0:1]"]
    at, part = next((content.find(b"GCOL"), part) for part in sorted(kelvo.folder.glob("x*.h5"))
                    for content in [part.read_bytes()] if b"GCOL" in content)
    content = part.read_bytes()
    part.write_bytes(content[:at] + b"L" + content[at + 1:])
    at += 1000 * int(part.stem[1:] or 0)
    assert kelvo.error(f"SELECT * FROM x IN {name}") == (
        DAMAGED, f'Dataset "/x" is damaged: a value is in the heap at byte {at}, where none is')


def test_user_block_put_before_a_file(kelvo):
    """Its superblock still says that the file begins at byte 0."""
    with h5py.File(kelvo.path("whole.h5"), "w") as file:
        plain(file)
    kelvo.path("x.h5").write_bytes(b"#" * 1024 + kelvo.path("whole.h5").read_bytes())
    assert kelvo.rows("SELECT * FROM x IN x.h5") == VALUES


def test_null_strings(kelvo):
    """They were never written, as opposed to empty ones."""
    text = h5py.string_dtype()
    kind = np.dtype([("text", text), ("list", h5py.vlen_dtype("i4")), ("two", text, (2,))])
    with h5py.File(kelvo.path("x.h5"), "w") as file:
        file.create_dataset("chunks", (3,), kind, chunks=(1,))[1] = ("", np.array([], "i4"), ["", "?"])
        file.create_dataset("none", (1,), kind)
        file.create_dataset("filled", (2,), text, fillvalue="fill")
    null = "{text: NULL, list: [], two: [NULL, NULL]}"
    assert kelvo.rows("USE FILE x.h5", "SELECT * FROM chunks", "SELECT * FROM none", "SELECT * FROM filled") == [
        null, "{text: '', list: [], two: ['', '?']}", null, null, "fill", "fill"]


def test_values_within_values(kelvo):
    """Written by the HDF5 library, which reads them for h5dump as well."""
    nested = "[['a', 'bc', ''], [], ['a string that is longer than the others']]"
    structures = "[{n: 1, list: [1.5, -2], text: 'one'}, {n: -2, list: [], text: 'two'}]"
    kelvo.rows("CREATE FILE x.h5", "USE FILE x.h5", "CREATE DATASET x SEQUENCE OF SEQUENCE OF VARCHAR [2]",
               f"INSERT INTO x VALUES ({nested}, [])",
               "CREATE DATASET y SEQUENCE OF COMPOUND (n SMALLINT BIG ENDIAN, list SEQUENCE OF DOUBLE BIG ENDIAN, text VARCHAR) [1]",
               f"INSERT INTO y VALUES ({structures})")
    assert kelvo.rows("SELECT * FROM x IN x.h5", "SELECT * FROM y IN x.h5") == [
        nested, "[]", structures]


def largest_memory(kelvo, statement):
    """KiB of the process, and what it prints."""
    process = subprocess.Popen([kelvo.program, "--no-status", "--execute=" + statement], cwd=kelvo.folder,
                               env=kelvo.environment(), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE)
    with process.stdout as output:
        printed = output.read()
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    assert process.returncode == 0
    return usage.ru_maxrss, printed.decode().split("\n")[:-1]


def test_memory_does_not_grow_with_the_number_of_strings(kelvo):
    """10 million, of which 400,000 are in heaps of their own, 16 MB of them."""
    count, parts = 400_000, 25
    with h5py.File(kelvo.path("x.h5"), "w") as file:
        few = file.create_dataset("few", (count,), h5py.string_dtype(), chunks=(count,))
        few[:] = np.array([f"string {i}" for i in range(count)], object)
        many = file.create_dataset("many", (parts * count,), h5py.string_dtype(), chunks=(count,))
        references = few.id.read_direct_chunk((0,))[1]
        for part in range(parts):
            many.id.write_direct_chunk((part * count,), references)
    kelvo.sanitizer_options |= {"quarantine_size_mb": 1}
    little, _ = largest_memory(kelvo, "SELECT * FROM few[:1000] IN x.h5 LIMIT 1")
    much, rows = largest_memory(kelvo, "SELECT COUNT(*) FROM many IN x.h5 WHERE VALUE LIKE '%00'")
    assert rows == [str((count // 100 - 1) * parts)]  # all but "string 0"
    assert much - little < 16 * 1024


def test_memory_does_not_grow_with_the_length_of_strings(kelvo):
    """200 MB of them in one block of elements."""
    length, count = 200_000, 1000
    with h5py.File(kelvo.path("x.h5"), "w") as file:
        long = file.create_dataset("long", (1,), h5py.string_dtype(), chunks=(1,))
        long[0] = "x" * length
        many = file.create_dataset("many", (count,), h5py.string_dtype(), chunks=(count,))
        many.id.write_direct_chunk((0,), long.id.read_direct_chunk((0,))[1] * count)
    kelvo.sanitizer_options |= {"quarantine_size_mb": 1}
    little, _ = largest_memory(kelvo, "SELECT COUNT(*) FROM long IN x.h5 WHERE VALUE LIKE 'x%'")
    much, rows = largest_memory(kelvo, "SELECT COUNT(*) FROM many IN x.h5 WHERE VALUE LIKE 'x%'")
    assert rows == [str(count)]
    assert much - little < 16 * 1024


def test_region_references(kelvo):
    with h5py.File(kelvo.path("x.h5"), "w") as file:
        file["x"] = np.arange(20)
        file.create_dataset("regions", data=[file["x"].regionref[3:9]], dtype=h5py.regionref_dtype)
    content = bytearray(kelvo.path("x.h5").read_bytes())
    heap = content.find(b"GCOL")
    reference = content.find(heap.to_bytes(8, "little") + (1).to_bytes(4, "little"))
    assert kelvo.rows("SELECT * FROM regions IN x.h5") == ["/x[3:9]"]
    for at, byte, end in [
            (reference + 8, 7, f"a value is object 7 of the heap at byte {heap}, which has none of that number"),
            (reference + 1, 0xFF, f"a value is in the heap at byte {heap % 256 + 0xFF00}, where none is"),
            (heap + 9, 0xFF, f"a value is in the heap at byte {heap}, whose objects do not fit together"),
            (heap + 24, 3, f"a value is in the heap at byte {heap}, whose objects do not fit together")]:
        kelvo.path("y.h5").write_bytes(content[:at] + bytes([byte]) + content[at + 1:])
        assert kelvo.error("SELECT * FROM regions IN y.h5") == (DAMAGED, "A region reference is damaged: " + end)
