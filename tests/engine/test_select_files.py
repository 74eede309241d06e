"""SELECT with FORMAT and INTO: text and files that lose nothing, read back by Python."""

import csv
import json
import os
import resource
import signal
import stat

import h5py
import numpy as np
import pytest

NESTED = np.dtype([("id", "i4"), ("name", "S8"), ("pos", [("x", "f4"), ("y", "f8")]), ("v", "i2", (2, 2))])


@pytest.fixture
def file(kelvo):
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        made["x"] = np.array([0.1, 1e300, -5e-324, np.nan, -np.inf, 1 / 3])
        made["f"] = np.array([0.1, 16777216.0, 1e-45], "f4")
        made["m"] = np.arange(6, dtype=">i2").reshape(2, 3)
        made["cube"] = np.arange(24.0).reshape(2, 3, 4)
        made["words"] = ["plain", "a,b", 'say "x"', "two\nlines", "tab\there", "back\\slash", "\u00e9"]
        made["flags"] = np.array([True, False])
        made["color"] = np.array([0, 1, 7], dtype=h5py.enum_dtype({"RED": 0, "GREEN": 1}, ">i2"))
        made["bytes"] = np.array([b"\x00\xff\x10"], "V3")
        made.create_dataset("list", (2,), h5py.vlen_dtype("i4"))[0] = [1, 2]
        made["scalar"] = 2.5
        made["latin"] = np.array([b"caf\xe9"], "S4")
        rows = np.zeros(2, NESTED)
        rows["id"] = [1, 2]
        rows["name"] = [b"a,b", b"c"]
        rows["pos"]["x"] = [0.1, np.nan]
        rows["v"] = [[[1, 2], [3, 4]]] * 2
        made["t"] = rows
        spaces = h5py.h5t.C_S1.copy()
        spaces.set_size(4)
        spaces.set_strpad(h5py.h5t.STR_SPACEPAD)
        padded = h5py.h5d.create(made.id, b"padded", spaces, h5py.h5s.create_simple((1,)))
        padded.write(h5py.h5s.ALL, h5py.h5s.ALL, np.array([b"ab  "], "S4"), spaces)
    return kelvo


def select(kelvo, rest):
    return kelvo.run("USE FILE a.h5", "SELECT " + rest)


def data(kelvo, name):
    with h5py.File(kelvo.path("a.h5")) as made:
        return made[name][()]


@pytest.mark.parametrize("rest, rows", [
    ("* FROM m FORMAT CSV", ["0,1,2", "3,4,5"]),
    ("* FROM m FORMAT CSV HEADER", ["0,1,2", "0,1,2", "3,4,5"]),
    ("* FROM m FORMAT TSV", ["0\t1\t2", "3\t4\t5"]),
    ("* FROM m FORMAT TEXT", ["[0, 1, 2]", "[3, 4, 5]"]),
    ("* FROM m FORMAT JSON", ["[0, 1, 2]", "[3, 4, 5]"]),
    ("VALUE FROM m WHERE VALUE > 3 FORMAT CSV HEADER", ["VALUE", "4", "5"]),
    ("id, pos FROM t FORMAT CSV HEADER", ["id,pos.x,pos.y", "1,0.1,0", "2,nan,0"]),
    ("id, name FROM t FORMAT TSV HEADER", ["id\tname", "1\ta,b", "2\tc"]),
    ("* FROM t FORMAT CSV HEADER", ["id,name,pos.x,pos.y,v", '1,"a,b",0.1,0,"[[1, 2], [3, 4]]"',
                                    '2,c,nan,0,"[[1, 2], [3, 4]]"']),
    ("* FROM t LIMIT 1 FORMAT JSON", ['{"id": 1, "name": "a,b", "pos": {"x": 0.1, "y": 0}, "v": [[1, 2], [3, 4]]}']),
    ("id, pos.x FROM t FORMAT JSON HEADER", ['["id", "pos.x"]', '{"id": 1, "pos.x": 0.1}', '{"id": 2, "pos.x": null}']),
    ("COUNT(*), MAX(id) FROM t FORMAT JSON", ['{"COUNT(*)": 2, "MAX(id)": 2}']),
    ("* FROM words WHERE VALUE LIKE 't%' FORMAT TSV", ["two\\nlines", "tab\\there"]),
    ("* FROM words WHERE VALUE LIKE 'back%' FORMAT TSV", ["back\\\\slash"]),
    ("* FROM words WHERE VALUE LIKE 'say%' FORMAT CSV", ['"say ""x"""']),
    ("* FROM flags FORMAT JSON", ["true", "false"]),
    ("* FROM color FORMAT JSON", ['"RED"', '"GREEN"', "7"]),
    ("* FROM bytes FORMAT JSON", ['"00ff10"']),
    ("* FROM bytes FORMAT CSV", ["X'00ff10'"]),
    ("* FROM list FORMAT JSON", ["[1, 2]", "[]"]),
    ("* FROM latin FORMAT JSON", ['"caf\\udce9"']),
    ("* FROM none IN b.h5 FORMAT CSV HEADER", ["VALUE"]),
])
def test_formats(file, rest, rows):
    with h5py.File(file.path("b.h5"), "w") as made:
        made["none"] = h5py.Empty("i4")
    assert select(file, rest).rows == rows


