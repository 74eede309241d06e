"""Script mode: the statement text, the statement file, and everything that can be wrong with a file."""

import errno
import os

import pytest
from engine_script import INT, VARINT
from program import INTERRUPTED, Run, count_line


# --- Statement text ---

def test_statement_text_runs_without_banner_or_prompt(program):
    program.engine.answers("show group").row(VARINT, 1, -2, 3).count(3)
    assert program.run("--execute=show group") == Run(0, "1 -2 3\n" + count_line(3), [])


def test_statement_text_may_hold_several_lines(program):
    run = program.run("--execute=a\n# comment\r\n\r\nb")
    assert run == Run(0, count_line(0) * 2, [])
    assert run.statements == ["a", "b"]


def test_statement_text_of_blanks_runs_nothing_and_clears_the_cursor(program):
    run = program.run("--execute= \t ")
    assert run == Run(0, "", [])
    assert run.calls == ["kelvo_cursor_clear(null)"]


@pytest.mark.parametrize("statement", ["exit", "EXIT", "help", "HELP", "help create"])
def test_exit_and_help_are_statements_like_any_other(program, statement):
    run = program.run("--execute=" + statement)
    assert run == Run(0, count_line(0), [])
    assert run.statements == [statement]


def test_backslash_at_a_line_end_joins_nothing(program):
    assert program.run("--execute=show\\\ngroup").statements == ["show\\", "group"]


@pytest.mark.parametrize("status, message", [(-1, "No (line 1 at position 6 - status -1).\n"),
                                             (5, "No (status 5).\n"), (256, "No (status 256).\n")])
def test_failed_statement_text_makes_the_exit_status_1(program, status, message):
    program.engine.fails("bad", status, 6, "No")
    assert program.run("--execute=bad") == Run(1, message, [])


def test_interrupted_statement_text_counts_as_success(program):
    program.engine.answers("a").row(INT, 1).interrupted_in("kelvo_cursor_get_int")
    program.write("file.txt", "b")
    run = program.run("--execute=a\nnever", "--execute-file=file.txt")
    assert run == Run(0, "1\n" + INTERRUPTED + count_line(0), [])
    assert run.statements == ["a", "b"]


# --- Statement text, then statement file ---

@pytest.mark.parametrize("order", [1, -1], ids=["text first", "file first"])
def test_statement_text_runs_before_the_file_in_any_order_of_options(program, order):
    program.write("file.txt", "from file")
    run = program.run(*["--execute=from text", "--execute-file=file.txt"][::order])
    assert run == Run(0, count_line(0) * 2, [])
    assert run.calls == [
        "kelvo_execute(from text)", "kelvo_cursor_next(null)", "_kelvo_get_last_data_count()",
        "kelvo_cursor_clear(null)",
        "kelvo_execute(from file)", "kelvo_cursor_next(null)", "_kelvo_get_last_data_count()",
        "kelvo_cursor_clear(null)"]


def test_failed_statement_text_keeps_the_file_closed(program):
    program.engine.fails("bad", 2, 0, "No")
    program.write("file.txt", "from file")
    run = program.run("--execute=bad", "--execute-file=file.txt", faults={"streams": program.path("streams")})
    assert run == Run(1, "No (status 2).\n", [])
    assert run.statements == ["bad"]
    assert opened_and_closed(program) == []


def test_failed_statement_text_hides_a_missing_file(program):
    program.engine.fails("bad", 2, 0, "No")
    assert program.run("--execute=bad", "--execute-file=missing.txt") == Run(1, "No (status 2).\n", [])


def test_status_is_the_files_when_the_statement_text_succeeds(program):
    program.engine.fails("bad", 2, 0, "No")
    program.write("file.txt", "bad")
    assert program.run("--execute=a", "--execute-file=file.txt") == Run(1, count_line(0) + "No (status 2).\n", [])


def test_what_the_statement_text_did_stays_when_the_file_is_missing(program):
    run = program.run("--execute=a", "--execute-file=missing.txt", "--save-file=saved.txt")
    assert run == Run(1, count_line(0) + 'Error when opening file "missing.txt" as it does not exist.\n\n', [])
    assert program.read("saved.txt") == "a\n"


def test_both_runs_append_to_one_save_file(program):
    program.write("file.txt", "b\nc")
    program.run("--execute=a", "--execute-file=file.txt", "--save-file=saved.txt")
    assert program.read("saved.txt") == "a\nb\nc\n"


