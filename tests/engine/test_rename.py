"""RENAME of every kind, read back with h5py."""

import os

import h5py
import pytest


@pytest.fixture
def file(kelvo):
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        made["g/x"] = [1, 2, 3]
        made["g/x"].attrs["units"] = "K"
        made.create_group("g/sub/deep")
        made.create_group("other")
        made["soft"] = h5py.SoftLink("/g/x")
        made["out"] = h5py.ExternalLink("b.h5", "/y")

    class File:
        def rename(self, *statements):
            kelvo.rows("USE FILE a.h5", *statements)
            return h5py.File(kelvo.path("a.h5"), "r")

        def error(self, *statements):
            return kelvo.error("USE FILE a.h5", *statements)

        def names(self):
            with h5py.File(kelvo.path("a.h5"), "r") as made:
                names = []
                made.visit(names.append)
                return sorted([*names, *made])

    return File()


def test_objects_get_new_names(file):
    with file.rename("RENAME DATASET g/x TO g/y", "RENAME GROUP g TO h", "RENAME LINK soft TO hard",
                     "RENAME EXTERNAL LINK out TO outer") as made:
        assert made["h/y"][()].tolist() == [1, 2, 3] and made["h/y"].attrs["units"] == "K"
        assert made.get("hard", getlink=True).path == "/g/x" and made.get("outer", getlink=True).filename == "b.h5"
        assert sorted(made) == ["h", "hard", "other", "outer"]


def test_objects_move_into_groups(file):
    with file.rename("RENAME DATASET g/x TO other/", "RENAME GROUP g/sub TO /", "RENAME LINK soft TO new/parents/s",
                     "USE GROUP other", "RENAME EXTERNAL LINK /out TO ./") as made:
        assert sorted(made["other"]) == ["out", "x"] and "deep" in made["sub"] and "s" in made["new/parents"]


def test_nothing_is_replaced(file):
    before = file.names()
    assert file.error("RENAME GROUP g TO other") == (-4, 'Group "/other" already exists')
    assert file.error("RENAME GROUP g TO g") == (-4, 'Group "/g" already exists')
    assert file.error("RENAME DATASET g/x TO soft") == (-4, '"/soft" already exists and is a link')
    assert file.error("RENAME DATASET g/x TO g/") == (-4, 'Dataset "/g/x" already exists')
    assert file.error("RENAME LINK soft TO out") == (-4, '"/out" already exists and is an external link')
    assert file.names() == before


def test_kinds_are_checked(file):
    before = file.names()
    assert file.error("RENAME DATASET g TO h") == (-5, '"/g" is a group, not a dataset')
    assert file.error("RENAME GROUP g/x TO h") == (-5, '"/g/x" is a dataset, not a group')
    assert file.error("RENAME DATASET soft TO h") == (-5, '"/soft" is a link, not a dataset')
    assert file.error("RENAME LINK out TO h") == (-5, '"/out" is an external link, not a link')
    assert file.error("RENAME EXTERNAL LINK soft TO h") == (-5, '"/soft" is a link, not an external link')
    assert file.error("RENAME GROUP / TO h") == (-5, "The root group cannot be renamed")
    assert file.error("RENAME DATASET g/x TO g/x/y") == (-5, '"/g/x" is a dataset, not a group')
    assert file.names() == before


def test_what_is_not_there(file):
    assert file.error("RENAME DATASET no TO h") == (-3, 'Dataset "/no" does not exist')
    assert file.error("RENAME EXTERNAL LINK no/no TO h") == (-3, 'External link "/no/no" does not exist')
    assert file.error("RENAME DATASET g/x TO no/") == (-3, 'Group "/no" does not exist')


def test_group_is_not_moved_into_itself(file):
    before = file.names()
    for to in ("g/h", "g/sub/", "g/sub/deep/new/h"):
        assert file.error(f"RENAME GROUP g TO {to}") == (-6, 'Group "/g" cannot be moved into itself')
    assert file.error("CREATE LINK way TO g/sub", "RENAME GROUP g TO way/h") == (
        -6, 'Group "/g" cannot be moved into itself')
    assert file.names() == sorted([*before, "way"])


def test_group_in_use_keeps_its_name(file):
    for used in ("g", "g/sub"):
        assert file.error(f"USE GROUP {used}", "RENAME GROUP /g TO /h") == (
            -8, 'Group "/g" is in use (CLOSE GROUP leaves it)')
    with file.rename("USE GROUP g", "RENAME DATASET x TO y") as made:
        assert sorted(made["g"]) == ["sub", "y"]


