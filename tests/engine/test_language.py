"""How statements are written, whatever they say: where they end, comments, quotes, and the first byte not understood."""

import h5py
import numpy as np
import pytest


@pytest.fixture
def file(kelvo):
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        made["x"] = [1, 2]
        made["t"] = np.array([(b"iron",)], dtype=[("name", "S4")])
    return kelvo


@pytest.mark.parametrize("line", ["# a comment", "-- another", "  # indented", ";", " ; ", "; -- done", "\r"])
def test_line_without_a_statement_does_nothing(file, line):
    assert file.rows("USE FILE a.h5", line, "SELECT * FROM x", line) == ["1", "2"]


@pytest.mark.parametrize("line", ["SELECT * FROM x;", "SELECT * FROM x ; # c", "SELECT * FROM x;--c", "SELECT * FROM x -- IN b.h5"])
def test_semicolon_and_comment_end_a_statement(file, line):
    assert file.rows("USE FILE a.h5", line) == ["1", "2"]


@pytest.mark.parametrize(("statement", "position", "message"), [
    ("SHOW GROUP; SHOW DATASET", 13, 'Expected the end of the statement behind ";", found "SHOW"'),
    ("SHOW GROUP;;", 12, 'Expected the end of the statement behind ";", found ";"'),
    ("SELECT * FROM x WHERE VALUE > 1; x", 34, 'Expected the end of the statement behind ";", found "x"'),
    ("CREATE GROUP g; x", 17, 'Expected the end of the statement behind ";", found "x"'),
    ("CREATE DATASET d INT; x", 23, 'Expected the end of the statement behind ";", found "x"'),
    ("COPY DATASET x TO y; x", 22, 'Expected the end of the statement behind ";", found "x"'),
    # The statement is not whole where the ";" stands: that is what is not understood.
    ("SELECT * FROM; x", 14, "Expected a dataset or attribute, found the end of the statement"),
    ("SELECT x WHERE ; x", 10, 'Expected FROM, found "WHERE"'),
    ("SHOW ; GROUP", 6, None),
])
def test_nothing_stands_behind_a_semicolon(file, statement, position, message):
    status, found, at = file.error("USE FILE a.h5", statement)
    assert (status, at) == (-1, position)
    assert message in (None, found)
    with h5py.File(file.path("a.h5")) as made:
        assert sorted(made) == ["t", "x"]


@pytest.mark.parametrize(("statement", "position", "message"), [
    ("CREATE GROUP IF NOT g", 21, 'Expected EXISTS, found "g"'),
    ("CREATE FILE IF NOT", 19, "Expected EXISTS, found the end of the statement"),
    ("CREATE GROUP g TRACK", 21, "Expected ORDER, found the end of the statement"),
    ("SHOW GROUP x BY NAME", 17, 'Expected ORDER, found "NAME"'),
    ("USE FILE a.h5 READ", 19, "Expected ONLY, found the end of the statement"),
    ("CREATE DATASET d INT EARLY FILL 0", 28, 'Expected ALLOCATION, found "FILL"'),
    ("CREATE DATASET d INT BIG [2]", 26, 'Expected ENDIAN, found "["'),
])
def test_words_that_belong_together(file, statement, position, message):
    assert file.error("USE FILE a.h5", statement) == (-1, message, position)


@pytest.mark.parametrize(("statement", "position", "message"), [
    ("USE FILE 'a.h5'", 10, """Expected a file (names stand between double quotes), found "'a.h5'\""""),
    ("SELECT * FROM 'x'", 15, """Expected a dataset or attribute (names stand between double quotes), found "'x'\""""),
    ("SELECT * FROM x INTO 'o.csv'", 22, """Expected a file (names stand between double quotes), found "'o.csv'\""""),
    ("CREATE GROUP ''", 14, """Expected a group (names stand between double quotes), found "''\""""),
])
def test_names_between_single_quotes(file, statement, position, message):
    assert file.error("USE FILE a.h5", statement) == (-1, message, position)


