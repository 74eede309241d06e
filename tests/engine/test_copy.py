"""COPY of every kind, read back with h5py; what is copied is made by h5py."""

import os
import resource
import signal
import struct

import h5py
import numpy as np
import pytest


@pytest.fixture
def file(kelvo):
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        x = made.create_dataset("g/x", data=np.arange(60000, dtype=">i4").reshape(300, 200), chunks=(7, 11), shuffle=True,
                                compression="gzip", fillvalue=-3, maxshape=(None, 400))
        x.attrs["units"] = "K"
        x.attrs["names"] = np.array(["a", "bc"], dtype=object)
        made["g/text"] = np.array(["one", "", "three"], dtype=object)
        made["g"].attrs["title"] = "group"
        made["g/again"] = made["g/x"]
        made["g/soft"] = h5py.SoftLink("/g/x")
        made["g/out"] = h5py.ExternalLink("b.h5", "/y")
        made["g"].attrs.create("ref", made["g/x"].ref, dtype=h5py.ref_dtype)

    class File:
        def copy(self, *statements, name="a.h5"):
            kelvo.rows("USE FILE a.h5", *statements)
            return h5py.File(kelvo.path(name), "r")

        def error(self, *statements):
            return kelvo.error("USE FILE a.h5", *statements)

    return File()


def storage(dataset):
    plist = dataset.id.get_create_plist()
    filters = [plist.get_filter(i) for i in range(plist.get_nfilters())]
    return dataset.chunks, filters, dataset.fillvalue, dataset.maxshape, dataset.dtype.str


def test_dataset_is_copied_as_it_is(file):
    with file.copy("COPY DATASET g/x TO new/y", "COPY DATASET g/soft TO z", "COPY DATASET g/text TO new/") as made:
        for name in ("new/y", "z"):
            assert storage(made[name]) == storage(made["g/x"]) and (made[name][()] == made["g/x"][()]).all()
            assert made[name].attrs["units"] == "K" and list(made[name].attrs["names"]) == ["a", "bc"]
        assert made["new/text"].asstr()[()].tolist() == ["one", "", "three"]


def test_group_is_copied_with_all_below(file):
    with file.copy("COPY GROUP g TO h", "COPY GROUP g TO g/itself") as made:
        for name in ("h", "g/itself"):
            assert sorted(made[name]) == ["again", "out", "soft", "text", "x"] and made[name].attrs["title"] == "group"
            assert made[name]["again"] == made[name]["x"] and made[name]["x"] != made["g/x"]
            assert made[name].get("soft", getlink=True).path == "/g/x"
            assert made[name].get("out", getlink=True).filename == "b.h5"
            assert made[made[name].attrs["ref"]] == made["g/x"]


def test_copies_into_another_file_and_from_one(file, kelvo):
    with file.copy("CREATE FILE b.h5", "COPY GROUP g TO g IN b.h5", "COPY DATASET g/x TO p/x IN b.h5",
                   "COPY LINK g/soft TO s IN b.h5", "COPY EXTERNAL LINK g/out TO o IN b.h5",
                   "COPY ATTRIBUTE g@title TO p@t IN b.h5", "COPY DATASET p/x IN b.h5 TO back", name="b.h5") as made:
        assert (made["g/x"][()] == made["p/x"][()]).all() and made["g/again"] == made["g/x"]
        assert made.get("s", getlink=True).path == "/g/x" and made.get("o", getlink=True).filename == "b.h5"
        assert made["p"].attrs["t"] == "group" and made[made["g"].attrs["ref"]] == made["g/x"]
        assert storage(made["p/x"])[0] == (7, 11)
    with h5py.File(kelvo.path("a.h5"), "r") as made:
        assert (made["back"][()] == made["g/x"][()]).all()


@pytest.mark.parametrize("options, chunks, filters", [
    ("CHUNK [50, 40]", (50, 40), ["shuffle", "deflate"]), ("DEFLATE 9", (7, 11), ["deflate"]),
    ("CHUNK [300, 3] SHUFFLE FLETCHER32", (300, 3), ["shuffle", "fletcher32"]), ("TRACK ORDER", (7, 11), ["shuffle", "deflate"])])
