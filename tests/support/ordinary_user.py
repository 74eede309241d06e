"""File modes concern every user but root, who often runs the tests.

Nor need another user be able to reach the program, which may lie below /root. So the program stays root's, without the
powers that let root pass.
"""

import ctypes
import os

PR_CAPBSET_DROP = 24
CAP_DAC_OVERRIDE = 1
CAP_DAC_READ_SEARCH = 2


def give_up_powers():
    libc = ctypes.CDLL(None, use_errno=True)
    for power in (CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH):
        if libc.prctl(PR_CAPBSET_DROP, power, 0, 0, 0) != 0:
            raise OSError(ctypes.get_errno(), "root's powers cannot be given up")


# For subprocess.Popen: the program that is then executed has what modes give the owner, and no more.
ORDINARY_USER = {"preexec_fn": give_up_powers} if os.geteuid() == 0 else {}
