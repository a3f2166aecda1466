"""What is left when no fax can be made of a mail: nothing."""

import os
import signal
import subprocess
import time
import unittest

import support
from mail_case import FaxCase, mail


class Failures(FaxCase):
    def test_failures_leave_nothing(self):
        before = sorted(os.listdir(self.folder))
        self.fax(b"", expected=(1, "morvaltide-mail: the message is empty\n"))
        self.stand_in("tiffcp", "exit 9")
        self.fax(mail(), expected=(
            1, "morvaltide-mail: can't measure a page of text: exit status 9\n"))
        os.unlink(os.path.join(self.bin, "tiffcp"))
        self.assertEqual(sorted(os.listdir(self.folder)), before)
        status, words = self.run_program(
            "morvaltide-mail", "-o", "nowhere/fax.tif", stdin=mail().as_bytes())
        self.assertEqual((status, words), (
            1, "morvaltide-mail: can't write 'nowhere/fax.tif': No such file or directory\n"))

    def test_a_text_for_too_many_pages_is_refused_at_once(self):
        self.stand_in("tiffcp", "exit 9")
        self.fax(b"Subject: s\n\n" + b"x\n" * 60000, expected=(
            1, "morvaltide-mail: the fax would have more than 500 pages\n"))

    def test_a_missing_tool_is_asked_for_by_name(self):
        os.symlink(support.CONVERTER, os.path.join(self.bin, "morvaltide"))
        self.environment["PATH"] = self.bin
        self.fax(mail(), expected=(
            1, "morvaltide-mail: can't find 'tiffcp': install the Debian package libtiff-tools\n"))

    def test_a_signal_leaves_nothing_and_an_older_fax_as_it_was(self):
        self.write("fax.tif", b"older")
        self.stand_in("tiffcp", f"touch {self.path('begun')}; exec sleep 60")
        child = subprocess.Popen(
            ["/usr/bin/python3", os.path.join(support.COMPANIONS, "morvaltide-mail"),
             "-o", "fax.tif"], stdin=subprocess.PIPE, cwd=self.folder, env=self.environment)
        child.stdin.write(mail().as_bytes())
        child.stdin.close()
        while not os.path.exists(self.path("begun")):
            time.sleep(0.02)
        child.terminate()
        self.assertEqual(child.wait(), -signal.SIGTERM)
        self.assertEqual(os.listdir(self.path("tmp")), [])
        with open(self.path("fax.tif"), "rb") as file:
            self.assertEqual(file.read(), b"older")
        self.assertEqual(sorted(os.listdir(self.folder)), ["begun", "bin", "fax.tif", "tmp"])

    def test_help_and_a_wrong_command_line(self):
        done = subprocess.run(
            ["/usr/bin/python3", os.path.join(support.COMPANIONS, "morvaltide-mail"), "--help"],
            stdout=subprocess.PIPE, check=True, env=self.environment)
        self.assertIn(b"--strict", done.stdout)
        for arguments in ((), ("-o", ""), ("-o", "a", "-r", "best"), ("-o", "a", "b"),
                          # Prepared attachments have the size of the page, and keep their dots.
                          ("-o", "a", "-t", "fittopaper")):
            self.assertEqual(self.run_program("morvaltide-mail", *arguments)[0], 2, arguments)


if __name__ == "__main__":
    unittest.main()
