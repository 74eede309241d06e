"""Text, compounds, arrays, sequences, references and spaces show as h5py reads them (numbers: test_number_types.py)."""

import re
import subprocess

import h5py
import numpy as np
import pytest
from h5py import h5t
from oracle import check_file
from typed_files import make, raw_file

TEXT = ["", "a", "two words", "it's", 'a "b"', "tab\tend", "back\\slash", "déjà", "漢字", "🙂"]


# --- Strings ---

@pytest.mark.parametrize("charset", [h5t.CSET_ASCII, h5t.CSET_UTF8])
@pytest.mark.parametrize("padding", [h5t.STR_NULLTERM, h5t.STR_NULLPAD, h5t.STR_SPACEPAD])
def test_fixed_strings_of_every_padding(kelvo, padding, charset):
    type_id = h5t.C_S1.copy()
    type_id.set_size(6)
    type_id.set_strpad(padding)
    type_id.set_cset(charset)
    texts = ["", "a", " a", "two w", "déjà" if charset == h5t.CSET_UTF8 else "abcd"]
    full = ["sixsix"] if padding != h5t.STR_NULLTERM else []
    pad = b" " if padding == h5t.STR_SPACEPAD else b"\0"
    data = b"".join(text.encode().ljust(6, pad) for text in texts + full)
    assert raw_file(kelvo, type_id, data, len(texts + full)) == texts + full


def test_null_terminated_string_ends_at_its_first_null(kelvo):
    type_id = h5t.C_S1.copy()
    type_id.set_size(6)
    assert raw_file(kelvo, type_id, b"ab\0cd\0abcdef", 2) == ["ab", "abcdef"]


@pytest.mark.parametrize("charset", ["ascii", "utf-8"])
def test_fixed_and_variable_strings(kelvo, charset):
    texts = [text for text in TEXT if charset == "utf-8" or text.isascii()]
    assert make(kelvo, fixed=([text.encode() for text in texts], h5py.string_dtype(charset, 20)),
                varying=(texts, h5py.string_dtype(charset))) == 4


@pytest.mark.parametrize("padding", [h5t.STR_NULLTERM, h5t.STR_NULLPAD, h5t.STR_SPACEPAD])
def test_variable_strings_of_every_padding(kelvo, padding):
    type_id = h5t.C_S1.copy()
    type_id.set_size(h5t.VARIABLE)
    type_id.set_strpad(padding)
    with h5py.File(kelvo.path("padding.h5"), "w") as file:
        dataset = h5py.h5d.create(file.id, b"x", type_id, h5py.h5s.create_simple((2,)))
        h5py.Dataset(dataset)[...] = np.array(["ab", "c "], object)
    assert kelvo.rows("SELECT * FROM x IN padding.h5") == ["ab", "c "]


def test_strings_never_written_are_null_rows(kelvo):
    with h5py.File(kelvo.path("null.h5"), "w") as file:
        file.create_dataset("x", (2,), h5py.string_dtype())
        file.create_dataset("pair", (1,), np.dtype([("id", int), ("name", h5py.string_dtype())]))
    assert kelvo.rows("SELECT * FROM x IN null.h5") == ["", ""]
    assert kelvo.rows("SELECT * FROM pair IN null.h5") == ["{id: 0, name: NULL}"]


def test_bytes_that_are_no_text_stay_as_they_are(kelvo):
    assert make(kelvo, fixed=([b"\xff\xfe", b"\x80"], "S2")) == 2


# --- Types made of types ---

INNER = np.dtype([("x", ">i2"), ("y", "<f4")])
OUTER = np.dtype({"names": ["id", "at", "name", "word", "line", "grid", "flag"],
                  "formats": ["<u8", INNER, "S5", h5py.string_dtype(), (">f8", (2,)), ("i1", (2, 3)), bool],
                  "offsets": [4, 16, 24, 32, 48, 64, 75], "itemsize": 90})


def outer(n):
    return (2 ** 64 - 1 - n, (-n, n / 3), b"ab'c", "dé\tf", (0.1, n), ((1, 2, 3), (4, 5, n)), n % 2)


def test_compounds_nested_and_with_holes(kelvo):
    assert make(kelvo, x=([outer(n) for n in range(5)], OUTER)) == 2


def test_members_with_names_that_need_quotes(kelvo):
    dtype = np.dtype([("two words", "i4"), ('a"b', "i4"), ("a.b", "i4"), ("été", "i4"), ("1st", "i4")])
    make(kelvo, x=([(1, 2, 3, 4, 5)], dtype))
    assert kelvo.rows("SELECT * FROM x IN types.h5") == ['{"two words": 1, "a""b": 2, "a.b": 3, été: 4, "1st": 5}']


