"""Buffers of 1024 bytes: 1023 characters are accepted, one more ends the process by SIGABRT. No build type makes a difference."""

import signal

import pytest
from program import BANNER, GREETING, Run, count_line

LONGEST = "x" * 1023
TOO_LONG = "x" * 1024
ABORTED = -signal.SIGABRT


def long_path(length, name="f"):
    """A path of exactly that length to a file in the current folder."""
    return ("./" * length)[:length - len(name) - length % 2] + "/" * (length % 2) + name


def test_statement_text_of_1023_characters_is_accepted(program):
    run = program.run("--execute=" + LONGEST)
    assert run.status == 0
    assert run.statements == [LONGEST]


def test_statement_file_path_of_1023_characters_is_accepted(program):
    program.write("f", "show group")
    path = long_path(1023)
    assert len(path) == 1023
    assert program.run("--execute-file=" + path).statements == ["show group"]


def test_save_file_path_of_1023_characters_is_accepted(program):
    assert program.run("--execute=a", "--save-file=" + long_path(1023)).status == 0
    assert program.read("f") == "a\n"


@pytest.mark.parametrize("option", ["--execute=", "--execute-file=", "--save-file="])
@pytest.mark.parametrize("value", [TOO_LONG, "x" * 5000], ids=["1024", "5000"])
def test_option_value_of_1024_characters_or_more_aborts(program, option, value):
    run = program.run(option + value)
    assert run == Run(ABORTED, "", [])
    assert run.calls == []


@pytest.mark.parametrize("others", [["--help"], ["--version"], ["--execute=a"]])
def test_overlong_value_aborts_while_arguments_are_read(program, others):
    run = program.run(*others, "--execute=" + TOO_LONG)
    assert run == Run(ABORTED, "", [])
    assert run.calls == []


def test_overlong_value_is_not_reached_after_a_refused_argument(program):
    run = program.run("--execute=", "--execute=" + TOO_LONG)
    assert run.status == 1


def test_typed_statement_of_1023_characters_is_accepted(program):
    run = program.run(lines=[LONGEST, "exit"])
    assert run.status == 0
    assert run.statements == [LONGEST]


def test_typed_statement_of_1024_characters_aborts(program):
    run = program.run(lines=[TOO_LONG, "exit"])
    assert run.status == ABORTED
    assert run.statements == []


def test_joined_statement_of_1023_characters_is_accepted(program):
    run = program.run(lines=["x" * 500 + "\\", "x" * 500 + "\\", "x" * 23, "exit"])
    assert run.status == 0
    assert run.statements == [LONGEST]


def test_joined_statement_of_1024_characters_aborts(program):
    run = program.run(lines=["x" * 500 + "\\", "x" * 500 + "\\", "x" * 24, "exit"])
    assert run.status == ABORTED
    assert run.statements == []


def test_backslashes_that_join_or_pair_do_not_count(program):
    run = program.run(lines=["x" * 1000 + "\\", "x" * 20 + "\\" * 6, "exit"])
    assert run.status == 0
    assert run.statements == ["x" * 1020 + "\\" * 3]


def test_longest_statement_may_be_followed_by_an_empty_continuation(program):
    run = program.run(lines=[LONGEST + "\\", "", "exit"])
    assert run.statements == [LONGEST]


def test_statements_do_not_add_up(program):
    run = program.run(lines=[LONGEST, "y" * 1023, "exit"])
    assert run.statements == [LONGEST, "y" * 1023]


def test_help_topic_of_1023_characters_is_quoted_whole(program):
    topic = "y" * (1023 - len("help "))
    run = program.run("--no-path", lines=["help " + topic, "exit"])
    assert run.status == 0
    assert f'Help topic/subtopic "{topic}" not found.\n' in run.stdout


def test_group_path_of_1022_characters_is_accepted(program):
    path = "/" + "g" * 1021
    program.engine.groups(path)
    run = program.run(lines=["exit"])
    assert run.status == 0
    assert run.stdout.startswith(BANNER + GREETING)


def test_group_path_of_1023_characters_aborts(program):
    program.engine.groups("/" + "g" * 1022)
    run = program.run(lines=["exit"])
    assert run.status == ABORTED


def test_group_path_is_not_formatted_without_path(program):
    program.engine.groups("/" + "g" * 5000)
    assert program.run("--no-path", lines=["exit"]).status == 0


def test_script_lines_may_be_of_any_length(program):
    statement = "x" * 200000
    program.write("long.txt", statement + "\nnext\n")
    run = program.run("--execute-file=long.txt")
    assert run == Run(0, count_line(0) * 2, [])
    assert run.statements == [statement, "next"]
