"""INSERT into datasets and attributes from files and from SELECT, and what it refuses: nothing is changed then."""

import os
import struct

import h5py
import numpy as np
import pytest

COMPOUND = np.dtype([("a", "i4"), ("b", "f8")])


@pytest.fixture
def file(kelvo):
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        made["x"] = np.arange(3, dtype="i4")
        made["d"] = np.zeros(3)
        made["tiny"] = np.zeros(3, "i1")
        made["words"] = np.array([b"a", b"b", b"c"], "S3")
        made["names"] = np.array(["a", "b"], h5py.string_dtype())
        made["c"] = np.array([(1, 2.5), (3, 4.5)], COMPOUND)
        made["swapped"] = np.zeros(2, [("b", "f4"), ("a", "i8")])
        made["empty"] = h5py.Empty("i4")
        made["scalar"] = 1
        made["o"] = np.zeros(2, "V2")
        made.create_dataset("list", (2,), h5py.vlen_dtype("i4"))
        made.create_dataset("grow", data=np.arange(6, dtype="i4").reshape(2, 3), maxshape=(4, 3))
        made["refs"] = np.array([made["x"].ref], h5py.ref_dtype)
        made.create_group("group")
        made.attrs["n"] = np.arange(4)
        made.attrs["s"] = np.array(["a", "b", "c"], h5py.string_dtype())
    return kelvo


def insert(kelvo, rest):
    return kelvo.run("USE FILE a.h5", "INSERT INTO " + rest)


def data(kelvo, name):
    with h5py.File(kelvo.path("a.h5")) as made:
        return made[name][()].tolist()


def attribute(kelvo, name):
    with h5py.File(kelvo.path("a.h5")) as made:
        return made.attrs[name].tolist()


def done(answer):
    assert (answer.status, answer.message, answer.rows) == (0, "", [])


# --- From SELECT ---

@pytest.mark.parametrize("rest, name, values", [
    ("d SELECT * FROM x", "d", [0.0, 1.0, 2.0]),
    ("tiny SELECT VALUE * 2 FROM x", "tiny", [0, 2, 4]),
    ("x [0:2] SELECT * FROM x [1:]", "x", [1, 2, 2]),
    ("d [1] SELECT AVG(VALUE) FROM grow", "d", [0.0, 2.5, 0.0]),
    ("x SELECT VALUE FROM grow WHERE VALUE > 2 ORDER BY VALUE DESC", "x", [5, 4, 3]),
    ("swapped SELECT * FROM c", "swapped", [(2.5, 1), (4.5, 3)]),
    ("swapped SELECT a, a FROM c", "swapped", [(1.0, 1), (3.0, 3)]),
    ("c SELECT b, a FROM swapped LIMIT 2", "c", [(0, 0.0), (0, 0.0)]),
    ("grow APPEND SELECT * FROM grow", "grow", [[0, 1, 2], [3, 4, 5], [0, 1, 2], [3, 4, 5]]),
])
def test_what_select_gives_arrives(file, rest, name, values):
    done(insert(file, rest))
    assert data(file, name) == values


@pytest.mark.parametrize("rest, error", [
    ("tiny SELECT VALUE * 10 FROM x [1:] LIMIT 3", (-6, "3 values are needed, 2 are given")),
    ("tiny SELECT VALUE + 127 FROM x", (-6, "Element 1: Value 128 does not fit TINYINT")),
    ("x SELECT * FROM grow", (-6, "3 values are needed, 6 are given")),
    ("c SELECT b, b FROM c", (-6, "Element 0: Value 2.5 does not fit INT")),
    ("c SELECT a FROM c", (-5, "Element 0: Value 1 is no value of COMPOUND (one is written (1, 'a') or {id: 1, name: 'a'})")),
    ("x SELECT nix FROM c", None),
    ("x SELECT * FROM x FORMAT CSV", (-1, 'Expected IN, WHERE, ORDER BY, LIMIT or the end of the statement, found "FORMAT"', 31)),
    ("x SELECT * FROM x INTO f.csv", (-1, 'Expected IN, WHERE, ORDER BY, LIMIT or the end of the statement, found "INTO"', 31)),
])
def test_select_is_refused_where_it_does_not_fit(file, rest, error):
    before = file.path("a.h5").read_bytes()
    answer = insert(file, rest)
    if error is None:
        assert answer.status == -3
    else:
        assert (answer.status, answer.message, *([answer.position] if len(error) == 3 else [])) == error
    assert file.path("a.h5").read_bytes() == before


