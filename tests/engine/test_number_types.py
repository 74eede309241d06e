"""Numbers of every type show as h5py reads them; types that h5py cannot read are made of bytes known here."""

import subprocess

import h5py
import numpy as np
import pytest
from h5py import h5t
from typed_files import make, raw_file, write_raw

INTEGERS = [f"{order}{sign}{size}" for order in "<>" for sign in "iu" for size in (1, 2, 4, 8)]


@pytest.mark.parametrize("dtype", INTEGERS)
def test_integers_of_every_width_and_byte_order(kelvo, dtype):
    limits = np.iinfo(dtype)
    assert make(kelvo, x=([limits.min, limits.max, 0, 1, limits.max // 3], dtype)) == 2


@pytest.mark.parametrize("signed", [True, False])
@pytest.mark.parametrize("order", ["little", "big"])
@pytest.mark.parametrize("size", [3, 5, 6, 7])
def test_integers_of_odd_widths(kelvo, size, order, signed):
    values = [0, 1, 5, 2 ** (8 * size - 1) - 1] + ([-1, -(2 ** (8 * size - 1))] if signed else [2 ** (8 * size) - 1])
    type_id = (h5t.STD_I64LE if signed else h5t.STD_U64LE).copy()
    type_id.set_size(size)
    type_id.set_order(h5t.ORDER_LE if order == "little" else h5t.ORDER_BE)
    data = b"".join(value.to_bytes(size, order, signed=signed) for value in values)
    assert raw_file(kelvo, type_id, data, len(values)) == [str(value) for value in values]


def narrow(size, order, precision, offset, signed):
    type_id = (h5t.STD_I64LE if signed else h5t.STD_U64LE).copy()
    type_id.set_order(h5t.ORDER_LE if order == "little" else h5t.ORDER_BE)
    type_id.set_precision(precision)
    type_id.set_offset(offset)
    type_id.set_size(size)
    return type_id


@pytest.mark.parametrize("signed", [True, False])
@pytest.mark.parametrize("order", ["little", "big"])
@pytest.mark.parametrize("size, precision, offset", [
    (1, 5, 0), (1, 1, 0), (1, 4, 3), (2, 13, 0), (2, 12, 2), (3, 20, 0), (4, 29, 0), (4, 1, 5), (8, 61, 0), (8, 60, 4)])
def test_integers_that_use_some_of_their_bits(kelvo, size, precision, offset, order, signed):
    """Alone, and within compounds and sequences, where the HDF5 library converts them by other ways."""
    low, high = (-(2 ** (precision - 1)), 2 ** (precision - 1) - 1) if signed else (0, 2 ** precision - 1)
    values = [low, high, 0, high // 3, low // 2]
    data = [((value % 2 ** precision) << offset).to_bytes(size, order) for value in values]
    number = narrow(size, order, precision, offset, signed)
    pair = h5t.create(h5t.COMPOUND, size + 1)
    pair.insert(b"n", 0, number)
    pair.insert(b"m", size, h5t.STD_I8LE)
    with h5py.File(kelvo.path("raw.h5"), "w") as file:
        write_raw(file, "x", number, b"".join(data), len(values))
        write_raw(file, "pair", pair, b"".join(one + b"\7" for one in data), len(values))
        write_raw(file, "list", h5t.array_create(number, (len(values),)), b"".join(data))
    assert kelvo.rows("USE FILE raw.h5", "SELECT * FROM x") == [str(value) for value in values]
    assert kelvo.rows("USE FILE raw.h5", "SELECT * FROM pair") == [f"{{n: {value}, m: 7}}" for value in values]
    assert kelvo.rows("USE FILE raw.h5", "SELECT * FROM list") == [" ".join(map(str, values))]


@pytest.mark.parametrize("order", ["little", "big"])
def test_integers_of_12_bits_in_the_middle_of_16(kelvo, order):
    values = [0, 1, -1, 2047, -2048]
    type_id = (h5t.STD_I16LE if order == "little" else h5t.STD_I16BE).copy()
    type_id.set_precision(12)
    type_id.set_offset(2)
    data = b"".join(((value & 0xfff) << 2).to_bytes(2, order) for value in values)
    assert raw_file(kelvo, type_id, data, len(values)) == [str(value) for value in values]


def test_integers_of_64_bits_in_the_middle_of_128(kelvo):
    values = [0, -1, 2 ** 63 - 1, -(2 ** 63)]
    type_id = h5t.STD_I64LE.copy()
    type_id.set_size(16)
    type_id.set_precision(64)
    type_id.set_offset(8)
    data = b"".join(((value & (2 ** 64 - 1)) << 8).to_bytes(16, "little") for value in values)
    assert raw_file(kelvo, type_id, data, len(values)) == [str(value) for value in values]


def test_integers_of_more_than_64_bits_are_an_error_and_no_wrong_number(kelvo):
    type_id = h5t.STD_I64LE.copy()
    type_id.set_size(16)
    type_id.set_precision(128)
    with h5py.File(kelvo.path("raw.h5"), "w") as file:
        write_raw(file, "x", type_id, (2 ** 63).to_bytes(16, "little"))
        write_raw(file, "y", h5t.array_create(type_id, (1,)), (1).to_bytes(16, "little"))
    for name in "xy":
        assert kelvo.error(f"SELECT * FROM {name} IN raw.h5") == (
            -7, f'Dataset "/{name}" cannot be read: it has integers of 128 bits, this engine reads up to 64')


def test_integers_of_more_than_64_bits_are_described_and_copied(kelvo):
    type_id = h5t.STD_I64BE.copy()
    type_id.set_size(16)
    type_id.set_precision(128)
    with h5py.File(kelvo.path("raw.h5"), "w") as file:
        group = file.create_group("g")
        write_raw(group, "x", type_id, (2 ** 90).to_bytes(16, "big") + (3).to_bytes(16, "big"), 2)
        h5py.h5a.create(group["x"].id, b"a", type_id, h5py.h5s.create(h5py.h5s.SCALAR))
        pair = h5t.create(h5t.COMPOUND, 20)
        pair.insert(b"wide", 0, type_id)
        pair.insert(b"n", 16, h5t.STD_I32LE)
        write_raw(group, "pair", pair, (2 ** 90).to_bytes(16, "big") + (7).to_bytes(4, "little"))
    assert kelvo.rows("USE FILE raw.h5", "SHOW DIMENSION g/x", "SHOW SIZE g/x", "SHOW ENDIANNESS g/x@a", "SHOW MEMBER g/pair",
                      "SHOW STORAGE TYPE g/x", "SELECT n FROM g/pair") == [
                          "2", "32", "BIG ENDIAN", "wide", "n", "CONTIGUOUS", "7"]
    message = 'cannot be read: it has integers of 128 bits, this engine reads up to 64'
    assert kelvo.error("SELECT * FROM g/x@a IN raw.h5") == (-7, f'Attribute "/g/x@a" {message}')
    assert kelvo.error("SELECT SUM(VALUE) FROM g/x IN raw.h5") == (-7, f'Dataset "/g/x" {message}')
    assert kelvo.error("SELECT * FROM g/pair IN raw.h5") == (-7, f'Dataset "/g/pair" {message}')
    assert kelvo.error("INSERT INTO g/x IN raw.h5 VALUES (1)") == (-7, f'Dataset "/g/x" {message}')
    kelvo.rows("CREATE FILE b.h5", "USE FILE raw.h5", "COPY GROUP g TO g IN b.h5", "COPY DATASET g/x TO y IN b.h5 CHUNK [1]",
               "COPY FILE raw.h5 TO packed.h5 REPACK")
    for name, path in (("b.h5", "g/x"), ("b.h5", "y"), ("packed.h5", "g/x")):
        compared = subprocess.run(["h5diff", "raw.h5", name, "/g/x", path], cwd=kelvo.folder, capture_output=True, text=True)
        assert (compared.returncode, compared.stdout, compared.stderr) == (0, "", "")


@pytest.mark.parametrize("dtype", ["<f2", ">f2", "<f4", ">f4", "<f8", ">f8", np.longdouble])
def test_real_numbers(kelvo, dtype):
    values = [0.0, -0.0, 1.5, -2.25, 1 / 3, 65504, 6e-8, np.nan, np.inf, -np.inf]
    assert make(kelvo, x=(values, dtype)) == 2


def unsigned_nans(rows):
    return [row.replace("-nan", "nan") for row in rows]


@pytest.mark.parametrize("dtype", ["<f2", ">f2"])
def test_every_half_float(kelvo, dtype):
    """Side by side, in lines, and where other members stand between them."""
    every = np.arange(65536, dtype=np.uint16).view("f2").astype(dtype)
    with h5py.File(kelvo.path("half.h5"), "w") as file:
        file["x"] = every
        file["lines"] = every.reshape(-1, 16)
        file["pairs"] = np.rec.fromarrays([np.arange(65536, dtype="u1"), every], names="n,x")
    expected = unsigned_nans("%f" % value for value in every.astype(float))
    assert unsigned_nans(kelvo.rows("SELECT * FROM x IN half.h5")) == expected
    assert unsigned_nans(kelvo.rows("SELECT x FROM pairs IN half.h5")) == expected
    lines = kelvo.rows("SELECT * FROM lines IN half.h5")
    assert unsigned_nans(" ".join(lines).split()) == expected


def brain_float():
    """The upper half of a single: 8 bits of exponent, 7 of mantissa."""
    type_id = h5t.IEEE_F32LE.copy()
    type_id.set_fields(15, 7, 8, 0, 7)
    type_id.set_size(2)
    type_id.set_ebias(127)
    return type_id


def test_every_brain_float(kelvo):
    every = np.arange(65536, dtype=np.uint32)
    rows = raw_file(kelvo, brain_float(), every.astype("<u2").tobytes(), 65536)
    expected = ["%f" % value for value in (every << 16).view(np.float32).tolist()]
    assert [row.lstrip("-") if "nan" in row else row for row in rows] == [
        row.lstrip("-") if "nan" in row else row for row in expected]


def test_quadruple_precision(kelvo):
    type_id = h5t.IEEE_F64LE.copy()
    type_id.set_size(16)
    type_id.set_precision(128)
    type_id.set_fields(127, 112, 15, 0, 112)
    type_id.set_ebias(16383)
    one_and_a_half = (16383 << 112) | (1 << 111)
    minus_two = (1 << 127) | (16384 << 112)
    data = b"".join(bits.to_bytes(16, "little") for bits in (one_and_a_half, minus_two, 0))
    assert raw_file(kelvo, type_id, data, 3) == ["1.500000", "-2.000000", "0.000000"]


@pytest.mark.parametrize("type_id, order", [(h5t.STD_B8LE, "little"), (h5t.STD_B16LE, "little"), (h5t.STD_B16BE, "big"),
                                            (h5t.STD_B32BE, "big"), (h5t.STD_B64LE, "little"), (h5t.STD_B64BE, "big")])
def test_bit_fields(kelvo, type_id, order):
    size = type_id.get_size()
    values = [0, 1, 2 ** (8 * size) - 1, 0xa5]
    data = b"".join(value.to_bytes(size, order) for value in values)
    assert raw_file(kelvo, type_id, data, len(values)) == [str(value) for value in values]


@pytest.mark.parametrize("type_id, order", [(h5t.UNIX_D32LE, "little"), (h5t.UNIX_D32BE, "big"),
                                            (h5t.UNIX_D64LE, "little"), (h5t.UNIX_D64BE, "big")])
def test_times(kelvo, type_id, order):
    values = [0, 1700000000, -1]
    data = b"".join(value.to_bytes(type_id.get_size(), order, signed=True) for value in values)
    assert raw_file(kelvo, type_id, data, len(values)) == [str(value) for value in values]


def test_complex_numbers(kelvo):
    assert make(kelvo, single=([1 + 2j, -0.5j], "c8"), double=([1e300 - 1e-300j, complex(np.nan, np.inf)], ">c16")) == 4


def test_booleans(kelvo):
    assert make(kelvo, x=([True, False, True], bool)) == 2


@pytest.mark.parametrize("dtype", INTEGERS)
def test_enumerations_of_every_base_and_values_without_a_name(kelvo, dtype):
    limits = np.iinfo(dtype)
    highest = min(limits.max, 2 ** 63 - 1)  # more is more than h5py takes
    enumeration = h5py.enum_dtype({"LOW": int(limits.min), "SEVEN": 7, "HIGH": int(highest)}, basetype=dtype)
    assert make(kelvo, x=([limits.min, 7, highest, 8, limits.max - 1], enumeration)) == 2
