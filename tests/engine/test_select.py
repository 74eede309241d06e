"""SELECT: items, conditions, order and number, against what NumPy says of the same data."""

import h5py
import numpy as np
import pytest

PARTICLE = np.dtype([("id", "i4"), ("name", "S6"), ("pos", [("x", "f4"), ("y", "f8")]), ("v", "i2", (2,)),
                     ("index", "u1")])


@pytest.fixture
def file(kelvo):
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        made["x"] = np.array([1.5, -2.0, np.nan, np.inf, 0.1, 1.5])
        made["f"] = np.array([0.1, 0.2, 0.3], "f4")
        made["i"] = np.arange(-3, 5, dtype="i8")
        made["m"] = np.arange(12, dtype="i4").reshape(3, 4)
        made["big"] = np.array([0, 2**63, 2**64 - 1], "u8")
        made["s"] = np.array([b"one", b"two", b"Three", b""], "S5")
        made["words"] = ["one", "two", "Thr\u00e9e"]
        made["color"] = np.array([0, 2, 1, 9], dtype=h5py.enum_dtype({"RED": 0, "GREEN": 1, "BLUE": 2}, "u1"))
        made["flags"] = np.array([True, False, True])
        made["none"] = h5py.Empty("f8")
        made["scalar"] = 7
        made["x"].attrs["units"] = "K"
        made["x"].attrs["range"] = np.array([3, 1, 2], "i2")
        made.create_group("g")
        made["type"] = PARTICLE
        rows = np.zeros(5, PARTICLE)
        rows["id"] = [5, 3, 4, 1, 2]
        rows["name"] = [b"e", b"c", b"d", b"a", b"a"]
        rows["pos"]["x"] = [0.5, 0.25, -1, 3, 3]
        rows["pos"]["y"] = [1, 2, 3, 4, np.nan]
        rows["v"] = [[1, 2]] * 5
        rows["index"] = [9, 8, 7, 6, 5]
        made["t"] = rows
        made["ref"] = np.array([made["x"].ref, made["g"].ref], h5py.ref_dtype)
    return kelvo


def select(kelvo, rest):
    return kelvo.rows("USE FILE a.h5", "SELECT " + rest)


def refusal(kelvo, rest):
    return kelvo.error("USE FILE a.h5", "SELECT " + rest)