# --- Attributes ---

def test_slice_of_an_attribute_leaves_the_rest(file):
    done(insert(file, "/@n [1:3] VALUES (7, 8)"))
    assert attribute(file, "n") == [0, 7, 8, 3]


def test_slice_of_an_attribute_of_strings_leaves_the_rest(file):
    done(insert(file, "/@s [::2] VALUES ('xx', 'yyy')"))
    assert attribute(file, "s") == ["xx", "b", "yyy"]


def test_slice_of_an_attribute_takes_files(file):
    file.path("v.csv").write_text("5\n6\n")
    done(insert(file, "/@n [-2:] FROM v.csv"))
    assert attribute(file, "n") == [0, 1, 5, 6]


# --- From files ---

@pytest.mark.parametrize("name, text, rest, values", [
    ("v.csv", "b,a\n1.5,2\n3.5,4\n", "c FROM v.csv", [(2, 1.5), (4, 3.5)]),
    ("v.csv", "time,temp\r\n1,2\r\n3,4\r\n", "c FROM v.csv HEADER", [(1, 2.0), (3, 4.0)]),
    ("v.csv", "VALUE\n1\n2\n3\n", "x FROM v.csv", [1, 2, 3]),
    ("v.csv", "0,1,2\n7,8,9\n", "x FROM v.csv HEADER", [7, 8, 9]),
    ("v.csv", '"1", 2 ,0x3', "x FROM v.csv", [1, 2, 3]),
    # Spreadsheets put a byte order mark in front of UTF-8.
    ("v.csv", "\ufeffb,a\r\n1.5,2\r\n3.5,4\r\n", "c FROM v.csv", [(2, 1.5), (4, 3.5)]),
    ("v.tsv", "\ufeff1\t2\t3\n", "x FROM v.tsv", [1, 2, 3]),
    ("v.txt", "\ufeff1 2 3\n", "x FROM v.txt", [1, 2, 3]),
    ("v.json", "\ufeff[1, 2, 3]", "x FROM v.json", [1, 2, 3]),
    ("v.csv", "VALUE\nb\n", "names FROM v.csv", [b"VALUE", b"b"]),
    ("v.txt", " 1 2\t3\n", "x FROM v.txt", [1, 2, 3]),
    ("v.txt", "[1, 2, 3]\n", "x FROM v.txt", [1, 2, 3]),
    ("v.txt", "{a: 1, b: 2}\n{b: 4, a: 3}\n", "c FROM v.txt", [(1, 2.0), (3, 4.0)]),
    ("v.txt", "1\t2\n3\t4\n", "c FROM v.txt", [(1, 2.0), (3, 4.0)]),
    ("v.json", "[[1, 2], [true]]", "x FROM v.json", [1, 2, 1]),
    ("v.json", '{"b": 1, "a": 2} {"a": 3, "b": 4}', "c FROM v.json", [(2, 1.0), (3, 4.0)]),
])
def test_files_are_read(file, name, text, rest, values):
    file.path(name).write_bytes(text.encode())
    done(insert(file, rest))
    assert data(file, rest.split()[0]) == values


def test_numpy_characters_become_utf8(file):
    np.save(file.path("u.npy"), np.array(["a\u00e9\u20ac", "\U0001d11e"]))
    done(insert(file, "names FROM u.npy"))
    assert data(file, "names") == ["a\u00e9\u20ac".encode(), "\U0001d11e".encode()]


