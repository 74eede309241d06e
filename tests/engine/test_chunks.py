"""Compressed datasets, which are decoded in threads: SELECT must give what h5py gives, and of damaged chunks the reason."""

import ctypes
import zlib

import h5py
import numpy as np
import pytest
from hypothesis import given, settings
from hypothesis import strategies as st

LIBRARY = ctypes.CDLL("libhdf5_serial.so.103")  # h5py's
THREADS = [1, 2, 4]
DTYPES = ["i1", "<i2", ">u4", "<f4", "<f8", ">f8", "<f2", "S3", "pair", "padded", "array"]
MADE_TYPES = {
    "pair": np.dtype([("a", "<i4"), ("b", ">f8")]),
    "padded": np.dtype({"names": ["a", "b"], "formats": ["i1", "<f8"], "offsets": [0, 8], "itemsize": 24}),
    "array": np.dtype([("v", ">i2", (3,)), ("w", "<f4")]),
}
FILTERS = [{"compression": "gzip"}, {"shuffle": True}, {"fletcher32": True}, {"compression": "gzip", "shuffle": True},
           {"compression": "gzip", "shuffle": True, "fletcher32": True}, {"shuffle": True, "fletcher32": True},
           {"compression": "lzf"}, {"compression": "gzip", "scaleoffset": True}]

def dtype_of(name):
    return MADE_TYPES.get(name) or np.dtype(name)


def values_of(dtype, shape, seed):
    """Random bytes in half of the elements, so that filters find something to do and something that they cannot."""
    random = np.random.default_rng(seed)
    if dtype.kind == "S":
        return random.choice([b"", b"a", b"abc"], shape).astype(dtype)
    values = np.zeros(shape, dtype)
    if dtype.names:
        for name in dtype.names:
            values[name] = random.integers(-100, 100, values[name].shape)
    else:
        values[...] = random.integers(0, 100, shape)
        values[...] = np.where(random.random(shape) < 0.5, values, 7)
    return values


@st.composite
def datasets(draw):
    shape = tuple(draw(st.lists(st.integers(1, 40), min_size=1, max_size=3)))
    chunk = tuple(draw(st.integers(1, extent + 3)) for extent in shape)
    growing = draw(st.booleans())  # another index of chunks
    ranges = [(draw(st.integers(0, n)), draw(st.integers(0, n)), draw(st.integers(1, 7))) for n in shape]
    return {"dtype": dtype_of(draw(st.sampled_from(DTYPES))), "shape": shape, "chunk": chunk, "growing": growing,
            "filters": draw(st.sampled_from(FILTERS)), "libver": draw(st.sampled_from(["earliest", "latest"])),
            "ranges": ranges, "hole": draw(st.booleans()), "seed": draw(st.integers(0, 99))}


def create(file, made):
    options = dict(made["filters"])
    if made["dtype"].kind not in "iu":
        options.pop("scaleoffset", None)
    chunk = made["chunk"] if made["growing"] else tuple(map(min, made["chunk"], made["shape"]))
    maximum = (None,) * len(chunk) if made["growing"] else None
    dataset = file.create_dataset("x", made["shape"], made["dtype"], chunks=chunk, maxshape=maximum, **options)
    values = values_of(made["dtype"], made["shape"], made["seed"])
    if made["hole"]:
        middle = made["shape"][0] // 2
        dataset[middle:] = values[middle:]
    else:
        dataset[...] = values
    return dataset


def check_same(back, values):
    """Whatever their byte order and the holes in them."""
    assert back.shape == values.shape
    for name in values.dtype.names or [...]:
        assert np.array_equal(back[name], values[name])


@settings(max_examples=120)
@given(made=datasets(), threads=st.sampled_from(THREADS))
def test_any_slice_of_any_chunks(kelvo, made, threads):
    with h5py.File(kelvo.path("a.h5"), "w", libver=made["libver"]) as file:
        create(file, made)
    written = ", ".join("{}:{}:{}".format(*one) for one in made["ranges"])
    with h5py.File(kelvo.path("a.h5")) as file:
        whole = file["x"][...]
    expected = whole[tuple(slice(*one) for one in made["ranges"])]
    kelvo.rows("USE FILE a.h5", f"SET THREAD {threads}", f"SELECT * FROM x[{written}] INTO OR REPLACE part.npy",
               "SELECT * FROM x INTO OR REPLACE whole.npy")
    check_same(np.load(kelvo.path("part.npy")), expected)
    check_same(np.load(kelvo.path("whole.npy")), whole)