@pytest.mark.parametrize("name", ["x", "f"])
@pytest.mark.parametrize("form", ["TEXT", "CSV", "TSV"])
def test_numbers_read_back_to_the_same_value(file, name, form):
    values = data(file, name)
    back = np.array(select(file, f"* FROM {name} FORMAT {form}").rows, values.dtype)
    assert np.array_equal(back, values, equal_nan=True)


def test_json_has_null_for_what_it_cannot_write(file):
    rows = [json.loads(row) for row in select(file, "* FROM x FORMAT JSON").rows]
    assert rows == [0.1, 1e300, -5e-324, None, None, 1 / 3]


def test_csv_files_are_what_csv_readers_expect(file):
    assert select(file, "* FROM words INTO w.csv").rows == []
    with open(file.path("w.csv"), newline="", encoding="utf-8") as made:
        assert [row for row in csv.reader(made)] == [[word.decode()] for word in data(file, "words")]


def test_tsv_files_can_be_unescaped(file):
    select(file, "* FROM words INTO w.tsv")
    lines = file.path("w.tsv").read_text(encoding="utf-8").splitlines()
    plain = [line.replace("\\\\", "\0").replace("\\t", "\t").replace("\\n", "\n").replace("\0", "\\") for line in lines]
    assert plain == [word.decode() for word in data(file, "words")]


def test_json_files_hold_a_value_a_line(file):
    select(file, "* FROM words INTO w.json")
    lines = file.path("w.json").read_text(encoding="utf-8").splitlines()
    assert [json.loads(line) for line in lines] == [word.decode() for word in data(file, "words")]


def test_the_format_named_wins_over_the_suffix(file):
    select(file, "id, name FROM t FORMAT CSV HEADER INTO w.txt")
    assert file.path("w.txt").read_text() == 'id,name\n1,"a,b"\n2,c\n'


@pytest.mark.parametrize("name", ["x", "f", "cube", "flags", "scalar"])
def test_npy_files_are_the_array(file, name):
    assert select(file, f"* FROM {name} INTO w.npy").status == 0
    back = np.load(file.path("w.npy"))
    values = data(file, name)
    assert (back.dtype, back.shape) == (np.asarray(values).dtype, np.shape(values))
    assert np.array_equal(back, values, equal_nan=back.dtype.kind == "f")


def test_npy_files_of_compounds_are_structured(file):
    select(file, "* FROM t INTO w.npy")
    back = np.load(file.path("w.npy"))
    assert back.dtype == NESTED
    assert back.tobytes() == data(file, "t").tobytes()


def test_npy_files_of_items_bear_their_names(file):
    select(file, "id, pos.x, name FROM t WHERE id = 2 INTO w.npy")
    back = np.load(file.path("w.npy"))
    assert back.dtype == np.dtype([("id", "<i4"), ("pos.x", "<f4"), ("name", "S8")])
    assert (back["id"][0], back["name"][0]) == (2, b"c")


@pytest.mark.parametrize("dtype", ["<c8", ">c16"])
def test_npy_files_of_complex_numbers(kelvo, dtype):
    values = np.array([[1 + 2j, 0.5], [-1j, 1e30]], dtype)
    pairs = np.zeros(2, [("z", dtype), ("n", "i4")])
    pairs["z"] = values[0]
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        made["x"], made["pairs"] = values, pairs
    kelvo.rows("SELECT * FROM x IN a.h5 INTO x.npy", "SELECT * FROM pairs IN a.h5 INTO pairs.npy")
    back = np.load(kelvo.path("x.npy"))
    assert back.dtype == values.dtype.newbyteorder("<")
    assert np.array_equal(back, values)
    assert np.array_equal(np.load(kelvo.path("pairs.npy")), pairs.astype([("z", back.dtype), ("n", "<i4")]))