def test_numpy_fortran_order_of_one_dimension_is_read(file):
    np.save(file.path("v.npy"), np.asfortranarray(np.array([5, 6, 7], ">i8")))
    done(insert(file, "x FROM v.npy"))
    assert data(file, "x") == [5, 6, 7]


def npy(description, shape, body=b"\0" * 8):
    header = f"{{'descr': {description}, 'fortran_order': False, 'shape': {shape}, }}".encode()
    return b"\x93NUMPY\x01\x00" + struct.pack("<H", len(header)) + header + body


NOT_NPY = "Not a readable .npy file: "
BAD_FILES = [
    ("x", "v.csv", "1\n2\nx\n", -5, ', line 3, column 1: Value "x" is no value of INT'),
    ("x", "v.csv", "n\n1\n2\n3\n", -5, ', line 1, column 1: Value "n" is no value of INT (HEADER behind the file skips '
                                       "a line of names)"),
    ("x", "v.csv", "1,2\n3\n", -6, ", line 2: 2 columns are needed, the line has 1"),
    ("c", "v.csv", "1,2\n3,4,5\n", -6, ", line 2: 2 columns are needed, the line has 3"),
    ("x", "v.csv", '1,"2\n3\n', -5, ", line 1, column 2: A quoted field is not closed"),
    ("x", "v.csv", '"1"2\n', -5, ", line 1, column 1: A comma is missing behind a quoted field"),
    ("x", "v.csv", "1\n2\n1.5\n", -6, ", line 3, column 1: Value 1.5 does not fit INT"),
    ("tiny", "v.csv", "1\n\n128\n", -6, ", line 3, column 1: Value 128 does not fit TINYINT"),
    ("words", "v.tsv", "ab\ncd\nabcd\n", -6, ", line 3, column 1: Value 'abcd' does not fit CHAR(3) CHARSET ASCII"),
    ("list", "v.txt", "[" * 100 + "\n", -5, f', line 1, column 1: Value "{"[" * 60}"... is no value of VARINT (HEADER '
                                            "behind the file skips a line of names)"),
    ("x", "v.json", "[1,\n 2, 300000000000]", -6, ", line 2, column 17: Value 300000000000 does not fit INT"),
    ("x", "v.json", "[1,2,", -5, ", line 1, column 6: Not JSON: Invalid value"),
    ("c", "v.json", '[{"a":1},{"a":2,"b":3}]', -6, ', line 1, column 8: A value for the member "b" is missing'),
    ("c", "v.json", '[{"a":1,"b":2,"z":1}]', -3, ', line 1, column 20: The compound has no member "z"'),
    ("c", "v.json", '{"a":' * 5000, -6, ", line 1, column 1281: More than 256 values are nested"),
    ("o", "v.json", '["zz","00"]', -5, ', line 1, column 6: Value "zz" is no value of OPAQUE(2) (two hexadecimal digits '
                                       "a byte)"),
    ("x", "v.bin", b"\0" * 13, -6, ": It ends within an element of 4 bytes"),
    ("x", "v.npy", b"abc", -5, f": {NOT_NPY}it does not begin like one"),
    ("x", "v.npy", b"\x93NUMPY\x01\x00\xff\xff", -5, f": {NOT_NPY}it ends in its header"),
    ("x", "v.npy", npy("'|O'", "(3,)"), -5, f': {NOT_NPY}type "|O" is not read'),
    ("x", "v.npy", npy("'<i0'", "(3,)"), -5, f': {NOT_NPY}type "<i0" is not read'),
    ("x", "v.npy", npy("'<S99999999999'", "(3,)"), -5, f': {NOT_NPY}type "<S99999999999" is not read'),
    ("x", "v.npy", npy("'<M8[ns]'", "(3,)"), -5, f': {NOT_NPY}type "<M8[ns]" is not read'),
    ("x", "v.npy", npy("[]", "(3,)"), -5, f": {NOT_NPY}its header is damaged"),
    ("x", "v.npy", npy("[('a', '<i4', (99999999,9999999))]", "(3,)"), -5, f": {NOT_NPY}its header is damaged"),
    ("x", "v.npy", npy("'<i4'", "(99999999999,99999999999)"), -5, f": {NOT_NPY}its header is damaged"),
    ("x", "v.npy", npy("'<i4'", "(3"), -5, f": {NOT_NPY}its header is damaged"),
    ("x", "v.npy", npy("[('a', " * 5000, "(3,)"), -5, f": {NOT_NPY}its type is nested too deeply"),
    ("x", "v.npy", npy("'<i4'", "(3,)"), -6, ": It has 2 elements, not the 3 that its header says"),
    ("x", "v.npy", npy("'<i8'", "(1,)", struct.pack("<q", 2**40)), -6, ": Element 0: Value 1099511627776 does not fit INT"),
]