def test_line_numbers_begin_anew_in_the_file(program):
    program.engine.fails("bad", -1, 1, "No")
    program.write("file.txt", "#\nbad")
    run = program.run("--no-status", "--execute=a\nb\nc", "--execute-file=file.txt")
    assert run == Run(1, "No (line 2 at position 1 - status -1).\n", [])


# --- Content of the file ---

def test_script_runs_line_by_line(program):
    program.write("file.txt", "a\n\n  # comment\n\tb # tail \nc")
    run = program.run("--execute-file=file.txt")
    assert run == Run(0, count_line(0) * 3, [])
    assert run.statements == ["a", "\tb # tail ", "c"]


def test_script_with_carriage_returns(program):
    program.write("file.txt", "a\r\n\r\n# comment\r\nb\rc\r\nd\r")
    run = program.run("--execute-file=file.txt", "--save-file=saved.txt")
    assert run.statements == ["a", "b\rc", "d\r"]
    assert program.read("saved.txt") == "a\nb\rc\nd\r\n"


def test_script_that_fails_in_its_third_line(program):
    program.engine.fails("three", -1, 7, "No")
    program.write("file.txt", "one\ntwo\nthree\nfour\n")
    run = program.run("--execute-file=file.txt", "--save-file=saved.txt")
    assert run == Run(1, count_line(0) * 2 + "No (line 3 at position 7 - status -1).\n", [])
    assert run.statements == ["one", "two", "three"]
    assert program.read("saved.txt") == "one\ntwo\n"


def test_script_ends_at_its_first_nul(program):
    program.write("file.txt", "show group\0\nmore\n")
    run = program.run("--execute-file=file.txt")
    assert run == Run(0, count_line(0), [])
    assert run.statements == ["show group"]


@pytest.mark.parametrize("content", ["", "\0", "\0show group\n"], ids=["empty", "nul", "nul first"])
def test_empty_script_ends_silently_and_runs_nothing(program, content):
    program.write("empty.txt", content)
    run = program.run("--execute-file=empty.txt")
    assert run == Run(0, "", [])
    assert run.calls == []


def test_script_of_comments_is_run_and_finds_nothing(program):
    program.write("file.txt", "# one\n\n# two\n")
    run = program.run("--execute-file=file.txt")
    assert run == Run(0, "", [])
    assert run.calls == ["kelvo_cursor_clear(null)"]


def test_script_bytes_pass_unchanged(program):
    statement = "".join(map(chr, [*range(1, 10), *range(11, 13), *range(14, 35), *range(36, 256)]))
    program.write("file.txt", statement)
    program.run("--execute-file=file.txt", "--save-file=saved.txt")
    assert program.read("saved.txt") == statement + "\n"


def test_script_is_larger_than_any_buffer(program):
    program.write("file.txt", "statement\n" * 20000)
    run = program.run("--execute-file=file.txt", "--no-status")
    assert run == Run(0, "", [])
    assert len(run.statements) == 20000


# --- What can be wrong with the file ---

def opening(reason=""):
    return f'Error when opening file "{{}}"{reason}.\n\n'


def reading(reason=""):
    return f'Error when reading file "{{}}"{reason}.\n\n'


def assert_refused(program, message, path="file.txt", **options):
    run = program.run("--execute-file=" + path, **options)
    assert run == Run(1, message.format(path), [])
    assert run.calls == []


def test_missing_file_does_not_exist(program):
    assert_refused(program, opening(" as it does not exist"), "missing.txt")


def test_file_in_a_missing_folder_does_not_exist(program):
    assert_refused(program, opening(" as it does not exist"), "missing/file.txt")


def test_file_without_read_permission_is_not_accessible(unprivileged_program):
    unprivileged_program.write("file.txt", "show group")
    unprivileged_program.path("file.txt").chmod(0)
    assert_refused(unprivileged_program, opening(" as it is not accessible"))


def test_file_in_a_closed_folder_is_not_accessible(unprivileged_program):
    unprivileged_program.path("closed").mkdir()
    unprivileged_program.path("closed").chmod(0)
    assert_refused(unprivileged_program, opening(" as it is not accessible"), "closed/file.txt")


def test_path_through_a_file_is_a_plain_error(program):
    program.write("file.txt", "show group")
    assert_refused(program, opening(), "file.txt/file.txt")