@pytest.mark.parametrize("rest, rows", [
    # items
    ("VALUE FROM i[:2]", ["-3", "-2"]),
    ("index FROM i[6:]", ["6", "7"]),
    ("INDEX, VALUE FROM i[1::3]", ["1\t-2", "4\t1", "7\t4"]),
    ("VALUE, INDEX FROM m[1:, ::2]", ["4\t1,0", "6\t1,2", "8\t2,0", "10\t2,2"]),
    ("INDEX FROM m[2, 1:3]", ["2,1", "2,2"]),
    ("id, pos.x, v, name FROM t[:2]", ["5\t0.5\t[1, 2]\te", "3\t0.25\t[1, 2]\tc"]),
    ("pos FROM t[1]", ["{x: 0.25, y: 2}"]),
    ("\"pos\" FROM t[1]", ["{x: 0.25, y: 2}"]),
    ("\"pos\".x, pos.\"y\" FROM t WHERE \"pos\".\"x\" = 0.25", ["0.25\t2"]),
    ("VALUE * 2 + 1 FROM i[:2]", ["-5", "-3"]),
    ("-VALUE / 2.0 FROM i[:1]", ["1.500000"]),
    ("VALUE - 1 FROM m[:2]", ["-1 0 1 2", "3 4 5 6"]),
    ("* FROM scalar", ["7"]),
    ("INDEX, VALUE FROM scalar", ["0\t7"]),
    ("* FROM x@range WHERE VALUE > 1", ["3", "2"]),
    ("VALUE FROM none WHERE VALUE > 1", []),
    # a member's own name comes before VALUE and INDEX
    ("index FROM t", ["9", "8", "7", "6", "5"]),
    ("INDEX FROM t[3:]", ["3", "4"]),
    # conditions
    ("VALUE FROM x WHERE VALUE > 1", ["1.500000", "inf", "1.500000"]),
    ("INDEX FROM x WHERE VALUE IS NAN", ["2"]),
    ("INDEX FROM x WHERE VALUE IS NOT NAN AND VALUE <> 1.5", ["1", "3", "4"]),
    ("INDEX FROM x WHERE VALUE = NAN", []),
    ("INDEX FROM f WHERE VALUE = 0.1", ["0"]),
    ("INDEX FROM f WHERE VALUE IN (0.3, 0.1)", ["0", "2"]),
    ("VALUE FROM i WHERE VALUE BETWEEN -1 AND 1", ["-1", "0", "1"]),
    ("VALUE FROM i WHERE VALUE NOT BETWEEN -2.5 AND 3.5", ["-3", "4"]),
    ("VALUE FROM i WHERE VALUE IN (-3, 4, 9)", ["-3", "4"]),
    ("VALUE FROM i WHERE VALUE NOT IN (-3, -2, -1, 0, 1)", ["2", "3", "4"]),
    ("VALUE FROM i WHERE VALUE % 2 = 0 AND NOT VALUE = 0", ["-2", "2", "4"]),
    ("VALUE FROM i WHERE VALUE / 2 = 0", ["-1", "0", "1"]),
    ("VALUE FROM i WHERE VALUE <> 0 AND 6 / VALUE = 3", ["2"]),
    ("VALUE FROM i WHERE INDEX >= 6", ["3", "4"]),
    ("VALUE FROM i WHERE (VALUE < -2 OR VALUE > 3) AND INDEX > 0", ["4"]),
    ("VALUE FROM m WHERE VALUE > 9", ["10", "11"]),
    ("* FROM m WHERE VALUE > 9", ["10", "11"]),
    ("VALUE FROM big WHERE VALUE > 9223372036854775807", ["9223372036854775808", "18446744073709551615"]),
    ("VALUE FROM big WHERE VALUE = 18446744073709551615", ["18446744073709551615"]),
    ("VALUE FROM big WHERE VALUE > -1 AND VALUE < 0.5", ["0"]),
    ("VALUE FROM big WHERE VALUE = 18446744073709551616", []),
    ("VALUE FROM s WHERE VALUE > 'o'", ["one", "two"]),
    ("VALUE FROM s WHERE VALUE = ''", [""]),
    ("VALUE FROM s WHERE VALUE LIKE 't%'", ["two"]),
    ("VALUE FROM s WHERE VALUE NOT LIKE '%e%'", ["two", ""]),
    ("VALUE FROM words WHERE VALUE LIKE 'Thr_e'", ["Thr\u00e9e"]),
    ("VALUE FROM words WHERE VALUE LIKE '10!%' ESCAPE '!'", []),
    ("VALUE FROM words WHERE VALUE IN ('two', 'ten')", ["two"]),
    ("VALUE FROM color WHERE VALUE = 'GREEN'", ["GREEN"]),
    ("VALUE FROM color WHERE VALUE <> 'GREEN'", ["RED", "BLUE", "9"]),
    ("VALUE FROM color WHERE VALUE >= 2", ["BLUE", "9"]),
    ("VALUE FROM color WHERE VALUE IN ('RED', 9)", ["RED", "9"]),
    ("VALUE FROM color WHERE VALUE LIKE '%E%'", ["RED", "BLUE", "GREEN"]),
    ("VALUE FROM color WHERE VALUE < 'C'", ["BLUE", "9"]),
    ("INDEX FROM flags WHERE VALUE", ["0", "2"]),
    ("INDEX FROM flags WHERE NOT VALUE", ["1"]),
    ("INDEX FROM flags WHERE VALUE = TRUE", ["0", "2"]),
    ("INDEX FROM ref WHERE VALUE = '/g'", ["1"]),
    ("id FROM t WHERE pos.x > 0.3 AND name <> 'e'", ["1", "2"]),
    ("id FROM t WHERE pos.y IS NAN OR id = index + 1", ["2"]),
    # order and number
    ("id FROM t ORDER BY id", ["1", "2", "3", "4", "5"]),
    ("id FROM t ORDER BY id DESC LIMIT 2", ["5", "4"]),
    ("id FROM t ORDER BY pos.y DESC", ["1", "4", "3", "5", "2"]),
    ("id FROM t ORDER BY pos.y ASC LIMIT 1 OFFSET 4", ["2"]),
    ("id FROM t ORDER BY name, id DESC", ["2", "1", "3", "4", "5"]),
    ("name FROM t WHERE id < 4 ORDER BY pos.x DESC, name", ["a", "a", "c"]),
    ("* FROM words ORDER BY VALUE DESC", ["two", "one", "Thr\u00e9e"]),
    ("VALUE FROM color ORDER BY VALUE DESC", ["9", "BLUE", "GREEN", "RED"]),
    ("VALUE FROM m ORDER BY VALUE % 2, VALUE DESC LIMIT 3", ["10", "8", "6"]),
    ("* FROM i LIMIT 2 OFFSET 3", ["0", "1"]),
    ("* FROM i LIMIT 0", []),
    ("* FROM i LIMIT 5 OFFSET 100", []),
    ("* FROM m LIMIT 2 OFFSET 1", ["4 5 6 7", "8 9 10 11"]),
    ("* FROM m[:, 1:3] LIMIT 1 OFFSET 2", ["9 10"]),
    ("VALUE FROM i WHERE VALUE > 0 LIMIT 2 OFFSET 1", ["2", "3"]),
    # aggregates
    ("COUNT(*) FROM m", ["12"]),
    ("COUNT(*) FROM t WHERE id > 3", ["2"]),
    ("COUNT(name), MIN(id), MAX(pos.x), SUM(id), AVG(id), MEDIAN(id), STDDEV(id) FROM t",
     ["5\t1\t3\t15\t3\t3\t1.4142135623730951"]),
    ("SUM(VALUE) FROM big WHERE VALUE < 1", ["0"]),
    ("MAX(VALUE) FROM big", ["18446744073709551615"]),
    ("MIN(VALUE) FROM x", ["nan"]),
    ("MAX(VALUE), AVG(VALUE), STDDEV(VALUE), MEDIAN(VALUE), SUM(VALUE) FROM x WHERE VALUE < 100",
     ["1.5\t0.275\t1.4324367350776788\t0.8\t1.1"]),
    ("MEDIAN(VALUE) FROM i", ["0.500000"]),
    ("SUM(VALUE * 2) FROM i", ["8"]),
    ("COUNT(*), SUM(VALUE) FROM i WHERE VALUE > 100", ["0\t0"]),
    ("AVG(VALUE) FROM i WHERE VALUE > 100", ["nan"]),
    ("MAX(id) FROM t LIMIT 0", []),
])
def test_rows(file, rest, rows):
    assert select(file, rest) == rows