def test_attributes(file):
    with file.rename("RENAME ATTRIBUTE g/x@units TO unit", "CREATE ATTRIBUTE g@a INT VALUES (7)",
                     "RENAME ATTRIBUTE g@a TO other@b", "CREATE ATTRIBUTE @c VARCHAR [2] VALUES ('p', 'q')",
                     'RENAME ATTRIBUTE @c TO "with blank"') as made:
        assert dict(made["g/x"].attrs) == {"unit": "K"} and dict(made["g"].attrs) == {}
        assert dict(made["other"].attrs) == {"b": 7} and list(made.attrs["with blank"]) == ["p", "q"]


def test_attribute_errors(file):
    assert file.error("RENAME ATTRIBUTE g@no TO b") == (-3, 'Attribute "/g@no" does not exist')
    assert file.error("RENAME ATTRIBUTE no@no TO b") == (-3, 'Object "/no" does not exist')
    assert file.error("CREATE ATTRIBUTE g/x@b INT", "RENAME ATTRIBUTE g/x@units TO b") == (
        -4, 'Attribute "/g/x@b" already exists')
    assert file.error("RENAME ATTRIBUTE g/x TO b") == (-1, 'Expected "@" and the name of an attribute, found "TO"', 22)
    assert file.error("RENAME ATTRIBUTE g/x@units b") == (-1, 'Expected TO, found "b"', 28)


def test_words_that_no_form_has(file):
    assert file.error("RENAME x TO y") == (
        -1, 'Expected DIRECTORY, FILE, GROUP, DATASET, ATTRIBUTE, LINK or EXTERNAL, found "x"', 8)
    assert file.error("RENAME GROUP g TO h IN b.h5") == (-1, 'Expected the end of the statement, found "IN"', 21)


# --- on the host ---


def test_files_and_directories(kelvo):
    kelvo.rows("CREATE DIRECTORY d/e", "CREATE FILE a.h5", "RENAME FILE a.h5 TO b.h5", "RENAME FILE b.h5 TO d/",
               "RENAME DIRECTORY d TO f", "RENAME DIRECTORY f/e TO ./")
    assert sorted(os.listdir(kelvo.folder)) == ["e", "f"] and h5py.is_hdf5(kelvo.path("f/b.h5"))


def test_nothing_on_the_host_is_replaced(kelvo):
    kelvo.rows("CREATE DIRECTORY d", "CREATE DIRECTORY e", "CREATE FILE a.h5", "CREATE FILE b.h5")
    path = kelvo.path
    assert kelvo.error("RENAME FILE a.h5 TO b.h5") == (-4, f'File "{path("b.h5")}" already exists')
    assert kelvo.error("RENAME FILE a.h5 TO d") == (-4, f'"{path("d")}" already exists and is a directory')
    assert kelvo.error("RENAME DIRECTORY d TO e") == (-4, f'Directory "{path("e")}" already exists')
    assert kelvo.error("RENAME FILE d TO x") == (-5, f'"{path("d")}" is a directory, not a file')
    assert kelvo.error("RENAME DIRECTORY a.h5 TO x") == (-5, f'"{path("a.h5")}" is a file, not a directory')
    assert kelvo.error("RENAME FILE no TO x") == (-3, f'File "{path("no")}" does not exist')
    assert kelvo.error("RENAME FILE a.h5 TO no/") == (-3, f'Directory "{path("no")}" does not exist')
    assert kelvo.error("RENAME FILE a.h5 TO no/x") == (
        -8, f'File "{path("a.h5")}" cannot be renamed to "{path("no/x")}": No such file or directory')
    assert kelvo.error("RENAME DIRECTORY d TO d/x") == (
        -8, f'Directory "{path("d")}" cannot be renamed to "{path("d/x")}": Invalid argument')
    assert sorted(os.listdir(kelvo.folder)) == ["a.h5", "b.h5", "d", "e"]


def test_what_is_in_use_keeps_its_name(kelvo):
    kelvo.rows("CREATE DIRECTORY d", "CREATE FILE d/a.h5")
    file = kelvo.path("d/a.h5")
    assert kelvo.error("USE FILE d/a.h5", "RENAME FILE d/a.h5 TO b.h5") == (
        -8, f'File "{file}" is in use (CLOSE FILE closes it)')
    assert kelvo.error("USE FILE d/a.h5", "RENAME DIRECTORY d TO e") == (
        -8, f'Directory "{kelvo.path("d")}" holds file "{file}", which is in use (CLOSE FILE closes it)')
