"""Runs the built program, with the scripted engine in its engine's place, and tells all that it did.

Output is read as bytes, one character each, and compared whole. The time in count lines is masked as 0.0, unless the
program's clock is a faked one.
"""

import os
import re
import signal
import subprocess
from dataclasses import dataclass, field
from pathlib import Path

from engine_script import EngineScript

PROGRAM = Path(os.environ["KELVO_PROGRAM"])
SCRIPTED_ENGINE = Path(os.environ["KELVO_SCRIPTED_ENGINE"])
FAULTS = Path(os.environ["KELVO_FAULTS"])
TIMEOUT_SECONDS = 30

BANNER = ("KelvoCLI (Command-Line Interface) version 2.3.0 (using scripted test library)\n"
          "KelvoCLI comes with no warranty of any kind.\n\n")
GREETING = 'Type "help" to get more information or "exit" to return to the terminal.\n\n'
INTERRUPTED = "\x1b[1m(Interrupted by the user)\x1b[0m\n"
LIBC_ABORT_REPORT = "*** buffer overflow detected ***: terminated\n"


def count_line(count, seconds="0.0"):
    elements = "element" if count == 1 else "elements"
    return f"\x1b[1m({count} {elements} returned in {seconds} seconds)\x1b[0m\n"


def use_default_sigint():
    """What a program started from a terminal finds; whoever runs the tests may have SIGINT ignored."""
    signal.signal(signal.SIGINT, signal.SIG_DFL)


@dataclass
class Run:
    status: int  # exit status, or the negative number of the signal that ended the program
    stdout: str
    calls: list = field(compare=False)

    @property
    def statements(self):
        """The statements that reached the engine."""
        return [call[len("kelvo_execute("):-1] for call in self.calls
                if call.startswith("kelvo_execute(")]


class Program:
    """The program in a scratch folder of its own, where it is run and where its files are."""

    def __init__(self, folder, executable=PROGRAM, engine_library=SCRIPTED_ENGINE):
        self.folder = Path(folder)
        self.executable = executable
        self.engine_library = engine_library
        self.engine = EngineScript()
        self.popen_options = {}
        self.locale = "C"

    @property
    def word_bits(self):
        elf_class = self.executable.read_bytes()[4]
        return {1: 32, 2: 64}[elf_class]

    def path(self, name):
        return self.folder / name

    def write(self, name, content):
        self.path(name).write_bytes(content.encode("latin-1"))

    def read(self, name):
        return self.path(name).read_bytes().decode("latin-1")

    def calls(self):
        record = self.path("engine.calls")
        # Not splitlines(), to which a carriage return in a statement would be a line end too.
        return record.read_bytes().decode("latin-1").split("\n")[:-1] if record.exists() else []

    def environment(self, faults):
        """Nothing is inherited that could change the program's behaviour. `faults`: see faults/inject.c."""
        self.write("engine.script", str(self.engine))
        environment = {
            "PATH": os.environ["PATH"],
            "HOME": str(self.folder),
            "TERM": "dumb",
            "INPUTRC": "/dev/null",
            "LC_ALL": self.locale,
            "LD_LIBRARY_PATH": str(self.engine_library.parent),
            "KELVO_SCRIPT": str(self.path("engine.script")),
            "KELVO_CALLS": str(self.path("engine.calls")),
            # A preloaded library comes before the sanitizer's; an allocation that is too large fails as libc's does; what
            # the sanitizer itself has to say is no output of the program.
            "ASAN_OPTIONS": "verify_asan_link_order=0:allocator_may_return_null=1:log_path="
                            + str(self.path("sanitizer")),
        }
        if faults:
            environment["LD_PRELOAD"] = str(FAULTS)
            environment.update((f"FAULT_{name.upper()}", str(value)) for name, value in faults.items())
        return environment

    def run(self, *arguments, lines=(), faults=None, **popen_options):
        """Runs the program to its end. `lines` are typed, without a terminal."""
        self.path("engine.calls").unlink(missing_ok=True)
        finished = subprocess.run(
            [str(self.executable), *(argument.encode("latin-1") for argument in arguments)],
            input="".join(line + "\n" for line in lines).encode("latin-1"),
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, cwd=self.folder, env=self.environment(faults),
            timeout=TIMEOUT_SECONDS,
            **{"preexec_fn": use_default_sigint, **self.popen_options, **popen_options})
        aborted = finished.returncode == -signal.SIGABRT
        assert finished.stderr.decode("latin-1") == (LIBC_ABORT_REPORT if aborted else "")
        self.check_sanitizer()
        stdout = finished.stdout.decode("latin-1")
        if "clock_step" not in (faults or {}):
            stdout = re.sub(r"(?<=returned in )\d+\.\d(?= seconds\))", "0.0", stdout)
        return Run(finished.returncode, stdout, self.calls())

    def check_sanitizer(self):
        """A refused allocation is announced as a warning; anything else that the sanitizer says is an error."""
        reports = [path.read_text() for path in self.folder.glob("sanitizer.*")]
        assert [report for report in reports if "ERROR" in report] == []
