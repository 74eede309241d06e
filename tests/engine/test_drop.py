"""DROP of every kind, read back with h5py."""

import os

import h5py
import pytest


@pytest.fixture
def file(kelvo):
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        for name in ("x1", "x2", "y"):
            made["g/" + name] = [1, 2]
            made["g"].attrs[name] = 1
        made.create_group("g/x3/deep")
        made["g/x4"] = h5py.SoftLink("/g/x1")
        made["g/x5"] = h5py.ExternalLink("b.h5", "/y")

    class File:
        def drop(self, *statements):
            kelvo.rows("USE FILE a.h5", *statements)
            with h5py.File(kelvo.path("a.h5"), "r") as made:
                return sorted(made.get("g", ())), sorted(made["g"].attrs if "g" in made else ())

        def error(self, *statements):
            return kelvo.error("USE FILE a.h5", *statements)

    return File()


ATTRIBUTES = ["x1", "x2", "y"]
MEMBERS = ["x1", "x2", "x3", "x4", "x5", "y"]


def test_one_of_each_kind(file):
    assert file.drop("DROP DATASET g/x1") == (["x2", "x3", "x4", "x5", "y"], ATTRIBUTES)
    assert file.drop("DROP GROUP g/x3", "DROP LINK g/x4") == (["x2", "x5", "y"], ATTRIBUTES)
    assert file.drop("DROP EXTERNAL LINK g/x5", "DROP ATTRIBUTE g@x1") == (["x2", "y"], ["x2", "y"])
    assert file.drop("USE GROUP g", "DROP DATASET y", "DROP ATTRIBUTE @y") == (["x2"], ["x2"])
    assert file.drop("DROP GROUP g") == ([], [])


@pytest.mark.parametrize("kind, left", [
    ("DATASET", ["x3", "x4", "x5", "y"]), ("GROUP", ["x1", "x2", "x4", "x5", "y"]),
    ("LINK", ["x1", "x2", "x3", "x5", "y"]), ("EXTERNAL LINK", ["x1", "x2", "x3", "x4", "y"])])
def test_like_drops_all_of_the_kind_and_no_other(file, kind, left):
    assert file.drop(f"DROP {kind} g LIKE 'x%'") == (left, ATTRIBUTES)


def test_like_in_the_group_in_use(file):
    assert file.drop("USE GROUP g", "DROP DATASET LIKE 'x_'", "DROP ATTRIBUTE LIKE 'x%'") == (
        ["x3", "x4", "x5", "y"], ["y"])


def test_like_with_escape(file):
    assert file.drop("CREATE DATASET g/a_1 INT", "CREATE DATASET g/ab1 INT", "DROP DATASET g LIKE 'a!_%' ESCAPE '!'") == (
        ["ab1", *MEMBERS], ATTRIBUTES)


def test_like_drops_attributes_of_an_object(file):
    assert file.drop("DROP ATTRIBUTE g LIKE '%'") == (MEMBERS, [])


def test_if_exists(file):
    assert file.drop("DROP DATASET IF EXISTS no/no", "DROP GROUP IF EXISTS no", "DROP LINK IF EXISTS no",
                     "DROP ATTRIBUTE IF EXISTS g@no", "DROP ATTRIBUTE IF EXISTS no@no", "DROP DATASET IF EXISTS g LIKE 'no%'",
                     "DROP ATTRIBUTE IF EXISTS g LIKE 'no%'", "DROP DATASET IF EXISTS g/y") == (MEMBERS[:-1], ATTRIBUTES)


def test_what_is_not_there(file):
    assert file.error("DROP DATASET no") == (-3, 'Dataset "/no" does not exist')
    assert file.error("DROP EXTERNAL LINK no/no") == (-3, 'External link "/no/no" does not exist')
    assert file.error("DROP ATTRIBUTE g@no") == (-3, 'Attribute "/g@no" does not exist')
    assert file.error("DROP ATTRIBUTE no@no") == (-3, 'Object "/no" does not exist')
    assert file.error("DROP DATASET g LIKE 'no%'") == (-3, 'No dataset in "/g" matches "no%"')
    assert file.error("DROP EXTERNAL LINK LIKE 'x%'") == (-3, 'No external link in "/" matches "x%"')
    assert file.error("DROP ATTRIBUTE g LIKE 'no%'") == (-3, 'No attribute in "/g" matches "no%"')
    assert file.error("DROP DATASET no LIKE 'x%'") == (-3, 'Group "/no" does not exist')