@pytest.mark.parametrize("rest, error", [
    ("FROM i", (-1, "Expected a name or a value, found \"FROM\"", 8)),
    ("* i", (-1, "Expected FROM, found \"i\"", 10)),
    ("5 FROM i", (-1, "Expected a name or an aggregate, found \"5\"", 8)),
    ("COUNT(*), VALUE FROM i", (-1, "Expected an aggregate beside the other aggregates", 18)),
    ("VALUE, COUNT(*) FROM i", (-1, "Expected no aggregate beside single values", 15)),
    ("SUM(*) FROM i", (-1, "Expected a name or a value, found \"*\"", 12)),
    ("COUNT( FROM i", (-1, "Expected a name or a value, found \"FROM\"", 15)),
    ("COUNT(VALUE FROM i", (-1, "Expected \")\", found \"FROM\"", 20)),
    ("* FROM i WHERE", (-1, "Expected a name or a value, found the end of the statement", 22)),
    ("* FROM i WHERE VALUE +", (-1, "Expected a name or a value, found the end of the statement", 30)),
    ("* FROM i WHERE VALUE + 1", (-1, "Expected a comparison, found the end of the statement", 32)),
    ("* FROM i WHERE VALUE LIKE 5", (-1, "Expected a pattern, found \"5\"", 34)),
    ("* FROM i WHERE VALUE LIKE 'a' ESCAPE 'xy'", (-1, "Expected one escape character", 45)),
    ("* FROM i WHERE VALUE IS NULL", (-1, "Expected NAN, found \"NULL\"", 32)),
    ("* FROM i WHERE VALUE NOT 5", (-1, "Expected BETWEEN, IN or LIKE, found \"5\"", 33)),
    ("* FROM i WHERE VALUE IN ()", (-1, "Expected a name or a value, found \")\"", 33)),
    ("* FROM i WHERE VALUE BETWEEN 1 OR 2", (-1, "Expected AND, found \"OR\"", 39)),
    ("* FROM i WHERE VALUE = (VALUE = 1)", (-1, "Expected a value, found a condition", 32)),
    ("* FROM i WHERE VALUE = 1 = 1", (-1, "Expected AND, OR, ORDER BY, LIMIT, FORMAT, INTO or the end of the statement, found \"=\"", 33)),
    ("* FROM i ORDER VALUE", (-1, "Expected BY, found \"VALUE\"", 23)),
    ("* FROM i ORDER BY 3", (-1, "Expected a name or an aggregate, found \"3\"", 26)),
    ("COUNT(*) FROM i ORDER BY VALUE", (-1, "Expected IN, WHERE, LIMIT, FORMAT, INTO or the end of the statement, found \"ORDER\"", 24)),
    ("* FROM i LIMIT -1", (-1, "Expected a number of rows, found \"-\"", 23)),
    ("* FROM i LIMIT 1 OFFSET x", (-1, "Expected a number of rows, found \"x\"", 32)),
    ("* FROM i FORMAT XML", (-1, "Expected TEXT, CSV, TSV or JSON, found \"XML\"", 24)),
    ("* FROM i INTO", (-1, "Expected a file, found the end of the statement", 21)),
    ("* FROM i INTO OR a.csv", (-1, "Expected the end of the statement, found \"a.csv\"", 25)),
    ("* FROM i WHERE " + "(" * 201 + "VALUE = 1" + ")" * 201,
     (-1, "Expected an expression of at most 200 levels", 224)),
    ("* FROM nothing", (-3, "Dataset \"/nothing\" does not exist")),
    ("* FROM g", (-5, "\"/g\" is a group, not a dataset")),
    ("* FROM type", (-5, "\"/type\" is a data type, not a dataset")),
    ("foo FROM t", (-3, "Dataset \"/t\" has no member \"foo\" (SHOW MEMBER lists them)")),
    ("pos.z FROM t", (-3, "Dataset \"/t\" has no member \"pos.z\" (SHOW MEMBER lists them)")),
    ("foo FROM i", (-3, "Dataset \"/i\" has no member \"foo\" (VALUE names its elements)")),
    ("* FROM i WHERE \"VALUE\" = 1", (-3, "Dataset \"/i\" has no member \"VALUE\" (VALUE names its elements; a string stands between single quotes)")),
    ("id FROM t WHERE name = 5", (-5, "\"name\" (CHAR(6) CHARSET ASCII) cannot be compared with 5")),
    ("id FROM t WHERE id = 'a'", (-5, "\"id\" (INT) cannot be compared with 'a'")),
    ("id FROM t WHERE v = 1", (-5, "\"v\" (ARRAY [2] OF SMALLINT) cannot be compared")),
    ("* FROM t WHERE VALUE = 1", (-5, "\"VALUE\" (COMPOUND) cannot be compared")),
    ("id FROM t ORDER BY v", (-5, "\"v\" (ARRAY [2] OF SMALLINT) cannot be compared")),
    ("id FROM t WHERE name + 1 = 2", (-5, "\"name\" (CHAR(6) CHARSET ASCII) is no number to calculate with")),
    ("id FROM t WHERE id LIKE '1'", (-5, "\"id\" (INT) is no text for LIKE")),
    ("id FROM t WHERE name IS NAN", (-5, "\"name\" (CHAR(6) CHARSET ASCII) is no number for IS NAN")),
    ("* FROM x WHERE VALUE", (-5, "\"VALUE\" (DOUBLE) is no condition (compare it with a value)")),
    ("* FROM m WHERE INDEX > 1",
     (-5, "INDEX can be compared in one dimension only (a slice chooses by positions in several)")),
    ("SUM(name) FROM t", (-5, "SUM(name) needs numbers, \"name\" is CHAR(6) CHARSET ASCII")),
    ("MIN(VALUE) FROM color", (-5, "MIN(VALUE) needs numbers, \"VALUE\" is ENUMERATION")),
    ("VALUE FROM color WHERE VALUE = 'PINK'",
     (-6, "\"VALUE\" (ENUMERATION) has no value 'PINK' (SHOW MEMBER lists them)")),
    ("* FROM i WHERE 1 / VALUE = 1",
     (-6, "Division of an integer by zero in \"/\" (a divisor with a fraction, such as 1.0 * n, gives INF)")),
    ("* FROM i WHERE VALUE * 9223372036854775807 = 1",
     (-6, "The result of \"*\" is out of the range of integers (a factor of 1.0 makes it DOUBLE)")),
    ("SUM(VALUE) FROM big", (-6, "SUM(VALUE) does not fit UNSIGNED BIGINT (a factor of 1.0 makes it DOUBLE)")),
    ("MIN(VALUE) FROM i WHERE VALUE > 100", (-6, "MIN(VALUE) has no value: no element is selected")),
    ("* FROM i LIMIT 18446744073709551616",
     (-6, "Value 18446744073709551616 is too large for a number of rows (at most 18446744073709551615)")),
])
def test_errors(file, rest, error):
    assert refusal(file, rest) == error


