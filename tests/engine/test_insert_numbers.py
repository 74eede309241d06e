"""Numbers in text files become the very numbers that Python and NumPy make of them, however lines mix and end."""

from fractions import Fraction

import h5py
import numpy as np
import pytest
from hypothesis import given, settings
from hypothesis import strategies as st

DIGITS = st.text("0123456789", min_size=1, max_size=24)
EXPONENTS = st.integers(-30, 12).map(lambda exponent: f"e{exponent}") | st.sampled_from(["", "E+05", "e-007"])
WRITTEN = st.tuples(st.sampled_from(["", "-"]), DIGITS, DIGITS.map(lambda digits: "." + digits) | st.just(""),
                    EXPONENTS).map("".join)
INTEGERS = [np.dtype(sign + str(size)) for sign in "iu" for size in (1, 2, 4, 8)]


def exact(number):
    """All the digits of a double, of which no more than thirty or so are wanted here."""
    digits = Fraction(number)
    places = digits.denominator.bit_length() - 1
    return f"{'-' if digits < 0 else ''}{abs(digits.numerator) * 5**places}e-{places}"


def halfway(number):
    """The decimal just between a single and the next one."""
    above = np.nextafter(number, np.float32(np.inf), dtype="f4")
    return exact((float(number) + float(above)) / 2)


SINGLES = st.floats(width=32, min_value=2.0**-20, max_value=2.0**60).map(np.float32)
TEXTS = st.one_of(WRITTEN, st.floats(allow_nan=False, allow_infinity=False, min_value=-1e30, max_value=1e30).map(repr),
                  SINGLES.map(halfway), SINGLES.map(lambda number: halfway(number) + "0"),
                  st.sampled_from(["0", "-0", "-0.0", "9007199254740993", "1e22", "1e23", "16777217", "16777219e-10"]))


def nearest_single(text):
    """By fractions, for NumPy rounds twice on its way from text."""
    if text.startswith("-"):
        return -nearest_single(text[1:])
    value = Fraction(text)
    guess = np.float32(float(text))
    near = [guess, np.nextafter(guess, np.float32(0)), np.nextafter(guess, np.float32(np.inf))]
    return min(near, key=lambda one: (abs(Fraction(float(one)) - value), int(one.view("u4")) % 2))


def insert(kelvo, text, dtype, name="v.csv", rest=""):
    """The elements of a new dataset that a file's text makes, or the error."""
    kelvo.path(name).write_bytes(text.encode())
    with h5py.File(kelvo.path("n.h5"), "w") as file:
        file.create_dataset("x", (0,), dtype, maxshape=(None,))
    answer = kelvo.run("USE FILE n.h5", f"INSERT INTO x APPEND FROM {name}{rest}")
    if answer.status != 0:
        return answer.status, answer.message
    with h5py.File(kelvo.path("n.h5")) as file:
        return file["x"][()]


def same_bits(made, wanted):
    return made.dtype == wanted.dtype and made.tobytes() == wanted.tobytes()


@settings(max_examples=40)
@given(st.lists(TEXTS, min_size=1, max_size=100))
def test_doubles_are_pythons(kelvo, texts):
    wanted = np.array([float(text) for text in texts])
    assert same_bits(insert(kelvo, "\n".join(texts), "f8"), wanted)


@settings(max_examples=40)
@given(st.lists(TEXTS, min_size=1, max_size=100))
def test_singles_are_the_nearest(kelvo, texts):
    wanted = np.array([nearest_single(text) for text in texts], "f4")
    assert same_bits(insert(kelvo, "\n".join(texts) + "\n", "f4"), wanted)


@settings(max_examples=40)
@given(st.sampled_from(INTEGERS), st.data())
def test_integers_are_pythons(kelvo, dtype, data):
    limits = np.iinfo(dtype)
    numbers = st.integers(int(limits.min), int(limits.max)) | st.sampled_from([int(limits.min), int(limits.max)])
    texts = numbers.map(str) | st.integers(0, 99).map(lambda number: f"{number:024d}")
    drawn = data.draw(st.lists(texts, min_size=1, max_size=100))
    wanted = np.array([int(text) for text in drawn], dtype)
    assert same_bits(insert(kelvo, "\r\n".join(drawn) + "\r\n", dtype), wanted)
    beyond = data.draw(st.sampled_from([limits.min - 1, limits.max + 1]))
    failed = insert(kelvo, "\n".join([*drawn, str(beyond)]), dtype)
    name = {"i": "", "u": "UNSIGNED "}[dtype.kind] + {1: "TINYINT", 2: "SMALLINT", 4: "INT", 8: "BIGINT"}[dtype.itemsize]
    assert failed == (-6, f'File "{kelvo.path("v.csv")}", line {len(drawn) + 1}, column 1: '
                          f"Value {beyond} does not fit {name}")


# A line of the fast way, then one that needs more than that: quotes, signs, hexadecimal digits, nothing at all.
LINES = st.sampled_from([("7,-1.5", (7, -1.5)), (" 8 ,\t2e3 ", (8, 2000.0)), ('"9",4', (9, 4.0)), ("+5,+6.25", (5, 6.25)),
                         ("0x1F,0x10", (31, 16.0)), ("3.0,.5", (3, 0.5)), ("1,INF", (1, np.inf)), ("", None)])


@settings(max_examples=40)
@given(st.lists(LINES, min_size=1, max_size=60), st.sampled_from(["\n", "\r\n"]), st.booleans())
def test_plain_lines_among_others(kelvo, lines, line_end, ended):
    dtype = np.dtype([("a", "<i2"), ("b", "<f8")])
    text = line_end.join(["0,0", *(line for line, _ in lines)]) + (line_end if ended else "")
    wanted = np.array([(0, 0.0), *(values for _, values in lines if values is not None)], dtype)
    assert same_bits(insert(kelvo, text, dtype), wanted)


@pytest.mark.parametrize("name, separator, width", [
    ("v.csv", ",", 7), ("v.csv", " , ", 2), ("v.tsv", "\t", 3), ("v.txt", " ", 5), ("v.txt", "\t  ", 1)])
def test_many_lines_of_several_columns(kelvo, name, separator, width):
    numbers = np.random.default_rng(4).normal(scale=100, size=70_000 // width * width).round(3)
    lines = [separator.join(map(repr, line)) for line in numbers.reshape(-1, width).tolist()]
    assert same_bits(insert(kelvo, "\n".join(lines), "f8", name), numbers)


def test_a_line_longer_than_the_reader_takes_at_once(kelvo):
    numbers = np.arange(200_000, dtype="i8")
    text = "\n".join(",".join(map(str, half)) for half in numbers.reshape(2, -1).tolist())
    assert same_bits(insert(kelvo, text + "\n", "i8"), numbers)


@pytest.mark.parametrize("bad, message", [
    ("1;2", 'column 1: Value "1;2" is no value of DOUBLE'),
    ("1 2", 'column 1: Value "1 2" is no value of DOUBLE'),
    ("1e999", "column 1: Value 1e999 does not fit DOUBLE"),
    ("1,2", "1 column is needed, the line has 2")])
def test_an_error_far_down_names_its_line(kelvo, bad, message):
    text = "0.5\n" * 100_000 + bad + "\r\n" + "0.5\n" * 10
    status, told = insert(kelvo, text, "f8")
    assert told.startswith(f'File "{kelvo.path("v.csv")}", line 100001') and told.endswith(message)
    assert status == (-5 if "no value" in message else -6)
