"""Values as they are written: what fits is stored as written, what does not is refused before anything is."""

import re
import subprocess

import h5py
import numpy as np
import pytest


@pytest.fixture
def made(kelvo):
    """A function that makes dataset x of the type and inserts the values: (status, message) or what h5py reads."""
    def make(type_text, values, dims=""):
        kelvo.rows("CREATE OR REPLACE FILE a.h5", "USE FILE a.h5", f"CREATE DATASET x {type_text} {dims}")
        answer = kelvo.run("USE FILE a.h5", f"INSERT INTO x VALUES ({values})")
        if answer.status == 0:
            with h5py.File(kelvo.path("a.h5")) as file:
                return file["x"][()]
        untouched = kelvo.path("a.h5").read_bytes()
        kelvo.run("USE FILE a.h5", f"INSERT INTO x VALUES ({values})")
        assert kelvo.path("a.h5").read_bytes() == untouched
        return answer.status, answer.message
    return make


# --- Values that fit ---

@pytest.mark.parametrize("type_text, values, stored", [
    ("TINYINT", "-128", -128), ("UNSIGNED TINYINT", "0xff", 255), ("INT", "+7", 7), ("INT", "-0", 0),
    ("INT", "1e3", 1000), ("SMALLINT", "2.0", 2), ("BIGINT", "-9223372036854775808", -2 ** 63),
    ("UNSIGNED BIGINT", "18446744073709551615", 2 ** 64 - 1), ("DOUBLE", "1", 1.0), ("DOUBLE", "-inf", -np.inf),
    ("DOUBLE", "1.7976931348623157e308", 1.7976931348623157e308), ("DOUBLE", "1e-400", 0.0),
    ("DOUBLE", "5e-324", 5e-324), ("FLOAT", "3.4028234663852886e38", np.finfo("f4").max),
    ("HALF", "65504", 65504.0), ("HALF", "65519.99", 65504.0),
    ("CHAR(3)", "'abc'", b"abc"), ("CHAR(3)", "''", b""), ("VARCHAR", "'it''s'", b"it's"),
    ("VARCHAR", "E'a\\n\\t\\\\\\x41\\u00e9'", "a\n\t\\Aé".encode()),
    ("ENUMERATION (NO, YES)", "'YES'", 1), ("ENUMERATION (NO, YES)", "7", 7),
    ("ENUMERATION (FALSE, TRUE) OF TINYINT", "TRUE", True),
])
def test_values_that_fit_are_stored_as_written(made, type_text, values, stored):
    assert made(type_text, values) == stored


def test_bytes_and_shorter_bytes(made):
    assert made("OPAQUE(3)", "X'00ff7f'").tobytes() == b"\0\xff\x7f"
    assert made("OPAQUE(3)", "X'01'").tobytes() == b"\1\0\0"
    assert made("CHAR(3)", "X'ff00fe'") == b"\xff\0\xfe"


def test_one_value_for_all(made):
    assert made("INT", "7", "[2, 3]").tolist() == [[7] * 3] * 2


def test_compounds_lists_and_their_nesting(made):
    type_text = "COMPOUND (id INT, at COMPOUND (x FLOAT, y FLOAT), v VARINT, name VARCHAR, grid SMALLINT [2, 2])"
    values = "(1, (0.5, -1), [1, 2, 3], 'a', [1, 2, 3, 4]), (2, (0, 0), [], '', [[5, 6], [7, 8]])"
    first, second = made(type_text, values, "[2]")
    assert (first["id"], first["at"].tolist(), first["v"].tolist(), first["name"], first["grid"].tolist()) == (
        1, (0.5, -1.0), [1, 2, 3], b"a", [[1, 2], [3, 4]])
    assert (second["id"], second["v"].tolist(), second["name"], second["grid"].tolist()) == (
        2, [], b"", [[5, 6], [7, 8]])


def test_null_string(kelvo):
    kelvo.rows("CREATE FILE a.h5", "USE FILE a.h5", "CREATE DATASET x VARCHAR [2] VALUES (NULL, 'a')")
    dump = subprocess.run(["h5dump", "-d", "/x", kelvo.path("a.h5")], capture_output=True, text=True, check=True).stdout
    assert re.search(r"\(0\): (.*)", dump)[1] == 'NULL, "a"'
    assert kelvo.rows("SELECT * FROM x IN a.h5") == ["", "a"]


def test_what_is_made_is_what_the_tools_of_hdf5_read(kelvo):
    kelvo.rows("CREATE FILE a.h5", "USE FILE a.h5",
               "CREATE DATASET x COMPOUND (a UNSIGNED SMALLINT BIG ENDIAN, b CHAR(3), c DOUBLE [2]) [1] "
               "VALUES ((65535, 'xy', [1.5, -2]))",
               "CREATE ATTRIBUTE x@flags ENUMERATION (OFF, ON = 9) OF UNSIGNED TINYINT [2] VALUES ('ON', 'OFF')")
    dump = subprocess.run(["h5dump", "-d", "/x", kelvo.path("a.h5")], capture_output=True, text=True, check=True).stdout
    words = " ".join(dump.split())
    for part in ('H5T_STD_U16BE "a";', "STRSIZE 3; STRPAD H5T_STR_NULLPAD; CSET H5T_CSET_UTF8;",
                 'H5T_ARRAY { [2] H5T_IEEE_F64LE } "c";', '(0): { 65535, "xy\\000", [ 1.5, -2 ] }',
                 'H5T_ENUM { H5T_STD_U8LE; "OFF" 0; "ON" 9; }', "(0): ON, OFF"):
        assert part in words


# --- Values that do not ---

