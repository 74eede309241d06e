"""What a file may reach: external links, external raw data and virtual sources are followed only to files in or below the
directory of the file that names them, symbolic links resolved."""

import os

import h5py
import numpy as np
import pytest

OUTSIDE = -8
MISSING = -3
WRONG_KIND = -5
REFUSED = -9


@pytest.fixture
def home(kelvo):
    """The directory of the files that name others; what lies beside it is out of their reach."""
    kelvo.path("home").mkdir()
    kelvo.path("other").mkdir()
    return kelvo.path("home")


def write(path, values=(1, 2, 3), **options):
    with h5py.File(path, "w", **options) as file:
        file["x"] = np.array(values, dtype="int32")
        file.create_group("g")["y"] = np.int32(9)


def link(path, target, inner="/x", name="l"):
    with h5py.File(path, "a") as file:
        file[name] = h5py.ExternalLink(str(target), inner)


def virtual(path, source, name="v", inner="x", extent=3):
    layout = h5py.VirtualLayout((extent,), "int32")
    layout[:] = h5py.VirtualSource(str(source), inner, (extent,))
    with h5py.File(path, "a") as file:
        file.create_virtual_dataset(name, layout)


def raw(path, *files, name="r", extent=4):
    with h5py.File(path, "a") as file:
        size = extent // len(files)
        file.create_dataset(name, (extent,), "uint8", external=[(str(raw_file), 0, size) for raw_file in files])


def outside(what, target):
    target = os.path.realpath(target)
    return OUTSIDE, (f'{what} reaches for "{target}", outside the directory of its file (SET EXTERNAL LINK PREFIX '
                     f'"{os.path.dirname(target)}" allows that)')


# --- external links ---


@pytest.mark.parametrize("name", ["b.h5", "./b.h5", "sub/b.h5", "sub/../b.h5"])
def test_link_below_the_directory(kelvo, home, name):
    (home / "sub").mkdir()
    write(home / name)
    link(home / "a.h5", name)
    assert kelvo.rows("USE FILE home/a.h5", "SELECT * FROM l") == ["1", "2", "3"]
    assert kelvo.rows("SELECT * FROM /l IN home/a.h5") == ["1", "2", "3"]


def test_absolute_link_below_the_directory(kelvo, home):
    write(home / "b.h5")
    link(home / "a.h5", home / "b.h5")
    assert kelvo.rows("USE FILE home/a.h5", "SELECT * FROM l") == ["1", "2", "3"]


def test_absolute_link_of_a_folder_that_was_moved(kelvo, home):
    """As the HDF5 library does: a file that is not there is looked for beside the one that names it."""
    write(home / "b.h5")
    link(home / "a.h5", "/nowhere/b.h5")
    assert kelvo.rows("USE FILE home/a.h5", "SELECT * FROM l") == ["1", "2", "3"]


@pytest.mark.parametrize("absolute", [True, False])
def test_link_out_of_the_directory(kelvo, home, absolute):
    write(kelvo.path("other/b.h5"))
    link(home / "a.h5", kelvo.path("other/b.h5") if absolute else "../other/b.h5")
    assert kelvo.error("USE FILE home/a.h5", "SELECT * FROM l") == outside('External link "/l"',
                                                                           kelvo.path("other/b.h5"))


def test_a_file_beside_does_not_stand_in_for_one_out_of_reach(kelvo, home):
    write(kelvo.path("other/b.h5"), [1, 2, 3])
    write(home / "b.h5", [4, 5, 6])
    link(home / "a.h5", kelvo.path("other/b.h5"))
    assert kelvo.error("USE FILE home/a.h5", "SELECT * FROM l") == outside('External link "/l"',
                                                                           kelvo.path("other/b.h5"))


@pytest.mark.parametrize("statement", [
    "SELECT * FROM l/x", "SELECT * FROM l/g/y", "SELECT * FROM l@a", "SHOW DATASET l", "SHOW GROUP l", "SHOW ATTRIBUTE l",
    "SHOW DATA TYPE l/x", "SHOW DIMENSION l/x", "USE GROUP l", "USE GROUP l/g", "INSERT INTO l/x VALUES (0)",
    "CREATE ATTRIBUTE l@a INT VALUES (1)"])