def test_dataset_is_stored_anew(file, options, chunks, filters):
    with file.copy(f"COPY DATASET g/x TO y {options}") as made:
        y = made["y"]
        plist = y.id.get_create_plist()
        numbers = {1: "deflate", 2: "shuffle", 3: "fletcher32"}
        assert y.chunks == chunks and [numbers[plist.get_filter(i)[0]] for i in range(plist.get_nfilters())] == filters
        assert (y.fillvalue, y.maxshape, y.dtype.str) == (-3, (None, 400), ">i4")
        assert (y[()] == made["g/x"][()]).all() and y.attrs["units"] == "K" and list(y.attrs["names"]) == ["a", "bc"]


def test_text_is_stored_anew_in_another_file(file):
    with file.copy("CREATE FILE b.h5", "COPY DATASET g/text TO t IN b.h5 CHUNK [2] DEFLATE 1", name="b.h5") as made:
        assert made["t"].chunks == (2,) and made["t"].asstr()[()].tolist() == ["one", "", "three"]


def test_values_of_every_type_are_stored_anew(kelvo):
    compound = np.dtype([("a", "<i2"), ("t", "S3"), ("v", ">f8", (2,)), ("s", h5py.string_dtype())])
    data = {
        "half": np.arange(6, dtype=np.float16), "long": np.arange(6).astype(np.longdouble) / 3,
        "enum": np.array([0, 1, 0], dtype=h5py.enum_dtype({"A": 0, "B": 1}, "i1")),
        "compound": np.array([(1, b"abc", (1.5, 2), "x"), (-2, b"d", (0, 1), "")], dtype=compound),
        "opaque": np.array([b"ab\0", b"xyz"], dtype="V3"), "empty": np.zeros((0, 3)), "scalar": np.float64(3.25),
    }
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        for name, values in data.items():
            made.create_dataset(name, data=values)
        lists = made.create_dataset("lists", (2,), h5py.vlen_dtype("i4"))
        lists[0], lists[1] = [1, 2, 3], []
    kelvo.rows("USE FILE a.h5", *[f"COPY DATASET {name} TO copy/{name} TRACK ORDER" for name in [*data, "lists"]])
    with h5py.File(kelvo.path("a.h5"), "r") as made:
        for name in data:
            assert made[name].id.get_type() == made["copy"][name].id.get_type()
            assert np.array_equal(made[name][()], made["copy"][name][()]), name
        assert [list(row) for row in made["copy/lists"][()]] == [[1, 2, 3], []]


def test_dataset_never_written_stays_without_storage(kelvo):
    kelvo.rows("CREATE FILE a.h5", "USE FILE a.h5", "CREATE DATASET big DOUBLE [1000000, 1000000 TO UNLIMITED]",
               "COPY DATASET big TO anew CHUNK [100, 100]")
    with h5py.File(kelvo.path("a.h5"), "r") as made:
        assert made["anew"].shape == (1000000, 1000000) and made["anew"].id.get_storage_size() == 0


def test_references_of_every_shape_lead_to_the_copies(kelvo):
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        made["g/x"] = np.arange(20).reshape(4, 5)
        x = made["g/x"]
        made.create_dataset("g/refs", data=np.array([x.ref, made["g"].ref, None], dtype=object), dtype=h5py.ref_dtype)
        made["g/refs"][2] = h5py.Reference()
        made.create_dataset("g/regions", (1,), h5py.regionref_dtype)
        made["g/regions"][0] = x.regionref[1:3, 2:4]
        compound = np.dtype([("n", "i4"), ("r", h5py.ref_dtype)])
        made["g"].create_dataset("pairs", (1,), compound)
        made["g/pairs"][0] = (7, x.ref)
        listed = np.empty(1, dtype=object)
        listed[0] = np.array([x.ref, x.ref], dtype=h5py.ref_dtype)
        x.attrs.create("lists", listed, dtype=h5py.vlen_dtype(h5py.ref_dtype))
    kelvo.rows("CREATE FILE b.h5", "CREATE FILE c.h5", "USE FILE a.h5", "COPY GROUP g TO h/g IN b.h5",
               "COPY DATASET g/refs TO refs IN c.h5 CHUNK [1]", "COPY FILE a.h5 TO packed.h5 REPACK")
    for name, group in (("b.h5", "h/g"), ("packed.h5", "g")):
        with h5py.File(kelvo.path(name), "r") as made:
            g = made[group]
            assert made[g["refs"][0]] == g["x"] and made[g["refs"][1]] == g and not g["refs"][2]
            assert made[g["pairs"][0]["r"]] == g["x"] and g["pairs"][0]["n"] == 7
            region = g["regions"][0]
            assert made[region] == g["x"] and g["x"][region].tolist() == [[7, 8], [12, 13]]
            assert [made[one] for one in g["x"].attrs["lists"][0]] == [g["x"], g["x"]]
    with h5py.File(kelvo.path("c.h5"), "r") as made:
        assert [bool(one) for one in made["refs"][()]] == [False] * 3


