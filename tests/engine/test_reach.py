"""What all ways from one file to another have in common: what the environment, SET EXTERNAL LINK PREFIX and the other
statements that read can do about their reach."""

import pytest
from reach import MISSING, REFUSED, allow, link, outside, raw, virtual, write


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