def test_no_statement_gets_through_a_link(kelvo, home, statement):
    write(kelvo.path("other/b.h5"))
    before = kelvo.path("other/b.h5").read_bytes()
    link(home / "a.h5", "../other/b.h5", "/")
    assert kelvo.error("USE FILE home/a.h5", statement) == outside('External link "/l"', kelvo.path("other/b.h5"))
    assert kelvo.path("other/b.h5").read_bytes() == before


@pytest.mark.parametrize("statement", ["CREATE GROUP l/new", "CREATE DATASET l/new INT"])
def test_nothing_is_made_through_a_link(kelvo, home, statement):
    write(kelvo.path("other/b.h5"))
    before = kelvo.path("other/b.h5").read_bytes()
    link(home / "a.h5", "../other/b.h5", "/")
    assert kelvo.error("USE FILE home/a.h5", statement) == outside('External link "/l"', kelvo.path("other/b.h5"))
    assert kelvo.path("other/b.h5").read_bytes() == before


def test_link_that_is_shown_but_not_followed(kelvo, home):
    """A listing is not spoilt by a link that leads out."""
    write(kelvo.path("other/b.h5"))
    write(home / "a.h5")
    link(home / "a.h5", "../other/b.h5")
    assert kelvo.rows("USE FILE home/a.h5", "SHOW DATASET", "SHOW TYPE l") == ["x", "EXTERNAL LINK"]


def test_symbolic_link_to_a_file_out_of_the_directory(kelvo, home):
    write(kelvo.path("other/b.h5"))
    (home / "b.h5").symlink_to("../other/b.h5")
    link(home / "a.h5", "b.h5")
    assert kelvo.error("USE FILE home/a.h5", "SELECT * FROM l") == outside('External link "/l"',
                                                                           kelvo.path("other/b.h5"))


def test_symbolic_link_to_a_directory_out_of_the_directory(kelvo, home):
    write(kelvo.path("other/b.h5"))
    (home / "sub").symlink_to("../other")
    link(home / "a.h5", "sub/b.h5")
    assert kelvo.error("USE FILE home/a.h5", "SELECT * FROM l") == outside('External link "/l"',
                                                                           kelvo.path("other/b.h5"))


def test_the_naming_file_may_be_opened_by_a_symbolic_link(kelvo, home):
    """What it names is beside the file itself, not beside the link to it."""
    write(home / "b.h5", [1, 2, 3])
    write(kelvo.path("b.h5"), [4, 5, 6])
    link(home / "a.h5", "b.h5")
    kelvo.path("a.h5").symlink_to("home/a.h5")
    assert kelvo.rows("USE FILE a.h5", "SELECT * FROM l", "SHOW USE FILE") == [
        "1", "2", "3", str(kelvo.path("a.h5"))]


def test_directory_whose_name_begins_like_the_other(kelvo, home):
    kelvo.path("home2").mkdir()
    write(kelvo.path("home2/b.h5"))
    link(home / "a.h5", "../home2/b.h5")
    assert kelvo.error("USE FILE home/a.h5", "SELECT * FROM l") == outside('External link "/l"',
                                                                           kelvo.path("home2/b.h5"))


def test_each_file_of_a_chain_has_its_own_directory(kelvo, home):
    (home / "sub").mkdir()
    write(home / "c.h5")
    link(home / "sub/b.h5", "../c.h5", name="x")
    link(home / "a.h5", "sub/b.h5", "/x")
    assert kelvo.error("USE FILE home/a.h5", "SELECT * FROM l") == outside('External link "/x"', home / "c.h5")


def test_working_directory_is_not_searched(kelvo, home):
    write(kelvo.path("b.h5"))
    link(home / "a.h5", "b.h5")
    assert kelvo.error("USE FILE home/a.h5", "SELECT * FROM l") == (
        MISSING, 'External link "/l" leads to file "b.h5", which does not exist')


