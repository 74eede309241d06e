"""Control-C on a terminal: at the prompt, while the engine works and while a result is shown."""

import re
import signal

import pytest
from engine_script import INT, VARINT
from program import INTERRUPTED, count_line
from terminal import CONTROL_C, Terminal


@pytest.fixture
def start(program):
    terminals = []
    program.engine.groups("/g")

    def start_terminal(*arguments, **options):
        terminals.append(Terminal(program, *arguments, **options))
        terminals[-1].until("/g>")
        return terminals[-1]

    yield start_terminal
    for terminal in terminals:
        terminal.kill()


def masked(output):
    return re.sub(r"\d+\.\d seconds", "0.0 seconds", output)


def interrupt(terminal, line):
    """Enters a line, presses control-C when the engine waits for it; all that the line prints."""
    terminal.type(line + "\r")
    terminal.wait_for_call("waiting")
    terminal.type(CONTROL_C)
    output = masked(terminal.until("/g>"))
    # The terminal itself echoes the key, at a moment of its own.
    return output.replace("^C", "").partition("\n")[2]


# --- At the prompt ---

def test_at_the_prompt_ends_the_program_by_sigint(start):
    terminal = start()
    terminal.type(CONTROL_C)
    assert terminal.end() == -signal.SIGINT


def test_at_the_prompt_with_something_typed_ends_the_program_too(start):
    terminal = start()
    terminal.type("show gr")
    terminal.until("show gr")
    terminal.type(CONTROL_C)
    assert terminal.end() == -signal.SIGINT
    assert terminal.statements() == []


def test_at_the_continuation_prompt_ends_the_program_too(start):
    terminal = start()
    terminal.enter("show\\", prompt=".")
    terminal.type(CONTROL_C)
    assert terminal.end() == -signal.SIGINT


def test_at_the_prompt_after_a_statement_ends_the_program_too(start):
    terminal = start()
    terminal.enter("a")
    terminal.type(CONTROL_C)
    assert terminal.end() == -signal.SIGINT


def test_at_the_prompt_after_an_interrupted_display_ends_the_program_too(start, program):
    program.engine.answers("a").row(INT, 1).waiting_in("kelvo_cursor_get_int")
    terminal = start()
    interrupt(terminal, "a")
    terminal.type(CONTROL_C)
    assert terminal.end() == -signal.SIGINT


def test_at_the_prompt_a_sigint_ignored_from_the_start_stays_ignored(start):
    def ignore_sigint():
        signal.signal(signal.SIGINT, signal.SIG_IGN)

    terminal = start(before_start=ignore_sigint)
    terminal.enter("a")
    terminal.type(CONTROL_C)
    terminal.type("b\r")
    terminal.until("/g>")
    terminal.exit()
    assert terminal.statements()[0] == "a"


# --- While a result is shown ---

def test_during_a_long_list_ends_the_line_and_returns_to_the_prompt(start, program):
    program.engine.answers("list").row(VARINT, *range(100)).row(INT, 7).count(101)
    program.engine.waiting_in("kelvo_subcursor_get_int", 50)
    program.engine.answers("next").row(VARINT, 1, 2).count(2)
    terminal = start()
    shown = " ".join(map(str, range(50)))
    assert interrupt(terminal, "list") == shown + " \n" + INTERRUPTED
    assert masked(terminal.enter("next")) == "1 2\n" + count_line(2)
    terminal.exit()


def test_between_rows_stops_after_the_row(start, program):
    program.engine.answers("rows").row(INT, 1).row(INT, 2).row(INT, 3)
    program.engine.waiting_in("kelvo_cursor_get_int", 2)
    terminal = start()
    assert interrupt(terminal, "rows") == "1\n2\n" + INTERRUPTED
    terminal.exit()


def test_rows_are_on_the_terminal_before_the_next_one_is_asked_for(start, program):
    program.engine.answers("rows").row(INT, 1).text("two").row(INT, 3).waiting_in("kelvo_cursor_get_int", 2)
    terminal = start()
    terminal.type("rows\r")
    terminal.wait_for_call("waiting")
    assert terminal.until("two\r\n") == "rows\n1\n"
    terminal.type(CONTROL_C)
    terminal.until("/g>")
    terminal.exit()


def test_interrupted_statement_is_not_saved(start, program):
    program.engine.answers("rows").row(INT, 1).waiting_in("kelvo_cursor_get_int")
    terminal = start("--save-file=saved.txt")
    terminal.enter("a")
    interrupt(terminal, "rows")
    terminal.enter("b")
    terminal.exit()
    assert program.read("saved.txt") == "a\nb\n"


# --- While the engine works ---

def test_during_execution_stops_at_the_first_value(start, program):
    program.engine.answers("list").row(VARINT, 1, 2, 3).waiting_in("kelvo_execute")
    terminal = start()
    assert interrupt(terminal, "list") == "1 \n" + INTERRUPTED
    terminal.exit()


def test_during_execution_without_values_changes_nothing(start, program):
    program.engine.answers("quiet").waiting_in("kelvo_execute")
    program.engine.answers("list").row(VARINT, 1, 2).count(2)
    terminal = start("--save-file=saved.txt")
    assert interrupt(terminal, "quiet") == count_line(0)
    assert masked(terminal.enter("list")) == "1 2\n" + count_line(2)
    terminal.exit()
    assert program.read("saved.txt") == "quiet\nlist\n"


def test_during_an_error_report_is_forgotten(start, program):
    program.engine.fails("bad", 4, 0, "No").waiting_in("kelvo_error_get_message")
    program.engine.answers("list").row(VARINT, 1, 2).count(2)
    terminal = start()
    assert interrupt(terminal, "bad") == "No (status 4).\n"
    assert masked(terminal.enter("list")) == "1 2\n" + count_line(2)
    terminal.exit()


# --- In script mode ---

def test_in_script_mode_stops_the_text_with_status_0(program):
    program.engine.answers("list").row(VARINT, 1, 2, 3).waiting_in("kelvo_subcursor_get_int", 2)
    terminal = Terminal(program, "--execute=list\nnext")
    try:
        terminal.wait_for_call("waiting")
        terminal.type(CONTROL_C)
        assert terminal.until(INTERRUPTED.replace("\n", "\r\n")).replace("^C", "") == "1 2 \n"
        assert terminal.end() == 0
        assert terminal.statements() == ["list"]
    finally:
        terminal.kill()
