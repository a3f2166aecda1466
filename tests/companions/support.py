"""What the tests of the companion programs share.

The environment names the converter (MORVALTIDE) and the top folder of the
sources (SOURCES).
"""

import os
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
SOURCES = os.environ["SOURCES"]
CONVERTER = os.environ["MORVALTIDE"]
COMPANIONS = os.path.join(SOURCES, "companions")
SAMPLES = os.path.join(SOURCES, "samples")
sys.path.insert(0, COMPANIONS)

import fax_pages  # noqa: E402
from morvaltide_companions import layout, tiff  # noqa: E402


def need(program, package):
    """Skips all tests of a file whose tool is not installed."""
    if shutil.which(program) is None:
        print(f"skipped: {program} is not installed (Debian package {package})", file=sys.stderr)
        sys.exit(77)


def script(path, text):
    with open(path, "w", encoding="utf-8") as file:
        file.write(text)
    os.chmod(path, 0o755)


def sample(name):
    with open(os.path.join(SAMPLES, name), "rb") as file:
        return file.read()


def tagged_tiff():
    """A sample whose first page has a tag of its own, as those of many scanners."""
    data = bytearray(sample("scan.tif"))
    (position,) = struct.unpack_from("<I", data, 4)
    (count,) = struct.unpack_from("<H", data, position)
    struct.pack_into("<HHI", data, position + 2 + 12 * (count - 1), 65000, 3, 1)
    return bytes(data)


class Case(unittest.TestCase):
    """A test in a folder of its own, with the programs on PATH."""

    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="companions.")
        self.addCleanup(shutil.rmtree, self.folder)
        self.bin = self.path("bin")
        os.mkdir(self.bin)
        os.mkdir(self.path("tmp"))
        folders = [self.bin, os.path.dirname(CONVERTER), os.environ["PATH"]]
        # The C locale, as mail servers have it.
        self.environment = {
            "PATH": ":".join(folders), "TMPDIR": self.path("tmp"), "LC_ALL": "C",
            "LSAN_OPTIONS": os.environ.get("LSAN_OPTIONS", ""),
            "ASAN_OPTIONS": os.environ.get("ASAN_OPTIONS", ""),
        }

    def path(self, *names):
        return os.path.join(self.folder, *names)

    def write(self, name, data):
        with open(self.path(name), "wb") as file:
            file.write(data)

    def stand_in(self, name, text):
        script(os.path.join(self.bin, name), "#!/bin/sh\n" + text)

    def run_program(self, name, *arguments, stdin=b""):
        """Runs a companion; gives its exit status and its words."""
        done = subprocess.run(
            ["/usr/bin/python3", os.path.join(COMPANIONS, name), *arguments], input=stdin,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, cwd=self.folder,
            env=self.environment, check=False)
        self.assertEqual(done.stdout, b"", "standard output is not empty")
        return done.returncode, done.stderr.decode("utf-8")

    def convert(self, fax, *arguments):
        subprocess.run([CONVERTER, "-o", self.path(fax), *arguments], check=True,
                       cwd=self.folder, env=self.environment)

    def pages(self, fax):
        """The coded bytes of each page of a fax. The same bytes in the same coding
        are the same page."""
        return [b"".join(page.strips()) for page in tiff.read(self.path(fax))[1]]

    def dots(self, fax, number):
        """A page as rows of bytes, 1 for black."""
        (page,) = fax_pages.read_pages(self.path(fax), number)
        return page.rows

    def assert_margins(self, rows, dpi):
        """No dot is nearer than half an inch to an edge."""
        across, down = dpi[0] // 16 + 1, dpi[1] // 2
        blank = bytes(len(rows[0]))
        for part in (rows[:down], rows[-down:]):
            self.assertTrue(all(row == blank for row in part), "ink in the upper or lower margin")
        across -= 1  # whole bytes below half an inch
        for row in rows:
            self.assertEqual(row[:across], blank[:across], "ink in the left margin")
            self.assertEqual(row[-across:], blank[:across], "ink in the right margin")


RESOLUTIONS = layout.RESOLUTIONS
