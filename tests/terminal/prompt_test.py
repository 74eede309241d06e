"""The prompt on a terminal: banner, prompts, keys, and the end of input."""

import re
import signal

import pytest
from program import BANNER, GREETING, count_line
from terminal import CONTROL_D, Terminal


@pytest.fixture
def start(program):
    """Starts sessions and ends those that are still running."""
    terminals = []
    program.engine.groups("/g")

    def start_terminal(*arguments, **options):
        terminals.append(Terminal(program, "--no-status", *arguments, **options))
        return terminals[-1]

    yield start_terminal
    for terminal in terminals:
        terminal.kill()


def test_session_begins_with_banner_greeting_and_prompt(start):
    terminal = start()
    assert terminal.until("/g>") == BANNER + GREETING
    terminal.exit()


def test_prompt_is_plain_without_a_group(start, program):
    program.engine.lines.clear()
    terminal = start()
    assert terminal.until(">") == BANNER + GREETING
    terminal.exit()


def test_prompt_is_plain_with_no_path(start):
    terminal = start("--no-path")
    assert terminal.until(">") == BANNER + GREETING
    terminal.exit()


def test_prompt_follows_the_group_in_use(start, program):
    program.engine.answers("use group h").using_group("/g/h")
    terminal = start()
    terminal.until("/g>")
    assert terminal.enter("use group h", prompt="/g/h>") == ""
    assert terminal.enter("a", prompt="/g/h>") == ""
    terminal.exit()


def test_prompt_of_a_continued_statement_is_a_full_stop(start):
    terminal = start()
    terminal.until("/g>")
    assert terminal.enter("show \\", prompt=".") == ""
    assert terminal.enter("all \\", prompt=".") == ""
    assert terminal.enter("groups") == ""
    assert terminal.statements() == ["show all groups"]
    terminal.exit()


def test_backslash_alone_shows_the_group_prompt_again(start):
    terminal = start()
    terminal.until("/g>")
    assert terminal.enter("\\") == ""
    terminal.exit()


def test_empty_line_sends_what_is_pending(start):
    terminal = start()
    terminal.until("/g>")
    terminal.enter("pending\\", prompt=".")
    assert terminal.enter("") == ""
    assert terminal.statements() == ["pending"]
    terminal.exit()


def test_help_is_shown_at_the_prompt(start):
    terminal = start()
    terminal.until("/g>")
    assert terminal.enter("help use file") == (
        "\x1b[1mSyntax:\x1b[0m\nTo be defined\n\n\x1b[1mDescription:\x1b[0m\nTo be defined\n")
    terminal.exit()


def test_count_line_is_bold(program):
    program.engine.groups("/g").answers("a").count(1)
    terminal = Terminal(program)
    terminal.until("/g>")
    masked = re.sub(r"\d+\.\d seconds", "0.0 seconds", terminal.enter("a"))
    assert masked == count_line(1)
    terminal.exit()


def test_exit_from_a_continued_statement(start):
    terminal = start()
    terminal.until("/g>")
    terminal.enter("ex\\", prompt=".")
    terminal.type("it\r")
    assert terminal.end() == 0


# --- Keys ---

def test_tab_inserts_itself(start, program):
    program.write("completion", "")  # what completing file names would find
    terminal = start()
    terminal.until("/g>")
    terminal.edit("show\tcomp\t")
    assert terminal.statements() == ["show\tcomp\t"]
    terminal.exit()


def test_tab_alone_inserts_itself(start):
    terminal = start()
    terminal.until("/g>")
    terminal.edit("\t\t")
    assert terminal.statements() == []  # a line of blanks, which execute skips
    terminal.edit("\t#\ta")
    assert terminal.statements() == []
    terminal.exit()


def test_line_can_be_edited(start):
    terminal = start()
    terminal.until("/g>")
    terminal.edit("shiw\x7f\x7fow\x01// \x05 !")  # backspace, control-A, control-E
    assert terminal.statements() == ["// show !"]
    terminal.exit()


# --- End of input ---

def test_control_d_on_an_empty_line_ends_the_line_and_shows_the_prompt_again(start):
    terminal = start()
    terminal.until("/g>")
    for _ in range(3):
        terminal.type(CONTROL_D)
        assert terminal.until("/g>") == "\n"
    assert terminal.enter("a") == ""
    assert terminal.statements() == ["a"]
    terminal.exit()


def test_control_d_keeps_a_statement_pending(start):
    terminal = start()
    terminal.until("/g>")
    terminal.enter("show \\", prompt=".")
    terminal.type(CONTROL_D)
    assert terminal.until(".") == "\n"
    assert terminal.enter("group") == ""
    assert terminal.statements() == ["show group"]
    terminal.exit()


# --- Lengths ---

def test_statement_of_1023_characters_is_accepted(start):
    terminal = start()
    terminal.until("/g>")
    terminal.enter("x" * 511 + "\\", prompt=".")
    terminal.enter("x" * 512)
    assert terminal.statements() == ["x" * 1023]
    terminal.exit()


def test_statement_of_1024_characters_aborts(start):
    terminal = start()
    terminal.until("/g>")
    terminal.enter("x" * 512 + "\\", prompt=".")
    terminal.type("x" * 512 + "\r")
    assert terminal.end() == -signal.SIGABRT
    assert terminal.statements() == []


def test_overlong_group_path_aborts(start, program):
    program.engine.answers("use group h").using_group("/" + "h" * 1022)
    terminal = start()
    terminal.until("/g>")
    terminal.type("use group h\r")
    assert terminal.end() == -signal.SIGABRT
