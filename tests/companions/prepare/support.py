"""What the tests of the companion programs share."""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

# What all companions' tests share lies one folder up.
sys.path.append(str(pathlib.Path(__file__).resolve().parents[1]))

import fax_pages  # noqa: E402

CONVERTER = os.environ["MORVALTIDE_PROGRAM"]
SOURCES = pathlib.Path(__file__).resolve().parents[3]
PREPARE = SOURCES / "companions" / "morvaltide-prepare"

# The converter that is tested comes first on the search path.
os.environ["PATH"] = os.path.dirname(CONVERTER) + os.pathsep + os.environ["PATH"]

MAGICK = ("magick", "convert-im6.q16")


def need(*tools):
    """Ends the test program as skipped if one of the tools, each a name or
    alternatives, is not installed."""
    for names in tools:
        names = names if isinstance(names, tuple) else (names,)
        if not any(shutil.which(name) for name in names):
            print(f"skipped: {names[0]} is not installed", file=sys.stderr)
            sys.exit(77)


def run(*command, **options):
    """Runs a program that has to succeed."""
    return subprocess.run([str(word) for word in command], check=True, capture_output=True, **options)


def magick(*arguments):
    # Further threads would, beside other tests, mostly wait for each other, and busily.
    run(next(filter(None, map(shutil.which, MAGICK))), *arguments,
        env={**os.environ, "OMP_NUM_THREADS": "1"})


def postscript_to_pdf(path, text, *arguments):
    """Makes a PDF document of a PostScript program; pages are A4 unless it says otherwise."""
    run("gs", "-q", "-sDEVICE=pdfwrite", "-sPAPERSIZE=a4", *arguments, "-o", path, "-",
        input=text.encode())


class CompanionTest(unittest.TestCase):
    """Each test works in a folder of its own."""

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.folder)
        before = os.getcwd()
        os.chdir(self.folder)
        self.addCleanup(os.chdir, before)
        os.environ["TMPDIR"] = str(self.folder / "tmp")
        (self.folder / "tmp").mkdir()
        self.addCleanup(os.environ.pop, "TMPDIR")

    def search(self, path):
        """Sets the search path until the test ends."""
        self.addCleanup(os.environ.__setitem__, "PATH", os.environ["PATH"])
        os.environ["PATH"] = path

    def prepare(self, *arguments, out="out"):
        """Runs morvaltide-prepare without expecting anything."""
        options = [word for word in arguments if str(word).startswith("-")]
        return subprocess.run([PREPARE, *options, "--", out,
                               *[word for word in arguments if word not in options]],
                              capture_output=True, timeout=120)

    def prepared(self, *arguments, out="out"):
        """Runs it, expects silence, and gives the names of the results."""
        result = self.prepare(*arguments, out=out)
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, b"", b""))
        self.assertEqual(list((self.folder / "tmp").glob("morvaltide-*")), [])
        return sorted(path.name for path in pathlib.Path(out).iterdir())

    def fax(self, *arguments, options=()):
        """Prepares documents, converts the results and gives the pages of the fax."""
        shutil.rmtree("out", ignore_errors=True)
        names = self.prepared(*options, *arguments)
        return self.converted(*(os.path.join("out", name) for name in names),
                              options=[word for word in options if word.startswith(("-r", "-p", "-m"))])

    def converted(self, *files, options=()):
        """Converts files as they are and gives the pages of the fax."""
        result = run(CONVERTER, *options, "-c", "g4", "-o", "fax.tif", *files)
        self.assertEqual((result.stdout, result.stderr), (b"", b""))
        return fax_pages.read_pages("fax.tif")

    def refused(self, name, *options):
        """Expects that a document is refused and nothing stays; gives the reason."""
        result = self.prepare(*options, name)
        line = result.stderr.decode()
        start = f"morvaltide-prepare: can't prepare '{name}': "
        self.assertEqual((result.returncode, result.stdout, line.count("\n")), (1, b"", 1), line)
        self.assertTrue(line.startswith(start), line)
        self.assertFalse(os.path.exists("out"))
        self.assertEqual(list((self.folder / "tmp").glob("morvaltide-*")), [])
        return line[len(start):-1]

    def assertSameDots(self, page, rows, left=0, top=0):
        """The page has exactly the dots of `rows` at this place, and is white around."""
        expected = ["0" * page.width] * page.height
        for y, row in enumerate(rows):
            expected[top + y] = ("0" * left + row).ljust(page.width, "0")
        for y, row in enumerate(expected):
            actual = page.row(y)
            if actual != row:
                column = next(x for x in range(page.width) if actual[x] != row[x])
                self.fail(f"row {y}, column {column} differs")