def test_sums_are_exact_beyond_what_fits_in_between(kelvo):
    values = np.array([2**63 - 1, 2**63 - 1, -2**63, -2**63, 5], "i8")
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        made["i"] = values
        made["overflow"] = values[:2]
    assert select(kelvo, "SUM(VALUE) FROM i") == [str(sum(int(value) for value in values))]
    assert refusal(kelvo, "SUM(VALUE) FROM overflow") == (
        -6, "SUM(VALUE) does not fit BIGINT (a factor of 1.0 makes it DOUBLE)")


def test_sums_of_reals_lose_no_small_terms(kelvo):
    values = np.concatenate([[1e16], np.ones(1000), [-1e16]])
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        made["x"] = values
    assert select(kelvo, "SUM(VALUE) FROM x FORMAT TEXT") == ["1000"]


def test_deviations_of_large_values_are_stable(kelvo):
    values = 1e9 + np.tile([4.0, 7.0, 13.0, 16.0], 5000)
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        made["x"] = values
    assert abs(float(select(kelvo, "STDDEV(VALUE) FROM x FORMAT TEXT")[0]) - np.sqrt(22.5)) < 1e-12


@pytest.mark.parametrize("size", [1, 2, 999, 1_500_001])
@pytest.mark.parametrize("dtype", ["i4", "u8", "f8"])
def test_medians_are_exact(kelvo, size, dtype):
    """Large ones are more than the last pass keeps, and alike in their first bits."""
    random = np.random.default_rng(size)
    values = random.integers(0, 1 << 20, size).astype(dtype)
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        made["x"] = values
    assert float(select(kelvo, "MEDIAN(VALUE) FROM x FORMAT TEXT")[0]) == np.median(values)