@pytest.fixture
def large(kelvo):
    """Many blocks of many chunks, some of which lie across the blocks' borders."""
    values = np.random.default_rng(1).integers(0, 1000, (700, 900)).astype("f8")
    with h5py.File(kelvo.path("a.h5"), "w") as file:
        file.create_dataset("rows", data=values, chunks=(64, 100), compression=1, shuffle=True)
        file.create_dataset("line", data=values.ravel(), chunks=(1000,), compression=1, shuffle=True, fletcher32=True)
        file.create_dataset("foreign", data=values.astype(">f8"), chunks=(700, 7), compression=1)
    return values


@pytest.mark.parametrize("threads", [*THREADS, 256])
@pytest.mark.parametrize("name", ["rows", "line", "foreign"])
def test_many_blocks(kelvo, large, name, threads):
    values = large.ravel()
    rows = kelvo.rows("USE FILE a.h5", f"SET THREAD {threads}", f"SELECT * FROM {name} INTO w.npy",
                      f"SELECT COUNT(*) FROM {name} WHERE VALUE > 500",
                      f"SELECT MIN(VALUE), MAX(VALUE), SUM(VALUE), MEDIAN(VALUE) FROM {name}",
                      f"SELECT VALUE FROM {name} WHERE VALUE = 3 LIMIT 2")
    assert np.array_equal(np.load(kelvo.path("w.npy")).ravel(), values)
    assert int(rows[0]) == np.count_nonzero(values > 500)
    assert list(map(float, rows[1].split("\t"))) == [values.min(), values.max(), values.sum(), np.median(values)]
    assert rows[2:] == ["3.000000"] * 2


@pytest.mark.parametrize("version", ["earliest", "latest"])
@pytest.mark.parametrize("compression", [None, "gzip"])
def test_steps_that_pass_over_very_many_chunks(kelvo, version, compression):
    """A billion chunks, of which a handful is looked at: whoever walks over them all is not back in time."""
    extent, step = 10**15, 10**14
    with h5py.File(kelvo.path("a.h5"), "w", libver=version) as file:
        line = file.create_dataset("line", (extent,), "i4", chunks=(10**6,), compression=compression, fillvalue=-1)
        line[5] = 1
        line[7 * step + 5:7 * step + 7] = 2
        plane = file.create_dataset("plane", (10**7, 3), "i2", chunks=(2, 2), compression=compression)
        plane[9_999_999] = [4, 5, 6]
    statements = ["USE FILE a.h5", f"SELECT * FROM line[5::{step}]", "SELECT * FROM plane[::9999999]",
                  "SELECT * FROM plane[3::9999996, 1:]"]
    assert kelvo.rows(*statements) == ["1", *["-1"] * 6, "2", "-1", "-1", "0 0 0", "4 5 6", "0 0", "5 6"]
    kelvo.rows("USE FILE a.h5", f"INSERT INTO line[6::{step}] VALUES (1, 2, 3, 4, 5, 6, 7, 8, 9, 10)",
               "INSERT INTO plane[::9999999, 1] VALUES (8)")
    with h5py.File(kelvo.path("a.h5")) as file:
        assert [file["line"][6 + i * step] for i in range(10)] == list(range(1, 11))
        assert file["line"][7 * step + 5] == 2
        assert file["plane"][0].tolist() == [0, 8, 0] and file["plane"][9_999_999].tolist() == [4, 8, 6]


def test_chunks_that_were_never_written(kelvo):
    with h5py.File(kelvo.path("a.h5"), "w") as file:
        for name, fill, time in (("zero", 0, "IFSET"), ("seven", 7, "ALLOC"), ("never", 7, "NEVER")):
            creation = h5py.h5p.create(h5py.h5p.DATASET_CREATE)
            creation.set_chunk((2,))
            creation.set_deflate(1)
            creation.set_fill_value(np.array([fill], "i4"))
            creation.set_fill_time(getattr(h5py.h5d, f"FILL_TIME_{time}"))
            space = h5py.h5s.create_simple((10,))
            h5py.h5d.create(file.id, name.encode(), h5py.h5t.NATIVE_INT32, space, creation)
            file[name][4:6] = 1
    with h5py.File(kelvo.path("a.h5")) as file:
        expected = {name: file[name][...] for name in ("zero", "seven")}
    for name, values in expected.items():
        assert kelvo.rows("USE FILE a.h5", "SET THREAD 2", f"SELECT * FROM {name}") == [str(v) for v in values]
    # What is never filled is anything at all.
    assert kelvo.rows("USE FILE a.h5", "SET THREAD 2", "SELECT * FROM never")[4:6] == ["1", "1"]


