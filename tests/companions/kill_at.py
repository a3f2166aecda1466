"""Runs a Python program and kills it (signal 9) in front of its Nth step:

    kill_at.py N FOLDER PROGRAM [ARGUMENT]...

A step is whatever changes something below FOLDER, or starts or kills a process.
The kernel ends the process there, as it would for a kill from outside.
"""

import os
import runpy
import signal
import sys

left = int(sys.argv[1])
folder = os.path.abspath(sys.argv[2])
CHANGES = {"os.rename", "os.mkdir", "os.remove", "os.rmdir", "os.link", "os.truncate"}
PROCESSES = {"subprocess.Popen", "os.killpg"}


def is_step(event, arguments):
    if event in PROCESSES:
        return True
    if event == "open":
        path, _, flags = arguments
        if not flags & (os.O_WRONLY | os.O_RDWR | os.O_CREAT):
            return False
    elif event not in CHANGES:
        return False
    else:
        path = arguments[0]
    # A bare name is one that rmtree removes from a folder that it has open.
    name = os.fspath(path) if isinstance(path, (str, bytes)) else ""
    return not os.path.isabs(name) or name.startswith(folder)


def count(event, arguments):
    global left
    if is_step(event, arguments):
        left -= 1
        if left == 0:
            os.kill(os.getpid(), signal.SIGKILL)


sys.argv = sys.argv[3:]
sys.addaudithook(count)
runpy.run_path(sys.argv[0], run_name="__main__")
