"""What becomes of a child when its parent is interrupted or ends."""

import pathlib
import signal
import subprocess
import sys
import time
import unittest

import support
from processes import is_alive

# Makes the signal arrive where it does most harm: the child runs, but nobody has
# got hold of it yet.
INTERRUPTED = """
import os, signal, subprocess
from morvaltide_companions import children, tools

class Popen(subprocess.Popen):
    def __init__(self, *arguments, **options):
        super().__init__(*arguments, **options)
        print(self.pid, flush=True)
        os.kill(os.getpid(), signal.SIGTERM)

subprocess.Popen = Popen
children.raise_on_signals()
try:
    tools.run(["sleep", "600"], 600, "words")
except children.Interrupted as interrupted:
    children.end_by_signal(interrupted.number)
"""

KILLED = """
from morvaltide_companions import tools

tools.run(["sh", "-c", "echo $$; exec sleep 600"], 600, "words")
"""

ENDED = """
import signal
from morvaltide_companions import children

signal.pthread_sigmask(signal.SIG_BLOCK, {signal.SIGUSR1})
print(children.run(["grep", "SigBlk:", "/proc/self/status"], 60), flush=True)
print(children.run(["sh", "-c", "exit 7"], 60), flush=True)
print(children.run(["sleep", "600"], 0.1), flush=True)
print(children.run(["sh", "-c", "kill -KILL $$"], 60), flush=True)
print(signal.pthread_sigmask(signal.SIG_BLOCK, ()) == {signal.SIGUSR1})
"""


class Children(support.Case):
    def start(self, code):
        return subprocess.Popen(
            [sys.executable, "-B", "-c", code], stdout=subprocess.PIPE, cwd=self.folder,
            env={**self.environment, "PYTHONPATH": support.COMPANIONS})

    def test_an_interrupt_right_after_the_start_leaves_none(self):
        parent = self.start(INTERRUPTED)
        output, _ = parent.communicate()
        self.assertEqual(parent.returncode, -signal.SIGTERM)
        self.assertFalse(is_alive(int(output)))

    def test_a_kill_takes_it_along(self):
        parent = self.start(KILLED)
        words = pathlib.Path(self.path("words"))
        while not words.exists() or not words.read_text(encoding="ascii"):
            time.sleep(0.01)
        parent.kill()
        parent.communicate()
        child = int(words.read_text(encoding="ascii"))
        while is_alive(child):
            time.sleep(0.01)

    def test_how_it_ended_is_told(self):
        parent = self.start(ENDED)
        output, _ = parent.communicate()
        self.assertEqual(output.decode().split(), [
            "SigBlk:", "0000000000000200", "0", "7", "None", "-9", "True"])


if __name__ == "__main__":
    unittest.main()
