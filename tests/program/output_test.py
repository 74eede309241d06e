"""How output reaches what is behind it: many rows at once, and each as it comes where somebody watches."""

import os
import pty
import socket
import subprocess

from engine_script import DOUBLE, INT, VARINT
from program import TIMEOUT_SECONDS

PIPE_BYTES = 65536
COMMAND = ("--no-status", "--execute=query")


def start(program, output):
    return subprocess.Popen([str(program.executable), *COMMAND], stdin=subprocess.DEVNULL, stdout=output,
                            cwd=program.folder, env=program.environment(None))


def writes_of(program):
    """What each write of the program brought: a socket of this kind keeps them apart."""
    here, there = socket.socketpair(socket.AF_UNIX, socket.SOCK_SEQPACKET)
    with here, start(program, there) as process:
        there.close()
        here.settimeout(TIMEOUT_SECONDS)
        writes = []
        while data := here.recv(4 * PIPE_BYTES):
            writes.append(data)
    assert process.returncode == 0
    return writes


def test_a_long_result_goes_out_in_what_a_pipe_holds(program):
    values = list(range(-15_000, 15_000))
    program.engine.answers("query").row(VARINT, *values[:10_000])
    for value in values[10_000:]:
        program.engine.row(INT, value)
    expected = " ".join(map(str, values[:10_000])) + "\n" + "".join(f"{value}\n" for value in values[10_000:])
    writes = writes_of(program)
    assert b"".join(writes) == expected.encode()
    assert [len(data) for data in writes] == [PIPE_BYTES] * 2 + [len(expected) - 2 * PIPE_BYTES]


def test_every_end_of_the_buffer_is_passed_with_all_bytes(program):
    """Texts of growing length and numbers of 318 bytes meet the buffer's end in many ways."""
    program.engine.answers("query")
    expected = ""
    for length in range(1, 600):
        program.engine.text("x" * length).row(DOUBLE, "-1e308").row(INT, length)
        expected += "x" * length + "\n" + "%f\n" % -1e308 + f"{length}\n"
    assert b"".join(writes_of(program)) == expected.encode()


def test_a_text_longer_than_the_buffer(program):
    text = "0123456789" * 20_000
    program.engine.answers("query").row(INT, 1).text(text).row(INT, 2)
    assert b"".join(writes_of(program)) == f"1\n{text}\n2\n".encode()


def test_a_terminal_sees_each_line_as_it_comes(program):
    """While the engine still waits for the third row, the first two are there."""
    program.engine.answers("query").row(INT, 1).text("two").row(INT, 3).waiting_in("kelvo_cursor_next", 3)
    leader, follower = pty.openpty()
    with start(program, follower) as process:
        os.close(follower)
        seen = b""
        while seen.count(b"\n") < 2:
            seen += os.read(leader, 1024)
        process.kill()
    os.close(leader)
    assert seen == b"1\r\ntwo\r\n"