def test_reference_that_cannot_be_followed_is_not_copied_as_null(kelvo):
    """As a newer HDF5 library selects elements: in another version of what is stored."""
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        made["g/x"] = np.arange(20).reshape(4, 5)
        made.create_dataset("g/regions", (1,), h5py.regionref_dtype)
        made["g/regions"][0] = made["g/x"].regionref[1:3, 2:4]
    content = kelvo.path("a.h5").read_bytes()
    hyperslab = struct.pack("<III", 2, 1, 0)  # kind of selection, version, reserved
    assert content.count(hyperslab) == 1
    kelvo.path("a.h5").write_bytes(content.replace(hyperslab, struct.pack("<III", 2, 9, 0)))
    kelvo.rows("CREATE FILE b.h5")
    error = (-9, "A reference cannot be followed: bad version number for hyperslab selection, as made by a newer HDF5 library "
                 "(update the one in use) or damaged")
    assert kelvo.error("SELECT * FROM g/regions IN a.h5") == error
    assert kelvo.error("USE FILE a.h5", "COPY GROUP g TO g IN b.h5") == error
    assert kelvo.error("COPY FILE a.h5 TO c.h5 REPACK") == error
    assert sorted(os.listdir(kelvo.folder)) == ["a.h5", "b.h5"]
    with h5py.File(kelvo.path("b.h5"), "r") as made:
        assert list(made) == []


@pytest.mark.parametrize("track_order", [False, True])
def test_many_attributes_with_texts_and_references(kelvo, track_order):
    """As netCDF-4 makes them; the HDF5 library does not survive copying them where they have an index."""
    with h5py.File(kelvo.path("a.h5"), "w", libver="latest", track_order=track_order) as made:
        made["g/kind"] = h5py.enum_dtype({"LOW": 0, "HIGH": 1}, "i1")
        scale = made.create_dataset("g/time", data=np.arange(4.0))
        scale.make_scale("time")
        for name in ("x", "y"):
            dataset = made.create_dataset(f"g/{name}", data=np.arange(4), track_order=track_order)
            dataset.dims[0].attach_scale(scale)
            for i in reversed(range(12)):
                dataset.attrs[f"number{i}"] = np.arange(i, dtype=">i2")
            dataset.attrs["names"] = ["one", "", name]
            dataset.attrs.create("level", 1, dtype=made["g/kind"])
        made.attrs["title"] = "root"
        for i in range(12):
            made.attrs[f"text{i}"] = ["t", str(i)]
        order = list(made["g/x"].attrs)
    kelvo.rows("CREATE FILE b.h5", "CREATE FILE c.h5", "USE FILE a.h5", "COPY GROUP g TO g IN b.h5", "COPY GROUP g TO h",
               "COPY DATASET g/x TO x IN c.h5", "COPY FILE a.h5 TO packed.h5 REPACK")
    for name, group in (("a.h5", "h"), ("b.h5", "g"), ("packed.h5", "g"), ("packed.h5", "h")):
        with h5py.File(kelvo.path(name), "r") as made:
            g = made[group]
            for x in (g["x"], g["y"]):
                assert list(x.attrs) == order and list(x.attrs["names"]) == ["one", "", x.name[-1]]
                assert all(x.attrs[f"number{i}"].tolist() == list(range(i)) for i in range(12))
                assert made[x.attrs["DIMENSION_LIST"][0][0]] == made["g/time"]
                level = h5py.h5a.open(x.id, b"level").get_type()
                assert level.committed() and h5py.h5i.get_name(level) == b"/g/kind"  # within a file the same
    with h5py.File(kelvo.path("packed.h5"), "r") as made:
        assert made.attrs["title"] == "root" and list(made.attrs["text11"]) == ["t", "11"]
    with h5py.File(kelvo.path("c.h5"), "r") as made:
        assert list(made["x"].attrs["names"]) == ["one", "", "x"] and made["x"].attrs["level"] == 1


