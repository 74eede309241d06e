"""The history in memory: which lines it holds, and how."""

import pytest
from terminal import DOWN, UP, Terminal


@pytest.fixture
def terminal(program):
    program.engine.groups("/g")
    terminal = Terminal(program, "--no-status")
    terminal.until("/g>")
    yield terminal
    terminal.kill()


def recall(terminal, keys, prompt="/g>"):
    """The statement that runs when a line is fetched by these keys and entered."""
    before = len(terminal.statements())
    terminal.edit(keys, prompt)
    return terminal.statements()[before:]


def test_arrow_up_fetches_the_last_line(terminal):
    terminal.enter("first")
    terminal.enter("second")
    assert recall(terminal, UP) == ["second"]


def test_arrow_up_twice_fetches_the_line_before(terminal):
    terminal.enter("first")
    terminal.enter("second")
    assert recall(terminal, UP + UP) == ["first"]


def test_arrow_down_goes_forward(terminal):
    terminal.enter("first")
    terminal.enter("second")
    assert recall(terminal, UP + UP + DOWN) == ["second"]


def test_lines_are_held_exactly_as_typed(terminal):
    terminal.enter("  Show   Group ; ")
    assert recall(terminal, UP) == ["  Show   Group ; "]


def test_duplicates_are_held(terminal):
    terminal.enter("first")
    terminal.enter("twice")
    terminal.enter("twice")
    assert recall(terminal, UP + UP + UP) == ["first"]


def test_empty_lines_are_not_held(terminal):
    terminal.enter("first")
    terminal.enter("")
    assert recall(terminal, UP) == ["first"]


def test_lines_of_blanks_are_held(terminal):
    terminal.enter("first")
    terminal.enter("   ")
    assert recall(terminal, UP + "x") == ["   x"]
    assert recall(terminal, UP + UP + UP) == ["first"]


def test_comment_lines_are_held(terminal):
    terminal.enter("first")
    terminal.enter("# comment")
    terminal.edit(UP + "\x01x")  # control-A: to the start of the line
    assert terminal.statements() == ["first", "x# comment"]


def test_continuation_lines_are_held_each_with_its_backslashes(terminal):
    terminal.enter("one\\", prompt=".")
    terminal.enter("two\\\\\\", prompt=".")
    terminal.enter("three")
    assert terminal.statements() == ["onetwo\\three"]
    assert recall(terminal, UP) == ["three"]
    assert recall(terminal, UP + UP + UP + "x") == ["two\\\\\\x"]
    assert recall(terminal, UP * 5 + "x") == ["one\\x"]


def test_empty_line_that_ends_a_statement_is_not_held(terminal):
    terminal.enter("one\\", prompt=".")
    terminal.enter("")
    assert recall(terminal, UP + "x") == ["one\\x"]


def test_help_lines_are_held(terminal):
    terminal.enter("help nothing")
    assert recall(terminal, UP + "\x01x") == ["xhelp nothing"]


def test_exit_lines_are_held(terminal):
    # An "exit" that ends the program cannot be fetched again; the first piece of a joined one can.
    terminal.enter("exit\\", prompt=".")
    terminal.enter(" later")
    assert recall(terminal, UP + UP + "x") == ["exit\\x"]


def test_failed_lines_are_held(program, terminal):
    assert terminal.enter("bad \\", prompt=".") == ""
    terminal.type("\r")
    terminal.until("/g>")
    assert recall(terminal, UP + "\x7f" * 2) == ["bad"]


def test_history_is_unlimited(terminal):
    for number in range(600):
        terminal.enter(f"line {number}")
    assert recall(terminal, UP * 600) == ["line 0"]


def test_history_is_not_kept_between_sessions(program, terminal):
    terminal.enter("first")
    terminal.exit()
    assert sorted(path.name for path in program.folder.iterdir()) == ["engine.calls", "engine.script"]
    again = Terminal(program, "--no-status")
    again.until("/g>")
    again.edit(UP + "x")
    assert again.statements() == ["first", "x"]
    again.exit()