def test_endless_link_is_a_plain_error(program):
    program.path("file.txt").symlink_to("file.txt")
    assert_refused(program, opening())


def test_overlong_file_name_is_a_plain_error(program):
    assert_refused(program, opening(), "x" * 300)


@pytest.mark.parametrize("error, message", [
    (errno.ENOENT, opening(" as it does not exist")), (errno.EACCES, opening(" as it is not accessible")),
    (errno.EIO, opening()), (errno.EMFILE, opening()), (errno.ENOSPC, opening())])
def test_message_is_chosen_by_the_error_number_of_the_open_alone(program, error, message):
    program.write("file.txt", "show group")
    assert_refused(program, message, faults={"fopen": error, "path": "file.txt"})


def test_path_in_a_message_is_no_format(program):
    assert_refused(program, opening(" as it does not exist"), "100%s<b>")


def test_pipe_has_no_size(program):
    os.mkfifo(program.path("file.txt"))
    holder = os.open(program.path("file.txt"), os.O_RDWR)  # or the program would wait for a writer
    try:
        assert_refused(program, reading(" as its size could not be calculated"))
    finally:
        os.close(holder)


def test_failing_seek_leaves_the_size_unknown(program):
    program.write("file.txt", "show group")
    assert_refused(program, reading(" as its size could not be calculated"), faults={"fseek": 1})


def test_failing_position_leaves_the_size_unknown(program):
    program.write("file.txt", "show group")
    assert_refused(program, reading(" as its size could not be calculated"), faults={"ftell": -1})


def test_content_that_memory_is_lacking_for(program):
    size = 54320
    program.write("file.txt", "x" * size)
    assert_refused(program, reading(" as there is not enough memory available"), faults={"malloc": size + 1})


def test_one_byte_more_than_the_size_is_allocated(program):
    size = 54320
    program.write("file.txt", "x" * size)
    assert program.run("--execute-file=file.txt", faults={"malloc": size}).status == 0


def test_short_read_is_a_reading_error(program):
    program.write("file.txt", "show group")
    assert_refused(program, reading(), faults={"fread": 1})


def test_largest_position_is_more_than_memory_holds(program):
    """Some file systems tell it for a folder; one byte more must not wrap around."""
    program.write("file.txt", "show group")
    largest = (1 << (program.word_bits - 1)) - 1
    assert_refused(program, reading(" as there is not enough memory available"), faults={"ftell": largest})


def test_folder_is_a_reading_error(program):
    """It can be opened. What fails then, the file system decides: finding the size, or allocating it, or the reading."""
    program.path("file.txt").mkdir()
    reasons = [" as its size could not be calculated", " as there is not enough memory available", ""]
    run = program.run("--execute-file=file.txt")
    assert run.status == 1
    assert run.stdout in [reading(reason).format("file.txt") for reason in reasons]
    assert run.calls == []


# --- What is opened is closed ---

def opened_and_closed(program):
    """Opening and closing of streams, as it happened."""
    return program.read("streams").splitlines() if program.path("streams").exists() else []


def test_save_file_is_closed_before_the_script_file(program):
    program.write("file.txt", "a")
    program.run("--execute-file=file.txt", "--save-file=saved.txt", faults={"streams": program.path("streams")})
    assert opened_and_closed(program) == ["fopen saved.txt a", "fopen file.txt rb", "fclose saved.txt",
                                          "fclose file.txt"]


def test_save_file_is_closed_after_a_failed_statement_text(program):
    program.engine.fails("bad", 2, 0, "No")
    program.run("--execute=bad", "--save-file=saved.txt", faults={"streams": program.path("streams")})
    assert opened_and_closed(program) == ["fopen saved.txt a", "fclose saved.txt"]


def test_files_are_closed_after_a_reading_error(program):
    program.write("file.txt", "a")
    program.run("--execute-file=file.txt", "--save-file=saved.txt",
                faults={"streams": program.path("streams"), "fread": 1})
    assert opened_and_closed(program)[2:] == ["fclose saved.txt", "fclose file.txt"]


def test_save_file_is_closed_when_the_script_file_is_missing(program):
    program.run("--execute-file=missing.txt", "--save-file=saved.txt", faults={"streams": program.path("streams")})
    assert opened_and_closed(program) == ["fopen saved.txt a", "fopen missing.txt rb", "fclose saved.txt"]
