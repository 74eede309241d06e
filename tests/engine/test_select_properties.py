"""Random data, slices and conditions: SELECT must answer as NumPy does."""

import h5py
import numpy as np
import pytest
from hypothesis import given, settings
from hypothesis import strategies as st
from hypothesis.extra import numpy as npst

DTYPES = ["i1", "u1", "<i2", ">i4", "<u4", "<i8", ">u8", "<f4", ">f8"]

@st.composite
def arrays(draw):
    shape = draw(npst.array_shapes(min_dims=1, max_dims=3, max_side=7))
    dtype = draw(st.sampled_from(DTYPES))
    # Few different values, so that conditions meet equal ones; and the ends of the range.
    kind = np.dtype(dtype)
    ends = [np.iinfo(kind).min, np.iinfo(kind).max] if kind.kind in "iu" else [np.nan, np.inf, -np.inf, 2.0**60]
    values = st.sampled_from([0, 1, 2, 3, 100, *ends])
    return draw(npst.arrays(dtype, shape, elements=values, fill=st.nothing()))


@st.composite
def slices(draw, rank):
    """A slice as it is written, and the same for NumPy."""
    ranges = [draw(st.tuples(st.integers(-9, 9), st.integers(-9, 9), st.integers(1, 3))) for _ in range(rank)]
    written = ", ".join(f"{begin}:{end}:{step}" for begin, end, step in ranges)
    return f"[{written}]", tuple(slice(*one) for one in ranges)


LITERALS = st.sampled_from(["0", "1", "2.5", "-1", "127", "255", "9223372036854775807", "18446744073709551615", "1e18"])
COMPARISONS = {"=": np.equal, "<>": np.not_equal, "<": np.less, "<=": np.less_equal, ">": np.greater, ">=": np.greater_equal}
OPERATORS = ["=", "<>", "<", "<=", ">", ">="]


def exactly(value, operator, literal):
    """Python compares its own integers and floats exactly, as the engine does."""
    number = float(literal) if set(literal) & set(".e") else int(literal)
    return {"=": value == number, "<>": value != number, "<": value < number, "<=": value <= number,
            ">": value > number, ">=": value >= number}[operator]


def write(kelvo, values):
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        made.create_dataset("x", data=values, chunks=True)


def numbers(rows, dtype):
    return np.array(rows, dtype) if rows else np.empty(0, dtype)


@settings(max_examples=60)
@given(data=st.data(), values=arrays(), operator=st.sampled_from(OPERATORS), literal=LITERALS)
def test_conditions_on_slices(kelvo, data, values, operator, literal):
    written, taken = data.draw(slices(values.ndim))
    write(kelvo, values)
    rows = kelvo.rows("USE FILE a.h5", f"SELECT VALUE FROM x{written} WHERE VALUE {operator} {literal} FORMAT TEXT",
                      f"SELECT COUNT(*) FROM x{written} WHERE NOT VALUE {operator} {literal}")
    plain = values[taken].ravel()
    keep = np.array([exactly(value.item(), operator, literal) for value in plain], bool)
    assert np.array_equal(numbers(rows[:-1], values.dtype), plain[keep], equal_nan=values.dtype.kind == "f")
    assert int(rows[-1]) == np.count_nonzero(~keep)


@settings(max_examples=60)
@given(values=arrays(), descending=st.booleans(), limit=st.integers(0, 20), offset=st.integers(0, 5))
def test_order_and_number(kelvo, values, descending, limit, offset):
    write(kelvo, values)
    rows = kelvo.rows("USE FILE a.h5", f"SELECT VALUE FROM x ORDER BY VALUE {'DESC' if descending else ''} "
                                       f"LIMIT {limit} OFFSET {offset} FORMAT TEXT")
    plain = values.ravel()
    finite = np.sort(plain[~np.isnan(plain)])
    ordered = np.concatenate([finite[::-1] if descending else finite, plain[np.isnan(plain)]])
    assert np.array_equal(numbers(rows, values.dtype), ordered[offset:offset + limit],
                          equal_nan=values.dtype.kind == "f")


