"""CREATE of directories, files, groups, datasets, attributes and links, read back with h5py."""

import os

import h5py
import numpy as np
import pytest

IN_USE = ["CREATE FILE IF NOT EXISTS a.h5", "USE FILE a.h5"]


@pytest.fixture
def file(kelvo):
    """Runs statements with a.h5 in use, and opens it with h5py."""

    class File:
        path = kelvo.path("a.h5")

        def make(self, *statements):
            kelvo.rows(*IN_USE, *statements)
            return h5py.File(self.path, "r")

        def error(self, *statements):
            return kelvo.error(*IN_USE, *statements)

    return File()


# --- on the host ---


def test_directory_is_made_with_its_parents(kelvo):
    kelvo.rows("CREATE DIRECTORY d/e/f", "CREATE DIRECTORY IF NOT EXISTS d/e", "CREATE DIRECTORY ~/home/")
    assert kelvo.path("d/e/f").is_dir() and kelvo.path("home").is_dir()


def test_directory_that_cannot_be_made_leaves_no_parent_behind(kelvo):
    name = "x" * 300
    assert kelvo.error(f"CREATE DIRECTORY p/q/{name}") == (
        -8, f'Directory "{kelvo.path("p/q")}/{name}" cannot be created: File name too long')
    assert not kelvo.path("p").exists()


def test_directory_over_something_is_refused(kelvo):
    kelvo.path("f").write_text("")
    assert kelvo.error("CREATE DIRECTORY d", "CREATE DIRECTORY d") == (
        -4, f'Directory "{kelvo.path("d")}" already exists')
    assert kelvo.error("CREATE DIRECTORY f") == (-4, f'"{kelvo.path("f")}" already exists and is a file')
    assert kelvo.error("CREATE DIRECTORY IF NOT EXISTS f") == (
        -5, f'"{kelvo.path("f")}" is a file, not a directory')
    assert kelvo.error("CREATE DIRECTORY f/d") == (
        -8, f'Directory "{kelvo.path("f/d")}" cannot be created: Not a directory')


def test_file_exists_already(kelvo):
    kelvo.rows("CREATE FILE a.h5", "CREATE FILE IF NOT EXISTS a.h5")
    assert kelvo.error("CREATE FILE a.h5") == (
        -4, f'File "{kelvo.path("a.h5")}" already exists (CREATE OR REPLACE FILE replaces it)')


def test_file_in_use_is_not_replaced(kelvo):
    assert kelvo.error("CREATE FILE a.h5", "USE FILE a.h5", "CREATE OR REPLACE FILE a.h5") == (
        -8, f'File "{kelvo.path("a.h5")}" is in use (CLOSE FILE closes it)')
    os.link(kelvo.path("a.h5"), kelvo.path("other-name.h5"))
    assert kelvo.error("USE FILE a.h5", "CREATE OR REPLACE FILE other-name.h5") == (
        -8, f'File "{kelvo.path("other-name.h5")}" is in use (CLOSE FILE closes it)')


# --- groups ---


def test_group_with_parents_and_creation_order(file):
    with file.make("CREATE GROUP /a/b TRACK ORDER", "CREATE GROUP a/b/z", "CREATE GROUP a/b/y") as made:
        assert list(made["a/b"]) == ["z", "y"]
        assert made["a"].id.get_create_plist().get_link_creation_order() == 0
        order = made["a/b"].id.get_create_plist().get_link_creation_order()
        assert order == h5py.h5p.CRT_ORDER_TRACKED | h5py.h5p.CRT_ORDER_INDEXED
        assert made["a/b"].id.get_create_plist().get_attr_creation_order() == order


def test_group_exists_already(file):
    file.make("CREATE GROUP g", "CREATE GROUP IF NOT EXISTS g", "CREATE DATASET d INT").close()
    assert file.error("CREATE GROUP g") == (-4, 'Group "/g" already exists')
    assert file.error("CREATE GROUP /") == (-4, 'Group "/" already exists')
    assert file.error("CREATE GROUP d") == (-4, '"/d" already exists and is a dataset')
    assert file.error("CREATE GROUP IF NOT EXISTS d") == (-5, '"/d" is a dataset, not a group')
    assert file.error("CREATE GROUP d/g") == (-5, '"/d" is a dataset, not a group')