@pytest.mark.parametrize("name, path, content, status, message", BAD_FILES)
def test_bad_files_change_nothing(file, name, path, content, status, message):
    file.path(path).write_bytes(content if isinstance(content, bytes) else content.encode())
    before = file.path("a.h5").read_bytes()
    answer = insert(file, f"{name} FROM {path}")
    assert (answer.status, answer.message) == (status, f'File "{file.path(path)}"{message}')
    assert file.path("a.h5").read_bytes() == before


@pytest.mark.parametrize("values", [
    np.arange(6, dtype=">i2").reshape(3, 2), np.arange(24, dtype="f4").reshape(2, 3, 4), np.ones((3, 0)), np.zeros((0, 2)),
    np.arange(12).astype("S3").reshape(4, 3), np.array([[(1, 2.5), (3, 4.5)], [(5, 6.5), (7, 8.5)]], "<i4,>f8"),
    np.arange(120, dtype="u1").reshape(1, 2, 3, 4, 5), np.arange(7.0).reshape(7, 1)], ids=lambda values: str(values.shape))
def test_numpy_fortran_order(kelvo, values):
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        made.create_dataset("x", values.shape, values.dtype)
    np.save(kelvo.path("v.npy"), np.asfortranarray(values))
    assert values.size < 2 or 1 in values.shape[1:] or b"'fortran_order': True" in kelvo.path("v.npy").read_bytes()
    kelvo.rows("USE FILE a.h5", "INSERT INTO x FROM v.npy")
    with h5py.File(kelvo.path("a.h5"), "r") as made:
        assert (made["x"][()] == values).all()


PADDED = np.dtype([("u", "i1"), ("w", ">f8")], align=True)


@pytest.mark.parametrize("dtype", [
    np.dtype([("a", "i1"), ("b", "f8"), ("c", "<i2")], align=True), np.dtype([(("A title", "a"), "i4"), ("b", "f4")]),
    np.dtype([("a", "i1"), ("n", PADDED), ("v", PADDED, (2,))], align=True),
    np.dtype({"names": ["late"], "formats": [">i4"], "offsets": [4], "itemsize": 12})],
    ids=["aligned", "title", "nested", "late"])
def test_numpy_members_with_gaps_and_titles(kelvo, dtype):
    values = np.zeros(3, dtype)
    for i, name in enumerate(dtype.names):
        inner = dtype[name].base.names
        for part in inner or [None]:
            (values[name][part] if part else values[name])[...] = np.arange(3).reshape([3] + [1] * (values[name].ndim - 1)) + i
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        made.create_dataset("x", (3,), dtype)
    np.save(kelvo.path("v.npy"), values)
    kelvo.rows("USE FILE a.h5", "INSERT INTO x FROM v.npy")
    with h5py.File(kelvo.path("a.h5"), "r") as made:
        assert made["x"][()].astype(dtype).tolist().__repr__() == values.tolist().__repr__()


