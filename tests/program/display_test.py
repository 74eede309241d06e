"""What a result looks like from outside: every data type's width and format, strings, interruption and unexpected types."""

import math
import struct

import pytest
from engine_script import (BIGINT, CHAR, COMPOUND, DOUBLE, ENUMERATION, FLOAT, INT, OPAQUE, SMALLINT, TINYINT,
                           UNSIGNED_BIGINT, UNSIGNED_INT, UNSIGNED_SMALLINT, UNSIGNED_TINYINT,
                           UNSIGNED_VARBIGINT, UNSIGNED_VARINT, UNSIGNED_VARSMALLINT, UNSIGNED_VARTINYINT,
                           VARBIGINT, VARDOUBLE, VARFLOAT, VARINT, VARSMALLINT, VARTINYINT)
from program import INTERRUPTED, Run, count_line

UNEXPECTED = "Error when showing result of the operation as the data type is unexpected.\n"


def shown(program):
    """Output of the statement "query"."""
    run = program.run("--no-status", "--execute=query")
    assert run.status == 0
    return run.stdout


INTEGERS = [
    (TINYINT, VARTINYINT, -2**7, 2**7 - 1), (UNSIGNED_TINYINT, UNSIGNED_VARTINYINT, 0, 2**8 - 1),
    (SMALLINT, VARSMALLINT, -2**15, 2**15 - 1), (UNSIGNED_SMALLINT, UNSIGNED_VARSMALLINT, 0, 2**16 - 1),
    (INT, VARINT, -2**31, 2**31 - 1), (UNSIGNED_INT, UNSIGNED_VARINT, 0, 2**32 - 1),
    (BIGINT, VARBIGINT, -2**63, 2**63 - 1), (UNSIGNED_BIGINT, UNSIGNED_VARBIGINT, 0, 2**64 - 1),
    (UNSIGNED_TINYINT, OPAQUE, 0, 2**8 - 1)]


