"""A watched folder is killed in front of every single step, and started again:
each document is exactly once in done or failed.

    test_watch_kill.py REMAINDER DIVISOR

tries every DIVISORth step, so that several of these share the work.
"""

import os
import signal
import subprocess
import sys
import unittest

import support

REMAINDER, DIVISOR = map(int, sys.argv[1:])
WATCH = os.path.join(support.COMPANIONS, "morvaltide-watch")
KILL_AT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "kill_at.py")
STAMP = len("20261121-221709-123456-")


class Killed(support.Case):
    def setUp(self):
        super().setUp()
        self.write("dot.png", support.layout.DOT)
        self.convert("expected.tif", "dot.png")

    def fill(self, folder):
        os.makedirs(self.path(folder, "incoming"))
        for name in ("fax.tif", "message"):
            self.write(os.path.join(folder, "incoming", name),
                       support.layout.DOT if name == "message" else b"junk")

    def run_killed(self, folder, step):
        return subprocess.run(
            ["/usr/bin/python3", KILL_AT, str(step), folder, WATCH, folder], cwd=self.folder,
            stderr=subprocess.DEVNULL, env=self.environment, check=False).returncode

    def content(self, *names):
        with open(self.path(*names), "rb") as file:
            return file.read()

    def assert_once(self, folder):
        found = {name: sorted(os.listdir(self.path(folder, name)), key=lambda each: each[STAMP:])
                 for name in ("incoming", "work", "done", "failed")}
        self.assertEqual((found["incoming"], found["work"]), ([], []))
        self.assertEqual([name[STAMP:] for name in found["done"]], ["message.tif"])
        self.assertEqual([name[STAMP:] for name in found["failed"]], ["fax.tif", "fax.tif.txt"])
        self.assertEqual(self.content(folder, "done", found["done"][0]),
                         self.content("expected.tif"))
        self.assertEqual(self.content(folder, "failed", found["failed"][0]), b"junk")
        self.assertEqual(self.content(folder, "failed", found["failed"][1]),
                         b"can't write page file 'fax.tif', invalid data\n")

    def test_killed_in_front_of_every_step(self):
        step = REMAINDER or DIVISOR
        killed = 0
        while True:
            folder = f"spool{step}"
            self.fill(folder)
            status = self.run_killed(folder, step)
            if status == 0:
                break
            self.assertEqual(status, -signal.SIGKILL)
            killed += 1
            with self.subTest(step=step):
                self.assertEqual(self.run_program("morvaltide-watch", folder)[0], 0)
                self.assert_once(folder)
            step += DIVISOR
        self.assert_once(folder)
        # So many steps there are at least; fewer mean that they are not seen.
        self.assertGreaterEqual(killed * DIVISOR, 35)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