def test_nothing_is_made_behind_a_dangling_link(file):
    assert file.error("CREATE LINK l TO nowhere", "CREATE GROUP l/g") == (
        -3, '"/l" is a link to an object that does not exist')


def test_group_needs_a_file(kelvo):
    assert kelvo.error("CREATE GROUP g") == (-2, "No file is in use (USE FILE opens one)")


def test_file_read_only_is_not_written(kelvo):
    kelvo.rows("CREATE FILE a.h5")
    assert kelvo.error("USE FILE a.h5 READ ONLY", "CREATE GROUP g") == (
        -8, f'File "{kelvo.path("a.h5")}" is in use READ ONLY (USE FILE opens it for writing too)')


# --- datasets ---


def test_values_of_a_dataset(file):
    with file.make("CREATE DATASET g/x SMALLINT [2, 3] VALUES (1, 2, 3, 4, 5, -6)", "CREATE DATASET s DOUBLE VALUES (2.5)",
                   "CREATE DATASET all UNSIGNED BIGINT [3, 2] VALUES (18446744073709551615)",
                   "CREATE DATASET none INT [0, 4] VALUES (1)") as made:
        assert made["g/x"].dtype == np.int16 and made["g/x"][()].tolist() == [[1, 2, 3], [4, 5, -6]]
        assert made["s"].shape == () and made["s"][()] == 2.5
        assert made["all"][()].tolist() == [[2**64 - 1] * 2] * 3
        assert made["none"].shape == (0, 4)


def test_one_value_for_many_is_written_in_blocks(file):
    with file.make("CREATE DATASET x INT [3000, 1000] VALUES (7)", "CREATE DATASET y INT [2000, 1500] CHUNK [999, 37] VALUES (8)",
                   "CREATE DATASET z VARCHAR [100000] VALUES ('abc')") as made:
        assert (made["x"][()] == 7).all() and (made["y"][()] == 8).all() and (made["z"].asstr()[()] == "abc").all()


def test_many_values(file):
    values = np.arange(200000) * 37 % 1001
    with file.make("CREATE DATASET x INT [200000] VALUES (" + ", ".join(map(str, values)) + ")") as made:
        assert (made["x"][()] == values).all()


def test_value_that_does_not_fit_makes_nothing(file):
    assert file.error("CREATE DATASET p/q/x TINYINT [2] VALUES (1, 128)") == (-6, "Value 128 does not fit TINYINT")
    assert file.error("CREATE DATASET p/q/x TINYINT [3] VALUES (1, 2)") == (
        -6, "3 values are needed, or one for all; 2 are given")
    with file.make() as made:
        assert list(made) == []


def test_filters_run_in_their_order_however_they_are_written(file):
    with file.make("CREATE DATASET x INT [100, 20] FLETCHER32 DEFLATE 4 SHUFFLE CHUNK [10, 20] VALUES (3)") as made:
        x = made["x"]
        assert (x.chunks, x.compression, x.compression_opts, x.shuffle, x.fletcher32) == ((10, 20), "gzip", 4, True, True)
        plist = x.id.get_create_plist()
        assert [plist.get_filter(i)[0] for i in range(3)] == [
            h5py.h5z.FILTER_SHUFFLE, h5py.h5z.FILTER_DEFLATE, h5py.h5z.FILTER_FLETCHER32]
        assert (x[()] == 3).all()


