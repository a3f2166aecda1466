"""Runs other programs on documents from strangers.

Every program gets an argument list, works in a private folder, sees neutral
file names only, and has limits of time, memory and file size.
"""

import os
import resource
import shutil
import subprocess

from morvaltide_companions import children

from .failure import Failure, ToolMissing, one_line

TIME_LIMIT = 300  # seconds for one run of one program
MEMORY_LIMIT = 4 << 30  # bytes of one process
FILE_LIMIT = 2 << 30  # bytes of one file
_LONGEST_LOG = 1 << 20  # bytes
LONGEST_REMARK = 150  # characters of what a program said

# They would change what Ghostscript is told to do.
_UNWANTED_VARIABLES = {"GS_OPTIONS", "GS_DEVICE"}


def _restrict(memory: int) -> None:
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
        status = children.run(command, TIME_LIMIT, lambda: _restrict(memory), cwd=folder,
                              env=environment, stdin=subprocess.DEVNULL, stdout=written,
                              stderr=said)
    if status is None:
        name = os.path.basename(command[0])
        raise Failure(f"{name} was stopped after {TIME_LIMIT} seconds")
    with open(log, "rb") as file:
        return status, file.read(_LONGEST_LOG).decode("utf-8", "replace")


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