@pytest.mark.parametrize("member, value, read", [
    ("VARINT", lambda i: f"[{i}, {i + 1}]", lambda i: [i, i + 1]), ("VARCHAR", lambda i: f"'text {i}'", b"text %d".__mod__),
    ("SEQUENCE OF COMPOUND (p INT, q FLOAT)", lambda i: f"[({i}, 0.5), ({i}, 1.5)]", lambda i: [(i, 0.5), (i, 1.5)])])
def test_arrays_whose_elements_own_memory(kelvo, member, value, read):
    """Each is converted on its own: the HDF5 library gives up the texts and lists of one when it writes the next."""
    elements = ", ".join(f"([({i}, {value(i)}), ({i + 5}, {value(i + 5)})])" for i in range(4))
    columns = f"COMPOUND (x COMPOUND (i INT, v {member}) [2]) [4]"
    kelvo.rows("CREATE FILE a.h5", "USE FILE a.h5", f"CREATE DATASET g/x {columns} VALUES ({elements})",
               f"CREATE ATTRIBUTE g/x@a {columns} VALUES ({elements})",
               f"INSERT INTO g/x[1] VALUES (([(1, {value(1)}), (6, {value(6)})]))", "COPY DATASET g/x TO g/y",
               "COPY DATASET g/x TO g/z CHUNK [3]", "CREATE FILE b.h5", "COPY GROUP g TO g IN b.h5",
               "COPY FILE a.h5 TO packed.h5 REPACK")
    expected = [[(i, read(i)), (i + 5, read(i + 5))] for i in range(4)]

    def plain(item):
        return item if isinstance(item, bytes) else [one.item() for one in item]

    for name in ("a.h5", "b.h5", "packed.h5"):
        with h5py.File(kelvo.path(name), "r") as made:
            for path in ("g/x", "g/y", "g/z"):
                for values in (made[path][()], made[path].attrs["a"]):
                    assert [[(int(i), plain(v)) for i, v in element["x"]] for element in values] == expected, (name, path)


def test_attributes(file):
    with file.copy("COPY ATTRIBUTE g/x@units TO g", "COPY ATTRIBUTE g/x@names TO @n", "COPY ATTRIBUTE g@title TO g@other",
                   "COPY ATTRIBUTE g@ref TO g/x") as made:
        assert made["g"].attrs["units"] == "K" and list(made.attrs["n"]) == ["a", "bc"]
        assert made["g"].attrs["other"] == "group" and made[made["g/x"].attrs["ref"]] == made["g/x"]


def test_links_are_copied_as_links(file):
    with file.copy("COPY LINK g/soft TO s", "COPY EXTERNAL LINK g/out TO /") as made:
        assert made.get("s", getlink=True).path == "/g/x"
        out = made.get("out", getlink=True)
        assert (out.filename, out.path) == ("b.h5", "/y")


def test_errors(file, kelvo):
    assert file.error("COPY DATASET g/x TO g/text") == (-4, 'Dataset "/g/text" already exists')
    assert file.error("COPY DATASET g/x TO g") == (-4, '"/g" already exists and is a group')
    assert file.error("COPY DATASET g TO h") == (-5, '"/g" is a group, not a dataset')
    assert file.error("COPY GROUP g/x TO h") == (-5, '"/g/x" is a dataset, not a group')
    assert file.error("COPY LINK g/x TO h") == (-5, '"/g/x" is a dataset, not a link')
    assert file.error("COPY EXTERNAL LINK g/soft TO h") == (-5, '"/g/soft" is a link, not an external link')
    assert file.error("COPY DATASET no TO h") == (-3, 'Dataset "/no" does not exist')
    assert file.error("COPY DATASET g/x TO no/") == (-3, 'Group "/no" does not exist')
    assert file.error("COPY DATASET g/x TO h IN no.h5") == (-3, f'File "{kelvo.path("no.h5")}" does not exist')
    assert file.error("COPY DATASET g/x TO p/h CHUNK [2]") == (
        -6, 'CHUNK has 1 extent, dataset "/p/h" has 2 dimensions')
    assert file.error("COPY DATASET g/x TO p/h CONTIGUOUS") == (
        -5, 'Dataset "/p/h" can grow, so it cannot be CONTIGUOUS (CHUNK lets it grow)')
    assert file.error("COPY ATTRIBUTE g@no TO g/x") == (-3, 'Attribute "/g@no" does not exist')
    assert file.error("COPY ATTRIBUTE g@title TO no") == (-3, 'Object "/no" does not exist')
    assert file.error("COPY ATTRIBUTE g@title TO g") == (-4, 'Attribute "/g@title" already exists')
    assert file.error("COPY DATASET g/x TO h COMPACT FAST") == (
        -1, 'Expected FILL, EARLY ALLOCATION, TRACK ORDER or the end of the statement, found "FAST"', 31)
    assert file.error("COPY DATASET g/x h") == (-1, 'Expected TO, found "h"', 18)
    assert file.error("COPY DIRECTORY a TO b") == (
        -1, 'Expected FILE, GROUP, DATASET, ATTRIBUTE, LINK or EXTERNAL, found "DIRECTORY"', 6)
    with h5py.File(kelvo.path("a.h5"), "r") as made:
        assert list(made) == ["g"]


