"""The program on a real pseudo-terminal. Every step waits for what must appear, with a time limit; nothing sleeps."""

import time

import pexpect
from program import TIMEOUT_SECONDS, use_default_sigint

UP = "\x1b[A"
DOWN = "\x1b[B"
CONTROL_C = "\x03"
CONTROL_D = "\x04"


class Terminal:
    """A session with the given program in its folder. `prompt` is what the session's lines are typed at."""

    def __init__(self, program, *arguments, prompt="/g>", before_start=use_default_sigint):
        self.program = program
        self.prompt = prompt
        # "dumb": no bracketed paste, no colours; wide enough for no line of the tests to wrap.
        self.child = pexpect.spawn(str(program.executable), list(arguments), env=program.environment(None),
                                   cwd=str(program.folder), timeout=TIMEOUT_SECONDS, encoding="latin-1",
                                   dimensions=(24, 1000), preexec_fn=before_start)
        self.child.delaybeforesend = None

    def until(self, text):
        """What is written up to the text, which is awaited."""
        self.child.expect_exact(text)
        return self.child.before.replace("\r\n", "\n")

    def type(self, text):
        self.child.send(text)

    def enter(self, line, prompt=None):
        """Types a line at the prompt shown; what it prints, up to the next prompt."""
        self.type(line + "\r")
        output = self.until(prompt or self.prompt)
        echo, _, answer = output.partition("\n")
        assert echo == line
        return answer

    def edit(self, keys, prompt=None):
        """Types keys that edit a line, and enters it; what it prints, up to the next prompt. While it is edited the line may
        be drawn again with its prompt, so only a prompt behind its end is the next one."""
        self.type(keys + "\r")
        self.until("\r\n")
        return self.until(prompt or self.prompt)

    def wait_for_call(self, line):
        """Waits for a line of the engine's record."""
        deadline = time.monotonic() + TIMEOUT_SECONDS
        while line not in self.program.calls():
            assert time.monotonic() < deadline, f"{line} is not in {self.program.calls()}"
            time.sleep(0.01)  # between two looks at the file, which nothing announces

    def statements(self):
        prefix = "kelvo_execute("
        return [call[len(prefix):-1] for call in self.program.calls() if call.startswith(prefix)]

    def end(self):
        """Exit status, or the negative number of the signal, of a program that is about to end."""
        self.child.expect(pexpect.EOF)
        self.child.close()
        if self.child.signalstatus is not None:
            return -self.child.signalstatus
        return self.child.exitstatus

    def exit(self):
        self.type("exit\r")
        assert self.end() == 0

    def kill(self):
        self.child.close(force=True)
