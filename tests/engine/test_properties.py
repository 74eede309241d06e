"""Datasets, slices, conditions and values that nobody thought of: answers equal NumPy's, values come back."""

import math
import struct

import h5py
import numpy as np
from hypothesis import given, settings
from hypothesis import strategies as st
from oracle import Element, difference, rows_of


NUMBERS = [order + kind for order in "<>" for kind in ("i1", "u1", "i2", "u2", "i4", "u4", "i8", "u8", "f2", "f4", "f8")]
OTHERS = ["S1", "S7", "?", np.dtype([("id", ">u4"), ("x", "<f4"), ("name", "S3")]), np.dtype(("<i2", (2, 3))), "V5"]


# --- Slices ---

@st.composite
def datasets(draw, dtypes=tuple(NUMBERS + OTHERS)):
    """(array, arguments of create_dataset)"""
    dtype = np.dtype(draw(st.sampled_from(dtypes)))
    shape = tuple(draw(st.lists(st.integers(0, 9), max_size=4)))
    seed = draw(st.integers(0, 2 ** 32 - 1))
    # Types inside arrays become dimensions in NumPy; h5py keeps them apart only where it is given the type.
    array = values_of(np.random.default_rng(seed), dtype, shape)
    return array, dtype, shape, draw(storage_of(shape))


def values_of(random, dtype, shape):
    if dtype.kind == "f":
        return random.normal(0, 1000, shape).astype(dtype)
    if dtype.fields:
        array = np.zeros(shape, dtype)
        for name in dtype.names:
            array[name] = values_of(random, dtype.fields[name][0], shape)
        return array
    if dtype.subdtype:
        return values_of(random, dtype.base, (*shape, *dtype.shape))
    if dtype.kind == "b":
        return random.integers(0, 2, shape).astype(bool)
    if dtype.kind == "S":
        return random.choice(np.array([b"", b"a", b"bc", b"it's", b"x\ty"]), shape).astype(dtype)
    count = math.prod(shape) * dtype.itemsize
    return np.frombuffer(random.bytes(count), dtype).reshape(shape)


def storage_of(shape):
    if not shape or 0 in shape:
        return st.just({})
    chunked = st.fixed_dictionaries({
        "chunks": st.tuples(*(st.integers(1, extent) for extent in shape)),
        "maxshape": st.sampled_from([None, (None,) * len(shape)]),
        "shuffle": st.booleans(),
        "fletcher32": st.booleans(),
        "compression": st.sampled_from([None, "gzip", "lzf"])})
    return st.one_of(st.just({}), chunked)


@st.composite
def slices(draw, shape):
    """(text, NumPy's index)"""
    texts, index = [], []
    for extent in shape[:draw(st.integers(0, len(shape)))]:
        text, one = draw(slice_of(extent))
        texts.append(text)
        index.append(one)
    if texts and draw(st.booleans()):
        # An ellipsis stands for the dimensions left out, so it may replace any number of whole ones.
        texts.append("...")
        index.append(...)
    return f"[{', '.join(texts)}]" if texts else "", tuple(index)


@st.composite
def slice_of(draw, extent):
    if extent and draw(st.booleans()):
        index = draw(st.integers(-extent, extent - 1))
        return str(index), index
    bound = st.one_of(st.none(), st.integers(-2 * extent - 1, 2 * extent + 1))
    begin, end, step = draw(bound), draw(bound), draw(st.one_of(st.none(), st.integers(1, 4)))
    text = f"{'' if begin is None else begin}:{'' if end is None else end}"
    return text + ("" if step is None else f":{step}"), slice(begin, end, step)


def write(kelvo, array, dtype, shape, storage):
    with h5py.File(kelvo.path("a.h5"), "w") as file:
        dataset = file.create_dataset("x", shape, dtype, **storage)
        if array.size:
            dataset[...] = array


@settings(max_examples=120)
@given(data=st.data())
def test_slices_select_what_numpy_selects(kelvo_factory, data):
    array, dtype, shape, storage = data.draw(datasets())
    kelvo = kelvo_factory()
    write(kelvo, array, dtype, shape, storage)
    for text, index in data.draw(st.lists(slices(shape), min_size=1, max_size=3)):
        with h5py.File(kelvo.path("a.h5")) as file:
            element = Element(file["x"].id.get_type(), dtype, file)
            chosen = array[index] if index else array
            selected = np.shape(chosen)[:np.ndim(chosen) - len(dtype.shape)]
            expected = rows_of(element, chosen, selected) if np.size(chosen) else []
        answer = kelvo.run(f"SELECT * FROM x{text} IN a.h5")
        assert (answer.message, difference(answer.rows, expected)) == ("", None)


# --- Conditions ---

COMPARISONS = {"=": np.equal, "<>": np.not_equal, "<": np.less, "<=": np.less_equal, ">": np.greater,
               ">=": np.greater_equal}


@settings(max_examples=120)
@given(data=st.data())
def test_conditions_choose_what_numpy_chooses(kelvo_factory, data):
    array, dtype, shape, storage = data.draw(datasets(tuple(NUMBERS)))
    comparison = data.draw(st.sampled_from(list(COMPARISONS)))
    # One of the values, so that equality matters.
    value = array.flat[data.draw(st.integers(0, array.size - 1))] if array.size else dtype.type(0)
    if dtype.kind == "f":
        literal = repr(float(value))
    else:
        literal = str(int(value))
    kelvo = kelvo_factory()
    write(kelvo, array, dtype, shape, storage)
    chosen = array[COMPARISONS[comparison](array, value)]
    expected = ["%f" % item if dtype.kind == "f" else str(item) for item in chosen.tolist()]
    assert kelvo.rows("USE FILE a.h5", f"SELECT VALUE FROM x WHERE VALUE {comparison} {literal}") == expected


