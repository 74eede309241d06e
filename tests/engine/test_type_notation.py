"""SHOW DATA TYPE's text, pasted into CREATE DATASET, makes an equal type."""

import struct

import h5py
import numpy as np
import pytest
from h5py import h5t


def integer(like, size=None, precision=None, offset=None):
    type_id = like.copy()
    if size:
        type_id.set_size(size)
    if precision:
        type_id.set_precision(precision)
    if offset:
        type_id.set_offset(offset)
    return type_id


def real(size, precision, offset, fields, bias, like=h5t.IEEE_F64LE):
    type_id = like.copy()
    type_id.set_size(16)
    type_id.set_precision(128)
    type_id.set_fields(*fields)
    type_id.set_offset(offset)
    type_id.set_precision(precision)
    type_id.set_size(size)
    type_id.set_ebias(bias)
    return type_id


def long_double():
    """A 32-bit machine has its own in 12 bytes."""
    type_id = h5t.NATIVE_LDOUBLE.copy()
    type_id.set_size(16)
    return type_id


def string(size, padding, charset):
    type_id = h5t.C_S1.copy()
    type_id.set_size(size)
    type_id.set_strpad(padding)
    type_id.set_cset(charset)
    return type_id


def opaque(size, tag):
    type_id = h5t.create(h5t.OPAQUE, size)
    type_id.set_tag(tag)
    return type_id


def enumeration(base, **names):
    type_id = h5t.enum_create(base)
    for name, value in names.items():
        type_id.enum_insert(name.encode(), value)
    return type_id


def compound(**members):
    type_id = h5t.create(h5t.COMPOUND, sum(member.get_size() for member in members.values()))
    offset = 0
    for name, member in members.items():
        type_id.insert(name.encode(), offset, member)
        offset += member.get_size()
    return type_id


