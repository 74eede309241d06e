"""SHOW GROUP, DATASET, ATTRIBUTE, LINK, EXTERNAL LINK and TYPE: what is in a file, against h5py."""

import h5py
import numpy as np
import pytest


@pytest.fixture
def tree(kelvo):
    """Groups, datasets and all kinds of links, in two files."""
    with h5py.File(kelvo.path("other.h5"), "w") as file:
        file["far/x"] = 1
        file["far/back"] = h5py.ExternalLink("t.h5", "/")
    with h5py.File(kelvo.path("t.h5"), "w") as file:
        file["a/b/c/deep"] = 1
        file["a/one"] = np.arange(3)
        file["a-b"] = 2
        file["a/self"] = file["a"]
        file["a/b/root"] = file["/"]
        file["again"] = file["a/one"]
        file["type"] = np.dtype("<i4")
        file["soft"] = h5py.SoftLink("/a/one")
        file["softgroup"] = h5py.SoftLink("a/b")
        file["dangling"] = h5py.SoftLink("/nowhere")
        file["out"] = h5py.ExternalLink("other.h5", "/far")
        file["a/lost"] = h5py.ExternalLink("missing.h5", "/x")
    return kelvo


def show(kelvo, *statements):
    return kelvo.rows("USE FILE t.h5", *statements)


def visited(path, kind):
    names = []
    with h5py.File(path) as file:
        file.visititems(lambda name, item: names.append(name) if isinstance(item, kind) else None)
    return names


def test_members_are_what_the_links_lead_to(tree):
    with h5py.File(tree.path("t.h5")) as file:
        datasets = [name for name in file if isinstance(file.get(name), h5py.Dataset)]
        groups = [name for name in file if isinstance(file.get(name), h5py.Group)]
    assert show(tree, "SHOW DATASET") == datasets == ["a-b", "again", "soft"]
    assert show(tree, "SHOW GROUP") == groups == ["a", "out", "softgroup"]


def test_members_of_another_group_and_of_another_file(tree):
    assert show(tree, "SHOW DATASET a", "USE GROUP a/b", "SHOW GROUP", "SHOW DATASET ../..") == [
        "one", "c", "root", "a-b", "again", "soft"]
    assert tree.rows("SHOW DATASET /far IN other.h5") == ["x"]
    assert tree.rows("SHOW GROUP IN other.h5") == ["far"]


def test_recursive_names_each_object_once_under_its_first_hard_link(tree):
    assert show(tree, "SHOW DATASET RECURSIVE") == visited(tree.path("t.h5"), h5py.Dataset) + ["out/x"]
    assert show(tree, "SHOW GROUP RECURSIVE") == visited(tree.path("t.h5"), h5py.Group) + ["out"]


def test_recursive_paths_are_relative_and_follow_links_to_what_is_nowhere_else_below(tree):
    with h5py.File(tree.path("t.h5"), "a") as file:
        file["e/l"] = h5py.SoftLink("/a/b/c")
        file["e/m"] = h5py.SoftLink("/a/b/c/deep")
        file["e/n"] = h5py.SoftLink("/e/l")
    assert show(tree, "SHOW DATASET a/b/c RECURSIVE") == ["deep"]
    assert show(tree, "SHOW DATASET e RECURSIVE") == ["l/deep"]
    assert show(tree, "SHOW GROUP e RECURSIVE") == ["l"]


def test_recursive_through_external_links_ends_in_a_circle_of_files(kelvo):
    for this, other in (("one", "two"), ("two", "one")):
        with h5py.File(kelvo.path(this + ".h5"), "w") as file:
            file["in_" + this] = 0
            file["next"] = h5py.ExternalLink(other + ".h5", "/")
            file["next2"] = h5py.ExternalLink("./" + other + ".h5", "/")
    assert kelvo.rows("USE FILE one.h5", "SHOW DATASET RECURSIVE") == ["in_one", "next/in_two"]


def test_groups_nested_deeply(kelvo):
    depth = 3000
    with h5py.File(kelvo.path("deep.h5"), "w", libver="latest") as file:
        group = file
        for _ in range(depth):
            group = group.create_group("g")
        group["end"] = 1
    [row] = kelvo.rows("USE FILE deep.h5", "SHOW DATASET RECURSIVE")
    assert row == "g/" * depth + "end"


@pytest.mark.parametrize("libver", ["earliest", "latest"])
def test_thousands_of_members_come_in_name_order(kelvo, libver):
    names = [f"n{i * 7919 % 5003}" for i in range(5003)]
    with h5py.File(kelvo.path("many.h5"), "w", libver=libver) as file:
        file["x"] = 0
        for name in names:
            file[name] = file["x"]
    assert kelvo.rows("USE FILE many.h5", "SHOW DATASET LIKE 'n%'") == sorted(names)