def test_order_by_more_than_memory_holds(kelvo):
    """900,000 records are sorted in several parts in the temporary file; equal keys keep their order."""
    random = np.random.default_rng(1)
    keys = random.integers(-1000, 1000, 900_000).astype("i2")
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        rows = made.create_dataset("t", keys.shape, np.dtype([("k", "i2"), ("s", h5py.string_dtype())]))
        data = np.empty(keys.shape, rows.dtype)
        data["k"] = keys
        data["s"] = [f"{number:x}" for number in range(keys.size)]
        rows[:] = data
    order = np.argsort(keys, kind="stable")
    answer = select(kelvo, "k, s FROM t ORDER BY k")
    assert answer == [f"{keys[i]}\t{i:x}" for i in order]
    assert select(kelvo, "INDEX FROM t ORDER BY k DESC LIMIT 3 OFFSET 899997") == [str(i) for i in order[keys[order] == keys.min()][-3:]]


def test_temporary_files_that_cannot_be_made_are_named(kelvo, monkeypatch):
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        made["i"] = np.arange(4_000_000)
    environment = kelvo.environment() | {"TMPDIR": "/nowhere"}
    monkeypatch.setattr(kelvo, "environment", lambda: environment)
    assert refusal(kelvo, "* FROM i ORDER BY VALUE") == (
        -8, "A temporary file in \"/nowhere\" cannot be made: No such file or directory")


def test_only_the_chunks_of_the_slice_are_read(kelvo):
    """A chunk is damaged: who does not touch it does not see it."""
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        data = made.create_dataset("x", (100,), "i4", chunks=(10,), fletcher32=True)
        data[:] = np.arange(100)
        where = data.id.get_chunk_info(5).byte_offset
    with open(kelvo.path("a.h5"), "r+b") as raw:
        raw.seek(where)
        raw.write(b"\xff")
    assert select(kelvo, "SUM(VALUE) FROM x[:50]") == ["1225"]
    assert select(kelvo, "* FROM x LIMIT 2 OFFSET 70") == ["70", "71"]
    assert refusal(kelvo, "SUM(VALUE) FROM x")[0] == -9


def test_only_the_members_asked_for_are_read(kelvo):
    """Reading the string would fail: the heap that it is in is damaged."""
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        rows = np.empty(3, np.dtype([("id", "i4"), ("s", h5py.string_dtype())]))
        rows["id"] = [1, 2, 3]
        rows["s"] = "needle"
        made["t"] = rows
    raw = kelvo.path("a.h5").read_bytes()
    kelvo.path("a.h5").write_bytes(raw.replace(b"GCOL", b"XXXX"))
    assert select(kelvo, "id FROM t WHERE id > 1") == ["2", "3"]
    assert refusal(kelvo, "s FROM t")[0] == -9
