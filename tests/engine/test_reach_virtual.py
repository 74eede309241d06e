"""Virtual datasets are put together only from files in or below the directory of the file that names them."""

import os

import h5py
import pytest
from reach import REFUSED, WRONG_KIND, link, outside, raw, virtual, write


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