def test_storage_equals_that_of_h5py(file, tmp_path):
    with file.make("CREATE DATASET d INT [100] CHUNK [50] DEFLATE 9", "CREATE DATASET f INT [100] CHUNK [50] FLETCHER32",
                   "CREATE DATASET s SMALLINT [100] CHUNK [50] SHUFFLE", "CREATE DATASET so INT [100] CHUNK [50] SCALEOFFSET 4",
                   "CREATE DATASET sf DOUBLE [100] CHUNK [50] SCALEOFFSET 3", "CREATE DATASET z INT [100] CHUNK [50] SZIP") as made, \
            h5py.File(tmp_path / "oracle.h5", "w") as oracle:
        chunked = {"shape": (100,), "chunks": (50,)}
        oracle.create_dataset("d", dtype="i4", compression="gzip", compression_opts=9, **chunked)
        oracle.create_dataset("f", dtype="i4", fletcher32=True, **chunked)
        oracle.create_dataset("s", dtype="i2", shuffle=True, **chunked)
        oracle.create_dataset("so", dtype="i4", scaleoffset=4, **chunked)
        oracle.create_dataset("sf", dtype="f8", scaleoffset=3, **chunked)
        oracle.create_dataset("z", dtype="i4", compression="szip", **chunked)
        for name in oracle:
            lists = [one[name].id.get_create_plist() for one in (made, oracle)]
            filters = [[one.get_filter(i) for i in range(one.get_nfilters())] for one in lists]
            assert filters[0] == filters[1], name


def test_filters_with_words_of_their_own_keep_values(file):
    with file.make("CREATE DATASET n FLOAT [50] NBIT VALUES (1.5)", "CREATE DATASET o INT [50] SCALEOFFSET 0 VALUES (-9)",
                   "CREATE DATASET z INT [50] SZIP VALUES (5)", "CREATE DATASET f INT [50] FILTER 1 (6) VALUES (4)",
                   "CREATE DATASET g INT [50] FILTER 2 FILTER 3 () VALUES (2)") as made:
        assert [made[name][49] for name in "nozfg"] == [1.5, -9, 5, 4, 2]
        assert made["f"].compression_opts == 6 and made["g"].shuffle and made["g"].fletcher32


def test_layouts(file):
    with file.make("CREATE DATASET a INT [10] COMPACT VALUES (1)", "CREATE DATASET b INT [10] CONTIGUOUS",
                   "CREATE DATASET c INT [10]", "CREATE DATASET most TINYINT [65520] COMPACT VALUES (1)") as made:
        layouts = [made[name].id.get_create_plist().get_layout() for name in ("a", "b", "c", "most")]
        assert layouts == [h5py.h5d.COMPACT, h5py.h5d.CONTIGUOUS, h5py.h5d.CONTIGUOUS, h5py.h5d.COMPACT]


def test_fill_values(file):
    with file.make("CREATE DATASET i INT [3] FILL -7", "CREATE DATASET s CHAR(4) [2] FILL 'abc'", "CREATE DATASET v VARCHAR [2] FILL 'xyz'",
                   "CREATE DATASET e ENUMERATION (RED, GREEN) [2] FILL 'GREEN'",
                   "CREATE DATASET c COMPOUND (a INT, b DOUBLE) [2] FILL (1, 2.5) CHUNK [1]") as made:
        assert made["i"].fillvalue == -7 and made["i"][()].tolist() == [-7] * 3
        assert made["s"][()].tolist() == [b"abc"] * 2 and made["v"].asstr()[()].tolist() == ["xyz"] * 2
        assert made["e"][()].tolist() == [1, 1] and made["c"][()].tolist() == [(1, 2.5)] * 2


def test_allocation_and_order_of_attributes(file):
    with file.make("CREATE DATASET e INT [10] EARLY ALLOCATION", "CREATE DATASET l INT [10] CHUNK [5] LATE ALLOCATION",
                   "CREATE DATASET i INT [10] CHUNK [5] INCREMENTAL ALLOCATION TRACK ORDER",
                   "CREATE ATTRIBUTE i@z INT", "CREATE ATTRIBUTE i@y INT") as made:
        times = [made[name].id.get_create_plist().get_alloc_time() for name in "eli"]
        assert times == [h5py.h5d.ALLOC_TIME_EARLY, h5py.h5d.ALLOC_TIME_LATE, h5py.h5d.ALLOC_TIME_INCR]
        assert made["e"].id.get_storage_size() == 40 and made["i"].id.get_storage_size() == 0
        assert list(made["i"].attrs) == ["z", "y"]


