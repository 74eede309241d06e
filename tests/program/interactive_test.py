"""The loop without a terminal: prompts, dispatch and line joining, with lines as they come through a pipe."""

import os
import select
import subprocess

import pytest
from engine_script import INT, VARINT
from help_texts import not_found
from program import BANNER, GREETING, INTERRUPTED, Run, count_line, use_default_sigint

HELP_HEADING = 'Select one of the following topics (example: "help create"):\n'


def dialogue(*pieces):
    """The whole output of a loop under the prompt ">": typed lines and what they print."""
    return BANNER + GREETING + "".join(pieces)


# --- Calls ---

def test_calls_of_a_loop_come_in_order(program):
    program.engine.groups("/g").answers("a").row(INT, 5).count(1)
    run = program.run(lines=["a", "exit"])
    assert run == Run(0, dialogue("/g>a\n5\n", count_line(1), "/g>exit\n"), [])
    assert run.calls == [
        "_kelvo_get_architecture()", "_kelvo_get_compiler()",
        "_kelvo_show_use_group()", "_kelvo_show_use_group()",
        "kelvo_execute(a)", "kelvo_cursor_next(null)", "kelvo_cursor_get_data_type(null)",
        "kelvo_cursor_get_int(null)", "kelvo_cursor_next(null)", "_kelvo_get_last_data_count()",
        "kelvo_cursor_clear(null)",
        "_kelvo_show_use_group()", "_kelvo_show_use_group()"]


# --- EXIT and HELP ---

@pytest.mark.parametrize("line", ["exit", "EXIT", "  Exit  ", "eXiT", "\texit\t"])
def test_exit_ends_the_program_with_status_0(program, line):
    run = program.run("--no-path", lines=[line, "never"])
    assert run.status == 0
    assert run.statements == []


@pytest.mark.parametrize("line", ["exit;", "exit now", "exit\r", "\vexit", "exi t", "'exit'", "exit # now"])
def test_what_only_resembles_exit_is_executed(program, line):
    # Control characters are typed with control-V before them, or they would be editing keys.
    typed = "".join("\x16" + c if c < " " else c for c in line)
    run = program.run("--no-path", lines=[typed, "exit"])
    assert run.statements == [line]


def test_exit_status_is_0_after_a_failed_statement(program):
    program.engine.fails("bad", 4, 0, "No")
    run = program.run("--no-path", lines=["bad", "exit"])
    assert run == Run(0, dialogue(">bad\nNo (status 4).\n>exit\n"), [])


@pytest.mark.parametrize("line", ["help", "HELP", "  Help  "])
def test_help_shows_the_main_menu(program, line):
    run = program.run("--no-path", lines=[line, "exit"])
    assert f">{line}\n{HELP_HEADING}\n" in run.stdout
    assert run.statements == []


def test_help_with_a_topic_is_normalised(program):
    run = program.run("--no-path", lines=["help   show  group", "exit"])
    assert run.stdout == dialogue(
        ">help   show  group\n\x1b[1mSyntax:\x1b[0m\nTo be defined\n\n"
        "\x1b[1mDescription:\x1b[0m\nTo be defined\n>exit\n")
    assert run.statements == []


@pytest.mark.parametrize("line", ["helpme", "help;", "help;create", "'help'", "hel p"])
def test_what_only_resembles_help_is_executed(program, line):
    run = program.run("--no-path", lines=[line, "exit"])
    assert run.statements == [line]


def test_help_asks_nothing_of_the_engine(program):
    run = program.run("--no-path", lines=["help", "help all", "help nothing", "exit"])
    assert run.calls == ["_kelvo_get_architecture()", "_kelvo_get_compiler()"]


# --- Lines that are not ignored here ---

def test_line_of_blanks_goes_to_execute_which_skips_it(program):
    run = program.run("--no-path", lines=["   ", "exit"])
    assert run == Run(0, dialogue(">   \n>exit\n"), [])
    assert run.calls[2:] == ["kelvo_cursor_clear(null)"]


def test_comment_line_goes_to_execute_which_skips_it(program):
    run = program.run("--no-path", lines=["  # exit", "exit"])
    assert run == Run(0, dialogue(">  # exit\n>exit\n"), [])
    assert run.calls[2:] == ["kelvo_cursor_clear(null)"]


def test_empty_line_is_ignored(program):
    run = program.run("--no-path", lines=["", "", "exit"])
    assert run == Run(0, dialogue(">\n>\n>exit\n"), [])
    assert run.calls[2:] == []


# --- Prompts ---

