"""The command line: every option, every refusal, what wins over what, and the exit statuses."""

import pytest
from engine_script import INT
from program import BANNER, GREETING, Run, count_line

USAGE = (
    "  \x1b[1m--help\x1b[0m            Show this help and exit.\n"
    "  \x1b[1m--version\x1b[0m         Show the version of KelvoCLI and exit.\n"
    "  \x1b[1m--debug\x1b[0m           Show debug information when executing Kelvo operations.\n"
    "  \x1b[1m--no-path\x1b[0m         Do not show group path currently in use in KelvoCLI prompt.\n"
    "  \x1b[1m--no-status\x1b[0m       Do not show status after executing Kelvo operations.\n"
    "  \x1b[1m--execute=X\x1b[0m       Execute Kelvo operation(s) \"X\" and exit.\n"
    "  \x1b[1m--execute-file=X\x1b[0m  Execute Kelvo operation(s) stored in file \"X\" and exit.\n"
    "  \x1b[1m--save-file=X\x1b[0m     Save executed Kelvo operation(s) to file \"X\".\n\n")

SPECIFY_EXECUTE = 'Specify the operation(s) to be executed. Example: --execute="show group"\n\n'
SPECIFY_EXECUTE_FILE = ("Specify the file containing the operation(s) to be executed. "
                        "Example: --execute-file=my_file.txt\n\n")
SPECIFY_SAVE_FILE = ("Specify the file where the executed operation(s) will be saved. "
                     "Example: --save-file=my_file.txt\n\n")
BANNER_CALLS = ["_kelvo_get_architecture()", "_kelvo_get_compiler()"]


def invalid(argument):
    return (f'{BANNER}Parameter "{argument}" invalid. '
            'Execute with "--help" to see valid parameters.\n\n')


# --- Banner, help and version ---

def test_banner_asks_architecture_then_compiler_and_shows_compiler_first(program):
    program.engine.compiler("GNU 12.2").architecture("x86 (32-bit)")
    run = program.run("--help")
    assert run.stdout.splitlines()[0] == (
        "KelvoCLI (Command-Line Interface) version 2.3.0 (using GNU 12.2 x86 (32-bit) library)")
    assert run.calls == BANNER_CALLS


def test_banner_takes_the_engines_texts_as_they_are(program):
    program.engine.compiler("%s%n<b>").architecture("%d\\")
    assert "(using %s%n<b> %d\\ library)\n" in program.run("--help").stdout


def test_help_shows_banner_and_usage(program):
    assert program.run("--help") == Run(0, BANNER + USAGE, [])


def test_descriptions_of_the_usage_begin_in_the_21st_column():
    for line in USAGE.strip("\n").split("\n"):
        visible = line.replace("\x1b[1m", "").replace("\x1b[0m", "")
        assert visible[:20].endswith("  ") and visible[20] != " "


def test_version_shows_the_number_alone_and_asks_nothing_of_the_engine(program):
    run = program.run("--version")
    assert run == Run(0, "2.3.0\n", [])
    assert run.calls == []


@pytest.mark.parametrize("arguments", [
    ["--help", "--version"], ["--version", "--help"], ["--help", "--help"],
    ["--debug", "--help"], ["--help", "--no-path", "--no-status"],
    ["--execute=show group", "--help"], ["--help", "--execute-file=missing.txt"],
    ["--save-file=missing/out.txt", "--help"]])
def test_help_wins_over_every_other_option(program, arguments):
    run = program.run(*arguments)
    assert run == Run(0, BANNER + USAGE, [])
    assert run.calls == BANNER_CALLS


def test_help_creates_no_save_file(program):
    program.run("--save-file=out.txt", "--help")
    assert not program.path("out.txt").exists()


@pytest.mark.parametrize("arguments", [
    ["--version", "--version"], ["--debug", "--version"], ["--version", "--debug"],
    ["--version", "--execute=show group"], ["--version", "--execute-file=missing.txt"],
    ["--no-path", "--no-status", "--version", "--save-file=out.txt"]])
def test_version_wins_over_everything_but_help(program, arguments):
    run = program.run(*arguments)
    assert run == Run(0, "2.3.0\n", [])
    assert run.calls == []
    assert not program.path("out.txt").exists()


# --- Refusals ---

@pytest.mark.parametrize("argument", [
    "--bogus", "--execute", "--execute-file", "--save-file", "--Help", "--HELP", "--help=1", "--debugX",
    "--version ", " --help", "-h", "--", "-", "", "help", "show group", "--Execute=a", "--executefile=a",
    "--no_path", "--no-status=1", "--save-file:x", "--%s%n", "--<b>", "--\xff"])
def test_any_other_argument_is_an_invalid_parameter(program, argument):
    run = program.run(argument)
    assert run == Run(1, invalid(argument), [])
    assert run.calls == BANNER_CALLS


def test_long_invalid_parameter_is_shown_whole(program):
    argument = "--" + "x" * 5000
    assert program.run(argument) == Run(1, invalid(argument), [])


@pytest.mark.parametrize("argument, message", [
    ("--execute=", SPECIFY_EXECUTE),
    ("--execute-file=", SPECIFY_EXECUTE_FILE),
    ("--save-file=", SPECIFY_SAVE_FILE)])
def test_empty_value_is_refused(program, argument, message):
    run = program.run(argument)
    assert run == Run(1, BANNER + message, [])
    assert run.calls == BANNER_CALLS


def test_empty_value_is_refused_after_help(program):
    assert program.run("--help", "--execute=") == Run(1, BANNER + SPECIFY_EXECUTE, [])