@pytest.mark.parametrize("dimensions, options", [
    ("[0 TO UNLIMITED]", ""), ("[0 TO UNLIMITED, 1000, 1000]", ""), ("[0 TO UNLIMITED, 0 TO UNLIMITED]", ""),
    ("[10, 3 TO UNLIMITED]", ""), ("[1000000, 0 TO UNLIMITED]", ""), ("[5000, 5000]", "DEFLATE 1"),
    ("[100 TO 100000, 20]", ""), ("[3, 4, 100000]", "SHUFFLE")])
def test_chosen_chunks_have_64_kib_to_1_mib(file, dimensions, options):
    with file.make(f"CREATE DATASET x FLOAT {dimensions} {options}") as made:
        assert 65536 <= 4 * np.prod(made["x"].chunks) <= 1048576, made["x"].chunks


def test_chosen_chunk_is_no_larger_than_a_small_dataset(file):
    with file.make("CREATE DATASET x INT [7, 3] DEFLATE 1", "CREATE DATASET none INT [0, 3] DEFLATE 1") as made:
        assert made["x"].chunks == (7, 3) and made["none"].chunks == (1, 3)


def test_dimensions_and_maxima(file):
    with file.make("CREATE DATASET x INT [2, 3 TO 9, 4 TO UNLIMITED]") as made:
        assert made["x"].shape == (2, 3, 4) and made["x"].maxshape == (2, 9, None)


@pytest.mark.parametrize("options, position, message", [
    ("DEFLATE 1 DEFLATE 2", 35, "Expected DEFLATE only once"),
    ("CHUNK [2] CONTIGUOUS", 35, "Expected no CONTIGUOUS, which contradicts CHUNK"),
    ("COMPACT CONTIGUOUS", 33, "Expected no CONTIGUOUS, which contradicts COMPACT"),
    ("SHUFFLE COMPACT", 33, "Expected no COMPACT, which contradicts SHUFFLE"),
    ("COMPACT LATE ALLOCATION", 33, "Expected no LATE ALLOCATION, which contradicts COMPACT"),
    ("EARLY ALLOCATION LATE ALLOCATION", 42, "Expected no LATE ALLOCATION, which contradicts EARLY ALLOCATION"),
    ("FILTER 1 (3) DEFLATE 4", 38, "Expected filter 1 only once"),
    ("EARLY", 30, "Expected ALLOCATION, found the end of the statement"),
    ("VALUES (1) CHUNK [2]", 36, 'Expected the end of the statement, found "CHUNK"'),
    ("CHUNK []", 32, 'Expected a chunk\'s extent, found "]"'),
    ("FILL", 29, "Expected a value, found the end of the statement"),
    ("DEFLATE", 32, "Expected the level of DEFLATE, found the end of the statement"),
    ("FILTER 1 (x)", 35, 'Expected a value for the filter, found "x"')])
def test_options_that_are_no_statement(file, options, position, message):
    assert file.error(f"CREATE DATASET x INT [3] {options}") == (-1, message, position + 1)


@pytest.mark.parametrize("before, next_ones", [
    ("", "CHUNK, CONTIGUOUS, COMPACT, DEFLATE, SHUFFLE, FLETCHER32, SCALEOFFSET, NBIT, SZIP, FILTER, FILL, EARLY ALLOCATION, "
         "LATE ALLOCATION, INCREMENTAL ALLOCATION, TRACK ORDER"),
    ("DEFLATE 1 EARLY ALLOCATION ", "CHUNK, SHUFFLE, FLETCHER32, SCALEOFFSET, NBIT, SZIP, FILTER, FILL, TRACK ORDER"),
    ("COMPACT ", "FILL, EARLY ALLOCATION, TRACK ORDER"),
    ("TRACK ORDER FILL 3 LATE ALLOCATION FILTER 32000 ",
     "CHUNK, DEFLATE, SHUFFLE, FLETCHER32, SCALEOFFSET, NBIT, SZIP, FILTER")])