@settings(max_examples=60)
@given(values=arrays())
def test_aggregates(kelvo, values):
    """Sums of integers, which may not fit, are Python's."""
    write(kelvo, values)
    plain = values.ravel()
    text = "SELECT MIN(VALUE), MAX(VALUE), AVG(VALUE), STDDEV(VALUE), MEDIAN(VALUE) FROM x"
    least, most, mean, deviation, median = kelvo.row("USE FILE a.h5", text).split("\t")
    with np.errstate(all="ignore"):
        wide = plain.astype("f8")
        assert np.array_equal(numbers([least, most], values.dtype), [plain.min(), plain.max()],
                              equal_nan=values.dtype.kind == "f")
        # NumPy adds integers as doubles; the mean of Python's is exact.
        exact = wide.mean() if values.dtype.kind == "f" else sum(plain.tolist()) / plain.size
        np.testing.assert_allclose([float(mean), float(median)], [exact, np.median(wide)], rtol=1e-12)
        np.testing.assert_allclose(float(deviation), wide.std(), rtol=1e-9, atol=1e-9)
    if values.dtype.kind == "f":
        return
    total = sum(plain.tolist())
    fits = -2**63 <= total < 2**63 if values.dtype.kind == "i" else total < 2**64
    answer = kelvo.run("USE FILE a.h5", "SELECT SUM(VALUE) FROM x")
    assert answer.rows == [str(total)] if fits else answer.status == -6


@pytest.mark.parametrize("dtype", DTYPES)
@pytest.mark.parametrize("count", [1023, 1024, 5003])
def test_columns_of_many_batches(kelvo, dtype, count):
    """Loops over columns take many values at once, and what is left at the end one by one."""
    random = np.random.default_rng(count)
    kind = np.dtype(dtype)
    values = random.integers(-100 if kind.kind in "if" else 0, 100, count).astype(dtype)
    if kind.kind in "iu":
        values[::50], values[7::50] = np.iinfo(kind).min, np.iinfo(kind).max
    else:
        values[::50], values[7::50], values[11::50] = -np.inf, np.inf, np.nan
    write(kelvo, values)
    conditions = {f"VALUE {operator} 1": comparison(values, 1) for operator, comparison in COMPARISONS.items()}
    conditions |= {"VALUE > 1 AND VALUE < 50": (values > 1) & (values < 50), "VALUE < 1 OR VALUE > 50": (values < 1) | (values > 50),
                   "NOT VALUE BETWEEN 3 AND 60": ~((values >= 3) & (values <= 60)),
                   "VALUE IN (1, 2, 3)": np.isin(values, [1, 2, 3]), "VALUE IS NAN": values != values}
    counts = kelvo.rows("USE FILE a.h5", *(f"SELECT COUNT(*) FROM x WHERE {text}" for text in conditions))
    assert counts == [str(np.count_nonzero(chosen)) for chosen in conditions.values()]
    check_extremes(kelvo, "", values)
    finite = values[(values > -90) & (values < 90)]
    check_extremes(kelvo, "WHERE VALUE > -90 AND VALUE < 90", finite)
    assert float(kelvo.row("USE FILE a.h5", "SELECT SUM(VALUE) FROM x WHERE VALUE > -90 AND VALUE < 90")) == sum(finite.tolist())


def check_extremes(kelvo, clause, values):
    row = kelvo.row("USE FILE a.h5", f"SELECT MIN(VALUE), MAX(VALUE) FROM x {clause} FORMAT TSV")
    assert np.array_equal(numbers(row.split("\t"), values.dtype), [values.min(), values.max()], equal_nan=values.dtype.kind == "f")


@settings(max_examples=60)
@given(values=arrays())
def test_npy_files(kelvo, values):
    write(kelvo, values)
    kelvo.rows("USE FILE a.h5", "SELECT * FROM x INTO OR REPLACE w.npy")
    back = np.load(kelvo.path("w.npy"))
    assert back.dtype == values.dtype.newbyteorder("<")
    assert np.array_equal(back, values, equal_nan=values.dtype.kind == "f")