@pytest.mark.parametrize("scalar, array, low, high", INTEGERS)
def test_integers_over_their_whole_range(program, scalar, array, low, high):
    values = [low, low + 1, (low + high) // 2, 0, 1, high - 1, high]
    program.engine.answers("query").row(array, *values)
    for value in values:
        program.engine.row(scalar, value)
    assert shown(program) == " ".join(map(str, values)) + "\n" + "".join(f"{value}\n" for value in values)


REALS = [0.0, -0.0, 2.0, 0.5, 1.5, -1.25, 0.1, 1e-7, 5e-7, 123456.7890625, 1e20, 1e38, -1e38]


@pytest.mark.parametrize("scalar, array, values", [
    (DOUBLE, VARDOUBLE, [*REALS, 1e300, -1.7976931348623157e308, 5e-324]),
    (FLOAT, VARFLOAT, REALS)], ids=["double", "float"])
def test_reals_in_fixed_notation_with_six_digits(program, scalar, array, values):
    if scalar == FLOAT:
        values = [struct.unpack("f", struct.pack("f", value))[0] for value in values]
    texts = ["%f" % value for value in values]
    program.engine.answers("query").row(array, *map(repr, values))
    for value in values:
        program.engine.row(scalar, repr(value))
    assert shown(program) == " ".join(texts) + "\n" + "".join(text + "\n" for text in texts)


@pytest.mark.parametrize("scalar, array", [(FLOAT, VARFLOAT), (DOUBLE, VARDOUBLE)], ids=["float", "double"])
def test_infinities_and_nan_as_libc_spells_them(program, scalar, array):
    values = [math.inf, -math.inf, math.nan]
    program.engine.answers("query").row(array, *values).row(scalar, math.inf)
    assert shown(program) == "inf -inf nan\ninf\n"


def test_empty_result_prints_nothing(program):
    run = program.run("--execute=query")
    assert run == Run(0, count_line(0), [])
    assert run.calls == ["kelvo_execute(query)", "kelvo_cursor_next(null)", "_kelvo_get_last_data_count()",
                         "kelvo_cursor_clear(null)"]


def test_rows_of_many_types(program):
    (program.engine.answers("query").row(INT, 7).characters("abc").text("text").row(VARINT, 1, -2, 3)
     .row(VARFLOAT, 0.5, 1).row(OPAQUE, 0, 255).row(DOUBLE, 2).row(VARINT).count(9))
    assert program.run("--execute=query") == Run(
        0, "7\nabc\ntext\n1 -2 3\n0.500000 1.000000\n0 255\n2.000000\n\n" + count_line(9), [])


def test_counts_that_lie_show_in_the_output(program):
    (program.engine.answers("query").row(VARINT, 1, 2, 3).claiming(9).row(VARINT, 1, 2, 3).claiming(0)
     .row(VARINT, 1, 2, 3).claiming(2).row(VARINT, 1, 2, 3).claiming(1).row(VARINT, 1, 2).claiming(-1)
     .row(VARINT).claiming(5))
    assert shown(program) == "1 2 3 \n1 2 3 \n1 23\n123\n1 2 \n\n"


def test_char_writes_every_byte_as_it_is(program):
    every_byte = "".join(map(chr, range(256)))
    program.engine.answers("query").characters(every_byte)
    assert shown(program) == every_byte + "\n"


def test_char_is_read_without_the_count(program):
    program.engine.answers("query").characters("abc").claiming(1)
    run = program.run("--execute=query")
    assert run.stdout == "abc\n" + count_line(0)
    assert "kelvo_subcursor_get_count(null)" not in run.calls


def test_varchar_whole_up_to_its_nul_and_null(program):
    program.engine.answers("query").text("a <b>%s</b> \xff").text("cut\0here").text("").text(None).text("end")
    assert shown(program) == "a <b>%s</b> \xff\ncut\n\n\nend\n"


@pytest.mark.parametrize("code", [ENUMERATION, COMPOUND, 1 << 23, 0, -1, INT | CHAR])
def test_unexpected_type_after_rows_of_other_types(program, code):
    program.engine.answers("query").row(INT, 1).row(code).row(INT, 2).count(3)
    run = program.run("--execute=query\nnext")
    assert run == Run(0, "1\n" + UNEXPECTED, [])
    assert run.statements == ["query"]
    assert run.calls[-1] == "kelvo_cursor_clear(null)"


def test_unexpected_type_does_not_end_the_loop(program):
    program.engine.answers("query").row(COMPOUND)
    run = program.run("--no-path", lines=["query", "next", "exit"])
    assert f">query\n{UNEXPECTED}>next\n{count_line(0)}>exit\n" in run.stdout


@pytest.mark.parametrize("statement_rows, operation, occurrence, output", [
    pytest.param(lambda e: e.row(VARINT, 1, 2, 3), "kelvo_subcursor_get_int", 1, "1 \n", id="inner element"),
    pytest.param(lambda e: e.row(VARINT, 1, 2, 3), "kelvo_subcursor_get_int", 3, "1 2 3\n", id="final element"),
    pytest.param(lambda e: e.characters("abc"), "kelvo_subcursor_get_unsigned_tinyint", 2, "ab\n", id="character"),
    pytest.param(lambda e: e.row(INT, 1).row(INT, 2), "kelvo_cursor_get_int", 1, "1\n", id="scalar"),
    pytest.param(lambda e: e.text("one").text("two"), "kelvo_cursor_get_char", 1, "one\n", id="string"),
    pytest.param(lambda e: e.row(INT, 1).row(INT, 2), "kelvo_execute", 1, "1\n", id="engine at work"),
])
def test_interrupt_ends_the_line_and_the_text(program, statement_rows, operation, occurrence, output):
    statement_rows(program.engine.answers("query")).interrupted_in(operation, occurrence)
    run = program.run("--execute=query\nnext")
    assert run == Run(0, output + INTERRUPTED, [])
    assert run.statements == ["query"]
    assert run.calls[-1] == "kelvo_cursor_clear(null)"


def test_interrupt_of_a_statement_without_values_reaches_the_next_one_with_a_value(program):
    program.engine.answers("quiet").interrupted_in("kelvo_execute")
    program.engine.answers("list").row(VARINT, 1, 2).count(2)
    run = program.run("--execute=quiet\nlist\nnext", "--save-file=saved.txt")
    assert run == Run(0, count_line(0) + "1 \n" + INTERRUPTED, [])
    assert run.statements == ["quiet", "list"]
    assert program.read("saved.txt") == "quiet\n"


def test_interrupt_after_the_last_row_is_too_late(program):
    program.engine.answers("query").row(INT, 1).count(1).interrupted_in("kelvo_cursor_next", 2)
    assert program.run("--execute=query") == Run(0, "1\n" + count_line(1), [])


def test_interrupt_during_an_error_report_changes_nothing(program):
    program.engine.fails("bad", -1, 2, "No").interrupted_in("kelvo_error_get_message")
    assert program.run("--execute=bad") == Run(1, "No (line 1 at position 2 - status -1).\n", [])


def test_failing_sigaction_is_ignored(program):
    program.engine.answers("query").row(INT, 1).count(1)
    run = program.run("--execute=query", faults={"sigaction": 1})
    assert run == Run(0, "1\n" + count_line(1), [])


@pytest.mark.parametrize("milliseconds, seconds", [
    (0, "0.0"), (40, "0.0"), (50, "0.1"), (1000, "1.0"), (1940, "1.9"), (61260, "61.3"), (-2000, "-2.0")])
def test_seconds_are_milliseconds_over_a_thousand_with_one_decimal(program, milliseconds, seconds):
    run = program.run("--execute=a", faults={"clock_step": milliseconds})
    assert run == Run(0, count_line(0, seconds), [])


@pytest.mark.parametrize("count", [0, 1, 2, -1, 2**31 - 1, -2**31])
def test_count_line_is_singular_for_exactly_one(program, count):
    program.engine.answers("a").count(count)
    assert program.run("--execute=a") == Run(0, count_line(count), [])


def test_error_message_is_printed_plainly(program):
    program.engine.fails("bad", -1, -4, "<b>%s</b> \"x\"")
    assert program.run("--execute=bad") == Run(1, '<b>%s</b> "x" (line 1 at position -4 - status -1).\n', [])


def test_error_output_is_empty_even_when_all_goes_wrong(program):
    program.engine.fails("bad", 3, 0, "No")
    program.run("--execute=bad", "--save-file=/dev/full")  # run() compares the error output