@pytest.mark.parametrize("variable", ["HDF5_EXT_PREFIX", "HDF5_VDS_PREFIX", "HDF5_EXTFILE_PREFIX"])
def test_environment_opens_no_way_out(kelvo, home, variable, monkeypatch):
    write(kelvo.path("other/b.h5"))
    kelvo.path("other/b.raw").write_bytes(b"abcd")
    link(home / "a.h5", "b.h5")
    virtual(home / "a.h5", "b.h5")
    raw(home / "a.h5", "b.raw")
    clean = kelvo.environment()
    monkeypatch.setattr(kelvo, "environment", lambda: clean | {variable: str(kelvo.path("other"))})
    assert kelvo.error("USE FILE home/a.h5", "SELECT * FROM l") == (
        MISSING, 'External link "/l" leads to file "b.h5", which does not exist')
    assert kelvo.rows("USE FILE home/a.h5", "SELECT * FROM v") == ["0", "0", "0"]  # no source: fill values
    assert kelvo.error("USE FILE home/a.h5", "SELECT * FROM r") == (
        REFUSED, 'Dataset "/r" cannot be read: unable to open external raw data file')


def test_link_to_what_is_no_hdf5_file(kelvo, home):
    (home / "b.h5").write_text("no")
    link(home / "a.h5", "b.h5")
    assert kelvo.error("USE FILE home/a.h5", "SELECT * FROM l") == (REFUSED, f'File "{home}/b.h5" is not an HDF5 file')


def test_link_to_a_named_pipe_does_not_block(kelvo, home):
    os.mkfifo(home / "pipe")
    link(home / "a.h5", "pipe")
    assert kelvo.error("USE FILE home/a.h5", "SELECT * FROM l") == (
        WRONG_KIND, f'External link "/l" reaches for "{home}/pipe", which is not a regular file')


def test_link_to_an_object_that_is_missing(kelvo, home):
    write(home / "b.h5")
    link(home / "a.h5", "b.h5", "/none")
    assert kelvo.error("USE FILE home/a.h5", "SELECT * FROM l") == (
        MISSING, '"/l" is a link to an object that does not exist')


def test_link_to_an_address(kelvo, home):
    link(home / "a.h5", "http://127.0.0.1:9/b.h5")
    assert kelvo.error("USE FILE home/a.h5", "SELECT * FROM l") == (
        OUTSIDE, 'External link "/l" reaches for "http://127.0.0.1:9/b.h5", outside the directory of its file (USE FILE '
                 'opens it by its own name)')


def test_links_in_a_circle(kelvo, home):
    link(home / "a.h5", "b.h5", "/l")
    link(home / "b.h5", "a.h5", "/l")
    assert kelvo.error("USE FILE home/a.h5", "SELECT * FROM l") == (
        REFUSED, 'External link "/l" leads through more than 16 others, perhaps in a circle')


def test_link_to_its_own_file_and_to_one_in_use(kelvo, home):
    """The HDF5 library can share an open file only where all opened it alike."""
    write(home / "a.h5")
    write(home / "b.h5", [4, 5, 6])
    link(home / "a.h5", "a.h5", name="own")
    link(home / "a.h5", "b.h5", name="other")
    assert kelvo.rows("USE FILE home/b.h5", "USE FILE home/a.h5", "SELECT * FROM own", "SELECT * FROM other") == [
        "1", "2", "3", "4", "5", "6"]


def test_writing_through_a_link(kelvo, home):
    write(home / "b.h5")
    link(home / "a.h5", "b.h5")
    kelvo.rows("USE FILE home/a.h5", "INSERT INTO l VALUES (7, 8, 9)")
    with h5py.File(home / "b.h5") as file:
        assert list(file["x"]) == [7, 8, 9]


# --- external raw data ---


