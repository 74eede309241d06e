"""External links are followed only to files in or below the directory of the file that has them, symbolic links resolved."""

import os

import h5py
import pytest
from reach import MISSING, OUTSIDE, REFUSED, WRONG_KIND, link, outside, write


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


@pytest.mark.parametrize(("symbolic", "target", "named"), [("b.h5", "../other/b.h5", "b.h5"),
                                                           ("sub", "../other", "sub/b.h5")], ids=["file", "directory"])
def test_symbolic_link_out_of_the_directory(kelvo, home, symbolic, target, named):
    write(kelvo.path("other/b.h5"))
    (home / symbolic).symlink_to(target)
    link(home / "a.h5", named)
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