def test_numpy_fortran_order_whose_elements_are_arrays(kelvo):
    values = np.arange(24, dtype="i4").reshape(4, 2, 3)
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        made.create_dataset("x", (4,), np.dtype(("i4", (2, 3))))
    np.save(kelvo.path("v.npy"), np.asfortranarray(values))
    kelvo.rows("USE FILE a.h5", "INSERT INTO x FROM v.npy")
    with h5py.File(kelvo.path("a.h5"), "r") as made:
        assert (made["x"][()] == values).all()


def test_numpy_fortran_order_is_gathered_in_parts(kelvo):
    values = np.random.default_rng(1).integers(0, 255, (9000, 8000), dtype="u1")
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        made.create_dataset("x", values.shape, values.dtype)
    np.save(kelvo.path("v.npy"), np.asfortranarray(values))
    kelvo.rows("USE FILE a.h5", "INSERT INTO x FROM v.npy")
    with h5py.File(kelvo.path("a.h5"), "r") as made:
        assert (made["x"][()] == values).all()


def test_numpy_fortran_order_that_cannot_be_read(file):
    np.save(file.path("v.npy"), np.asfortranarray(np.ones((3, 2))))
    content = file.path("v.npy").read_bytes()
    file.path("v.npy").write_bytes(content[:-3])
    answer = insert(file, "x FROM v.npy")
    assert (answer.status, answer.message) == (
        -6, f'File "{file.path("v.npy")}": It ends before the last of the elements that its header says')
    file.path("v.npy").write_bytes(content.replace(b"(3, 2), }  ", b"(3, 9000000), }"))
    answer = insert(file, "x FROM v.npy")
    assert (answer.status, answer.message) == (
        -7, f'File "{file.path("v.npy")}": It is in Fortran order with more than 64 MiB for each first index '
            "(save it with order='C')")


@pytest.mark.parametrize("rest, status, message", [
    ("x FROM none.csv", -3, 'File "{}/none.csv" does not exist'),
    ("x FROM folder.csv", -5, 'File "{}/folder.csv" is a directory'),
    ("x FROM v.xyz", -5, 'File "{}/v.xyz" has none of the suffixes .csv .tsv .txt .json .npy .bin'),
    ("x FROM v.bin HEADER", -5, 'File "{}/v.bin" is of bytes and has no HEADER (text files may)'),
    ("names FROM v.bin", -5, "VARCHAR has no fixed size, a .bin file cannot hold it"),
    ("refs FROM v.bin", -5, "REFERENCE has no fixed size, a .bin file cannot hold it"),
    ("x FROM v.csv", -6, "3 values are needed, 0 are given"),
])
def test_files_that_cannot_be_read(file, rest, status, message):
    file.path("folder.csv").mkdir()
    for name in ("v.csv", "v.bin", "v.xyz"):
        file.path(name).write_bytes(b"")
    answer = insert(file, rest)
    assert (answer.status, answer.message) == (status, message.format(file.folder))


def test_error_far_down_names_its_line(file):
    lines = 300_000
    with h5py.File(file.path("a.h5"), "a") as made:
        made["far"] = np.ones((lines, 2))
    text = "1.5,2\n" * (lines - 1) + "1.5,oops\n"
    file.path("far.csv").write_text(text)
    before = file.path("a.h5").read_bytes()
    answer = insert(file, "far FROM far.csv")
    assert (answer.status, answer.message) == (
        -5, f'File "{file.path("far.csv")}", line {lines}, column 2: Value "oops" is no value of DOUBLE')
    assert file.path("a.h5").read_bytes() == before


