"""SHOW of types, extents and storage of a dataset or attribute, against h5py."""

import zlib

import h5py
import numpy as np
import pytest

COMPOUND = np.dtype({"names": ["id", "name", "pos", "when"], "formats": [
    "<i4", "S5", np.dtype([("x", ">f8"), ("y", "<f4")]), (">i2", (3,))], "offsets": [0, 8, 16, 40], "itemsize": 48})


@pytest.fixture
def typed(kelvo):
    with h5py.File(kelvo.path("t.h5"), "w") as file:
        file["compound"] = np.zeros(2, COMPOUND)
        file["little"], file["big"] = np.zeros(2, "<i4"), np.zeros(2, ">f8")
        file["enum"] = np.zeros(2, h5py.enum_dtype({"RED": 0, "BLUE": 7}, basetype=">i2"))
        file.create_dataset("ascii", (2,), h5py.string_dtype("ascii"))
        file.create_dataset("utf8", (2,), h5py.string_dtype("utf-8", 5))
        file.create_dataset("sequence", (2,), h5py.vlen_dtype(np.dtype(">u2")))
        opaque = h5py.h5t.create(h5py.h5t.OPAQUE, 3)
        opaque.set_tag(b"my tag")
        h5py.h5d.create(file.id, b"opaque", opaque, h5py.h5s.create_simple((2,)))
        file["named"] = COMPOUND
        file["little"].attrs.create("big", 1, dtype=">i8")
        file.create_group("group")
    return kelvo


def show(kelvo, *statements):
    return kelvo.rows("USE FILE t.h5", *statements)


def test_members_and_their_offsets(typed):
    with h5py.File(typed.path("t.h5")) as file:
        stored = file["compound"].id.get_type()
        names = [stored.get_member_name(i).decode() for i in range(stored.get_nmembers())]
        offsets = [str(stored.get_member_offset(i)) for i in range(stored.get_nmembers())]
    assert show(typed, "SHOW MEMBER compound", "SHOW MEMBER named") == names * 2
    assert show(typed, "SHOW OFFSET compound", "SHOW OFFSET named") == offsets * 2 == ["0", "8", "16", "40"] * 2
    assert sorted(show(typed, "SHOW MEMBER enum")) == ["BLUE", "RED"]
    assert show(typed, "SHOW OFFSET enum") == []
    assert show(typed, "SHOW MEMBER little", "SHOW OFFSET little") == []


def test_endianness_of_each_member_that_has_one(typed):
    assert show(typed, "SHOW ENDIANNESS little", "SHOW ENDIANNESS big", "SHOW ENDIANNESS enum",
                "SHOW ENDIANNESS sequence", "SHOW ENDIANNESS little@big") == [
        "LITTLE ENDIAN", "BIG ENDIAN", "BIG ENDIAN", "BIG ENDIAN", "BIG ENDIAN"]
    assert show(typed, "SHOW ENDIANNESS compound") == ["LITTLE ENDIAN", "BIG ENDIAN", "LITTLE ENDIAN", "BIG ENDIAN"]
    assert show(typed, "SHOW ENDIANNESS utf8", "SHOW ENDIANNESS opaque") == []


def test_charset(typed):
    assert show(typed, "SHOW CHARSET ascii", "SHOW CHARSET utf8", "SHOW CHARSET compound") == ["ASCII", "UTF8", "ASCII"]
    assert show(typed, "SHOW CHARSET little") == []


def test_tag(typed):
    assert show(typed, "SHOW TAG opaque") == ["my tag"]
    assert show(typed, "SHOW TAG little") == []


def test_data_type_can_be_pasted_back(typed):
    for name in ("little", "big", "enum", "ascii", "utf8", "opaque"):
        [text] = show(typed, f"SHOW DATA TYPE {name}")
        typed.run("USE FILE t.h5", f"CREATE DATASET copy_{name} {text} [2]")
    with h5py.File(typed.path("t.h5")) as file:
        for name in ("little", "big", "enum", "ascii", "utf8", "opaque"):
            assert file["copy_" + name].id.get_type().equal(file[name].id.get_type()), name