@pytest.mark.parametrize("type_text, value, message", [
    ("TINYINT", "128", "Value 128 does not fit TINYINT"),
    ("TINYINT", "-129", "Value -129 does not fit TINYINT"),
    ("UNSIGNED TINYINT", "-1", "Value -1 does not fit UNSIGNED TINYINT"),
    ("INT", "1.5", "Value 1.5 does not fit INT"),
    ("INT", "NAN", "Value NAN does not fit INT"),
    ("BIGINT", "9223372036854775808", "Value 9223372036854775808 does not fit BIGINT"),
    ("UNSIGNED BIGINT", "18446744073709551616", "Value 18446744073709551616 does not fit UNSIGNED BIGINT"),
    ("INT SIZE 3", "8388608", "Value 8388608 does not fit INT SIZE 3"),
    ("SMALLINT PRECISION 12", "2048", "Value 2048 does not fit SMALLINT PRECISION 12"),
    ("BITFIELD(8)", "256", "Value 256 does not fit BITFIELD(8)"),
    ("TIME(32)", "2147483648", "Value 2147483648 does not fit TIME(32)"),
    ("HALF", "65520", "Value 65520 does not fit HALF"),
    ("FLOAT", "3.5e38", "Value 3.5e38 does not fit FLOAT"),
    ("FLOAT BIG ENDIAN", "-1e39", "Value -1e39 does not fit FLOAT"),
    ("DOUBLE", "1e309", "Value 1e309 does not fit DOUBLE"),
    ("DOUBLE", "-1e309", "Value -1e309 does not fit DOUBLE"),
    ("CHAR(3)", "'four'", "Value 'four' does not fit CHAR(3)"),
    ("CHAR(3)", "'zwö'", "Value 'zwö' does not fit CHAR(3)"),
    ("CHAR(3) NULLTERM", "'abc'", "Value 'abc' does not fit CHAR(3) NULLTERM"),
    ("OPAQUE(1)", "X'0102'", "Value X'...' does not fit OPAQUE(1)"),
    ("ENUMERATION (NO, YES)", "'MAYBE'", "ENUMERATION has no value 'MAYBE' (its names: 'NO', 'YES')"),
    ("ENUMERATION (A, B, C, D, E, F, G, H, I)", "'J'", "ENUMERATION has no value 'J' (SHOW MEMBER lists its names)"),
    ("ENUMERATION (NO) OF TINYINT", "128", "Value 128 does not fit ENUMERATION"),
    ("VARCHAR", "E'a\\0b'", "A VARCHAR cannot hold a null byte (CHAR and OPAQUE can)"),
    ("COMPOUND (a INT)", "(1, 2)", "1 value is needed for a compound with 1 member, 2 are given"),
    ("COMPOUND (a INT, b INT)", "(1)", "2 values are needed for a compound with 2 members, 1 is given"),
    ("ARRAY [3] OF INT", "[1]", "3 values are needed for an array of INT, 1 is given"),
    ("VARTINYINT", "[1, 300]", "Value 300 does not fit TINYINT"),
    ("INT", "1, 2", "1 value is needed, or one for all; 2 are given"),
])
def test_values_out_of_range_are_refused(made, type_text, value, message):
    assert made(type_text, value) == (-6, message)


@pytest.mark.parametrize("type_text, value, message", [
    ("INT", "'1'", "Value '1' is no value of INT"),
    ("DOUBLE", "'x'", "Value 'x' is no value of DOUBLE"),
    ("CHAR(3)", "1", "Value 1 is no value of CHAR(3)"),
    ("VARCHAR", "1", "Value 1 is no value of VARCHAR"),
    ("OPAQUE(1)", "1", "Value 1 is no value of OPAQUE(1)"),
    ("COMPOUND (a INT)", "1", "Value 1 is no value of COMPOUND (one is written (1, 'a') or {id: 1, name: 'a'})"),
    ("VARINT", "1", "Value 1 is no value of VARINT"),
    ("ARRAY [2] OF INT", "(1, 2)", "Value (...) is no value of ARRAY [2] OF INT"),
    ("INT", "[1]", "Value [...] is no value of INT"),
    ("REFERENCE", "5", "Value 5 is no value of REFERENCE"),
])
def test_values_of_another_kind_are_refused(made, type_text, value, message):
    assert made(type_text, value) == (-5, message)


def test_values_nested_without_end_are_refused(kelvo):
    kelvo.rows("CREATE FILE a.h5", "USE FILE a.h5", "CREATE DATASET x INT")
    assert kelvo.error("USE FILE a.h5", "INSERT INTO x VALUES (" + "[" * 100_000) == (
        -1, "Expected at most 200 levels", 23 + 200)


# --- Padding ---

@pytest.mark.parametrize("type_text, stored", [
    ("CHAR(5)", [b"ab\0\0\0", b"\0\0\0\0\0", b"a b \0"]), ("CHAR(5) NULLTERM", [b"ab\0\0\0", b"\0\0\0\0\0", b"a b \0"]),
    ("CHAR(5) SPACEPAD", [b"ab   ", b"     ", b"a b  "]),
])
def test_fixed_strings_are_filled_up_as_their_type_says(kelvo, type_text, stored):
    kelvo.rows("CREATE FILE a.h5", "USE FILE a.h5", f"CREATE DATASET x {type_text} [3] VALUES ('ab', '', 'a b ')")
    with h5py.File(kelvo.path("a.h5")) as file:
        assert file["x"].id.get_offset() > 0
        with open(kelvo.path("a.h5"), "rb") as raw:
            raw.seek(file["x"].id.get_offset())
            assert raw.read(15) == b"".join(stored)
