"""Runs statements through the built program and its default engine, and tells all that came out.

Each run is a process of its own, in the test's scratch folder, and reads its statements from a file, as a script of a
user's would. Rows are compared as the program prints them.
"""

import os
import re
import resource
import signal
import subprocess
from dataclasses import dataclass
from pathlib import Path

TIMEOUT_SECONDS = 60
FINDING = 99  # exit status of a sanitized program that a sanitizer ended
ERROR_LINE = re.compile(r"(?P<message>.*) \((?:line (?P<line>\d+) at position (?P<position>\d+) - )?"
                        r"status (?P<status>-?\d+)\)\.")


@dataclass
class Answer:
    rows: list  # of all statements before the failed one, as printed
    status: int = 0  # that of the statement that failed, which is the last that ran
    message: str = ""
    position: int | None = None  # within its line, for status -1 alone
    output: bytes = b""  # all that was printed, for values that hold line ends


class Kelvo:
    """The program in a scratch folder, where it runs and where its files are."""

    def __init__(self, folder):
        self.folder = Path(folder)
        self.program = Path(os.environ["KELVO_PROGRAM"])
        # Where the HDF5 library looks for filters: by default nowhere, so that the machine's do not matter. None: where
        # Debian puts them.
        self.plugins = self.path("no plug-ins")
        self.faults = {}  # that the program meets; see tests/faults/inject.c
        # For sanitized builds, where an allocation that is too large fails as libc's does. What the sanitizer has to say is
        # no output of the program; only a finding ends it, with a status that the program has not.
        self.sanitizer_options = {"allocator_may_return_null": 1, "exitcode": FINDING, "log_path": self.path("sanitizer")}

    def path(self, name):
        return self.folder / name

    def run(self, *statements, **popen_options):
        """Runs the statements (str or bytes, one a line) up to the first that fails."""
        lines = [line if isinstance(line, bytes) else line.encode("utf-8", "surrogateescape") for line in statements]
        script = self.path(".statements")
        script.write_bytes(b"\n".join(lines) + b"\n")
        finished = subprocess.run([self.program, "--no-status", f"--execute-file={script.name}"], cwd=self.folder,
                                  env=self.environment(), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                  stderr=subprocess.PIPE, timeout=TIMEOUT_SECONDS, **popen_options)
        script.unlink()
        assert finished.stderr == b""
        assert finished.returncode in (0, 1), f"the program ended with {finished.returncode}\n{self.findings()}"
        return read_answer(finished.stdout, failed=finished.returncode == 1)

    def rows(self, *statements, **popen_options):
        """The rows of statements that all succeed."""
        answer = self.run(*statements, **popen_options)
        assert (answer.status, answer.message) == (0, "")
        return answer.rows

    def row(self, *statements, **popen_options):
        """The only row of statements that all succeed."""
        rows = self.rows(*statements, **popen_options)
        assert len(rows) == 1, rows
        return rows[0]

    def error(self, *statements, **popen_options):
        """(status, message), or (-1, message, position), of the last statement, which fails; those before it succeed."""
        answer = self.run(*statements, **popen_options)
        assert answer.status != 0, f"no statement failed; rows: {answer.rows}"
        if answer.position is None:
            return answer.status, answer.message
        line = int(ERROR_LINE.fullmatch(last_line(answer.output))["line"])
        assert line == len(statements), f"line {line} failed: {answer.message}"
        return answer.status, answer.message, answer.position

    def run_on_full_disk(self, most_bytes, *statements):
        """Where no file can become longer than that: writing fails with EFBIG, as on a full disk with ENOSPC."""
        def limit():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (most_bytes, most_bytes))

        # The HDF5 library does not give back all memory when it cannot write.
        self.sanitizer_options |= {"detect_leaks": 0}
        return self.run(*statements, preexec_fn=limit, restore_signals=False)

    def environment(self):
        """Nothing is inherited that could change what the program does."""
        inherited = ("PATH", "LD_PRELOAD")
        environment = {name: os.environ[name] for name in inherited if name in os.environ} | {
            "HOME": str(self.folder), "LC_ALL": "C", "TERM": "dumb",
            "ASAN_OPTIONS": ":".join(f"{name}={value}" for name, value in self.sanitizer_options.items())}
        if self.plugins is not None:
            environment["HDF5_PLUGIN_PATH"] = str(self.plugins)
        if self.faults:
            environment["LD_PRELOAD"] = os.environ["KELVO_FAULTS"]
            environment["ASAN_OPTIONS"] += ":verify_asan_link_order=0"
            environment |= {f"FAULT_{name.upper()}": str(value) for name, value in self.faults.items()}
        return environment

    def findings(self):
        """What a sanitizer wrote."""
        return "\n".join(log.read_text() for log in self.folder.glob("sanitizer.*"))


def last_line(output):
    return output.decode("utf-8", "surrogateescape").removesuffix("\n").split("\n")[-1]


def read_answer(output, failed):
    rows = output.decode("utf-8", "surrogateescape").split("\n")
    assert rows.pop() == "", f"the output does not end a line: {output!r}"
    if not failed:
        return Answer(rows, output=output)
    error = ERROR_LINE.fullmatch(rows.pop())
    assert error is not None, f"no error line at the end of {output!r}"
    position = error["position"]
    return Answer(rows, int(error["status"]), error["message"], None if position is None else int(position), output)