def test_raw_data_below_the_directory(kelvo, home):
    (home / "sub").mkdir()
    (home / "b.raw").write_bytes(b"\x01\x02")
    (home / "sub/c.raw").write_bytes(b"\x03\x04")
    raw(home / "a.h5", "b.raw", "sub/c.raw")
    assert kelvo.rows("USE FILE home/a.h5", "SELECT * FROM r") == ["1", "2", "3", "4"]
    kelvo.rows("USE FILE home/a.h5", "INSERT INTO r VALUES (5, 6, 7, 8)")
    assert (home / "b.raw").read_bytes() + (home / "sub/c.raw").read_bytes() == b"\x05\x06\x07\x08"


def test_raw_data_beside_the_file_not_in_the_working_directory(kelvo, home):
    kelvo.path("b.raw").write_bytes(b"\x01\x01\x01\x01")
    (home / "b.raw").write_bytes(b"\x02\x02\x02\x02")
    raw(home / "a.h5", "b.raw")
    assert kelvo.rows("USE FILE home/a.h5", "SELECT * FROM r") == ["2", "2", "2", "2"]


READING = ["SELECT * FROM r", "SELECT * FROM r[0]", "INSERT INTO r VALUES (0)"]


@pytest.mark.parametrize("statement", READING)
def test_raw_data_in_a_system_file(kelvo, home, statement):
    raw(home / "a.h5", "/etc/passwd")
    assert kelvo.error("USE FILE home/a.h5", statement) == outside('Dataset "/r"', "/etc/passwd")


@pytest.mark.parametrize("statement", READING)
def test_raw_data_out_of_the_directory(kelvo, home, statement):
    kelvo.path("other/b.raw").write_bytes(b"\x01\x02\x03\x04")
    raw(home / "a.h5", "../other/b.raw")
    assert kelvo.error("USE FILE home/a.h5", statement) == outside('Dataset "/r"', kelvo.path("other/b.raw"))
    assert kelvo.path("other/b.raw").read_bytes() == b"\x01\x02\x03\x04"


@pytest.mark.parametrize("target", ["../other/b.raw", "/etc/passwd"])
def test_raw_data_through_a_symbolic_link(kelvo, home, target):
    kelvo.path("other/b.raw").write_bytes(b"\x01\x02\x03\x04")
    (home / "b.raw").symlink_to(target)
    raw(home / "a.h5", "b.raw")
    assert kelvo.error("USE FILE home/a.h5", "SELECT * FROM r") == outside('Dataset "/r"', home / "b.raw")


def test_the_second_raw_file_counts_too(kelvo, home):
    (home / "b.raw").write_bytes(b"\x01\x02")
    raw(home / "a.h5", "b.raw", "/etc/passwd")
    assert kelvo.error("USE FILE home/a.h5", "SELECT * FROM r") == outside('Dataset "/r"', "/etc/passwd")


def test_raw_data_in_a_named_pipe_does_not_block(kelvo, home):
    os.mkfifo(home / "pipe")
    raw(home / "a.h5", "pipe")
    assert kelvo.error("USE FILE home/a.h5", "SELECT * FROM r") == (
        WRONG_KIND, f'Dataset "/r" reaches for "{home}/pipe", which is not a regular file')


def test_raw_data_are_not_made_elsewhere(kelvo, home):
    """Writing makes a raw data file that is not there: neither outside, nor at the end of a dangling symbolic link."""
    raw(home / "a.h5", "../other/new.raw")
    assert kelvo.error("USE FILE home/a.h5", "INSERT INTO r VALUES (1)") == outside('Dataset "/r"',
                                                                                   kelvo.path("other/new.raw"))
    (home / "link.raw").symlink_to("../other/new.raw")
    raw(home / "b.h5", "link.raw")
    assert kelvo.error("USE FILE home/b.h5", "INSERT INTO r VALUES (1)") == (
        MISSING, f'Dataset "/r" reaches for "{home}/link.raw": No such file or directory')
    assert list(kelvo.path("other").iterdir()) == []


# --- virtual datasets ---


@pytest.mark.parametrize("name", ["b.h5", "./b.h5", "sub/b.h5"])
def test_source_below_the_directory(kelvo, home, name):
    (home / "sub").mkdir()
    write(home / name)
    virtual(home / "a.h5", name)
    assert kelvo.rows("USE FILE home/a.h5", "SELECT * FROM v") == ["1", "2", "3"]