def test_empty_value_is_refused_after_a_full_one_of_the_same_option(program):
    assert program.run("--execute=a", "--execute=") == Run(1, BANNER + SPECIFY_EXECUTE, [])


def test_invalid_parameter_is_refused_after_help(program):
    assert program.run("--help", "--bogus") == Run(1, invalid("--bogus"), [])


def test_first_bad_argument_is_the_one_reported(program):
    assert program.run("--one", "--save-file=", "--two") == Run(1, invalid("--one"), [])
    assert program.run("--save-file=", "--one") == Run(1, BANNER + SPECIFY_SAVE_FILE, [])


def test_every_argument_is_read_before_any_takes_effect(program):
    run = program.run("--debug", "--save-file=out.txt", "--execute=a", "--bogus")
    assert run == Run(1, invalid("--bogus"), [])
    assert run.calls == BANNER_CALLS
    assert not program.path("out.txt").exists()


# --- Values ---

def test_last_value_of_an_option_wins(program):
    assert program.run("--execute=a", "--execute=b").statements == ["b"]


def test_last_value_wins_when_it_is_shorter(program):
    assert program.run("--execute=a long statement", "--execute=b").statements == ["b"]


def test_last_statement_file_wins(program):
    program.write("one.txt", "one")
    program.write("two.txt", "two")
    assert program.run("--execute-file=one.txt", "--execute-file=two.txt").statements == ["two"]


def test_last_save_file_wins_and_the_other_is_not_created(program):
    program.run("--save-file=one.txt", "--save-file=two.txt", "--execute=a")
    assert program.read("two.txt") == "a\n"
    assert not program.path("one.txt").exists()


@pytest.mark.parametrize("value", ["=", "a=b", "--help", " ", "\t", "--execute=x", "'quoted'", "\xff\x80"])
def test_value_is_everything_after_the_equals_sign(program, value):
    run = program.run("--save-file=out.txt", "--execute=" + value)
    assert run.status == 0
    assert program.read("out.txt") == (value + "\n" if value.strip() else "")


def test_flags_may_be_given_twice(program):
    assert program.run("--no-status", "--no-status", "--no-path", "--no-path", "--execute=a") == Run(0, "", [])


# --- Debug ---

DEBUG_CALL = "kelvo_execute(SET DEBUG ENABLE)"


def test_debug_goes_straight_to_the_engine_before_the_first_statement(program):
    run = program.run("--execute=a", "--debug")
    assert run == Run(0, count_line(0), [])
    assert run.calls == [DEBUG_CALL, "kelvo_execute(a)", "kelvo_cursor_next(null)",
                         "_kelvo_get_last_data_count()", "kelvo_cursor_clear(null)"]


def test_debug_given_twice_is_sent_once(program):
    assert program.run("--debug", "--debug", "--execute=a").calls.count(DEBUG_CALL) == 1


@pytest.mark.parametrize("status", [-1, 7])
def test_debug_failing_is_ignored(program, status):
    program.engine.fails("SET DEBUG ENABLE", status, 3, "No debugging here")
    run = program.run("--debug", "--execute=a")
    assert run == Run(0, count_line(0), [])
    assert run.calls[:2] == [DEBUG_CALL, "kelvo_execute(a)"]


def test_result_of_debug_is_not_shown_nor_timed_nor_saved(program):
    program.engine.answers("SET DEBUG ENABLE").row(INT, 1).count(1)
    run = program.run("--debug", "--save-file=out.txt", "--no-path", lines=["exit"])
    assert run.stdout == BANNER + GREETING + ">exit\n"
    assert program.read("out.txt") == ""


def test_debug_is_sent_before_the_save_file_is_opened(program):
    run = program.run("--debug", "--save-file=missing/out.txt")
    assert run == Run(1, 'Error when opening file "missing/out.txt".\n\n', [])
    assert run.calls == [DEBUG_CALL]


def test_debug_is_sent_before_the_banner_of_the_loop(program):
    run = program.run("--debug", "--no-path", lines=["exit"])
    assert run.calls == [DEBUG_CALL, *BANNER_CALLS]


# --- Modes ---

def test_no_arguments_start_the_loop(program):
    run = program.run(lines=["exit"])
    assert run == Run(0, BANNER + GREETING + ">exit\n", [])


def test_no_path_has_no_effect_in_script_mode(program):
    run = program.run("--no-path", "--execute=a")
    assert run == Run(0, count_line(0), [])
    assert "_kelvo_show_use_group()" not in run.calls


def test_no_status_hides_the_count_line_in_script_mode(program):
    program.engine.answers("a").row(INT, 5).count(1)
    assert program.run("--no-status", "--execute=a") == Run(0, "5\n", [])


def test_no_status_hides_the_count_line_in_the_loop(program):
    program.engine.answers("a").row(INT, 5).count(1)
    run = program.run("--no-status", lines=["a", "exit"])
    assert run.stdout == BANNER + GREETING + ">a\n5\n>exit\n"


def test_order_of_the_options_does_not_matter(program):
    program.engine.answers("a").row(INT, 5).count(1)
    program.write("file.txt", "b")
    arguments = ["--no-status", "--execute=a", "--execute-file=file.txt", "--save-file=out.txt", "--debug"]
    forward = program.run(*arguments)
    backward = program.run(*reversed(arguments))
    assert forward.calls == backward.calls
    assert forward == backward == Run(0, "5\n", [])
    assert program.read("out.txt") == "a\nb\n" * 2