PAIR = compound(**{"id": h5t.STD_U16BE, "two words": h5t.IEEE_F32BE})
TYPES = {
    "TINYINT": h5t.STD_I8LE,
    "UNSIGNED TINYINT": h5t.STD_U8LE,
    "SMALLINT": h5t.STD_I16LE,
    "UNSIGNED SMALLINT BIG ENDIAN": h5t.STD_U16BE,
    "INT": h5t.STD_I32LE,
    "INT BIG ENDIAN": h5t.STD_I32BE,
    "UNSIGNED BIGINT": h5t.STD_U64LE,
    "BIGINT BIG ENDIAN": h5t.STD_I64BE,
    "INT SIZE 3": integer(h5t.STD_I32LE, 3),
    "UNSIGNED INT SIZE 3 BIG ENDIAN": integer(h5t.STD_U32BE, 3),
    "BIGINT SIZE 5": integer(h5t.STD_I64LE, 5),
    "SMALLINT PRECISION 1": integer(h5t.STD_I16LE, None, 1),
    "SMALLINT PRECISION 12 OFFSET 2": integer(h5t.STD_I16LE, None, 12, 2),
    "UNSIGNED SMALLINT PRECISION 12 BIG ENDIAN": integer(h5t.STD_U16BE, None, 12),
    "BIGINT SIZE 16 PRECISION 40 OFFSET 8": integer(h5t.STD_I64LE, 16, 40, 8),
    "HALF": h5t.py_create(np.dtype("<f2")),
    "HALF BIG ENDIAN": h5t.py_create(np.dtype(">f2")),
    "FLOAT": h5t.IEEE_F32LE,
    "DOUBLE BIG ENDIAN": h5t.IEEE_F64BE,
    "LONG DOUBLE": long_double(),
    "REAL(2) PRECISION 16 OFFSET 0 SIGN 15 EXPONENT 7 SIZE 8 BIAS 127 MANTISSA 0 SIZE 7 NORMALIZATION IMPLIED":
        real(2, 16, 0, (15, 7, 8, 0, 7), 127),
    "REAL(16) PRECISION 128 OFFSET 0 SIGN 127 EXPONENT 112 SIZE 15 BIAS 16383 MANTISSA 0 SIZE 112 "
    "NORMALIZATION IMPLIED BIG ENDIAN": real(16, 128, 0, (127, 112, 15, 0, 112), 16383, h5t.IEEE_F64BE),
    "REAL(4) PRECISION 20 OFFSET 7 SIGN 26 EXPONENT 20 SIZE 6 BIAS 31 MANTISSA 7 SIZE 13 NORMALIZATION IMPLIED":
        real(4, 20, 7, (26, 20, 6, 7, 13), 31),
    "BITFIELD(8)": h5t.STD_B8LE,
    "BITFIELD(32) BIG ENDIAN": h5t.STD_B32BE,
    "TIME(32)": h5t.UNIX_D32LE,
    "TIME(64) BIG ENDIAN": h5t.UNIX_D64BE,
    "CHAR(5)": string(5, h5t.STR_NULLPAD, h5t.CSET_UTF8),
    "CHAR(5) CHARSET ASCII": string(5, h5t.STR_NULLPAD, h5t.CSET_ASCII),
    "CHAR(1) NULLTERM CHARSET ASCII": string(1, h5t.STR_NULLTERM, h5t.CSET_ASCII),
    "CHAR(80) SPACEPAD": string(80, h5t.STR_SPACEPAD, h5t.CSET_UTF8),
    "VARCHAR": string(h5t.VARIABLE, h5t.STR_NULLTERM, h5t.CSET_UTF8),
    "VARCHAR NULLPAD CHARSET ASCII": string(h5t.VARIABLE, h5t.STR_NULLPAD, h5t.CSET_ASCII),
    "VARCHAR SPACEPAD": string(h5t.VARIABLE, h5t.STR_SPACEPAD, h5t.CSET_UTF8),
    "OPAQUE(7)": opaque(7, b""),
    "OPAQUE(7) TAG 'it''s'": opaque(7, b"it's"),
    "OPAQUE(7) TAG E'a\\x0ab'": opaque(7, b"a\nb"),
    "ENUMERATION (FALSE = 0, TRUE = 1) OF TINYINT": h5t.py_create(np.dtype(bool)),
    "ENUMERATION (LOW = -5, \"a b\" = 70000) OF INT BIG ENDIAN":
        enumeration(h5t.STD_I32BE, **{"LOW": -5, "a b": 70000}),
    "ENUMERATION (ONE = 1) OF UNSIGNED SMALLINT": enumeration(h5t.STD_U16LE, ONE=1),
    "COMPOUND (id UNSIGNED SMALLINT BIG ENDIAN, \"two words\" FLOAT BIG ENDIAN)": PAIR,
    "COMPOUND (a COMPOUND (id UNSIGNED SMALLINT BIG ENDIAN, \"two words\" FLOAT BIG ENDIAN), b VARCHAR [2, 3], "
    "c VARINT)": compound(a=PAIR, b=h5t.array_create(string(h5t.VARIABLE, h5t.STR_NULLTERM, h5t.CSET_UTF8), (2, 3)),
                          c=h5t.vlen_create(h5t.STD_I32LE)),
    'COMPOUND (E"line\\x0aend" FLOAT, E"\\x09""\\\\" INT, "\\" INT)':
        compound(**{"line\nend": h5t.IEEE_F32LE, '\t"\\': h5t.STD_I32LE, "\\": h5t.STD_I32LE}),
    'ENUMERATION (E"\\x01" = 3) OF TINYINT': enumeration(h5t.STD_I8LE, **{"\x01": 3}),
    "ARRAY [2, 3] OF SMALLINT": h5t.array_create(h5t.STD_I16LE, (2, 3)),
    "ARRAY [2] OF ARRAY [3] OF CHAR(4)":
        h5t.array_create(h5t.array_create(string(4, h5t.STR_NULLPAD, h5t.CSET_UTF8), (3,)), (2,)),
    "UNSIGNED VARTINYINT": h5t.vlen_create(h5t.STD_U8LE),
    "VARDOUBLE BIG ENDIAN": h5t.vlen_create(h5t.IEEE_F64BE),
    "SEQUENCE OF HALF": h5t.vlen_create(h5t.py_create(np.dtype("<f2"))),
    "SEQUENCE OF INT SIZE 3": h5t.vlen_create(integer(h5t.STD_I32LE, 3)),
    "SEQUENCE OF VARINT": h5t.vlen_create(h5t.vlen_create(h5t.STD_I32LE)),
    "SEQUENCE OF COMPOUND (id UNSIGNED SMALLINT BIG ENDIAN, \"two words\" FLOAT BIG ENDIAN)": h5t.vlen_create(PAIR),
    "REFERENCE": h5t.STD_REF_OBJ,
    "REGION REFERENCE": h5t.STD_REF_DSETREG,
}


@pytest.mark.parametrize("text", TYPES, ids=lambda text: text[:60])
def test_type_is_shown_and_made_again(kelvo, text):
    with h5py.File(kelvo.path("a.h5"), "w") as file:
        h5py.h5d.create(file.id, b"x", TYPES[text], h5py.h5s.create(h5py.h5s.SCALAR))
    assert kelvo.row("SHOW DATA TYPE x IN a.h5") == text
    kelvo.rows("USE FILE a.h5", f"CREATE DATASET y {text}", f"CREATE ATTRIBUTE x@y {text} [2]")
    with h5py.File(kelvo.path("a.h5")) as file:
        assert file["y"].id.get_type().equal(TYPES[text])
        assert h5py.h5a.open(file["x"].id, b"y").get_type().equal(TYPES[text])


@pytest.mark.parametrize("text, size, offset, precision", [("BITFIELD(24)", 3, 0, 24),
                                                           ("BITFIELD(16) PRECISION 5 OFFSET 3", 2, 3, 5)])