def test_filters_left_out(kelvo):
    """Each chunk says by itself which of the filters it passed through."""
    values = np.arange(48, dtype="<i4").reshape(6, 8)
    shuffled = [np.ascontiguousarray(part.view("u1").reshape(-1, 4).T).tobytes() for part in values]
    with h5py.File(kelvo.path("a.h5"), "w") as file:
        dataset = file.create_dataset("x", (6, 8), "<i4", chunks=(1, 8), compression=4, shuffle=True)
        for row in range(6):
            mask = row % 4
            content = values[row].tobytes() if mask & 1 else shuffled[row]
            dataset.id.write_direct_chunk((row, 0), content if mask & 2 else zlib.compress(content), mask)
    rows = kelvo.rows("USE FILE a.h5", "SET THREAD 2", "SHOW MASK x", "SELECT * FROM x")
    assert rows[:6] == ["0", "1", "2", "3", "0", "1"]
    assert rows[6:] == [" ".join(map(str, row)) for row in values]


def test_chunks_at_the_edge_that_are_not_filtered(kelvo):
    creation = h5py.h5p.create(h5py.h5p.DATASET_CREATE)
    creation.set_chunk((4,))
    creation.set_deflate(1)
    # h5py has no name for it.
    dont_filter_partial_chunks = 2
    assert LIBRARY.H5Pset_chunk_opts(ctypes.c_int64(creation.id), dont_filter_partial_chunks) >= 0
    with h5py.File(kelvo.path("a.h5"), "w", libver="latest") as file:
        space = h5py.h5s.create_simple((10,))
        h5py.h5d.create(file.id, b"x", h5py.h5t.NATIVE_INT32, space, creation)
        file["x"][...] = np.arange(10)
        assert file["x"].id.read_direct_chunk((8,))[1] == np.array([8, 9, 0, 0], "i4").tobytes()
    assert kelvo.rows("USE FILE a.h5", "SELECT * FROM x") == [str(i) for i in range(10)]