def test_links_are_listed_whether_or_not_they_lead_anywhere(tree):
    assert show(tree, "SHOW LINK") == ["dangling", "soft", "softgroup"]
    assert show(tree, "SHOW EXTERNAL LINK") == ["out"]
    assert show(tree, "SHOW EXTERNAL LINK RECURSIVE") == ["a/lost", "out", "out/back"]


def test_link_shows_where_it_leads(tree):
    assert show(tree, "SHOW LINK soft", "SHOW LINK dangling") == ["/a/one", "/nowhere"]
    assert show(tree, "SHOW EXTERNAL LINK out", "SHOW EXTERNAL LINK a/lost") == [
        "other.h5", "/far", "missing.h5", "/x"]


def test_link_with_a_slash_behind_it_is_the_group_that_it_leads_to(tree):
    assert show(tree, "SHOW LINK softgroup", "SHOW LINK softgroup/", "SHOW EXTERNAL LINK out/") == ["a/b", "back"]
    assert show(tree, "SHOW TYPE softgroup", "SHOW TYPE softgroup/") == ["LINK", "GROUP"]


@pytest.mark.parametrize("name, word", [
    ("/", "GROUP"), ("a", "GROUP"), ("a/one", "DATASET"), ("type", "DATA TYPE"), ("soft", "LINK"),
    ("dangling", "LINK"), ("out", "EXTERNAL LINK"), ("a/lost", "EXTERNAL LINK"), ("out/x", "DATASET")])
def test_type_of_a_name(tree, name, word):
    assert show(tree, f"SHOW TYPE {name}") == [word]


def test_type_of_an_attribute(tree):
    with h5py.File(tree.path("t.h5"), "a") as file:
        file["a-b"].attrs["units"] = "K"
    assert show(tree, "SHOW TYPE a-b@units") == ["ATTRIBUTE"]


def test_attributes_in_name_order(tree):
    with h5py.File(tree.path("t.h5"), "a") as file:
        for name in ("zeta", "alpha", "Beta", "with space"):
            file["a"].attrs[name] = 1
        file.attrs["title"] = "x"
    assert show(tree, "SHOW ATTRIBUTE a") == ["Beta", "alpha", "with space", "zeta"]
    assert show(tree, "SHOW ATTRIBUTE", "SHOW ATTRIBUTE a LIKE '%a'") == ["title", "Beta", "alpha", "zeta"]
    assert show(tree, "SHOW ATTRIBUTE a GLOB '[a-z]*'") == ["alpha", "with space", "zeta"]


def test_order_of_creation_where_it_is_tracked(kelvo):
    names = ["z", "m", "a", "q"]
    with h5py.File(kelvo.path("t.h5"), "w", track_order=True) as file:
        for name in names:
            file[name] = 1
            file.attrs[name] = 1
        group = file.create_group("untracked", track_order=False)
        group["b"], group["a"] = 1, 2
    assert show(kelvo, "SHOW DATASET BY ORDER") == names
    assert show(kelvo, "SHOW DATASET") == sorted(names)
    assert show(kelvo, "SHOW ATTRIBUTE BY ORDER") == names
    assert show(kelvo, "SHOW ATTRIBUTE") == sorted(names)
    assert show(kelvo, "SHOW DATASET untracked BY ORDER") == ["a", "b"]


def test_like_looks_at_the_last_name(tree):
    assert show(tree, "SHOW DATASET LIKE 'a%'") == ["a-b", "again"]
    assert show(tree, "SHOW DATASET RECURSIVE LIKE '%e%'") == ["a/b/c/deep", "a/one"]
    assert show(tree, "SHOW DATASET RECURSIVE LIKE 'a!_b' ESCAPE '!'") == []


def test_glob_looks_at_the_path_and_goes_down_where_it_says_so(tree):
    assert show(tree, "SHOW DATASET GLOB 'a*'") == ["a-b", "again"]
    assert show(tree, "SHOW DATASET GLOB 'a/*'") == ["a/one"]
    assert show(tree, "SHOW DATASET GLOB '**/deep'") == ["a/b/c/deep"]
    assert show(tree, "SHOW DATASET a GLOB 'b/c/**'") == ["b/c/deep"]
    assert show(tree, "SHOW DATASET a GLOB '/a/[bo]*'", "SHOW DATASET a GLOB 'a*'") == ["one"]


def test_object_is_listed_under_the_first_of_its_names_that_fits(tree):
    assert show(tree, "SHOW DATASET RECURSIVE LIKE 'again'") == ["again"]
    assert show(tree, "SHOW DATASET RECURSIVE LIKE 'soft'") == ["soft"]
    assert show(tree, "SHOW DATASET RECURSIVE LIKE '%n%'") == ["a/one"]