# --- files ---


def test_file_is_copied_byte_by_byte(file, kelvo):
    kelvo.rows("CREATE DIRECTORY d", "USE FILE a.h5", "COPY FILE a.h5 TO b.h5", "COPY FILE a.h5 TO d/")
    assert kelvo.path("b.h5").read_bytes() == kelvo.path("d/a.h5").read_bytes() == kelvo.path("a.h5").read_bytes()


def test_repack_leaves_freed_space_behind(kelvo):
    with h5py.File(kelvo.path("a.h5"), "w", track_order=True, userblock_size=512) as made:
        made["z"] = np.arange(1000)
        made["junk"] = np.zeros(1000000)
        made["a/b"] = h5py.SoftLink("/z")
        made["a/c"] = made["z"]
        made["a/out"] = h5py.ExternalLink("b.h5", "/y")
        made["type"] = np.dtype("i4")
        made["typed"] = made["z"][:5].astype("i4")
        made.attrs["title"] = "root"
        del made["junk"]
    with open(kelvo.path("a.h5"), "r+b") as raw:
        raw.write(b"user block")
    kelvo.rows("COPY FILE a.h5 TO packed.h5 REPACK")
    assert kelvo.path("a.h5").stat().st_size > 8000000 > 50000 > kelvo.path("packed.h5").stat().st_size
    assert kelvo.path("packed.h5").read_bytes()[:10] == b"user block"
    with h5py.File(kelvo.path("packed.h5"), "r") as made:
        assert list(made["/"]) == ["z", "a", "type", "typed"] and made.userblock_size == 512
        assert made["z"][()].tolist() == list(range(1000)) and made["a/c"] == made["z"] and made.attrs["title"] == "root"
        assert made["a"].get("b", getlink=True).path == "/z" and made["a"].get("out", getlink=True).path == "/y"
    assert sorted(os.listdir(kelvo.folder)) == ["a.h5", "packed.h5"]


def test_repack_keeps_hard_links_to_the_root_group(kelvo):
    with h5py.File(kelvo.path("loop.h5"), "w", track_order=True) as made:
        made["z"] = [1, 2]
        made["self"] = made["/"]
        made["g/h/root"] = made["/"]
        made["a"] = 5
    kelvo.rows("COPY FILE loop.h5 TO packed.h5 REPACK")
    with h5py.File(kelvo.path("packed.h5"), "r") as made:
        assert sorted(made["/"]) == ["a", "g", "self", "z"] and list(made["g/h"]) == ["root"]
        assert made["self"] == made["/"] and made["g/h/root"] == made["/"]
        assert made["g/h/root/self/z"][()].tolist() == [1, 2] and h5py.h5o.get_info(made.id).rc == 3


def test_equal_data_types_stay_apart(kelvo):
    """The HDF5 library would make one of them, and lose the attributes of the other."""
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        for name in ("t", "g/t"):
            made[name] = np.dtype("<i4")
            made[name].attrs["of"] = name
            made.create_dataset(name + "_used", data=[1, 2], dtype=made[name])
    kelvo.rows("CREATE FILE b.h5", "USE FILE a.h5", "COPY FILE a.h5 TO packed.h5 REPACK", "COPY GROUP / TO copy IN b.h5")
    for name, root in (("packed.h5", "/"), ("b.h5", "/copy")):
        with h5py.File(kelvo.path(name), "r") as made:
            top = made[root]
            assert [top[path].attrs["of"] for path in ("t", "g/t")] == ["t", "g/t"]
            for path in ("t", "g/t"):
                assert h5py.h5o.get_info(top[path].id).rc == 2  # its name, and the dataset of it