def test_reals_are_read_as_python_reads_them(file):
    random = np.random.default_rng(1)
    texts = [f"{value:.{digits}f}" for value, digits in zip(random.normal(size=3000) * 1e6, random.integers(0, 18, 3000))]
    texts += [f"{value:.{digits}e}" for value, digits in zip(random.normal(size=3000), random.integers(0, 18, 3000))]
    texts += ["9007199254740992", "9007199254740993", "-0", "-0.0", "0.", ".5", "-.5", "123456789012345678901", "1e-320"]
    with h5py.File(file.path("a.h5"), "a") as made:
        made["reals"] = np.zeros(len(texts))
    file.path("v.csv").write_text("\n".join(texts))
    done(insert(file, "reals FROM v.csv"))
    assert list(map(repr, data(file, "reals"))) == [repr(float(text)) for text in texts]


# --- One value for all ---

@pytest.mark.parametrize("storage", [{}, {"chunks": (300, 7), "compression": "gzip"}], ids=["contiguous", "chunked"])
@pytest.mark.parametrize("written, slice_", [
    ("", np.s_[...]), ("[::2]", np.s_[::2]), ("[5:, 1]", np.s_[5:, 1]), ("[-3:, ::3]", np.s_[-3:, ::3]), ("[7:7]", np.s_[7:7]),
])
def test_one_value_for_all(kelvo, storage, written, slice_):
    """More of them than a block of a MiB."""
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        for name, dtype in (("n", "i8"), ("s", h5py.string_dtype())):
            made.create_dataset(name, (30_000, 20), dtype, **storage)
    expected = np.zeros((30_000, 20), "i8")
    expected[slice_] = 7
    kelvo.rows("USE FILE a.h5", f"INSERT INTO n {written} VALUES (7)", f"INSERT INTO s {written} VALUES ('seven')")
    with h5py.File(kelvo.path("a.h5")) as made:
        assert np.array_equal(made["n"][...], expected)
        assert np.array_equal(made["s"][...] == b"seven", expected == 7)


def test_one_value_for_each_appended_row(kelvo):
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        made.create_dataset("x", (0, 300_000), "i8", maxshape=(None, 300_000), chunks=(1, 100_000))
    kelvo.rows("USE FILE a.h5", *(f"INSERT INTO x APPEND VALUES ({i})" for i in (1, 2, 3)))
    with h5py.File(kelvo.path("a.h5")) as made:
        assert made["x"].shape == (3, 300_000) and (made["x"][...] == [[1], [2], [3]]).all()


# --- APPEND ---

@pytest.mark.parametrize("rest, rows", [
    ("grow APPEND VALUES (6, 7, 8)", [[6, 7, 8]]),
    ("grow APPEND VALUES (6)", [[6, 6, 6]]),
    ("grow APPEND VALUES (6, 7, 8, 9, 10, 11)", [[6, 7, 8], [9, 10, 11]]),
    ("grow APPEND FROM v.csv", [[6, 7, 8], [9, 10, 11]]),
])
def test_append_adds_rows(file, rest, rows):
    file.path("v.csv").write_text("6,7,8\n9,10,11\n")
    done(insert(file, rest))
    assert data(file, "grow") == [[0, 1, 2], [3, 4, 5], *rows]


@pytest.mark.parametrize("rest, status, message", [
    ("x APPEND VALUES (1)", -6, 'Dataset "/x" is at its maximum of 3 in the first dimension'),
    ("scalar APPEND VALUES (1)", -5, 'Dataset "/scalar" is a scalar and cannot grow'),
    ("empty APPEND VALUES (1)", -5, 'Dataset "/empty" is of empty kind and cannot grow'),
    ("empty VALUES (1)", -5, 'Dataset "/empty" is of empty kind and takes no values'),
    ("/@n APPEND VALUES (1)", -5, 'Attribute "/@n" cannot grow: it is an attribute'),
    ("grow [0] APPEND VALUES (1)", -6, "APPEND adds rows behind the last one and takes no slice"),
    ("grow APPEND VALUES (1, 2)", -6, 'A row of Dataset "/grow" has 3 elements, which 2 values do not fill'),
    ("grow APPEND SELECT * FROM x [1:]", -6, 'A row of Dataset "/grow" has 3 elements, which 2 values do not fill'),
    ("grow APPEND VALUES (1, 2, 3, 4, 5, 6, 7, 8, 9)", -6,
     'Dataset "/grow" may have 4 rows, 3 more than its 2 are too many'),
    ("group VALUES (1)", -5, '"/group" is a group, not a dataset'),
])
def test_append_is_refused(file, rest, status, message):
    before = file.path("a.h5").read_bytes()
    answer = insert(file, rest)
    assert (answer.status, answer.message) == (status, message)
    assert file.path("a.h5").read_bytes() == before