def test_group_in_use_is_the_prompt(program):
    program.engine.groups("/a/b c")
    assert program.run(lines=["exit"]).stdout == dialogue("/a/b c>exit\n")


@pytest.mark.parametrize("group", ["", "/", "%s%n", "<b>x</b>"])
def test_group_is_shown_as_it_is(program, group):
    program.engine.groups(group)
    assert program.run(lines=["exit"]).stdout == dialogue(f"{group}>exit\n")


def test_no_group_in_use_is_the_plain_prompt_and_asked_once(program):
    run = program.run(lines=["exit"])
    assert run.stdout == dialogue(">exit\n")
    assert run.calls.count("_kelvo_show_use_group()") == 1


def test_group_is_asked_twice_and_the_second_answer_shown(program):
    program.engine.groups("/first", "/second")
    run = program.run(lines=["exit"])
    assert run.stdout == dialogue("/second>exit\n")
    assert run.calls.count("_kelvo_show_use_group()") == 2


def test_statement_that_changes_the_group_changes_the_next_prompt(program):
    program.engine.groups("/").answers("use group a").using_group("/a")
    run = program.run("--no-status", lines=["use group a", "exit"])
    assert run.stdout == dialogue("/>use group a\n/a>exit\n")


def test_group_is_not_asked_for_with_no_path(program):
    program.engine.groups("/a")
    run = program.run("--no-path", lines=["", "exit"])
    assert run.stdout == dialogue(">\n>exit\n")
    assert "_kelvo_show_use_group()" not in run.calls


def test_group_is_not_asked_for_while_a_statement_is_continued(program):
    program.engine.groups("/a")
    run = program.run("--no-status", lines=["x\\", "y\\", "z", "exit"])
    assert run.stdout == dialogue("/a>x\\\n.y\\\n.z\n/a>exit\n")
    assert run.calls.count("_kelvo_show_use_group()") == 4


def test_continuation_prompt_is_the_same_with_no_path(program):
    run = program.run("--no-path", "--no-status", lines=["x\\", "y", "exit"])
    assert run.stdout == dialogue(">x\\\n.y\n>exit\n")


# --- Line joining: what is typed and the statements that it makes ---

@pytest.mark.parametrize("lines, statements", [
    pytest.param(["show \\", "group"], ["show group"], id="blank before the backslash"),
    pytest.param(["show\\", " group"], ["show group"], id="blank at the start of the next line"),
    pytest.param(["show\\", "group"], ["showgroup"], id="no blank is put between the pieces"),
    pytest.param(["a\\", "b\\", "c\\", "d"], ["abcd"], id="many lines"),
    pytest.param(["a\\\\"], ["a\\"], id="two backslashes end the statement in one"),
    pytest.param(["a\\\\\\", "b"], ["a\\b"], id="three backslashes continue and leave one"),
    pytest.param(["a\\\\\\\\"], ["a\\\\"], id="four backslashes end the statement in two"),
    pytest.param(["a\\\\\\\\\\", "b"], ["a\\\\b"], id="five backslashes continue and leave two"),
    pytest.param(["\\\\"], ["\\"], id="a line of two backslashes is a statement of one"),
    pytest.param(["\\\\\\", "x"], ["\\x"], id="a line of three backslashes continues"),
    pytest.param(["a\\b\\\\c"], ["a\\b\\\\c"], id="backslashes within a line stay"),
    pytest.param(["a\\ "], ["a\\ "], id="a blank after the backslash makes it an ordinary one"),
    pytest.param(["a\\", ""], ["a"], id="an empty line sends what is pending"),
    pytest.param(["a\\", "\\", "b"], ["ab"], id="a backslash alone goes on with what is pending"),
    pytest.param(["a\\", "\\\\"], ["a\\"], id="two backslashes end what is pending"),
    pytest.param(["a\\", " "], ["a "], id="a line of blanks ends what is pending"),
    pytest.param(["a\\", "# b"], ["a# b"], id="a comment sign in a continuation is no comment line"),
    pytest.param(["# a\\", "b", "c"], ["c"], id="a comment is continued like a statement"),
    pytest.param(["ex\\", "it now"], ["exit now"], id="not the command exit"),
])
def test_joining(program, lines, statements):
    run = program.run("--no-path", "--save-file=saved.txt", lines=[*lines, "exit"])
    assert run.status == 0
    assert run.statements == statements
    assert program.read("saved.txt") == "".join(statement + "\n" for statement in statements)


def test_backslash_alone_with_nothing_pending_appends_nothing(program):
    run = program.run("--no-path", lines=["\\", "exit"])
    assert run == Run(0, dialogue(">\\\n>exit\n"), [])
    assert run.statements == []