def test_kinds_are_checked_and_nothing_is_dropped(file):
    assert file.error("DROP DATASET g") == (-5, '"/g" is a group, not a dataset')
    assert file.error("DROP DATASET IF EXISTS g") == (-5, '"/g" is a group, not a dataset')
    assert file.error("DROP GROUP g/x1") == (-5, '"/g/x1" is a dataset, not a group')
    assert file.error("DROP DATASET g/x4") == (-5, '"/g/x4" is a link, not a dataset')
    assert file.error("DROP LINK g/x1") == (-5, '"/g/x1" is a dataset, not a link')
    assert file.error("DROP LINK g/x5") == (-5, '"/g/x5" is an external link, not a link')
    assert file.error("DROP GROUP /") == (-5, "The root group cannot be dropped")
    assert file.error("DROP DATASET g/x1 LIKE '%'") == (-5, '"/g/x1" is a dataset, not a group')
    assert file.drop() == (MEMBERS, ATTRIBUTES)


def test_group_in_use_is_not_dropped(file):
    message = 'Group "/g" is in use (CLOSE GROUP leaves it)'
    assert file.error("USE GROUP g/x3", "DROP GROUP /g") == (-8, message)
    assert file.error("USE GROUP g", "DROP GROUP / LIKE 'g'") == (-8, message)
    assert file.error("CREATE HARD LINK h TO g", "USE GROUP g", "DROP GROUP /h") == (
        -8, 'Group "/h" is in use (CLOSE GROUP leaves it)')
    assert file.drop() == (MEMBERS, ATTRIBUTES)


def test_what_is_no_statement(file):
    assert file.error("DROP DATASET") == (-1, "Expected a dataset or LIKE, found the end of the statement", 13)
    assert file.error("DROP DATASET g LIKE x") == (
        -1, 'Expected a pattern (strings stand between single quotes), found "x"', 21)
    assert file.error("DROP DATASET g LIKE 'x' ESCAPE 'ab'") == (-1, "Expected one escape character", 32)
    assert file.error("DROP ATTRIBUTE g") == (
        -1, 'Expected "@" and the name of an attribute, or LIKE, found the end of the statement', 17)
    assert file.error("DROP GROUP g RECURSIVE") == (-1, 'Expected LIKE or the end of the statement, found "RECURSIVE"', 14)
    assert file.error("DROP all") == (
        -1, 'Expected DIRECTORY, FILE, GROUP, DATASET, ATTRIBUTE, LINK or EXTERNAL, found "all"', 6)


# --- on the host ---


def left(kelvo):
    return sorted(os.listdir(kelvo.folder))


def test_files(kelvo):
    kelvo.rows("CREATE FILE a.h5", "CREATE FILE b.h5", "CREATE FILE c.h5", "CREATE FILE ac.h5", "CREATE DIRECTORY ad",
               "DROP FILE b.h5", "DROP FILE IF EXISTS b.h5", "DROP FILE LIKE 'a%'")
    assert left(kelvo) == ["ad", "c.h5"]
    kelvo.rows("CREATE FILE ad/x.h5", "DROP FILE ad LIKE '%.h5'", "DROP FILE IF EXISTS LIKE 'no%'")
    assert left(kelvo) == ["ad", "c.h5"] and os.listdir(kelvo.path("ad")) == []


def test_files_are_dropped_all_or_none(kelvo):
    names = ["a1.h5", "a2.h5", "a3.h5"]
    for name in names:
        kelvo.path(name).write_text(name)

    def error(name, reason):
        return -8, f'File "{kelvo.path(name)}" cannot be dropped: {reason}'

    kelvo.faults = {"rename": 2}
    assert kelvo.error("DROP FILE LIKE 'a%'") == error("a2.h5", "Operation not permitted")
    kelvo.faults = {"unlink": 1}
    assert kelvo.error("DROP FILE LIKE 'a%'") == error("a3.h5", "Input/output error")
    assert left(kelvo) == names and [kelvo.path(name).read_text() for name in names] == names
    kelvo.faults = {}
    kelvo.rows("DROP FILE LIKE 'a%'")
    assert left(kelvo) == []


