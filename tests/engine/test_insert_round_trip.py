"""What SELECT ... INTO writes, INSERT ... FROM reads: random values of random types come back equal."""

from dataclasses import dataclass

import h5py
import numpy as np
import pytest
from hypothesis import given, settings
from hypothesis import strategies as st

INTEGERS = [f"{order}{sign}{size}" for order in "<>" for sign in "iu" for size in (1, 2, 4, 8)]
MEMBERS = ["a", "b c", 'say "x"', "it's", "a,b", "caf\u00e9", "VALUE"]
BYTES = st.integers(1, 255).map(lambda byte: bytes([byte]))
PIECES = st.sampled_from([b"a", b" ", b",", b'"', b"'", b"\\", b"\\n", b"[", b"{", b"#", b"NULL", b"VALUE", b"1",
                          "\u20ac".encode(), b"\xff", b"\x01", b"\x7f"])
LINE_BYTES = st.sampled_from([b"\n", b"\t", b"\r", b"\r\n"])


@dataclass
class Sample:
    dtype: np.dtype
    values: list


def integers(dtype):
    limits = np.iinfo(dtype)
    return st.integers(int(limits.min), int(limits.max)) | st.sampled_from([int(limits.min), int(limits.max), 0])


def floats(dtype, finite):
    width = np.dtype(dtype).itemsize * 8
    nan = st.just(float("nan"))
    return nan | st.floats(width=width, allow_nan=False, allow_infinity=not finite)


def texts(longest, lines):
    pieces = PIECES | LINE_BYTES if lines else PIECES
    return st.lists(pieces, max_size=8).map(b"".join).map(lambda text: text[:longest])


def enumerations():
    names = {"RED": 0, "GREEN": -1, "no name, really": 7}
    dtype = h5py.enum_dtype(names, "<i2")
    truth = np.dtype(bool)
    return st.sampled_from([(dtype, st.sampled_from([0, -1, 7, 5])), (truth, st.booleans()),
                            (h5py.enum_dtype({"OFF": 0, "ON": 200}, ">u2"), st.sampled_from([0, 200, 3]))])


def plain_types(finite, lines):
    """(dtype, strategy of values) of types whose elements have a fixed size."""
    return st.one_of(
        st.sampled_from(INTEGERS).map(lambda dtype: (np.dtype(dtype), integers(dtype))),
        st.sampled_from(["<f2", ">f2", "<f4", ">f4", "<f8", ">f8"]).map(
            lambda dtype: (np.dtype(dtype), floats(dtype, finite))),
        st.integers(1, 9).map(lambda size: (np.dtype(f"S{size}"), texts(size, lines))),
        st.integers(1, 5).map(lambda size: (np.dtype(f"V{size}"), st.binary(min_size=size, max_size=size).map(np.void))),
        enumerations())


def array_of(element):
    dtype, values = element
    if dtype.kind in "SV":  # h5py writes no arrays of these
        return st.just(element)
    return st.sampled_from([(3,), (2, 2), (1, 2), (2, 1)]).map(lambda shape: (
        np.dtype((dtype, shape)), st.lists(values, min_size=int(np.prod(shape)), max_size=int(np.prod(shape))).map(
            lambda items: np.array(items, dtype).reshape(shape))))


def compound_of(members):
    @st.composite
    def build(draw):
        kinds = draw(st.lists(members, min_size=1, max_size=4))
        names = draw(st.permutations(MEMBERS))
        dtype = np.dtype([(name, kind[0]) for name, kind in zip(names, kinds)])
        return dtype, st.tuples(*(kind[1] for kind in kinds))
    return build()


def varying_types(lines):
    text = (h5py.string_dtype(), texts(20, lines))
    number = st.sampled_from(["<i4", ">u2", "<f8"])
    return st.just(text) | number.map(lambda dtype: (h5py.vlen_dtype(np.dtype(dtype)), st.lists(
        integers(dtype) if "f" not in dtype else floats(dtype, finite=True), max_size=4).map(
            lambda items: np.array(items, dtype))))


@st.composite
def samples(draw, finite=False, lines=True, varying=True):
    plain = plain_types(finite, lines)
    flat = plain | varying_types(lines) if varying else plain
    kind = draw(st.one_of(flat, plain.flatmap(array_of), compound_of(flat), compound_of(compound_of(plain) | flat)))
    return Sample(kind[0], draw(st.lists(kind[1], max_size=6)))