@pytest.mark.parametrize("rest, position, message", [
    ("INSERT x", 8, 'Expected INTO, found "x"'),
    ("INSERT INTO x", 14, "Expected APPEND, VALUES, FROM or SELECT, found the end of the statement"),
    ("INSERT INTO x APPEND", 21, "Expected VALUES, FROM or SELECT, found the end of the statement"),
    ("INSERT INTO x FROM v.csv HEADERS", 26, 'Expected HEADER or the end of the statement, found "HEADERS"'),
])
def test_syntax(file, rest, position, message):
    assert file.error("USE FILE a.h5", rest) == (-1, message, position)


# --- A disk that is too full ---

@pytest.mark.parametrize("statement", ["CREATE DATASET new BIGINT [100000] VALUES (1)",
                                       "CREATE DATASET new VARCHAR [10000] VALUES ('twenty bytes of text')"])
def test_full_disk_makes_no_dataset(kelvo, statement):
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        made["x"] = [1, 2]
    size = os.path.getsize(kelvo.path("a.h5"))
    answer = kelvo.run_on_full_disk(size + 50_000, "USE FILE a.h5", statement)
    assert (answer.status, answer.message) == (-8, f'File "{kelvo.path("a.h5")}" cannot be written: File too large')
    with h5py.File(kelvo.path("a.h5")) as made:
        assert list(made) == ["x"] and made["x"][...].tolist() == [1, 2]


def test_full_disk_leaves_the_file_as_it_was(kelvo):
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        made.create_dataset("grow", data=np.arange(1000, dtype="i4"), maxshape=(None,), chunks=(1000,))
    with open(kelvo.path("v.csv"), "w") as text:
        text.writelines(f"{i}\n" for i in range(200_000))
    size = os.path.getsize(kelvo.path("a.h5"))
    answer = kelvo.run_on_full_disk(size + 100_000, "USE FILE a.h5", "INSERT INTO grow APPEND FROM v.csv")
    assert (answer.status, answer.message) == (-8, f'File "{kelvo.path("a.h5")}" cannot be written: File too large')
    with h5py.File(kelvo.path("a.h5")) as made:
        assert np.array_equal(made["grow"][...], np.arange(1000))


# --- References ---


@pytest.fixture
def references(kelvo):
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        made["g/x"] = [1, 2]
        made.create_dataset("r", (3,), h5py.ref_dtype, maxshape=(None,), chunks=(2,))
        made.create_dataset("pairs", (2,), np.dtype([("n", "i4"), ("r", h5py.ref_dtype)]))
        made.create_dataset("regions", (1,), h5py.regionref_dtype)
    return kelvo


def led_to(file, values):
    return [file[value].name if value else None for value in values]


def test_paths_become_object_references(references):
    references.rows("USE FILE a.h5", "INSERT INTO r VALUES ('/g/x', 'g', '/')", "INSERT INTO r[1] VALUES ('/r')", "INSERT INTO r APPEND VALUES (NULL)",
                    "INSERT INTO pairs VALUES ((1, '/g'), {n: 2, r: ''})",
                    "CREATE ATTRIBUTE g@lists SEQUENCE OF REFERENCE [2] VALUES (['/r', '/g/x'], [])",
                    "CREATE DATASET made REFERENCE [2] VALUES ('/g/../r', '/made2/../g')")
    with h5py.File(references.path("a.h5"), "r") as made:
        assert led_to(made, made["r"][()]) == ["/g/x", "/r", "/", None]
        assert led_to(made, made["pairs"]["r"]) == ["/g", None] and made["pairs"]["n"].tolist() == [1, 2]
        assert [led_to(made, one) for one in made["g"].attrs["lists"]] == [["/r", "/g/x"], []]
        assert led_to(made, made["made"][()]) == ["/r", "/g"]