def test_options_that_could_stand_here_are_named(file, before, next_ones):
    assert file.error(f"CREATE DATASET x INT [3] {before}GZIP") == (
        -1, f'Expected {next_ones}, VALUES or the end of the statement, found "GZIP"', 26 + len(before))


@pytest.mark.parametrize("rest, status, message", [
    ("INT [9223372036854775807, 3]", -6, 'Dataset "/p/x" would have more elements than can be counted'),
    ("INT [9223372036854775807, 3] CHUNK [1, 1]", -6, 'Dataset "/p/x" would have more elements than can be counted'),
    ("SMALLINT [4611686018427387904]", -6,
     'Dataset "/p/x" is too large to be stored in one piece (at most 9223372036854775807 bytes)'),
    ("SMALLINT [4611686018427387904] CONTIGUOUS", -6,
     'Dataset "/p/x" is too large to be stored in one piece (at most 9223372036854775807 bytes)'),
    ("INT [3] DEFLATE 10", -6, "Value 10 is too large for the level of DEFLATE (at most 9)"),
    ("INT [3] CHUNK [2, 2]", -6, 'CHUNK has 2 extents, dataset "/p/x" has 1 dimension'),
    ("INT [3] CHUNK [4]", -6, "Chunk extent 4 is larger than the maximum 3 of dimension 0"),
    ("INT [3] CHUNK [0]", -6, "A chunk has at least 1 element in a dimension"),
    ("BIGINT [4294967295] CHUNK [4294967295]", -6, "A chunk has at most 4294967295 bytes"),
    ("INT DEFLATE 1", -5, 'Dataset "/p/x" is scalar, so it has neither chunks nor filters'),
    ("INT CHUNK [1]", -5, 'Dataset "/p/x" is scalar, so it has neither chunks nor filters'),
    ("INT [3 TO 4] CONTIGUOUS", -5, 'Dataset "/p/x" can grow, so it cannot be CONTIGUOUS (CHUNK lets it grow)'),
    ("INT [3 TO UNLIMITED] COMPACT", -5, 'Dataset "/p/x" can grow, so it cannot be COMPACT (CHUNK lets it grow)'),
    ("TINYINT [65521] COMPACT", -6, 'Dataset "/p/x" is too large for COMPACT (at most 65520 bytes)'),
    ("INT [3] FILTER 40000 (1)", -7, "Filter 40000 is not available (SET PLUGIN PATH names where plug-ins are)"),
    ("CHAR(3) [3] SCALEOFFSET 2", -5, "SCALEOFFSET takes integers and floats, not CHAR(3)"),
    ("TINYINT [3] SCALEOFFSET 9", -6, "SCALEOFFSET 9 is more bits than TINYINT has"),
    ("TINYINT [3] FILL 300", -6, "Value 300 does not fit TINYINT"),
    ("INT [3] FILL 'x'", -5, "Value 'x' is no value of INT")])
def test_storage_that_cannot_be_leaves_nothing(file, rest, status, message):
    assert file.error(f"CREATE DATASET p/x {rest}") == (status, message)
    with file.make() as made:
        assert list(made) == []


def test_dataset_exists_already(file):
    file.make("CREATE DATASET d INT", "CREATE DATASET IF NOT EXISTS d INT", "CREATE GROUP g").close()
    assert file.error("CREATE DATASET d INT") == (-4, 'Dataset "/d" already exists')
    assert file.error("CREATE DATASET g INT") == (-4, '"/g" already exists and is a group')
    assert file.error("CREATE DATASET IF NOT EXISTS g INT") == (-5, '"/g" is a group, not a dataset')


# --- attributes ---


def test_attributes(file):
    with file.make("CREATE GROUP g", "CREATE ATTRIBUTE g@units VARCHAR VALUES ('K')", "CREATE ATTRIBUTE @n INT [2, 2] VALUES (5)",
                   "CREATE ATTRIBUTE /g@none INT", 'CREATE ATTRIBUTE g@"to what" CHAR(2) [2] VALUES (\'a\', \'bc\')') as made:
        assert made["g"].attrs["units"] == "K" and made.attrs["n"].tolist() == [[5, 5], [5, 5]]
        assert made["g"].attrs["none"] == 0 and made["g"].attrs["to what"].tolist() == [b"a", b"bc"]