def test_source_in_the_same_file(kelvo, home):
    write(home / "a.h5")
    virtual(home / "a.h5", ".")
    virtual(home / "a.h5", "a.h5", name="by_name")
    assert kelvo.rows("USE FILE home/a.h5", "SELECT * FROM v", "SELECT * FROM by_name") == ["1", "2", "3"] * 2


def test_source_in_use(kelvo, home):
    write(home / "b.h5")
    virtual(home / "a.h5", "b.h5")
    assert kelvo.rows("USE FILE home/b.h5", "USE FILE home/a.h5", "SELECT * FROM v") == ["1", "2", "3"]


@pytest.mark.parametrize("absolute", [True, False])
@pytest.mark.parametrize("statement", ["SELECT * FROM v", "SELECT * FROM v[0]", "SHOW DIMENSION v"])
def test_source_out_of_the_directory(kelvo, home, statement, absolute):
    write(kelvo.path("other/b.h5"))
    virtual(home / "a.h5", kelvo.path("other/b.h5") if absolute else "../other/b.h5")
    assert kelvo.error("USE FILE home/a.h5", statement) == outside('Dataset "/v"', kelvo.path("other/b.h5"))


def test_source_through_a_symbolic_link(kelvo, home):
    write(kelvo.path("other/b.h5"))
    (home / "b.h5").symlink_to("../other/b.h5")
    virtual(home / "a.h5", "b.h5")
    assert kelvo.error("USE FILE home/a.h5", "SELECT * FROM v") == outside('Dataset "/v"', kelvo.path("other/b.h5"))


def test_source_in_the_working_directory_is_out_of_reach(kelvo, home):
    """The HDF5 library would take it, where there is none beside the file."""
    write(kelvo.path("b.h5"))
    virtual(home / "a.h5", "b.h5")
    assert kelvo.error("USE FILE home/a.h5", "SELECT * FROM v") == outside('Dataset "/v"', kelvo.path("b.h5"))


def test_missing_source_gives_fill_values(kelvo, home):
    virtual(home / "a.h5", "none.h5")
    assert kelvo.rows("USE FILE home/a.h5", "SELECT * FROM v") == ["0", "0", "0"]


def test_damaged_source_is_no_missing_one(kelvo, home):
    """The HDF5 library gives fill values in its place."""
    write(home / "b.h5")
    size = (home / "b.h5").stat().st_size
    os.truncate(home / "b.h5", size - 1)
    virtual(home / "a.h5", "b.h5")
    assert kelvo.error("USE FILE home/a.h5", "SELECT * FROM v") == (
        REFUSED, f'File "{home}/b.h5" is truncated: it has {size - 1} of {size} bytes; copy it again from its source')


def test_source_that_is_a_named_pipe_does_not_block(kelvo, home):
    os.mkfifo(home / "pipe")
    virtual(home / "a.h5", "pipe")
    assert kelvo.error("USE FILE home/a.h5", "SELECT * FROM v") == (
        WRONG_KIND, f'Dataset "/v" reaches for "{home}/pipe", which is not a regular file')


def test_raw_data_of_a_source(kelvo, home):
    raw(home / "b.h5", "/etc/passwd", name="x")
    virtual(home / "a.h5", "b.h5", extent=4)
    assert kelvo.error("USE FILE home/a.h5", "SELECT * FROM v") == outside(
        'Dataset "x" (a source of Dataset "/v")', "/etc/passwd")


def test_raw_data_of_a_source_within_reach(kelvo, home):
    (home / "b.raw").write_bytes(b"\x01\x02\x03\x04")
    raw(home / "b.h5", home / "b.raw", name="x")
    virtual(home / "a.h5", "b.h5", extent=4)
    assert kelvo.rows("USE FILE home/a.h5", "SELECT * FROM v") == ["1", "2", "3", "4"]


