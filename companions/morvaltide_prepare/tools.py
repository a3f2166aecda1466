"""Runs other programs on documents from strangers.

Every program gets an argument list, works in a private folder, sees neutral
file names only, and has limits of time, memory and file size.
"""

import ctypes
import os
import resource
import shutil
import signal
import subprocess

from .failure import Failure, ToolMissing, one_line

TIME_LIMIT = 300  # seconds for one run of one program
MEMORY_LIMIT = 4 << 30  # bytes of one process
FILE_LIMIT = 2 << 30  # bytes of one file
_LONGEST_LOG = 1 << 20  # bytes
LONGEST_REMARK = 150  # characters of what a program said

# The signals that ask the program to end.
INTERRUPTS = {signal.SIGINT, signal.SIGTERM, signal.SIGHUP}

# They would change what Ghostscript is told to do.
_UNWANTED_VARIABLES = {"GS_OPTIONS", "GS_DEVICE"}

_PR_SET_PDEATHSIG = 1
_libc = ctypes.CDLL(None)


def _restrict(memory: int, mask: set) -> None:
    signal.pthread_sigmask(signal.SIG_SETMASK, mask)
    # A program that is killed takes its children along.
    _libc.prctl(_PR_SET_PDEATHSIG, signal.SIGKILL)
    for limit, value in ((resource.RLIMIT_AS, memory), (resource.RLIMIT_FSIZE, FILE_LIMIT),
                         (resource.RLIMIT_CPU, TIME_LIMIT), (resource.RLIMIT_CORE, 0)):
        hard = resource.getrlimit(limit)[1]
        if hard == resource.RLIM_INFINITY or hard > value:
            resource.setrlimit(limit, (value, value))


def find(programs: tuple, package: str) -> str:
    """The path of the first of `programs` that is installed."""
    for program in programs:
        path = shutil.which(program)
        if path:
            return os.path.abspath(path)
    raise ToolMissing(programs[-1], package)


def run(command: list, folder: str, output: str = "", memory: int = MEMORY_LIMIT) -> tuple:
    """Runs `command` in `folder`; gives its exit status and what it said.

    The status of a program that a signal ended is negative. Its standard
    output goes to the file `output`, or else counts as said, too. A run over
    the time limit is a Failure.
    """
    environment = {name: value for name, value in os.environ.items()
                   if name not in _UNWANTED_VARIABLES}
    environment |= {"HOME": folder, "TMPDIR": folder, "LC_ALL": "C.UTF-8", "OMP_NUM_THREADS": "1"}
    log = os.path.join(folder, "log")
    open(log, "wb").close()
    with open(log, "ab") as said, open(os.path.join(folder, output or "log"), "ab") as written:
        child = _started(command, folder, environment, written, said, memory)
        try:
            signal.pthread_sigmask(signal.SIG_UNBLOCK, INTERRUPTS)
            status = child.wait(TIME_LIMIT)
        except subprocess.TimeoutExpired:
            name = os.path.basename(command[0])
            raise Failure(f"{name} was stopped after {TIME_LIMIT} seconds") from None
        finally:
            _end_group(child)
    with open(log, "rb") as file:
        return status, file.read(_LONGEST_LOG).decode("utf-8", "replace")


def _started(command, folder, environment, written, said, memory):
    """The running child. Interrupts are blocked then: one that came in between
    would leave a child that nobody knows."""
    mask = signal.pthread_sigmask(signal.SIG_BLOCK, INTERRUPTS)
    try:
        return subprocess.Popen(command, cwd=folder, env=environment, stdin=subprocess.DEVNULL,
                                stdout=written, stderr=said, start_new_session=True,
                                preexec_fn=lambda: _restrict(memory, mask))
    except BaseException:
        signal.pthread_sigmask(signal.SIG_SETMASK, mask)
        raise


def _end_group(child) -> None:
    # What the program itself has started goes with it.
    try:
        os.killpg(child.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass
    child.wait()


def failed(program: str, status: int, said: str) -> Failure:
    """The failure of a program, with the first line of what it said, or the
    first after its warnings."""
    lines = [line.strip() for line in said.splitlines() if line.strip()]
    lines = [line for line in lines if not line.lower().startswith("warning")] or lines
    remark = one_line(lines[0]).removeprefix(f"{program}: ")[:LONGEST_REMARK] if lines else ""
    if not remark:
        remark = f"ended by signal {-status}" if status < 0 else f"exit status {status}"
    return Failure(f"{program}: {remark}")


def need(programs: tuple, package: str, arguments: list, folder: str) -> None:
    """Runs a program that has to end with status 0."""
    path = find(programs, package)
    status, said = run([path] + arguments, folder)
    if status != 0:
        raise failed(programs[-1], status, said)