def remembering_free_space(path):
    """A file that keeps a list of its free space, with some in it, so that it gets more before the end of its blocks."""
    plist = h5py.h5p.create(h5py.h5p.FILE_CREATE)
    plist.set_file_space_strategy(h5py.h5f.FSPACE_STRATEGY_FSM_AGGR, True, 1)
    with h5py.File(h5py.h5f.create(str(path).encode(), h5py.h5f.ACC_TRUNC, plist)) as made:
        for i in range(3):
            group = made.create_group(f"g{i}")
            made.create_dataset(f"d{i}", data=np.arange(50), chunks=(7,), maxshape=(None,), compression="gzip")
            made[f"d{i}"].attrs["text"] = "t" * 100
            group["soft"] = h5py.SoftLink("/d0")


def test_file_that_remembers_its_free_space(kelvo):
    remembering_free_space(kelvo.path("a.h5"))
    kelvo.rows("COPY FILE a.h5 TO packed.h5 REPACK", "USE FILE a.h5", "DROP DATASET d1", "RENAME DATASET d2 TO g1/d2",
               "CREATE DATASET x DOUBLE [1000] VALUES (1)", "DROP ATTRIBUTE d0@text", "DROP DATASET x")
    with h5py.File(kelvo.path("a.h5"), "r") as made:
        assert list(made) == ["d0", "g0", "g1", "g2"] and made["g1/d2"][()].tolist() == list(range(50))
        assert made.id.get_create_plist().get_file_space_strategy()[1]
    with h5py.File(kelvo.path("packed.h5"), "r") as made:
        assert list(made) == ["d0", "d1", "d2", "g0", "g1", "g2"] and made["d1"][()].tolist() == list(range(50))
        assert made.id.get_create_plist().get_file_space_strategy()[1]


def test_repack_after_a_drop(file, kelvo):
    kelvo.rows("USE FILE a.h5", "DROP DATASET g/x", "DROP DATASET g/again", "COPY FILE a.h5 TO b.h5 REPACK")
    assert kelvo.path("b.h5").stat().st_size < kelvo.path("a.h5").stat().st_size / 3
    with h5py.File(kelvo.path("b.h5"), "r") as made:
        assert made["g/text"].asstr()[()].tolist() == ["one", "", "three"] and not made["g"].attrs["ref"]


def test_file_errors(file, kelvo):
    path = kelvo.path
    path("text").write_text("no HDF5")
    kelvo.rows("CREATE DIRECTORY d")
    assert kelvo.error("COPY FILE a.h5 TO text") == (-4, f'File "{path("text")}" already exists')
    assert kelvo.error("COPY FILE a.h5 TO d") == (-4, f'"{path("d")}" already exists and is a directory')
    assert kelvo.error("COPY FILE a.h5 TO a.h5 REPACK") == (-4, f'File "{path("a.h5")}" already exists')
    assert kelvo.error("COPY FILE no TO b") == (-3, f'File "{path("no")}" does not exist')
    assert kelvo.error("COPY FILE d TO b") == (-5, f'"{path("d")}" is a directory, not a file')
    assert kelvo.error("COPY FILE a.h5 TO no/b") == (
        -8, f'File "{path("no/b")}" cannot be created: No such file or directory')
    assert kelvo.error("COPY FILE text TO b.h5 REPACK") == (-9, f'File "{path("text")}" is not an HDF5 file')
    assert sorted(os.listdir(kelvo.folder)) == ["a.h5", "d", "text"]


def allow_20_kilobytes():
    """In a child: what writes more fails as on a full disk, without the signal that would end the process."""
    signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
    resource.setrlimit(resource.RLIMIT_FSIZE, (20000, 20000))


def test_full_disk_leaves_no_half_file(file, kelvo):
    before = kelvo.path("a.h5").read_bytes()
    assert len(before) > 100000
    path = kelvo.path
    assert kelvo.error("COPY FILE a.h5 TO b.h5", preexec_fn=allow_20_kilobytes) == (
        -8, f'File "{path("b.h5")}" cannot be written: File too large')
    with h5py.File(path("a.h5"), "r") as made:
        stored = made["g/x"].id.get_storage_size() + made["g/text"].id.get_storage_size()
    status, message = kelvo.error("COPY FILE a.h5 TO b.h5 REPACK", preexec_fn=allow_20_kilobytes)
    assert (status, message) == (
        -8, f'File "{path("b.h5")}" has no room for {stored} bytes more: File too large')
    assert os.listdir(kelvo.folder) == ["a.h5"] and path("a.h5").read_bytes() == before