def test_exit_may_be_joined(program):
    run = program.run("--no-path", lines=["ex\\", "it"])
    assert run == Run(0, dialogue(">ex\\\n.it\n"), [])


def test_exit_may_be_sent_by_an_empty_line(program):
    assert program.run("--no-path", lines=["exit\\", ""]) == Run(0, dialogue(">exit\\\n.\n"), [])


def test_help_may_be_joined(program):
    run = program.run("--no-path", lines=["help \\", "no\\", "thing", "exit"])
    assert run == Run(0, dialogue(">help \\\n.no\\\n.thing\n", not_found("nothing"), ">exit\n"), [])


def test_buffer_is_empty_after_each_statement(program):
    run = program.run("--no-path", lines=["a\\", "b", "c", "help nothing", "d", "exit"])
    assert run.statements == ["ab", "c", "d"]


# --- Locale ---

def test_commands_are_recognised_and_bytes_pass_in_any_locale(program):
    program.locale = "C.UTF-8"
    statement = "caf\xc3\xa9 \xe2\x82\xac"  # UTF-8
    run = program.run("--no-path", lines=[statement, "Help Nothing", "eXit"])
    assert run.status == 0
    assert run.statements == [statement]
    assert not_found("Nothing") in run.stdout


# --- History ---

def test_every_line_but_an_empty_one_goes_into_the_history_as_typed(program):
    lines = ["a", "a", "", "  ", "# x", "b\\", "", "c\\\\\\", "d\\\\", "help", "help x\\", "y", "  Exit\\", " "]
    run = program.run("--no-path", lines=lines, faults={"history": program.path("history")})
    assert run.status == 0
    assert program.read("history").split("\n")[:-1] == [line for line in lines if line]


# --- Several statements in one text: a line break typed with control-V ---

def test_typed_line_break_divides_the_text(program):
    program.engine.fails("bad", -1, 3, "No")
    run = program.run("--no-path", "--no-status", lines=["a\x16\nbad", "exit"])
    assert run.statements == ["a", "bad"]
    assert "No (line 2 at position 3 - status -1).\n" in run.stdout


# --- Interrupts ---

def test_interrupted_display_returns_to_the_prompt(program):
    program.engine.answers("list").row(VARINT, 1, 2, 3).interrupted_in("kelvo_subcursor_get_int", 2)
    program.engine.answers("next").row(VARINT, 4, 5).count(2)
    run = program.run("--no-path", lines=["list", "next", "exit"])
    assert run == Run(0, dialogue(">list\n1 2 \n", INTERRUPTED, ">next\n4 5\n", count_line(2), ">exit\n"), [])


def test_interrupt_never_crosses_into_the_next_statement(program):
    program.engine.answers("quiet").interrupted_in("kelvo_execute")
    program.engine.answers("next").row(VARINT, 4, 5).count(2)
    run = program.run("--no-path", lines=["quiet", "next", "exit"])
    assert run == Run(0, dialogue(">quiet\n", count_line(0), ">next\n4 5\n", count_line(2), ">exit\n"), [])


# --- End of input ---

def test_exhausted_input_never_ends_the_loop(program):
    """Each read ends with a newline and the prompt is shown again, until the program is stopped from outside."""
    wanted = (BANNER + GREETING + ">\n" * 1000).encode()
    process = subprocess.Popen([program.executable, "--no-path"], stdin=subprocess.DEVNULL,
                               stdout=subprocess.PIPE, cwd=program.folder,
                               env=program.environment(None), preexec_fn=use_default_sigint)
    try:
        seen = b""
        while len(seen) < len(wanted):
            readable, _, _ = select.select([process.stdout], [], [], 30)
            assert readable, "the loop has come to rest"
            seen += os.read(process.stdout.fileno(), len(wanted) - len(seen))
        assert seen == wanted
        assert process.poll() is None
    finally:
        process.kill()
        process.wait()
        process.stdout.close()


def test_pending_statement_stays_pending_at_the_end_of_input(program):
    program.write("typed", "a\\\n")
    wanted = (BANNER + GREETING + ">a\\\n" + ".\n" * 100).encode()
    with open(program.path("typed"), "rb") as typed:
        process = subprocess.Popen([program.executable, "--no-path"], stdin=typed, stdout=subprocess.PIPE,
                                   cwd=program.folder, env=program.environment(None),
                                   preexec_fn=use_default_sigint)
        try:
            assert process.stdout.read(len(wanted)) == wanted
        finally:
            process.kill()
            process.wait()
            process.stdout.close()
    assert "kelvo_execute(a)" not in program.calls()