@pytest.mark.parametrize("base", ["<i1", ">u2", "<i4", ">i8", "<f2", "<f4", ">f8"])
def test_arrays_and_sequences_of_numbers(kelvo, base):
    array = np.dtype((base, (2, 2)))
    with h5py.File(kelvo.path("lists.h5"), "w") as file:
        file["array"] = np.arange(12).reshape(3, 2, 2).astype(base)
        h5py.h5d.create(file.id, b"arrays", h5t.py_create(array), h5py.h5s.create_simple((3,)))
        file["arrays"][...] = np.arange(12).reshape(3, 2, 2).astype(base)
    assert check_file(kelvo, "lists.h5") == 2
    with h5py.File(kelvo.path("sequences.h5"), "w") as file:
        dataset = file.create_dataset("x", (3,), h5py.vlen_dtype(np.dtype(base)))
        # h5py takes the items' bytes for the machine's, whatever their type says.
        dataset[0], dataset[2] = np.array([1, 2, 3], base.lstrip("<>")), np.array([7], base.lstrip("<>"))
    dump = subprocess.run(["h5dump", "-d", "/x", "-y", "sequences.h5"], cwd=kelvo.folder, capture_output=True, text=True)
    data = dump.stdout.split("DATA {")[1]
    expected = [items.split(", ") if items else [] for items in re.findall(r"\((.*?)\)", data)]
    shown = [row.split() for row in kelvo.rows("SELECT * FROM x IN sequences.h5")]
    assert [[float(item) for item in row] for row in shown] == [[float(item) for item in row] for row in expected]
    assert [len(row) for row in shown] == [3, 0, 1]


def test_arrays_of_strings_enumerations_and_arrays(kelvo):
    words = np.dtype((h5py.string_dtype(), (2,)))
    fixed = np.dtype(("S3", (2, 1)))
    flags = np.dtype((h5py.enum_dtype({"NO": 0, "YES": 1}, basetype=">i2"), (3,)))
    with h5py.File(kelvo.path("arrays.h5"), "w") as file:
        dtype = np.dtype([("words", words), ("fixed", fixed), ("flags", flags)])
        file.create_dataset("x", data=np.array(
            [(["a", "b'c"], [[b"x"], [b"yz"]], [0, 1, 2]), (["", "é"], [[b""], [b"abc"]], [1, 1, 0])], dtype))
        h5py.h5d.create(file.id, b"flags", h5t.py_create(flags, logical=True), h5py.h5s.create_simple((2,)))
        h5py.h5d.create(file.id, b"fixed", h5t.py_create(fixed, logical=True), h5py.h5s.create_simple((2, 2)))
        file["fixed"][...] = np.array([[[[b"a"], [b"b"]]] * 2] * 2)
    assert check_file(kelvo, "arrays.h5") == 3


def test_sequences_of_sequences_compounds_and_strings(kelvo):
    pair = np.dtype([("id", "i4"), ("name", h5py.string_dtype())])
    with h5py.File(kelvo.path("sequences.h5"), "w") as file:
        words = file.create_dataset("words", (2,), h5py.vlen_dtype(h5py.string_dtype()))
        words[0] = np.array(["a", "it's"], object)
        rows = file.create_dataset("rows", (2,), h5py.vlen_dtype(np.dtype([("id", ">i4"), ("x", "f8")])))
        rows[1] = np.array([(1, 0.5), (2, -1)], np.dtype([("id", ">i4"), ("x", "f8")]))
        member = file.create_dataset("member", (1,), np.dtype([("v", h5py.vlen_dtype(np.int16)), ("p", pair)]))
        member[0] = (np.array([1, 2], np.int16), (3, "three"))
        nested = h5t.vlen_create(h5t.vlen_create(h5t.STD_I16LE))
        h5py.h5d.create(file.id, b"nested", nested, h5py.h5s.create_simple((2,)))
    assert kelvo.rows("SELECT * FROM words IN sequences.h5") == ["['a', 'it''s']", "[]"]
    assert kelvo.rows("SELECT * FROM rows IN sequences.h5") == ["[]", "[{id: 1, x: 0.5}, {id: 2, x: -1}]"]
    assert kelvo.rows("SELECT * FROM member IN sequences.h5") == ["{v: [1, 2], p: {id: 3, name: 'three'}}"]
    assert kelvo.rows("SELECT * FROM nested IN sequences.h5") == ["[]", "[]"]


def test_opaque_bytes(kelvo):
    tagged = h5t.create(h5t.OPAQUE, 3)
    tagged.set_tag(b"it's a tag")
    assert raw_file(kelvo, tagged, b"\0\1\xff\x7f\x80\0", 2) == ["0 1 255", "127 128 0"]
    when = np.array(["2020-01-01", "NaT"], "datetime64[s]").astype(h5py.opaque_dtype("datetime64[s]"))
    assert make(kelvo, x=([*when], h5py.opaque_dtype("datetime64[s]"))) == 2