# --- Values written ---

def integer_values(bits, signed):
    return st.integers(-(2 ** (bits - 1)), 2 ** (bits - 1) - 1) if signed else st.integers(0, 2 ** bits - 1)


TEXT = st.text(st.characters(min_codepoint=1, blacklist_categories=["Cs"]), max_size=12)


def string_literal(text):
    """'...' where no byte in it would end the statement or the line, else E'...'."""
    if not any(ord(c) < 32 for c in text):
        return "'" + text.replace("'", "''") + "'"
    return "E'" + "".join(f"\\x{ord(c):02x}" if ord(c) < 32 or c in "\\'" else c for c in text) + "'"


def number_literal(value):
    if isinstance(value, float):
        return "NAN" if math.isnan(value) else ("-INF" if value < 0 else "INF") if math.isinf(value) else repr(value)
    return str(value)


def single(value):
    return struct.unpack("f", struct.pack("f", value))[0]


WRITTEN = {f"{'' if signed else 'UNSIGNED '}{name}{order}": (integer_values(bits, signed), number_literal)
           for name, bits in (("TINYINT", 8), ("SMALLINT", 16), ("INT", 32), ("BIGINT", 64))
           for signed in (True, False) for order in ("", " BIG ENDIAN")}
WRITTEN |= {
    "HALF": (st.floats(width=16), number_literal),
    "FLOAT": (st.floats(width=32), number_literal),
    "FLOAT BIG ENDIAN": (st.floats(width=32), number_literal),
    "DOUBLE": (st.floats(), number_literal),
    "VARCHAR": (TEXT, string_literal),
    "CHAR(48)": (TEXT, string_literal),
    "INT SIZE 3": (integer_values(24, True), number_literal),
    "UNSIGNED SMALLINT PRECISION 12 OFFSET 3": (integer_values(12, False), number_literal),
    "REAL(2) PRECISION 16 OFFSET 0 SIGN 15 EXPONENT 7 SIZE 8 BIAS 127 MANTISSA 0 SIZE 7 NORMALIZATION IMPLIED":
        (integer_values(8, True).map(lambda n: n / 2), number_literal),
}


def same_values(left, right):
    return len(left) == len(right) and all(
        a == b or (isinstance(a, float) and math.isnan(a) and math.isnan(b)) for a, b in zip(left, right))


@settings(max_examples=120)
@given(data=st.data())
def test_values_written_come_back(kelvo_factory, data):
    text = data.draw(st.sampled_from(list(WRITTEN)))
    strategy, literal = WRITTEN[text]
    values = data.draw(st.lists(strategy, min_size=1, max_size=20))
    kelvo = kelvo_factory()
    written = ", ".join(map(literal, values))
    kelvo.rows("CREATE FILE a.h5", "USE FILE a.h5", f"CREATE DATASET x {text} [{len(values)}] VALUES ({written})",
               f"CREATE ATTRIBUTE x@y {text} [{len(values)}]", f"INSERT INTO x@y VALUES ({written})")
    with h5py.File(kelvo.path("a.h5")) as file:
        if "SIZE" in text or "PRECISION" in text:
            # h5py has no type of that layout: the HDF5 library converts.
            stored = np.zeros(len(values), "f8" if "REAL" in text else "i8")
            file["x"].id.read(h5py.h5s.ALL, h5py.h5s.ALL, stored, h5py.h5t.py_create(stored.dtype))
            read = stored.tolist(), stored.tolist()
        else:
            read = file["x"][()].tolist(), file["x"].attrs["y"].tolist()
    for stored in read:
        stored = [item.decode() if isinstance(item, bytes) else item for item in stored]
        assert same_values(stored, values)


@settings(max_examples=120)
@given(data=st.data())
def test_numbers_inside_text_read_back(kelvo_factory, data):
    """A member's number is shown with digits that read back to the same value."""
    doubles = data.draw(st.lists(st.floats(), min_size=1, max_size=10))
    pairs = [(value, single(value) if abs(value) < 3e38 else value) for value in doubles]
    kelvo = kelvo_factory()
    dtype = np.dtype([("d", "<f8"), ("f", ">f4")])
    with h5py.File(kelvo.path("a.h5"), "w") as file:
        with np.errstate(over="ignore"):
            file["x"] = np.array(pairs, dtype)
        element = Element(file["x"].id.get_type(), dtype, file)
        expected = rows_of(element, file["x"][()], (len(pairs),))
    assert difference(kelvo.rows("SELECT * FROM x IN a.h5"), expected) is None


# --- Answers longer than what is read at once ---

def test_blocks_meet_without_a_seam(kelvo):
    array = np.arange(700_000, dtype="<i4").reshape(7, 100_000)
    with h5py.File(kelvo.path("a.h5"), "w") as file:
        file.create_dataset("lines", data=array, chunks=(3, 7777), compression="lzf")
        file["line"] = array.ravel()
    lines = kelvo.rows("SELECT * FROM lines[:, 5::3] IN a.h5")
    assert lines == [" ".join(map(str, line)) for line in array[:, 5::3].tolist()]
    assert kelvo.rows("SELECT * FROM line[1::2] IN a.h5") == [str(item) for item in range(1, 700_000, 2)]