def test_raw_data_of_a_source_beside_its_file(kelvo, home):
    """The HDF5 library looks for them in the working directory, and for nothing else there."""
    raw(home / "b.h5", "b.raw", name="x")
    raw(kelvo.path("b.h5"), "b.raw", name="x")
    virtual(home / "a.h5", "b.h5", extent=4)
    virtual(kelvo.path("a.h5"), "b.h5", extent=4)
    for folder in (home, kelvo.folder):
        (folder / "b.raw").write_bytes(b"\x01\x02\x03\x04")
    assert kelvo.rows("USE FILE a.h5", "SELECT * FROM v") == ["1", "2", "3", "4"]
    assert kelvo.error("USE FILE home/a.h5", "SELECT * FROM v") == (
        -7, 'Dataset "x" (a source of Dataset "/v") keeps its data in "b.raw" beside its file, where the HDF5 library does '
            f'not look for it (USE DIRECTORY "{home}" goes there)')


def test_external_link_to_a_source(kelvo, home):
    write(kelvo.path("other/b.h5"))
    link(home / "a.h5", "../other/b.h5", name="x")
    virtual(home / "a.h5", ".")
    assert kelvo.error("USE FILE home/a.h5", "SELECT * FROM v") == outside('External link "/x"',
                                                                           kelvo.path("other/b.h5"))


def test_source_of_a_source(kelvo, home):
    write(kelvo.path("other/c.h5"))
    virtual(home / "b.h5", "../other/c.h5", name="x")
    virtual(home / "a.h5", "b.h5")
    assert kelvo.error("USE FILE home/a.h5", "SELECT * FROM v") == outside(
        'Dataset "x" (a source of Dataset "/v")', kelvo.path("other/c.h5"))


def test_sources_in_a_circle(kelvo, home):
    virtual(home / "a.h5", "b.h5", name="v", inner="w")
    virtual(home / "b.h5", "a.h5", name="w", inner="v")
    assert kelvo.error("USE FILE home/a.h5", "SELECT * FROM v") == (
        REFUSED, 'Dataset "v" (a source of Dataset "w" (a source of Dataset "/v")) is a source of itself')


def numbered(path, pattern, blocks):
    """A virtual dataset of as many rows as there are files."""
    space = h5py.h5s.create_simple((blocks, 3), (h5py.h5s.UNLIMITED, 3))
    space.select_hyperslab((0, 0), (h5py.h5s.UNLIMITED, 1), block=(1, 3))
    plist = h5py.h5p.create(h5py.h5p.DATASET_CREATE)
    plist.set_virtual(space, pattern.encode(), b"x", h5py.h5s.create_simple((3,)))
    with h5py.File(path, "a", libver="latest") as file:
        h5py.h5d.create(file.id, b"v", h5py.h5t.STD_I32LE, h5py.h5s.create_simple((blocks, 3), (h5py.h5s.UNLIMITED, 3)),
                        plist)


def test_numbered_sources(kelvo, home):
    for block in range(3):
        write(home / f"part-{block}%.h5", [block, block, block])
    numbered(home / "a.h5", "part-%b%%.h5", 3)
    assert kelvo.rows("USE FILE home/a.h5", "SELECT * FROM v") == ["0 0 0", "1 1 1", "2 2 2"]


def test_numbered_source_out_of_the_directory(kelvo, home):
    write(home / "part-0.h5")
    write(kelvo.path("other/b.h5"))
    (home / "part-1.h5").symlink_to("../other/b.h5")
    numbered(home / "a.h5", "part-%b.h5", 2)
    assert kelvo.error("USE FILE home/a.h5", "SELECT * FROM v") == outside('Dataset "/v"', kelvo.path("other/b.h5"))


# --- the external link prefix ---


def allow(folder):
    return f'SET EXTERNAL LINK PREFIX "{folder}"'


@pytest.mark.parametrize("absolute", [True, False])
def test_prefix_lets_links_through(kelvo, home, absolute):
    write(kelvo.path("other/b.h5"))
    link(home / "a.h5", kelvo.path("other/b.h5") if absolute else "../other/b.h5")
    use = ["USE FILE home/a.h5", "SELECT * FROM l"]
    assert kelvo.rows(allow(kelvo.path("other")), *use) == ["1", "2", "3"]
    assert kelvo.error(allow(kelvo.path("other")), "SET EXTERNAL LINK PREFIX DEFAULT", *use) == outside(
        'External link "/l"', kelvo.path("other/b.h5"))