@pytest.fixture
def stored(kelvo):
    with h5py.File(kelvo.path("t.h5"), "w") as file:
        file.create_dataset("scalar", data=1.5)
        file.create_dataset("contiguous", data=np.arange(12, dtype="i4").reshape(3, 4))
        file.create_dataset("chunked", (10, 6), "<f8", chunks=(4, 3), maxshape=(None, 6), fillvalue=2.5)
        file["chunked"][:5] = 1
        file.create_dataset("deflated", data=np.zeros(10000, "i2"), chunks=(1000,), compression="gzip")
        file.create_dataset("null", dtype="i4", data=h5py.Empty("i4"))
        plist = h5py.h5p.create(h5py.h5p.DATASET_CREATE)
        plist.set_layout(h5py.h5d.COMPACT)
        plist.set_fill_time(h5py.h5d.FILL_TIME_NEVER)
        h5py.h5d.create(file.id, b"compact", h5py.h5t.STD_I32LE, h5py.h5s.create_simple((2,)), plist)
        plist = h5py.h5p.create(h5py.h5p.DATASET_CREATE)
        plist.set_alloc_time(h5py.h5d.ALLOC_TIME_EARLY)
        h5py.h5d.create(file.id, b"early", h5py.h5t.STD_I32LE, h5py.h5s.create_simple((2,)), plist)
        layout = h5py.VirtualLayout((3, 4), "i4")
        layout[:] = h5py.VirtualSource("t.h5", "contiguous", (3, 4))
        file.create_virtual_dataset("virtual", layout)
        file["contiguous"].attrs["list"] = np.arange(5, dtype="i2")
        file.create_group("group")
        file.create_group("tracked", track_order=True)
    return kelvo


def test_dimensions(stored):
    assert show(stored, "SHOW DIMENSION contiguous") == ["3", "4"]
    assert show(stored, "SHOW DIMENSION chunked", "SHOW DIMENSION chunked MAX") == ["10", "6", "-1", "6"]
    assert show(stored, "SHOW DIMENSION contiguous MAX", "SHOW DIMENSION contiguous@list") == ["3", "4", "5"]
    assert show(stored, "SHOW DIMENSION scalar", "SHOW DIMENSION null") == []


def test_storage(stored):
    names = ["contiguous", "compact", "chunked", "virtual"]
    assert show(stored, *(f"SHOW STORAGE TYPE {name}" for name in names)) == [name.upper() for name in names]
    assert show(stored, *(f"SHOW STORAGE ALLOCATION {name}" for name in ("early", "contiguous", "chunked"))) == [
        "EARLY", "LATE", "INCREMENTAL"]
    assert show(stored, "SHOW STORAGE DIMENSION chunked", "SHOW STORAGE DIMENSION contiguous") == ["4", "3"]


def test_size_of_the_elements_and_of_what_is_stored(stored):
    with h5py.File(stored.path("t.h5")) as file:
        kept = [str(file[name].id.get_storage_size()) for name in ("deflated", "chunked")]
    assert show(stored, "SHOW SIZE deflated", "SHOW SIZE chunked", "SHOW SIZE scalar", "SHOW SIZE null",
                "SHOW SIZE contiguous@list") == ["20000", "480", "8", "0", "10"]
    assert show(stored, "SHOW SIZE deflated STORAGE", "SHOW SIZE chunked STORAGE",
                "SHOW SIZE contiguous@list STORAGE") == kept + ["10"]


def test_fill_type_and_value(stored):
    assert show(stored, "SHOW FILL TYPE contiguous", "SHOW FILL TYPE chunked", "SHOW FILL VALUE chunked",
                "SHOW FILL VALUE contiguous") == ["DEFAULT", "USER", "2.500000", "0"]


@pytest.mark.parametrize("dtype, value, row", [
    ("S5", b"ab", "ab"), ("i1", -3, "-3"), (h5py.enum_dtype({"A": 1, "B": 2}), 2, "B"),
    (np.dtype([("a", "i4"), ("b", "S3")]), np.array((7, b"x"), np.dtype([("a", "i4"), ("b", "S3")])), "{a: 7, b: 'x'}")])
def test_fill_value_shows_as_its_type_does(kelvo, dtype, value, row):
    with h5py.File(kelvo.path("t.h5"), "w") as file:
        file.create_dataset("x", (2,), dtype, fillvalue=value)
    assert show(kelvo, "SHOW FILL VALUE x") == [row]