def test_npy_files_of_empty_spaces(kelvo):
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        made["x"], made.attrs["x"] = h5py.Empty("<f4"), h5py.Empty("S3")
    kelvo.rows("SELECT * FROM x IN a.h5 INTO x.npy", "SELECT * FROM /@x IN a.h5 INTO attribute.npy")
    for name, dtype in (("x", "<f4"), ("attribute", "S3")):
        back = np.load(kelvo.path(f"{name}.npy"))
        assert (back.shape, back.dtype) == ((0,), dtype)


def test_npy_files_count_what_was_selected(file):
    select(file, "VALUE FROM cube WHERE VALUE > 20 ORDER BY VALUE DESC LIMIT 2 INTO w.npy")
    assert np.load(file.path("w.npy")).tolist() == [23.0, 22.0]


def test_bytes_are_little_endian_and_padded_with_nulls(file):
    for name, dtype in [("m", "<i2"), ("color", "<i2")]:
        select(file, f"* FROM {name} INTO OR REPLACE w.bin")
        back = np.frombuffer(file.path("w.bin").read_bytes(), dtype)
        assert back.tolist() == data(file, name).ravel().tolist()
    select(file, "* FROM color INTO w.npy")
    assert np.load(file.path("w.npy")).tolist() == [0, 1, 7]
    select(file, "* FROM padded INTO OR REPLACE w.bin")
    assert file.path("w.bin").read_bytes() == b"ab\0\0"


def test_many_rows_reach_the_file(file):
    with h5py.File(file.path("b.h5"), "w") as made:
        made["x"] = np.arange(300_000, dtype="i8") * 7
        made["wide"] = np.arange(200_000, dtype="f8").reshape(1, -1)
    select(file, "* FROM x IN b.h5 INTO w.csv")
    assert np.array_equal(np.loadtxt(file.path("w.csv"), dtype="i8"), np.arange(300_000) * 7)
    select(file, "* FROM wide IN b.h5 INTO wide.csv")
    assert np.array_equal(np.loadtxt(file.path("wide.csv"), delimiter=","), np.arange(200_000))
    assert len(select(file, "* FROM wide IN b.h5 FORMAT CSV").rows) == 1


def test_an_existing_file_is_kept_unless_it_may_be_replaced(file):
    path = file.path("w.csv")
    path.write_text("mine")
    path.chmod(0o640)
    answer = select(file, "* FROM m INTO w.csv")
    assert (answer.status, answer.message) == (
        -4, f'File "{path}" already exists (INTO OR REPLACE replaces it)')
    assert path.read_text() == "mine"
    assert select(file, "* FROM m INTO OR REPLACE w.csv").status == 0
    assert path.read_text() == "0,1,2\n3,4,5\n"
    assert stat.S_IMODE(os.stat(path).st_mode) == 0o640


@pytest.mark.parametrize("into, status, message", [
    ("* FROM m INTO w", -5, 'File "{folder}/w" has none of the suffixes .csv .tsv .txt .json .npy .bin '
                            '(FORMAT names a format)'),
    ("* FROM words INTO w.npy", -5, "A .npy file cannot hold VARCHAR, whose values have no fixed size "
                                    "(.csv and .json can)"),
    ("* FROM list INTO w.bin", -5, "A .bin file cannot hold VARINT, whose values have no fixed size "
                                   "(.csv and .json can)"),
    ("id, id FROM t INTO w.npy", -5, 'Two items are called "id", a .npy file needs different names'),
    ("* FROM m INTO no/w.csv", -8, 'File "{folder}/no/w.csv" cannot be created: No such file or directory'),
    ("* FROM m INTO OR REPLACE a.h5", -4, 'File "{folder}/a.h5" is in use (CLOSE FILE ends that)'),
    ("* FROM m FORMAT CSV INTO folder", -5, 'File "{folder}/folder" is a directory'),
    ("* FROM m WHERE 1 / VALUE > 0 INTO w.csv", -6,
     'Division of an integer by zero in "/" (a divisor with a fraction, such as 1.0 * n, gives INF)'),
])
def test_a_failure_leaves_no_file(file, into, status, message):
    file.path("folder").mkdir()
    answer = select(file, into)
    assert (answer.status, answer.message) == (status, message.format(folder=file.folder))
    assert sorted(path.name for path in file.folder.iterdir()) == ["a.h5", "folder"]


def test_a_full_disk_leaves_no_file(file, tmp_path):
    """The size of files is limited instead, which is refused in the same place."""
    answer = file.run("USE FILE a.h5", "SELECT * FROM cube INTO w.npy", preexec_fn=limit_files)
    assert answer.status == -8
    assert answer.message == f'File "{file.path("w.npy")}" cannot be written: File too large'
    assert [path.name for path in tmp_path.iterdir()] == ["a.h5"]


def limit_files():
    signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
    resource.setrlimit(resource.RLIMIT_FSIZE, (100, 100))