def test_link_to_a_file_is_dropped_itself(kelvo):
    kelvo.rows("CREATE FILE a.h5")
    os.symlink("a.h5", kelvo.path("link.h5"))
    os.symlink("nowhere", kelvo.path("dangling.h5"))
    kelvo.rows("DROP FILE link.h5", "DROP FILE dangling.h5")
    assert left(kelvo) == ["a.h5"]


def test_directories(kelvo):
    kelvo.rows("CREATE DIRECTORY d/e/f", "CREATE DIRECTORY d1/x", "CREATE DIRECTORY d2", "CREATE FILE d/e/a.h5", "CREATE FILE dd.h5",
               "DROP DIRECTORY d1/x", "DROP DIRECTORY IF EXISTS no", "DROP DIRECTORY d/ RECURSIVE", "DROP DIRECTORY LIKE 'd_'")
    assert left(kelvo) == ["dd.h5"]


def test_directory_link_keeps_what_it_leads_to(kelvo):
    kelvo.rows("CREATE DIRECTORY d", "CREATE DIRECTORY e", "CREATE FILE d/a.h5")
    os.symlink("../d", kelvo.path("e/link"))
    kelvo.rows("DROP DIRECTORY e RECURSIVE")
    assert left(kelvo) == ["d"] and os.listdir(kelvo.path("d")) == ["a.h5"]


def test_host_errors(kelvo):
    kelvo.rows("CREATE DIRECTORY d/e", "CREATE DIRECTORY da", "CREATE FILE a.h5", "CREATE FILE d/b.h5")
    path = kelvo.path
    assert kelvo.error("DROP DIRECTORY d") == (
        -8, f'Directory "{path("d")}" is not empty (RECURSIVE drops what is in it)')
    assert kelvo.error("DROP DIRECTORY LIKE 'd%'") == (
        -8, f'Directory "{path("d")}" is not empty (RECURSIVE drops what is in it)')
    assert kelvo.error("DROP DIRECTORY no") == (-3, f'Directory "{path("no")}" does not exist')
    assert kelvo.error("DROP DIRECTORY a.h5") == (-5, f'"{path("a.h5")}" is a file, not a directory')
    assert kelvo.error("DROP FILE d") == (-5, f'"{path("d")}" is a directory, not a file')
    assert kelvo.error("DROP FILE no") == (-3, f'File "{path("no")}" does not exist')
    assert kelvo.error("DROP FILE LIKE 'no%'") == (-3, f'No file in "{kelvo.folder}" matches "no%"')
    assert kelvo.error("DROP DIRECTORY LIKE 'no%'") == (-3, f'No directory in "{kelvo.folder}" matches "no%"')
    assert kelvo.error("USE FILE a.h5", "DROP FILE LIKE '%.h5'") == (
        -8, f'File "{path("a.h5")}" is in use (CLOSE FILE closes it)')
    os.symlink("a.h5", path("link.h5"))
    assert kelvo.error("USE FILE link.h5", "DROP FILE a.h5") == (
        -8, f'File "{path("a.h5")}" is in use (CLOSE FILE closes it)')
    assert kelvo.error("USE FILE d/b.h5", "DROP DIRECTORY d RECURSIVE") == (
        -8, f'Directory "{path("d")}" holds file "{path("d/b.h5")}", which is in use (CLOSE FILE closes it)')
    assert kelvo.error(f"DROP DIRECTORY {kelvo.folder} RECURSIVE") == (
        -8, f'Directory "{kelvo.folder}" is in use (USE DIRECTORY goes elsewhere)')
    assert left(kelvo) == ["a.h5", "d", "da", "link.h5"] and sorted(os.listdir(path("d"))) == ["b.h5", "e"]


def test_host_refuses(kelvo):
    with pytest.raises(OSError) as refused:
        os.unlink("/proc/version")
    assert kelvo.error("DROP FILE /proc/version") == (
        -8, f'File "/proc/version" cannot be dropped: {refused.value.strerror}')
