"""USE and CLOSE, and what SHOW tells of what is in use."""

import re

import h5py
import pytest


@pytest.fixture
def files(kelvo):
    for name in ("a.h5", "b.h5", "d/c.h5"):
        kelvo.path(name).parent.mkdir(exist_ok=True)
        with h5py.File(kelvo.path(name), "w") as file:
            file["g/h/x"] = 1
    return kelvo


def in_use(kelvo, *names):
    return [str(kelvo.path(name)) for name in names]


def test_nothing_is_in_use_at_first(kelvo):
    assert kelvo.rows("SHOW USE FILE", "SHOW USE GROUP", "SHOW ALL USE FILE") == []
    assert kelvo.rows("SHOW USE DIRECTORY") == [str(kelvo.folder)]


def test_directory_is_where_relative_names_begin(files):
    assert files.rows("USE DIRECTORY d", "SHOW USE DIRECTORY", "USE FILE c.h5", "SHOW USE FILE", "USE DIRECTORY ..",
                      "SHOW USE DIRECTORY", "SHOW USE FILE") == in_use(files, "d", "d/c.h5", "", "d/c.h5")
    assert files.rows("USE DIRECTORY ~/d", "SHOW USE DIRECTORY") == in_use(files, "d")
    assert files.rows("USE DIRECTORY /", "SHOW USE DIRECTORY") == ["/"]


def test_directory_through_a_symbolic_link(files):
    files.path("link").symlink_to("d")
    assert files.rows("USE DIRECTORY link", "SHOW FILE") == ["c.h5"]


def test_file_named_last_is_in_use(files):
    assert files.rows("USE FILE a.h5", "USE FILE b.h5", "SHOW USE FILE", "SHOW ALL USE FILE") == in_use(
        files, "b.h5", "b.h5", "a.h5")
    assert files.rows("USE FILE a.h5", "USE FILE b.h5", "USE FILE a.h5", "SHOW ALL USE FILE") == in_use(
        files, "a.h5", "b.h5")


def test_using_a_file_puts_its_root_group_in_use(files):
    assert files.rows("USE FILE a.h5", "USE GROUP g/h", "SHOW USE GROUP", "USE FILE a.h5", "SHOW USE GROUP") == ["/g/h", "/"]


def test_each_file_keeps_its_group(files):
    assert files.rows("USE FILE a.h5", "USE GROUP g", "USE FILE b.h5", "SHOW USE GROUP", "CLOSE FILE",
                      "SHOW USE GROUP") == ["/", "/g"]


def test_group_paths(files):
    assert files.rows("USE FILE a.h5", "USE GROUP g", "USE GROUP h", "SHOW USE GROUP", "USE GROUP ..", "SHOW USE GROUP",
                      "USE GROUP /g/./h/", "SHOW USE GROUP", "CLOSE GROUP", "SHOW USE GROUP") == [
        "/g/h", "/g", "/g/h", "/"]


def test_longest_group_path(kelvo):
    name = "n" * 1021
    with h5py.File(kelvo.path("a.h5"), "w") as file:
        file.create_group(name)
        file.create_group(name + "n")
    assert kelvo.rows("USE FILE a.h5", f"USE GROUP {name}", "SHOW USE GROUP") == ["/" + name]
    assert kelvo.error("USE FILE a.h5", f"USE GROUP {name}n") == (
        -6, "The path of the group has 1023 bytes, USE GROUP takes at most 1022")


def test_read_only(files):
    assert files.error("USE FILE a.h5 READ ONLY", "CREATE GROUP new") == (
        -8, f'File "{files.path("a.h5")}" is in use READ ONLY (USE FILE opens it for writing too)')
    assert files.rows("USE FILE a.h5 READ ONLY", "USE FILE a.h5", "CREATE GROUP new", "SHOW GROUP") == ["g", "new"]


def test_closing_puts_the_file_before_in_use(files):
    assert files.rows("USE FILE a.h5", "USE FILE b.h5", "CLOSE FILE", "SHOW USE FILE", "CLOSE FILE",
                      "SHOW USE FILE") == in_use(files, "a.h5")
    assert files.rows("USE FILE a.h5", "USE FILE b.h5", "CLOSE FILE a.h5", "SHOW ALL USE FILE") == in_use(files, "b.h5")
    assert files.rows("USE FILE a.h5", "USE FILE b.h5", "CLOSE ALL FILE", "SHOW ALL USE FILE", "CLOSE ALL FILE") == []


@pytest.mark.parametrize("statements, error", [
    (["USE DIRECTORY nope"], (-3, 'Directory "{}/nope" does not exist')),
    (["USE DIRECTORY a.h5"], (-5, '"{}/a.h5" is a file, not a directory')),
    (["USE DIRECTORY"], (-1, "Expected a directory, found the end of the statement", 14)),
    (["USE FILE nope.h5"], (-3, 'File "{}/nope.h5" does not exist')),
    (["USE FILE a.h5 READ"], (-1, "Expected ONLY, found the end of the statement", 19)),
    (["USE FILE"], (-1, "Expected a file, found the end of the statement", 9)),
    (["USE GROUP g"], (-2, "No file is in use (USE FILE opens one)")),
    (["USE FILE a.h5", "USE GROUP nope"], (-3, 'Group "/nope" does not exist')),
    (["USE FILE a.h5", "USE GROUP g/h/x"], (-5, '"/g/h/x" is a dataset, not a group')),
    (["USE FILE a.h5", "USE GROUP"], (-1, "Expected a group, found the end of the statement", 10)),
    (["USE x"], (-1, 'Expected DIRECTORY, FILE or GROUP, found "x"', 5)),
    (["CLOSE FILE"], (-2, "No file is in use")),
    (["CLOSE FILE a.h5"], (-2, 'File "{}/a.h5" is not in use')),
    (["CLOSE GROUP"], (-2, "No file is in use (USE FILE opens one)")),
    (["CLOSE ALL"], (-1, "Expected FILE, found the end of the statement", 10)),
    (["CLOSE"], (-1, "Expected FILE, ALL or GROUP, found the end of the statement", 6)),
    (["SHOW MPI VERSION"], (-7, "This engine was built without MPI")),
])
def test_errors(files, statements, error):
    status, message, *position = error
    assert files.error(*statements) == (status, message.format(files.folder), *position)


def test_versions_and_settings_without_mpi(kelvo):
    assert kelvo.rows("SHOW HDF5 VERSION") == [".".join(str(part) for part in h5py.h5.get_libversion())]
    version, atomic = kelvo.rows("SHOW KELVO VERSION", "SHOW ATOMIC")
    assert re.fullmatch(r"\d+\.\d+\.\d+", version) and atomic == "DISABLE"