def test_bit_fields_that_h5py_cannot_make(kelvo, text, size, offset, precision):
    kelvo.rows("CREATE FILE a.h5", "USE FILE a.h5", f"CREATE DATASET x {text}")
    assert kelvo.row("SHOW DATA TYPE x IN a.h5") == text
    with h5py.File(kelvo.path("a.h5")) as file:
        type_id = file["x"].id.get_type()
        assert type_id.get_size() == size
        # The file format ends the description of a bit field with its offset and its precision.
        assert struct.unpack("<HH", type_id.encode()[-4:]) == (offset, precision)


def test_holes_of_a_compound_are_left_out(kelvo):
    with h5py.File(kelvo.path("a.h5"), "w") as file:
        file["x"] = np.zeros(1, np.dtype({"names": ["a", "b"], "formats": ["i1", "<i4"], "offsets": [2, 8],
                                          "itemsize": 20}))
    assert kelvo.row("SHOW DATA TYPE x IN a.h5") == "COMPOUND (a TINYINT, b INT)"


def test_committed_type_shows_like_any_other(kelvo):
    with h5py.File(kelvo.path("a.h5"), "w") as file:
        file["kind"] = np.dtype([("a", "i1"), ("b", "<f4")])
        file.create_dataset("x", (2,), file["kind"])
    for name in ("kind", "x"):
        assert kelvo.row(f"SHOW DATA TYPE {name} IN a.h5") == "COMPOUND (a TINYINT, b FLOAT)"
    assert kelvo.rows("SELECT * FROM x IN a.h5") == ["{a: 0, b: 0}"] * 2


# --- Texts that are no type ---

@pytest.mark.parametrize("text, status, message", [
    ("CHAR(0)", -6, "The size of a type must be at least 1"),
    ("SMALLINT SIZE 3", -6, "SMALLINT cannot have the size 3"),
    ("INT PRECISION 33", -6, "An integer of 4 bytes cannot have 33 bits at offset 0"),
    ("INT PRECISION 30 OFFSET 3", -6, "An integer of 4 bytes cannot have 30 bits at offset 3"),
    ("BIGINT SIZE 16", -6, "An integer of 16 bytes cannot have 128 bits at offset 0"),
    ("BITFIELD(12)", -6, "No such type has 12 bits"),
    ("TIME(16)", -6, "No such type has 16 bits"),
    ("ENUMERATION (A = 200) OF TINYINT", -6, 'Value of "A" does not fit TINYINT'),
    ("ENUMERATION (A, A)", -6, 'Name or value of "A" stands twice in the enumeration'),
    ("ENUMERATION (A = 1, B = 1)", -6, 'Name or value of "A" stands twice in the enumeration'),
    ("COMPOUND (a INT, a INT)", -6, 'Member "a" stands twice in the compound'),
    ("ARRAY [0] OF INT", -6, "An extent of an array must be at least 1"),
])
def test_types_that_cannot_be_made(kelvo, text, status, message):
    kelvo.rows("CREATE FILE a.h5")
    assert kelvo.error("USE FILE a.h5", f"CREATE DATASET x {text}") == (status, message)


@pytest.mark.parametrize("text, position, message", [
    ("INTEGER", 18, 'Expected a data type (HELP DATA TYPE lists them), found "INTEGER"'),
    ("SMALLINT UNSIGNED", 27, 'Expected UNSIGNED in front of the type, found "UNSIGNED"'),
    ("UNSIGNED FLOAT", 27, 'Expected an integer type, found "FLOAT"'),
    ("CHAR", 22, 'Expected "(", found the end of the statement'),
    ("CHAR(x)", 23, 'Expected a number of bytes, found "x"'),
    ("CHAR(5) CHARSET LATIN1", 34, 'Expected ASCII or UTF8, found "LATIN1"'),
    ("OPAQUE(5) TAG x", 32, 'Expected the tag (strings stand between single quotes), found "x"'),
    ("INT PRECISION", 31, "Expected a number of bits or bytes, found the end of the statement"),
    ("ENUMERATION ()", 31, 'Expected the name of a value, found ")"'),
    ("ENUMERATION (A) OF FLOAT", 37, 'Expected an integer type, found "FLOAT"'),
    ("ENUMERATION (A) OF VARINT", 37, 'Expected an integer type, found "VARINT"'),
    ("COMPOUND (1 INT)", 28, 'Expected the name of a member, found "1"'),
    ("ARRAY OF INT", 24, 'Expected "[", found "OF"'),
    ("ARRAY [2] INT", 28, 'Expected OF, found "INT"'),
    ("ARRAY [1] OF " * 5000 + "INT", 18 + 200 * 13, "Expected at most 200 levels"),
    ("REAL(2) PRECISION 16", 38, "Expected OFFSET, found the end of the statement"),
])
def test_texts_that_are_no_type(kelvo, text, position, message):
    kelvo.rows("CREATE FILE a.h5")
    assert kelvo.error("USE FILE a.h5", f"CREATE DATASET x {text}") == (-1, message, position)