DAMAGE = {
    "cut": lambda coded: coded[:len(coded) // 2],
    "changed": lambda coded: coded[:10] + bytes([coded[10] ^ 255]) + coded[11:],
    "empty": lambda coded: b"\0",
}


@pytest.mark.parametrize("threads", THREADS)
@pytest.mark.parametrize("chunk", [0, 40, 99])
@pytest.mark.parametrize("damage", DAMAGE)
def test_damaged_chunks(kelvo, damage, chunk, threads):
    with h5py.File(kelvo.path("a.h5"), "w") as file:
        dataset = file.create_dataset("x", data=np.arange(200_000.0), chunks=(2000,), compression=1, shuffle=True)
        coded = dataset.id.read_direct_chunk((2000 * chunk,))[1]
        dataset.id.write_direct_chunk((2000 * chunk,), DAMAGE[damage](coded))
    with h5py.File(kelvo.path("a.h5")) as file, pytest.raises(OSError):
        file["x"][...]
    status, message = kelvo.error("USE FILE a.h5", f"SET THREAD {threads}", "SELECT MAX(VALUE) FROM x")
    assert (status, message) == (-9, 'Dataset "/x" cannot be read: inflate() failed')
    before = kelvo.rows("USE FILE a.h5", f"SET THREAD {threads}", f"SELECT COUNT(*) FROM x[:{2000 * chunk}] WHERE VALUE < 0",
                        f"SELECT COUNT(*) FROM x[{2000 * chunk + 2000}:] WHERE VALUE < 0")
    assert before == ["0", "0"]


def test_chunks_that_are_too_large(kelvo):
    """What is behind the chunk's bytes is nobody's."""
    values = np.arange(4000)
    with h5py.File(kelvo.path("a.h5"), "w") as file:
        dataset = file.create_dataset("x", data=values, chunks=(1000,), compression=1)
        dataset.id.write_direct_chunk((2000,), zlib.compress(values[2000:3000].tobytes() + bytes(64)))
    with h5py.File(kelvo.path("a.h5")) as file:
        assert np.array_equal(file["x"][...], values)
    assert kelvo.rows("USE FILE a.h5", "SET THREAD 2", "SELECT * FROM x") == [str(v) for v in values]


def test_wrong_checksum(kelvo):
    with h5py.File(kelvo.path("a.h5"), "w") as file:
        dataset = file.create_dataset("x", data=np.arange(6000), chunks=(1000,), fletcher32=True)
        coded = bytearray(dataset.id.read_direct_chunk((3000,))[1])
        coded[100] ^= 1
        dataset.id.write_direct_chunk((3000,), bytes(coded))
    assert kelvo.error("USE FILE a.h5", "SET THREAD 2", "SELECT SUM(VALUE) FROM x") == (
        -9, 'Dataset "/x" cannot be read: data error detected by Fletcher32 checksum')


MOST_DIMENSIONS = (1,) * 28 + (2, 3, 4, 5)  # 32, as many as there can be
FRONT = "0, " * 28
PARTS = [(":, :, :, :", np.s_[:, :, :, :]), ("1, 1:, ::3, ::2", np.s_[1, 1:, ::3, ::2]),
         (":, 2, 1:4:2, 4", np.s_[:, 2, 1:4:2, 4]), ("1, 1, 1, 1", np.s_[1, 1, 1, 1])]


@pytest.mark.parametrize("filters", [{}, {"compression": "gzip"}, {"fletcher32": True}, {"compression": "lzf"}],
                         ids=lambda filters: "-".join(filters) or "none")
@pytest.mark.parametrize("dtype", ["<i4", ">f8"])
def test_chunks_of_32_dimensions(kelvo, dtype, filters):
    """The library can divide by zero there, in h5py's hands too, wherever it does not read or write a plain box."""
    values = np.arange(120).reshape(MOST_DIMENSIONS)
    with h5py.File(kelvo.path("a.h5"), "w") as file:
        for name in ("x", "filled"):
            file.create_dataset(name, values.shape, dtype, chunks=(1,) * 28 + (1, 2, 3, 2), **filters)
        file["x"][...] = values
    core = values[(0,) * 28]
    assert len(kelvo.rows("USE FILE a.h5", "SHOW MASK x")) == 24
    for text, part in PARTS:
        shown = kelvo.rows("USE FILE a.h5", f"SELECT * FROM x[{FRONT}{text}]")
        assert [float(word) for word in " ".join(shown).split()] == list(np.ravel(core[part]))
    kelvo.rows("USE FILE a.h5", f"INSERT INTO x[{FRONT}1, 2, ::3, 1] VALUES (1000, 1001)", "INSERT INTO filled SELECT * FROM x",
               "COPY DATASET x TO copied")
    core[1, 2, ::3, 1] = 1000, 1001
    with h5py.File(kelvo.path("a.h5")) as file:
        for name in ("x", "filled", "copied"):
            assert np.array_equal(file[name][...], values), name


def test_strings_in_chunks_of_32_dimensions(kelvo):
    """These h5py can neither write nor read: it makes them, and gets them back from a contiguous dataset."""
    values = np.array([f"text {i}" for i in range(120)], object).reshape(MOST_DIMENSIONS)
    with h5py.File(kelvo.path("a.h5"), "w") as file:
        file.create_dataset("chunked", values.shape, h5py.string_dtype(), chunks=(1,) * 28 + (1, 2, 3, 2))
        file.create_dataset("line", data=values.ravel())
        file.create_dataset("back", (120,), h5py.string_dtype())
    kelvo.rows("USE FILE a.h5", "INSERT INTO chunked SELECT * FROM line", "INSERT INTO back SELECT * FROM chunked")
    with h5py.File(kelvo.path("a.h5")) as file:
        assert list(file["back"].asstr()[...]) == list(values.ravel())
    for text, part in PARTS:
        shown = kelvo.rows("USE FILE a.h5", f"SELECT * FROM chunked[{FRONT}{text}]")
        assert shown == list(np.ravel(values[(0,) * 28][part]))
