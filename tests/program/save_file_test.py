"""The save file: when it is created, what is appended to it, and errors that do not stop the work."""

import errno
import resource
import signal

import pytest
from engine_script import COMPOUND, INT, VARINT
from program import BANNER, GREETING, INTERRUPTED, Run, count_line, use_default_sigint


def test_created_empty_by_a_loop_that_is_left_at_once(program):
    run = program.run("--save-file=out.txt", lines=["exit"])
    assert run == Run(0, BANNER + GREETING + ">exit\n", [])
    assert program.read("out.txt") == ""


def test_earlier_content_is_kept(program):
    program.write("out.txt", "before\n")
    program.run("--save-file=out.txt", "--execute=a")
    assert program.read("out.txt") == "before\na\n"


def test_opened_for_appending(program):
    program.run("--save-file=out.txt", "--execute=a", faults={"streams": program.path("streams")})
    assert "fopen out.txt a" in program.read("streams").splitlines()


def test_statements_are_saved_as_typed_with_or_without_status(program):
    program.run("--save-file=out.txt", "--execute=  Show\tgroup # all ")
    program.run("--save-file=out.txt", "--no-status", "--execute=second")
    assert program.read("out.txt") == "  Show\tgroup # all \nsecond\n"


def test_typed_statements_are_saved_joined(program):
    program.run("--save-file=out.txt", lines=["show \\", "group", "select 'a\\\\", "exit"])
    assert program.read("out.txt") == "show group\nselect 'a\\\n"


def test_exit_and_help_are_never_saved(program):
    program.run("--save-file=out.txt", lines=["help", "help nothing", "a", "exit"])
    assert program.read("out.txt") == "a\n"


def test_blank_and_comment_lines_are_never_saved(program):
    program.run("--save-file=out.txt", lines=["   ", "# comment", "a", "exit"])
    assert program.read("out.txt") == "a\n"


def test_failed_statement_is_not_saved(program):
    program.engine.fails("bad", 1, 0, "No")
    program.run("--save-file=out.txt", lines=["a", "bad", "b", "exit"])
    assert program.read("out.txt") == "a\nb\n"


def test_interrupted_statement_is_not_saved(program):
    program.engine.answers("list").row(VARINT, 1, 2, 3).interrupted_in("kelvo_subcursor_get_int", 2)
    run = program.run("--save-file=out.txt", "--execute=a\nlist\nb")
    assert run == Run(0, count_line(0) + "1 2 \n" + INTERRUPTED, [])
    assert program.read("out.txt") == "a\n"


def test_statement_with_an_unexpected_type_is_not_saved(program):
    program.engine.answers("odd").row(COMPOUND)
    program.run("--save-file=out.txt", "--execute=a\nodd\nb")
    assert program.read("out.txt") == "a\n"


def test_each_statement_is_on_disk_before_the_next_prompt(program):
    program.engine.answers("b").row(INT, 1)
    program.run("--save-file=out.txt", lines=["a", "x" * 1024])  # which ends the process at once
    assert program.read("out.txt") == "a\n"


def test_closed_on_exit(program):
    program.run("--save-file=out.txt", lines=["a", "exit"], faults={"streams": program.path("streams")})
    lines = program.read("streams").splitlines()
    assert lines.count("fopen out.txt a") == 1
    assert lines.count("fclose out.txt") == 1


# --- Errors when it is opened ---

def assert_refused(program, path, reason="", **options):
    run = program.run("--save-file=" + path, "--execute=a", **options)
    assert run == Run(1, f'Error when opening file "{path}"{reason}.\n\n', [])
    assert run.calls == []


def test_missing_folder_is_a_plain_error(program):
    assert_refused(program, "missing/out.txt")


def test_missing_folder_is_a_plain_error_in_the_loop(program):
    run = program.run("--save-file=missing/out.txt", lines=["exit"])
    assert run == Run(1, 'Error when opening file "missing/out.txt".\n\n', [])


def test_folder_is_a_plain_error(program):
    program.path("out.txt").mkdir()
    assert_refused(program, "out.txt")


@pytest.mark.parametrize("error", [errno.ENOENT, errno.EROFS, errno.ENOSPC, errno.EMFILE])
def test_any_other_error_number_is_a_plain_error(program, error):
    assert_refused(program, "out.txt", faults={"fopen": error, "path": "out.txt"})


def test_error_number_eacces_is_not_accessible(program):
    assert_refused(program, "out.txt", " as it is not accessible", faults={"fopen": errno.EACCES, "path": "out.txt"})


def test_file_without_write_permission_is_not_accessible(unprivileged_program):
    unprivileged_program.write("out.txt", "before\n")
    unprivileged_program.path("out.txt").chmod(0o444)
    assert_refused(unprivileged_program, "out.txt", " as it is not accessible")
    assert unprivileged_program.read("out.txt") == "before\n"


def test_new_file_in_a_closed_folder_is_not_accessible(unprivileged_program):
    unprivileged_program.path("closed").mkdir()
    unprivileged_program.path("closed").chmod(0o555)
    assert_refused(unprivileged_program, "closed/out.txt", " as it is not accessible")


def test_refused_save_file_keeps_the_script_from_running(program):
    program.write("file.txt", "a")
    run = program.run("--execute-file=file.txt", "--save-file=missing/out.txt")
    assert run.status == 1
    assert run.statements == []


# --- Errors when it is written ---

LONG = "x" * 300000  # longer than any stream's buffer, so that the write fails and not only the flush


def test_full_device_is_told_and_the_run_goes_on(program):
    message = (f'Error when writing operation "{LONG}" into file "/dev/full" '
               "as there is not enough space available.\n")
    program.write("file.txt", f"{LONG}\n{LONG}\n")
    run = program.run("--save-file=/dev/full", "--execute-file=file.txt")
    assert run == Run(0, (count_line(0) + message) * 2, [])


def test_error_that_shows_only_at_the_flush_goes_unreported(program):
    run = program.run("--save-file=/dev/full", "--execute=a\nb")
    assert run == Run(0, count_line(0) * 2, [])


def test_other_write_error_is_told_plainly(program):
    limit = 10_000_000

    def limit_file_size():
        use_default_sigint()
        signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
        resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))

    program.write("file.txt", f"{LONG}\n")
    program.write("out.txt", "y" * limit)
    run = program.run("--save-file=out.txt", "--execute-file=file.txt", preexec_fn=limit_file_size)
    assert run == Run(0, f'{count_line(0)}Error when writing operation "{LONG}" into file "out.txt".\n', [])