def test_mask_of_each_stored_chunk(kelvo):
    with h5py.File(kelvo.path("t.h5"), "w") as file:
        dataset = file.create_dataset("x", (8,), "i4", chunks=(2,), shuffle=True, compression="gzip")
        dataset[0:2] = 1
        dataset.id.write_direct_chunk((4,), np.array([5, 6], "<i4").tobytes(), filter_mask=3)
        file["contiguous"] = [1]
    assert show(kelvo, "SHOW MASK x") == ["0", "3"]
    assert show(kelvo, "SHOW MASK contiguous") == []
    assert show(kelvo, "SELECT * FROM x[4:6]") == ["5", "6"]


@pytest.mark.parametrize("libver", ["earliest", "latest"])
@pytest.mark.parametrize("maximum", [None, (None, 60), (60, None), (None, None)])
@pytest.mark.parametrize("extents", [(6, 4), (60, 60)], ids=["few", "many"])
def test_masks_come_in_the_order_of_the_chunks_places(kelvo, libver, maximum, extents):
    masks = {}
    with h5py.File(kelvo.path("t.h5"), "w", libver=libver) as file:
        dataset = file.create_dataset("x", extents, "i1", chunks=(2, 2), maxshape=maximum, shuffle=True,
                                      compression="gzip")
        for number, (row, column) in enumerate((row, column) for column in range(0, extents[1], 2)
                                               for row in range(0, extents[0], 2)):
            if number % 7 != 3:
                masks[row, column] = (number % 2) * 3
                chunk = bytes(4) if number % 2 else zlib.compress(bytes(4))
                dataset.id.write_direct_chunk((row, column), chunk, filter_mask=masks[row, column])
    assert show(kelvo, "SHOW MASK x") == [str(masks[place]) for place in sorted(masks)]


def test_order(kelvo):
    with h5py.File(kelvo.path("t.h5"), "w") as file:
        file.create_group("tracked", track_order=True)
        file.create_group("plain")
        file.create_dataset("x", data=1)
        file.create_dataset("y", data=1, track_order=True)
        plist = h5py.h5p.create(h5py.h5p.GROUP_CREATE)
        plist.set_link_creation_order(h5py.h5p.CRT_ORDER_TRACKED)
        h5py.h5g.create(file.id, b"only", gcpl=plist)
    assert show(kelvo, "SHOW ORDER tracked", "SHOW ORDER plain", "SHOW ORDER x", "SHOW ORDER y", "SHOW ORDER only") == [
        "INDEXED", "NONE", "NONE", "INDEXED", "TRACKED"]


@pytest.mark.parametrize("statement, error", [
    ("SHOW MEMBER group", (-5, '"/group" is a group, not a dataset')),
    ("SHOW MEMBER nope", (-3, 'Dataset "/nope" does not exist')),
    ("SHOW OFFSET scalar@no", (-3, 'Attribute "/scalar@no" does not exist')),
    ("SHOW DIMENSION group", (-5, '"/group" is a group, not a dataset')),
    ("SHOW DIMENSION scalar MAXIMUM", (-1, 'Expected IN, MAX or the end of the statement, found "MAXIMUM"', 23)),
    ("SHOW SIZE group STORAGE", (-5, '"/group" is a group, not a dataset')),
    ("SHOW STORAGE TYPE contiguous@list", (-5, '"/contiguous@list" is an attribute, not a dataset')),
    ("SHOW STORAGE", (-1, "Expected TYPE, ALLOCATION or DIMENSION, found the end of the statement", 13)),
    ("SHOW MASK contiguous@list", (-5, '"/contiguous@list" is an attribute, not a dataset')),
    ("SHOW FILL VALUE contiguous@list", (-5, '"/contiguous@list" is an attribute, not a dataset')),
    ("SHOW FILL", (-1, "Expected TYPE or VALUE, found the end of the statement", 10)),
    ("SHOW ORDER contiguous@list", (-5, '"/contiguous@list" is an attribute, not an object')),
    ("SHOW ORDER nope", (-3, 'Object "/nope" does not exist')),
    ("SHOW TAG", (-1, "Expected a dataset or attribute, found the end of the statement", 9)),
    ("SHOW MASK", (-1, "Expected a dataset, found the end of the statement", 10)),
])
def test_errors(stored, statement, error):
    assert stored.error("USE FILE t.h5", statement) == error