def test_prefix_is_searched_first(kelvo, home):
    write(kelvo.path("other/b.h5"), [4, 5, 6])
    write(home / "b.h5", [1, 2, 3])
    (home / "b.raw").write_bytes(b"\x01\x01\x01\x01")
    kelvo.path("other/b.raw").write_bytes(b"\x02\x02\x02\x02")
    link(home / "a.h5", "b.h5")
    virtual(home / "a.h5", "b.h5")
    raw(home / "a.h5", "b.raw")
    selects = ["USE FILE home/a.h5", "SELECT * FROM l", "SELECT * FROM v", "SELECT * FROM r"]
    assert kelvo.rows(*selects) == ["1", "2", "3"] * 2 + ["1"] * 4
    assert kelvo.rows(allow(kelvo.path("other")), *selects) == ["4", "5", "6"] * 2 + ["2"] * 4


def test_prefix_lets_raw_data_and_sources_through(kelvo, home):
    write(kelvo.path("other/b.h5"))
    kelvo.path("other/b.raw").write_bytes(b"\x01\x02\x03\x04")
    virtual(home / "a.h5", "../other/b.h5")
    raw(home / "a.h5", kelvo.path("other/b.raw"))
    assert kelvo.rows(allow(kelvo.path("other")), "USE FILE home/a.h5", "SELECT * FROM v", "SELECT * FROM r") == [
        "1", "2", "3", "1", "2", "3", "4"]


def test_prefix_is_no_way_out_of_itself(kelvo, home):
    write(kelvo.path("b.h5"))
    link(home / "a.h5", "../b.h5")
    kelvo.path("other/link.h5").symlink_to("../b.h5")
    link(home / "c.h5", "link.h5")
    for name in ("a.h5", "c.h5"):
        assert kelvo.error(allow(kelvo.path("other")), f"USE FILE home/{name}", "SELECT * FROM l") == outside(
            'External link "/l"', kelvo.path("b.h5"))


# --- the other statements that read ---


@pytest.fixture
def stranger(kelvo, home):
    """A file that reaches for others in each way there is, and one in use to bring things into."""
    write(kelvo.path("other/b.h5"))
    write(home / "mine.h5")
    link(home / "a.h5", "../other/b.h5")
    virtual(home / "a.h5", "../other/b.h5")
    raw(home / "a.h5", "/etc/passwd")
    return ["USE FILE home/mine.h5", "USE FILE home/a.h5"]


@pytest.mark.parametrize("item, refused", [
    ("l", ('External link "/l"', "other/b.h5")), ("v", ('Dataset "/v"', "other/b.h5")),
    ("r", ('Dataset "/r"', "/etc/passwd"))])
@pytest.mark.parametrize("statement", [
    "SELECT COUNT(*) FROM {}", "SELECT * FROM {} INTO x.csv", "SELECT VALUE FROM {} WHERE VALUE > 0",
    "INSERT INTO x IN home/mine.h5 SELECT * FROM {}", "COPY DATASET {} TO n", "COPY DATASET {} TO n DEFLATE 1",
    "SHOW DIMENSION {}"])
def test_no_statement_reads_out_of_reach(kelvo, stranger, statement, item, refused):
    what, target = refused
    assert kelvo.error(*stranger, statement.format(item)) == outside(what, kelvo.path(target))
    assert not kelvo.path("x.csv").exists()


def test_listings_go_past_what_is_out_of_reach(kelvo, stranger):
    assert kelvo.rows(*stranger, "SHOW DATASET RECURSIVE", "SHOW EXTERNAL LINK", "SHOW EXTERNAL LINK l", "SHOW TYPE l") == [
        "r", "v", "l", "../other/b.h5", "/x", "EXTERNAL LINK"]