def test_attribute_errors(file):
    file.make("CREATE GROUP g", "CREATE ATTRIBUTE g@a INT", "CREATE ATTRIBUTE IF NOT EXISTS g@a INT").close()
    assert file.error("CREATE ATTRIBUTE g@a INT") == (-4, 'Attribute "/g@a" already exists')
    assert file.error("CREATE ATTRIBUTE no@a INT") == (-3, 'Object "/no" does not exist')
    assert file.error("CREATE ATTRIBUTE g INT") == (-1, 'Expected "@" and the name of an attribute, found "INT"', 20)
    assert file.error("CREATE ATTRIBUTE g@b INT CHUNK [1]") == (
        -1, "Expected SIZE, PRECISION, OFFSET, LITTLE ENDIAN, BIG ENDIAN, VALUES or the end of the statement, "
        'found "CHUNK"', 26)
    assert file.error("CREATE ATTRIBUTE g@b INT [2 TO 3]") == (
        -1, 'Expected "]" (an attribute cannot grow), found "TO"', 29)
    assert file.error("CREATE ATTRIBUTE g@b TINYINT VALUES (300)") == (-6, "Value 300 does not fit TINYINT")
    assert file.error("CREATE ATTRIBUTE g@b DOUBLE [10000] VALUES (1)") == (
        -6, 'Attribute "/g@b" has 80000 bytes, more than its object takes (64 KiB; an object made after '
        "SET LIBRARY BOUNDS V18 LATEST takes more)")
    with file.make() as made:
        assert list(made["g"].attrs) == ["a"]


# --- links ---


def test_links(file):
    with file.make("CREATE DATASET g/x INT VALUES (4)", "CREATE LINK soft TO g/x", "CREATE SOFT LINK l/dangling TO /no/where",
                   "CREATE HARD LINK l/hard TO soft", "CREATE EXTERNAL LINK l/out TO sub/b.h5 /d/e", "USE GROUP g",
                   "CREATE HARD LINK y TO x", "CREATE LINK up TO ../soft") as made:
        assert made.get("soft", getlink=True).path == "g/x"
        assert made.get("l/dangling", getlink=True).path == "/no/where"
        assert made["l/hard"] == made["g/x"] and made["g/y"] == made["g/x"]
        out = made.get("l/out", getlink=True)
        assert (out.filename, out.path) == ("sub/b.h5", "/d/e")
        assert made["g"].get("up", getlink=True).path == "/soft" and made["g/up"][()] == 4


def test_link_errors(file):
    file.make("CREATE GROUP g", "CREATE LINK l TO x", "CREATE EXTERNAL LINK e TO b.h5 x", "CREATE LINK IF NOT EXISTS l TO y",
              "CREATE EXTERNAL LINK IF NOT EXISTS e TO c.h5 y", "CREATE HARD LINK IF NOT EXISTS g TO g").close()
    assert file.error("CREATE LINK l TO x") == (-4, 'Link "/l" already exists')
    assert file.error("CREATE EXTERNAL LINK e TO b.h5 x") == (-4, 'External link "/e" already exists')
    assert file.error("CREATE LINK IF NOT EXISTS g TO x") == (-5, '"/g" is a group, not a link')
    assert file.error("CREATE HARD LINK IF NOT EXISTS l TO g") == (-4, 'Link "/l" already exists')
    assert file.error("CREATE HARD LINK h TO no") == (-3, 'Object "/no" does not exist')
    assert file.error("CREATE EXTERNAL LINK h TO b.h5") == (
        -1, "Expected an object in that file, found the end of the statement", 31)
    assert file.error("CREATE LINK h g") == (-1, 'Expected TO, found "g"', 15)


def test_words_that_no_form_has(file):
    assert file.error("CREATE TABLE x") == (
        -1, "Expected DIRECTORY, FILE, OR, GROUP, DATASET, ATTRIBUTE, LINK, SOFT, HARD or EXTERNAL, found \"TABLE\"", 8)