@pytest.mark.parametrize("suffix", ["csv", "tsv", "txt", "json"])
def test_references_come_back_from_files(references, suffix):
    references.rows("USE FILE a.h5", "INSERT INTO r VALUES ('/g/x', NULL, '/g')",
                    "INSERT INTO pairs VALUES ((1, '/g'), (2, '/r'))", f"SELECT * FROM r INTO r.{suffix}",
                    f"SELECT * FROM pairs INTO p.{suffix}", "INSERT INTO r VALUES (NULL)",
                    "INSERT INTO pairs VALUES ((0, NULL))", f"INSERT INTO r FROM r.{suffix}",
                    f"INSERT INTO pairs FROM p.{suffix}")
    with h5py.File(references.path("a.h5"), "r") as made:
        assert led_to(made, made["r"][()]) == ["/g/x", None, "/g"] and led_to(made, made["pairs"]["r"]) == ["/g", "/r"]


def test_selected_references_lead_to_the_same_names(references):
    with h5py.File(references.path("b.h5"), "w") as made:
        made["g/x"] = 5
        made.create_dataset("r", (3,), h5py.ref_dtype)
    references.rows("USE FILE a.h5", "INSERT INTO r VALUES ('/g/x', '/g', NULL)", "INSERT INTO r[1:] SELECT * FROM r[0:2]",
                    "INSERT INTO r IN b.h5 SELECT * FROM r")
    for name in ("a.h5", "b.h5"):
        with h5py.File(references.path(name), "r") as made:
            assert led_to(made, made["r"][()]) == ["/g/x", "/g/x", "/g"]


@pytest.mark.parametrize("rest, status, message", [
    ("r VALUES ('/g/none')", -3, 'Object "/g/none" does not exist'),
    ("r VALUES (5)", -5, "Value 5 is no value of REFERENCE"),
    ("regions VALUES ('/g/x')", -5, "Value '/g/x' is no value of REGION REFERENCE")])
def test_references_that_lead_nowhere(references, rest, status, message):
    before = references.path("a.h5").read_bytes()
    assert references.error("USE FILE a.h5", f"INSERT INTO {rest}") == (status, message)
    assert references.path("a.h5").read_bytes() == before


# --- Large enumerations ---


def test_enumeration_of_many_names(kelvo):
    rng = np.random.default_rng(5)
    numbers = rng.permutation(100000)[:3000].tolist()
    names = {f"name {number * 7919 % 100003}": number - 50000 for number in numbers}
    dtype = h5py.enum_dtype(names, "<i4")
    chosen = [(name, number) for name, number in names.items()][::3]
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        made.create_dataset("x", (len(chosen) + 1,), dtype)
        made["x"][-1:] = np.array([77777], "i4").astype(dtype)
    kelvo.path("names.csv").write_text("".join(f"{name}\n" for name, _ in chosen))
    kelvo.rows("USE FILE a.h5", f"INSERT INTO x[0:{len(chosen)}] FROM names.csv")
    with h5py.File(kelvo.path("a.h5"), "r") as made:
        assert made["x"][:-1].tolist() == [number for _, number in chosen]
    assert kelvo.rows("SELECT * FROM x IN a.h5") == [name for name, _ in chosen] + ["77777"]
    assert kelvo.error("USE FILE a.h5", "INSERT INTO x VALUES ('name -')") == (
        -6, "ENUMERATION has no value 'name -' (SHOW MEMBER lists its names)")