def written(folder, sample, shape=None):
    with h5py.File(folder / "a.h5", "w") as file:
        count = len(sample.values)
        for name in ("source", "target"):
            file.create_dataset(name, shape or (count,), sample.dtype)
        for i, value in enumerate(sample.values):
            file["source"][i] = np.array(value, sample.dtype) if sample.dtype.names else value



def canonical(value):
    """The value with all its digits and types in sight; NAN equals NAN."""
    if isinstance(value, np.void) and value.dtype.names:
        return {name: canonical(value[name]) for name in value.dtype.names}
    if isinstance(value, np.ndarray):
        return [canonical(item) for item in value]
    return value if isinstance(value, bytes) else repr(value.item() if isinstance(value, np.generic) else value)


def compare(folder):
    with h5py.File(folder / "a.h5") as file:
        assert canonical(file["target"][...]) == canonical(file["source"][...])


def there_and_back(kelvo, sample, file, form=""):
    written(kelvo.folder, sample)
    header = " HEADER" if form else ""
    kelvo.path(file).unlink(missing_ok=True)
    assert kelvo.rows("USE FILE a.h5", f"SELECT * FROM source {form} INTO {file}",
                      f"INSERT INTO target FROM {file}{header}") == []
    compare(kelvo.folder)


@settings(max_examples=40)
@given(sample=samples(), header=st.booleans())
def test_csv(kelvo, sample, header):
    there_and_back(kelvo, sample, "v.csv", "FORMAT CSV HEADER" if header else "")


@settings(max_examples=40)
@given(sample=samples(), header=st.booleans())
def test_tsv(kelvo, sample, header):
    there_and_back(kelvo, sample, "v.tsv", "FORMAT TSV HEADER" if header else "")


@settings(max_examples=40)
@given(sample=samples(lines=False))
def test_txt(kelvo, sample):
    there_and_back(kelvo, sample, "v.txt")


@settings(max_examples=40)
@given(sample=samples(finite=True), header=st.booleans())
def test_json(kelvo, sample, header):
    there_and_back(kelvo, sample, "v.json", "FORMAT JSON HEADER" if header else "")


@settings(max_examples=40)
@given(sample=samples(varying=False), file=st.sampled_from(["v.npy", "v.bin"]))
def test_bytes(kelvo, sample, file):
    there_and_back(kelvo, sample, file)


@settings(max_examples=40)
@given(sample=samples())
def test_select(kelvo, sample):
    written(kelvo.folder, sample)
    assert kelvo.rows("USE FILE a.h5", "INSERT INTO target SELECT * FROM source") == []
    compare(kelvo.folder)


@pytest.mark.parametrize("suffix", ["csv", "tsv", "txt", "json", "npy", "bin"])
@pytest.mark.parametrize("dtype", ["<i2", ">u8", "<f4", ">f8", "<f2"])
def test_matrices(kelvo, suffix, dtype):
    values = np.arange(24).reshape(2, 3, 4).astype(dtype)
    with h5py.File(kelvo.path("a.h5"), "w") as file:
        file["source"] = values
        file.create_dataset("target", (2, 3, 4), dtype)
    assert kelvo.rows("USE FILE a.h5", f"SELECT * FROM source INTO v.{suffix}", f"INSERT INTO target FROM v.{suffix}") == []
    compare(kelvo.folder)


@settings(max_examples=40)
@given(data=st.data(), pair=st.tuples(st.sampled_from(INTEGERS + ["<f4", "<f8"]), st.sampled_from(INTEGERS + ["<f8"])))
def test_numbers_of_other_types_arrive_or_are_refused(kelvo, data, pair):
    source, target = pair
    values = data.draw(st.lists(floats(source, True) if "f" in source else integers(source), min_size=1, max_size=5))
    with h5py.File(kelvo.path("a.h5"), "w") as file:
        file["source"] = np.array(values, source)
        file.create_dataset("target", (len(values),), target)
        exact = [value.item() for value in file["source"][...]]
    answer = kelvo.run("USE FILE a.h5", "INSERT INTO target SELECT * FROM source")
    with h5py.File(kelvo.path("a.h5")) as file:
        arrived = [value.item() for value in file["target"][...]]
    if "f" in target:
        assert answer.status == 0
        assert list(map(repr, arrived)) == [repr(float(value)) for value in exact]
        return
    limits = np.iinfo(target)
    unfit = [i for i, value in enumerate(exact)
             if not (value == value and int(value) == value and limits.min <= value <= limits.max)]
    if unfit:
        assert answer.status == -6
        assert answer.message.startswith(f"Element {unfit[0]}: Value ")
        assert arrived == [0] * len(values)
    else:
        assert answer.status == 0
        assert arrived == [int(value) for value in exact]