def test_where_asks_for_attributes(kelvo):
    with h5py.File(kelvo.path("t.h5"), "w") as file:
        for name, units, scale in (("a", "K", 1), ("b", "m", 3), ("g/c", "K", 5), ("g/d", np.bytes_("K"), -1)):
            file[name] = 0
            file[name].attrs["units"] = units
            file[name].attrs["scale"] = np.int16(scale)
        file["none"] = 0
        file["soft"] = h5py.SoftLink("/g/c")
        file["gone"] = h5py.SoftLink("/x")
        file["list"] = 0
        file["list"].attrs["scale"] = [9, 1]
        file["empty"] = 0
        file["empty"].attrs["scale"] = h5py.Empty("i4")
    assert show(kelvo, "SHOW DATASET WHERE @units = 'K'") == ["a", "soft"]
    assert show(kelvo, "SHOW DATASET RECURSIVE WHERE @units = 'K'") == ["a", "g/c", "g/d"]
    assert show(kelvo, "SHOW DATASET RECURSIVE WHERE @units = 'K' AND @scale > 0") == ["a", "g/c"]
    assert show(kelvo, "SHOW DATASET RECURSIVE LIKE 'c' WHERE @scale BETWEEN 4 AND 6") == ["g/c"]
    assert show(kelvo, "SHOW DATASET WHERE @scale = 9") == ["list"]
    assert show(kelvo, "SHOW LINK WHERE @scale = 5") == ["soft"]


def test_names_that_need_quoting(kelvo):
    with h5py.File(kelvo.path("t.h5"), "w") as file:
        for name in ("with space/in", "RECURSIVE/in2", "ümlaut/in3", "BY/ORDER"):
            file[name] = 1
    assert show(kelvo, 'SHOW DATASET "with space"', 'SHOW DATASET "RECURSIVE"', "SHOW DATASET ümlaut") == [
        "in", "in2", "in3"]
    assert show(kelvo, 'SHOW DATASET BY', "SHOW GROUP BY ORDER") == ["ORDER", "BY", "RECURSIVE", "with space", "ümlaut"]


@pytest.mark.parametrize("statement, error", [
    ("SHOW GROUP nope", (-3, 'Group "/nope" does not exist')),
    ("SHOW DATASET a-b", (-5, '"/a-b" is a dataset, not a group')),
    ("SHOW DATASET dangling", (-3, '"/dangling" is a link to an object that does not exist')),
    ("SHOW DATASET a@x", (-5, '"/a@x" is an attribute, not a group')),
    ("SHOW ATTRIBUTE a@x", (-5, '"/a@x" is an attribute, not an object')),
    ("SHOW ATTRIBUTE nope", (-3, 'Object "/nope" does not exist')),
    ("SHOW TYPE nope", (-3, 'Object "/nope" does not exist')),
    ("SHOW TYPE a-b@no", (-3, 'Attribute "/a-b@no" does not exist')),
    ("SHOW TYPE dangling/", (-3, '"/dangling" is a link to an object that does not exist')),
    ("SHOW LINK nope", (-3, 'Group "/nope" does not exist')),
    ("SHOW LINK a-b", (-5, '"/a-b" is a dataset, not a group')),
    ("SHOW LINK out",
     (-5, '"/out" is an external link, not a link (SHOW EXTERNAL LINK shows where it leads)')),
    ("SHOW EXTERNAL LINK soft", (-5, '"/soft" is a link, not an external link (SHOW LINK shows where it leads)')),
    ("SHOW GROUP LIKE 'a' ESCAPE 'bc'", (-1, "Expected one escape character", 28)),
    ("SHOW GROUP x y", (-1, "Expected IN, LIKE, GLOB, RECURSIVE, BY ORDER, WHERE or the end of the statement, "
                            'found "y"', 14)),
    ("SHOW ATTRIBUTE x RECURSIVE",
     (-1, 'Expected IN, LIKE, GLOB, BY ORDER or the end of the statement, found "RECURSIVE"', 18)),
    ("SHOW GROUP LIKE 'a' LIKE 'b'",
     (-1, 'Expected ESCAPE, GLOB, RECURSIVE, BY ORDER, WHERE or the end of the statement, found "LIKE"', 21)),
    ("SHOW GROUP LIKE abc", (-1, 'Expected a pattern (strings stand between single quotes), found "abc"', 17)),
    ("SHOW GROUP WHERE @a = 1 RECURSIVE", (-1, 'Expected AND, OR or the end of the statement, found "RECURSIVE"', 25)),
    ("SHOW TYPE", (-1, "Expected an object, found the end of the statement", 10)),
])
def test_errors(tree, statement, error):
    assert tree.error("USE FILE t.h5", statement) == error


@pytest.mark.parametrize("statement", ["SHOW GROUP", "SHOW DATASET", "SHOW ATTRIBUTE", "SHOW LINK", "SHOW EXTERNAL LINK",
                                       "SHOW TYPE x", "SHOW MEMBER x", "SHOW SIZE x", "SHOW FILE SIZE"])
def test_without_a_file_in_use(kelvo, statement):
    assert kelvo.error(statement) == (-2, "No file is in use (USE FILE opens one)")