# --- References ---

def test_object_references(kelvo):
    with h5py.File(kelvo.path("references.h5"), "w") as file:
        group = file.create_group("a/b")
        group["data"] = [1, 2]
        file["kind"] = np.dtype("i4")
        references = [file.ref, group.ref, group["data"].ref, file["kind"].ref, h5py.Reference()]
        file.create_dataset("x", data=references, dtype=h5py.ref_dtype)
        file.attrs.create("x", references, dtype=h5py.ref_dtype)
        file.create_dataset("pair", data=np.array([(1, group.ref), (2, h5py.Reference())],
                                                  np.dtype([("id", int), ("to", h5py.ref_dtype)])))
    check_file(kelvo, "references.h5")
    assert kelvo.rows("SELECT * FROM x IN references.h5") == ["/", "/a/b", "/a/b/data", "/kind", ""]
    assert kelvo.rows("SELECT * FROM pair IN references.h5") == ["{id: 1, to: '/a/b'}", "{id: 2, to: NULL}"]


def test_reference_to_what_was_dropped_shows_as_a_null_one(kelvo):
    with h5py.File(kelvo.path("stale.h5"), "w") as file:
        file["gone"], file["there"] = [1], [2]
        file.create_dataset("x", data=[file["gone"].ref, file["there"].ref], dtype=h5py.ref_dtype)
        file.create_dataset("r", data=[file["gone"].regionref[:1], file["there"].regionref[:1]],
                            dtype=h5py.regionref_dtype)
        del file["gone"]
    assert kelvo.rows("SELECT * FROM x IN stale.h5") == ["", "/there"]
    assert kelvo.rows("SELECT * FROM r IN stale.h5") == ["", "/there[0:1]"]


def test_region_references(kelvo):
    with h5py.File(kelvo.path("regions.h5"), "w") as file:
        data = file.create_dataset("a/grid", (10, 20))
        scalar = file.create_dataset("one", data=1)
        points = h5py.h5s.create_simple((10, 20))
        points.select_elements(np.array([[1, 2], [7, 3], [4, 19]]))
        point = h5py.h5r.create(file.id, b"a/grid", h5py.h5r.DATASET_REGION, points)
        none = h5py.h5s.create_simple((10, 20))
        none.select_none()
        nothing = h5py.h5r.create(file.id, b"a/grid", h5py.h5r.DATASET_REGION, none)
        whole = h5py.h5r.create(file.id, b"one", h5py.h5r.DATASET_REGION, scalar.id.get_space())
        regions = [data.regionref[2:5, ::4], data.regionref[:], point, h5py.RegionReference(), nothing, whole]
        file.create_dataset("x", data=regions, dtype=h5py.regionref_dtype)
    assert kelvo.rows("SELECT * FROM x IN regions.h5") == [
        "/a/grid[2:5, 0:17]", "/a/grid[0:10, 0:20]", "/a/grid[1:8, 2:20]", "", "/a/grid[0:0, 0:0]", "/one"]


def test_many_references_are_followed(kelvo):
    with h5py.File(kelvo.path("many.h5"), "w") as file:
        refs = file.create_group("#refs#")
        cells = [refs.create_dataset(f"c{i}", data=i).ref for i in range(3000)]
        file.create_dataset("x", data=cells, dtype=h5py.ref_dtype)
    assert kelvo.rows("SELECT * FROM x IN many.h5") == [f"/#refs#/c{i}" for i in range(3000)]


# --- Spaces ---

def test_spaces_of_every_kind(kelvo):
    with h5py.File(kelvo.path("spaces.h5"), "w") as file:
        file["scalar"], file["line"], file["matrix"] = 7, [1, 2, 3], np.arange(6).reshape(2, 3)
        file["cube"], file["texts"] = np.arange(24.0).reshape(2, 3, 4), np.array([[b"a", b"b"], [b"c", b"d"]])
        file["empty"], file["null text"] = h5py.Empty("f8"), h5py.Empty("S4")
        file["nothing"], file["no lines"], file["no columns"] = np.zeros(0), np.zeros((0, 3)), np.zeros((3, 0))
        file["deep"] = np.arange(4).reshape((1,) * 30 + (2, 2))
        for name in list(file):
            file.attrs[name] = h5py.Empty("i4") if file[name].shape is None else file[name][()]
    assert check_file(kelvo, "spaces.h5") == 22
    assert kelvo.rows('SELECT * FROM "null text" IN spaces.h5') == []
