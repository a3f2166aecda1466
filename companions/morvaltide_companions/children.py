"""Child processes, and the signals that ask the program to end: whatever it has
started ends with it."""

import ctypes
import os
import signal
import subprocess

INTERRUPTS = (signal.SIGTERM, signal.SIGINT, signal.SIGHUP)

_PR_SET_PDEATHSIG = 1
_libc = ctypes.CDLL(None)


class Interrupted(BaseException):
    """A signal asked the program to end."""

    def __init__(self, number):
        super().__init__(number)
        self.number = number


def raise_on_signals():
    """Lets the signals that ask a program to end unwind it, so that it tidies up."""

    def interrupt(number, _):
        # A second one must not break the tidying up.
        for each in INTERRUPTS:
            signal.signal(each, signal.SIG_IGN)
        raise Interrupted(number)

    for each in INTERRUPTS:
        if signal.getsignal(each) != signal.SIG_IGN:
            signal.signal(each, interrupt)


def end_by_signal(number):
    """Ends this program as the signal would have done."""
    signal.signal(number, signal.SIG_DFL)
    os.kill(os.getpid(), number)


def run(arguments, seconds, restrict=None, **options):
    """Runs a program with `options` of Popen; gives its exit status (below 0: the
    signal that ended it), or None if it was stopped after so many seconds.

    It gets a process group of its own, all of which is killed at the end, when
    this program is interrupted, too. `restrict` is called in the child in front
    of the program.
    """
    # Between its start and the wait, an interrupt would leave a child that nobody
    # knows.
    mask = signal.pthread_sigmask(signal.SIG_BLOCK, INTERRUPTS)
    parent = os.getpid()

    def prepare():
        signal.pthread_sigmask(signal.SIG_SETMASK, mask)
        # A program that is killed takes its children along.
        _libc.prctl(_PR_SET_PDEATHSIG, signal.SIGKILL)
        if os.getppid() != parent:
            os._exit(1)
        if restrict is not None:
            restrict()

    try:
        child = subprocess.Popen(arguments, start_new_session=True, preexec_fn=prepare, **options)
        try:
            return _wait(child, seconds, mask)
        finally:
            _end_group(child)
    finally:
        signal.pthread_sigmask(signal.SIG_SETMASK, mask)


def _wait(child, seconds, mask):
    signal.pthread_sigmask(signal.SIG_SETMASK, mask)
    try:
        return child.wait(seconds)
    except subprocess.TimeoutExpired:
        return None
    finally:
        signal.pthread_sigmask(signal.SIG_BLOCK, INTERRUPTS)


def _end_group(child):
    # What it left running has no business any more either.
    try:
        os.killpg(child.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass
    child.wait()