@pytest.mark.parametrize(("statement", "position", "what"), [
    ("USE FILE in", 10, "a file"), ("SELECT * FROM to", 15, "a dataset or attribute"),
    ("RENAME DATASET x TO values", 21, "a new name"),
])
def test_keywords_as_names(file, statement, position, what):
    word = statement.split()[-1]
    assert file.error("USE FILE a.h5", statement) == (
        -1, f'Expected {what} (between double quotes a keyword is a name), found "{word}"', position)


def test_names_without_quotes_for_strings(file):
    for value, text in (("iron", "iron"), ('"iron"', '"iron"')):
        assert file.error("USE FILE a.h5", f"INSERT INTO t VALUES ({value})") == (
            -1, f'Expected a value (strings stand between single quotes), found "{text}"', 23)


PATHS = {'"my run"/"a b"/x': "my run/a b/x", '/"my run"/y': "my run/y", '"my run"/E"line\\nend"': "my run/line\nend",
         'E"\\ttab/x"': "\ttab/x", '"IN"/TO': "IN/TO"}


@pytest.mark.parametrize("written", PATHS)
def test_quotes_around_the_names_of_a_path(file, written):
    file.rows("USE FILE a.h5", f"CREATE DATASET {written} INT VALUES (5)", f"CREATE ATTRIBUTE {written}@\"u 1\" INT VALUES (6)")
    with h5py.File(file.path("a.h5")) as made:
        assert made[PATHS[written]][()] == 5 and made[PATHS[written]].attrs["u 1"] == 6
    assert file.rows("USE FILE a.h5", f"SELECT * FROM {written}", f'SELECT * FROM {written}@"u 1"') == ["5", "6"]


def test_quotes_around_a_part_of_a_name(file):
    rest = "Expected IN, WHERE, ORDER BY, LIMIT, FORMAT, INTO or the end of the statement"
    assert file.error("USE FILE a.h5", 'SELECT * FROM "x"y') == (-1, f'{rest}, found "y"', 18)
    assert file.error("USE FILE a.h5", 'SELECT * FROM "x" /y') == (-1, f'{rest}, found "/"', 19)


def test_strings_between_double_quotes(file):
    assert file.error("USE FILE a.h5", 'SELECT name FROM t WHERE name = "iron"') == (
        -3, 'Dataset "/t" has no member "iron" (SHOW MEMBER lists them; a string stands between single quotes)')
    assert file.error("USE FILE a.h5", 'SELECT * FROM x WHERE VALUE = "1"') == (
        -3, 'Dataset "/x" has no member "1" (VALUE names its elements; a string stands between single quotes)')


def test_functions_of_other_languages(file):
    assert file.error("USE FILE a.h5", "SELECT MEAN(VALUE) FROM x") == (
        -1, 'Expected FROM (the functions are COUNT, MIN, MAX, SUM, AVG, STDDEV and MEDIAN), found "("', 12)


@pytest.mark.parametrize("statement, position", [
    ("SELECT * FROM x INTO FILE o.csv", 22), ("INSERT INTO x FROM file o.csv", 20), ("SELECT * FROM x IN FILE b.h5", 20),
    ("COPY DATASET x TO y IN FILE b.h5", 24), ("SELECT * FROM x[1] IN FILE b.h5", 23)])
def test_the_word_file_before_a_file(kelvo, statement, position):
    assert kelvo.error(statement) == (-1, f'Expected a file (its path, without the word FILE), found "{statement.split()[-2]}"',
                                      position)


def test_a_file_of_that_name(kelvo):
    kelvo.rows("CREATE FILE FILE", "USE FILE FILE", "CREATE DATASET x INT [2] VALUES (1, 2)", "SELECT * FROM x IN FILE INTO o.csv",
               "INSERT INTO x IN FILE FROM o.csv")
    assert kelvo.rows("SELECT * FROM x IN FILE # all") == ["1", "2"]
