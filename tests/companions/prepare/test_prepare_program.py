"""What morvaltide-prepare promises of its folder, its names and its words."""

import os
import pathlib
import signal
import stat
import struct
import subprocess
import sys
import time
import unittest
import zipfile

import support

support.need("gs", "qpdf", "paps", "tiffcp", support.MAGICK)

sys.path.insert(0, str(support.SOURCES / "companions"))
from morvaltide_prepare import geometry, tools  # noqa: E402
from morvaltide_prepare.failure import Failure  # noqa: E402
from processes import is_alive  # noqa: E402


def small_pdf(path):
    support.postscript_to_pdf(path, "100 500 200 200 rectfill showpage")


class Folder(support.CompanionTest):
    def test_results_are_numbered_in_order(self):
        small_pdf("a.pdf")
        pathlib.Path("b").write_text("text\n", encoding="ascii")
        support.magick("-size", "100x100", "xc:gray", "c.gif")
        self.assertEqual(self.prepared("c.gif", "a.pdf", "b", "c.gif", "a.pdf", "--sharp"),
                         ["0001.png", "0002.tif", "0003.tif", "0004.png", "0005.tif"])

    def test_inputs_are_never_changed(self):
        small_pdf("a.pdf")
        os.chmod("a.pdf", stat.S_IRUSR)
        before = pathlib.Path("a.pdf").read_bytes(), os.stat("a.pdf").st_mtime_ns
        self.prepared("a.pdf", "a.pdf")
        self.assertEqual((pathlib.Path("a.pdf").read_bytes(), os.stat("a.pdf").st_mtime_ns), before)

    def test_one_failure_leaves_nothing_of_the_others(self):
        small_pdf("a.pdf")
        pathlib.Path("empty").touch()
        os.mkdir("out")
        pathlib.Path("out", "mine.txt").touch()
        result = self.prepare("a.pdf", "empty", "a.pdf")
        self.assertEqual((result.returncode, result.stderr.decode()),
                         (1, "morvaltide-prepare: can't prepare 'empty': the file is empty\n"))
        self.assertEqual(os.listdir("out"), ["mine.txt"])

    def test_results_of_an_earlier_run_are_not_mixed_with(self):
        small_pdf("a.pdf")
        self.prepared("a.pdf")
        result = self.prepare("a.pdf")
        self.assertEqual((result.returncode, result.stderr.decode()),
                         (1, "morvaltide-prepare: can't write into 'out': it has 0001.pdf already\n"))
        self.assertEqual(os.listdir("out"), ["0001.pdf"])

    def test_folder_that_cannot_be_made(self):
        small_pdf("a.pdf")
        result = self.prepare("a.pdf", out="none/out")
        self.assertEqual((result.returncode, result.stderr.decode()),
                         (1, "morvaltide-prepare: can't write into 'none/out': No such file or directory\n"))

    def test_full_disk_leaves_nothing(self):
        # Every file of the run may have 300 KB, and the second result has more.
        pathlib.Path("small").write_text("text\n", encoding="ascii")
        support.magick("-size", "2400x250", "xc:gray50", "+noise", "Random", "-depth", "8", "-colorspace", "Gray",
                       "large.png")
        self.assertGreater(os.path.getsize("large.png"), 400_000)
        command = ["prlimit", "--fsize=300000", support.PREPARE, "out", "small", "large.png"]
        result = subprocess.run(command, capture_output=True)
        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stderr.count(b"\n"), 1)
        self.assertFalse(os.path.exists("out"))

    def test_signals_clean_up(self):
        self.slow_tool("qpdf")
        small_pdf("a.pdf")
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(signal=number):
                # Ignored by those who started the tests (nohup, a shell that puts them into
                # the background), it would stay ignored.
                before = signal.signal(number, signal.SIG_DFL)
                child = subprocess.Popen([support.PREPARE, "out", "a.pdf"])
                signal.signal(number, before)
                self.wait_for("started")
                child.send_signal(number)
                self.assertEqual(child.wait(60), -number)
                self.assertFalse(os.path.exists("out"))
                self.assertEqual(list(pathlib.Path("tmp").iterdir()), [])
                self.assertFalse(is_alive(int(pathlib.Path("started").read_text(encoding="ascii"))))
                os.remove("started")

    def test_kill_leaves_complete_files_only(self):
        # Killed at more and more steps of its work; a result that has its name
        # is whole, and no tool goes on.
        small_pdf("a.pdf")
        self.prepared("a.pdf", out="whole")
        whole = os.path.getsize("whole/0001.pdf")
        ended = False
        for delay in range(1, 200):
            out = f"out{delay}"
            child = subprocess.Popen([support.PREPARE, out] + ["a.pdf"] * 4, stderr=subprocess.DEVNULL)
            try:
                child.wait(0.15 * delay)
                ended = True
            except subprocess.TimeoutExpired:
                child.kill()
                child.wait()
            if os.path.isdir(out):
                for name in os.listdir(out):
                    if not name.startswith("."):
                        self.assertEqual(os.path.getsize(f"{out}/{name}"), whole)
            if ended:
                break
        self.assertEqual(len(os.listdir(out)), 4)

    def slow_tool(self, name):
        os.mkdir("bin")
        pathlib.Path("bin", name).write_text(
            f"#!/bin/sh\necho $$ >{self.folder}/part\nmv {self.folder}/part {self.folder}/started\nexec sleep 100\n",
            encoding="ascii")
        os.chmod(f"bin/{name}", stat.S_IRWXU)
        self.search(f"{self.folder}/bin:{os.environ['PATH']}")

    def wait_for(self, path):
        while not os.path.exists(path):
            time.sleep(0.01)

    def test_kill_takes_the_tools_along(self):
        self.slow_tool("qpdf")
        small_pdf("a.pdf")
        child = subprocess.Popen([support.PREPARE, "out", "a.pdf"])
        self.wait_for("started")
        child.kill()
        child.wait()
        process = int(pathlib.Path("started").read_text(encoding="ascii"))
        while is_alive(process):
            time.sleep(0.01)
        self.assertEqual(os.listdir("out"), [])

    def test_tool_that_hangs_is_stopped(self):
        self.slow_tool("qpdf")
        limit = tools.TIME_LIMIT
        tools.TIME_LIMIT = 1
        self.addCleanup(setattr, tools, "TIME_LIMIT", limit)
        with self.assertRaisesRegex(Failure, "qpdf was stopped after 1 seconds"):
            tools.run([f"{self.folder}/bin/qpdf"], str(self.folder))
        self.assertFalse(is_alive(int(pathlib.Path("started").read_text(encoding="ascii"))))


class Names(support.CompanionTest):
    HOSTILE = ("-r", "--", "-", "--version", "a b", "a\nb", "a'b\"c", "%pipe%touch made", "@names", "|touch made",
               "png:x", "x[0]", "%d", "~", "$(touch made)", "`touch made`", "a\\b", "(", "\x1b[2J", "\u202efdp.exe",
               os.fsdecode(b"\xff\xfe"), "*", "a.pdf\n", "x" * 200)

    def test_hostile_names_of_every_kind(self):
        support.magick("-size", "80x50", "xc:black", "picture.png")
        small_pdf("document.pdf")
        kinds = [pathlib.Path(name).read_bytes() for name in ("picture.png", "document.pdf")]
        kinds += [b"text\n", b"%!PS\n100 500 200 200 rectfill showpage\n"]
        names = []
        os.mkdir("in")
        os.chdir("in")
        for number, name in enumerate(self.HOSTILE):
            pathlib.Path(name).write_bytes(kinds[number % len(kinds)])
            names.append(name)
        result = subprocess.run([support.PREPARE, "--", "../out", *names], capture_output=True)
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, b"", b""))
        self.assertEqual(len(os.listdir("../out")), len(names))
        self.assertEqual(sorted(os.listdir(".")), sorted(names))

    def test_messages_stay_on_one_line(self):
        for name, shown in (("a\nb", "a\\x0ab"), ("\x1b[2J", "\\x1b[2J"), ("\u202efdp.exe", "\\u202efdp.exe"),
                            (os.fsdecode(b"\xff"), "\\xff"), ("\u2028", "\\u2028"), ("Grüße", "Grüße")):
            result = self.prepare(name)
            self.assertEqual(result.stderr.decode(),
                             f"morvaltide-prepare: can't prepare '{shown}': No such file or directory\n")

    def test_what_is_no_file(self):
        os.mkdir("folder")
        os.mkfifo("fifo")
        self.assertEqual(self.refused("folder"), "it is a folder")
        self.assertEqual(self.refused("fifo"), "it is no regular file")
        self.assertEqual(self.refused("/dev/zero"), "it is no regular file")

    def test_folder_with_a_hostile_name(self):
        small_pdf("a.pdf")
        self.assertEqual(self.prepared("a.pdf", out="-o\n%d"), ["0001.pdf"])


class Refused(support.CompanionTest):
    KINDS = (
        (b"", "the file is empty"),
        (b"\x7fELF\x02\x01\x01" + bytes(100), "a program cannot be faxed"),
        (b"MZ" + bytes(100), "a program cannot be faxed"),
        (b"Rar!\x1a\x07\x01\0", "a RAR archive cannot be faxed"),
        (b"7z\xbc\xaf\x27\x1c" + bytes(20), "a 7-Zip archive cannot be faxed"),
        (b"\x1f\x8b\x08" + bytes(20), "a gzip file cannot be faxed"),
        (b"\0\0\0\x18ftypisom" + bytes(20), "a video (MP4) cannot be faxed"),
        (b"RIFF\0\0\0\0WAVE" + bytes(20), "a sound or video (RIFF) cannot be faxed"),
        (b"OggS" + bytes(20), "an Ogg recording cannot be faxed"),
        (b"<!DOCTYPE html><title>x</title>", "an HTML page cannot be faxed"),
        (b"\xef\xbb\xbf\n<html>", "an HTML page cannot be faxed"),
        (b"<?xml version='1.0'?><svg xmlns='x'/>", "an SVG drawing cannot be faxed"),
        (b"<?xml version='1.0'?><invoice/>", "XML data cannot be faxed"),
        (b"Received: from x\nSubject: y\n\ntext", "a mail message cannot be faxed"),
        (b"From: a\nMIME-Version: 1.0\n\ntext", "a mail message cannot be faxed"),
        (b"\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1" + bytes(600), "an unknown Microsoft file cannot be faxed"),
        (b"\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1" + "__substg1.0_0037".encode("utf-16-le"),
         "an Outlook message cannot be faxed"),
        (b"\x1bE\x1b&l1O", "a PCL print job cannot be faxed"),
        (bytes(range(256)) * 4, "unknown data cannot be faxed"),
        (b"\x01\x02\x03\x04" * 50, "unknown data cannot be faxed"),
        (b"   \n\n", "the text is empty"),
    )

    def test_by_name_of_the_kind(self):
        for data, reason in self.KINDS:
            with self.subTest(reason=reason):
                pathlib.Path("document.pdf").write_bytes(data)
                self.assertEqual(self.refused("document.pdf"), reason)

    def test_texts_that_begin_like_something_else(self):
        for number, text in enumerate((b"OTTO & Sons\n", b"MZ is a place\n", b"BM", b"%PDF is a format\n",
                                       b"From: me\nSubject: a letter\n\ntext\n", b"{rtf}\n")):
            pathlib.Path("text").write_bytes(text)
            with self.subTest(text=text):
                self.assertEqual(self.prepared("text", out=f"out{number}"), ["0001.pdf"])

    def test_many_comments(self):
        # Trying all ways to divide them would take longer than the universe is old.
        pathlib.Path("document").write_bytes(b"<!---->" * 500 + bytes(range(1, 9)) * 10)
        self.assertEqual(self.refused("document"), "unknown data cannot be faxed")

    def test_archives(self):
        with zipfile.ZipFile("document.docx", "w") as archive:
            archive.writestr("word/other.xml", "x")
        self.assertEqual(self.refused("document.docx"), "a ZIP archive cannot be faxed")
        with zipfile.ZipFile("document.odt", "w", zipfile.ZIP_DEFLATED) as archive:
            archive.writestr("mimetype", "application/vnd.oasis.opendocument.text")
        data = pathlib.Path("document.odt").read_bytes()
        coded = 30 + len("mimetype")  # behind the header of the member and its name
        pathlib.Path("document.odt").write_bytes(data[:coded] + b"\xff" * 8 + data[coded + 8:])
        self.assertEqual(self.refused("document.odt"), "a ZIP archive cannot be faxed")

    def test_print_job_without_a_program(self):
        pathlib.Path("job").write_bytes(b"\x1b%-12345X@PJL ENTER LANGUAGE=POSTSCRIPT\r\n")
        self.assertEqual(self.refused("job"), "the print job has no PostScript program")

    def test_tiff_whose_pages_go_round(self):
        pathlib.Path("round.tif").write_bytes(b"II*\0\x08\0\0\0" + bytes(2) + b"\x08\0\0\0")
        self.assertEqual(self.refused("round.tif"), "the TIFF file is damaged")

    def test_tiff_whose_pages_are_farther_than_any_file_goes(self):
        for offset in (b"\xff" * 7 + b"\x7f", b"\xff" * 8):
            pathlib.Path("far.tif").write_bytes(b"II+\0\x08\0\0\0" + offset)
            with self.subTest(offset=offset):
                self.assertEqual(self.refused("far.tif"), "the TIFF file is damaged")

    def test_what_nobody_has_thought_of(self):
        pathlib.Path("a").touch()
        code = ("import sys; from morvaltide_prepare import cli, documents; "
                "documents.prepare = lambda *_: {}['key']; sys.exit(cli.main(sys.argv[1:], ''))")
        result = subprocess.run(
            [sys.executable, "-c", code, "out", "a"], capture_output=True,
            env={**os.environ, "PYTHONPATH": str(support.SOURCES / "companions")})
        self.assertEqual((result.returncode, result.stderr.decode()), (
            1, "morvaltide-prepare: can't prepare 'a': something unforeseen is wrong with it "
            "(KeyError)\n"))
        self.assertFalse(os.path.exists("out"))

    def test_tiff_whose_numbers_are_words(self):
        # Orientation and width as text: neither says anything, and no picture is left.
        entries = b"".join(struct.pack("<HHI4s", tag, 2, 4, b"word") for tag in (256, 274))
        pathlib.Path("words.tif").write_bytes(
            b"II*\0\x08\0\0\0" + struct.pack("<H", 2) + entries + bytes(4))
        # Newer versions of libtiff say what is wrong.
        self.assertRegex(self.refused("words.tif"), "the picture is damaged|Incorrect count")


class Tools(support.CompanionTest):
    def without(self, *tools_left):
        """A search path on which there are these tools and no others."""
        os.mkdir("bin")
        for tool in tools_left:
            os.symlink(support.shutil.which(tool), f"bin/{tool}")
        self.search(f"{self.folder}/bin")

    def test_each_missing_one_is_named_with_its_package(self):
        small_pdf("a.pdf")
        support.magick("-size", "80x50", "xc:black", "a.png")
        support.magick("-size", "80x50", "xc:black", "xc:white", "a.tif")
        pathlib.Path("a.txt").write_text("Größe\n", encoding="utf-8")
        pathlib.Path("a.rtf").write_text("{\\rtf1 x}", encoding="ascii")
        pathlib.Path("a.ps").write_text("%!PS\nshowpage\n", encoding="ascii")
        self.without()
        for name, message in (("a.pdf", "qpdf is missing (Debian package qpdf)"),
                              ("a.png", "convert is missing (Debian package imagemagick)"),
                              ("a.ps", "gs is missing (Debian package ghostscript)"),
                              ("a.txt", "fc-list is missing (Debian package fontconfig)"),
                              ("a.rtf", "soffice is missing (Debian package libreoffice)")):
            with self.subTest(name=name):
                self.assertEqual(self.refused(name), message)

    def test_what_needs_no_tool_works_without_any(self):
        support.magick("-size", "2400x100", "gradient:", "-depth", "8", "a.png")
        self.without()
        self.assertEqual(self.prepared("a.png"), ["0001.png"])


class Words(support.CompanionTest):
    def said(self, *arguments):
        result = subprocess.run([support.PREPARE, *arguments], capture_output=True)
        return result.returncode, result.stdout.decode(), result.stderr.decode()

    def test_version_is_that_of_the_converter(self):
        text = support.run(support.CONVERTER, "--version").stdout.decode()
        expected = text.replace("morvaltide", "morvaltide-prepare")
        self.assertEqual(self.said("--version"), (0, expected, ""))

    def test_help_names_every_option(self):
        status, text, errors = self.said("--help")
        self.assertEqual((status, errors), (0, ""))
        for option in ("--sharp", "--page-photo", "--auto", "--report", "--resolution", "--paper-size", "--margins"):
            self.assertIn(option, text)

    def test_wrong_usage_has_status_2_and_one_line(self):
        pathlib.Path("a").write_text("text\n", encoding="ascii")
        for arguments in ((), ("out",), ("--none", "out", "a"), ("-r", "FINE", "out", "a"), ("-p", "a5", "out", "a"),
                          ("-m", "1,2,3", "out", "a"), ("-m", "x", "out", "a"), ("-m", "6", "out", "a"),
                          ("-m", "-1", "out", "a"), ("-m", "nan", "out", "a"), ("-m", "0x1", "out", "a"),
                          ("--r", "fine", "out", "a"), ("--sharp=1", "out", "a")):
            with self.subTest(arguments=arguments):
                status, text, errors = self.said(*arguments)
                self.assertEqual((status, text, errors.count("\n")), (2, "", 1))
                self.assertTrue(errors.startswith("morvaltide-prepare: "))
                self.assertFalse(os.path.exists("out"))

    def test_margins_are_read_as_by_the_converter(self):
        for text, margins in (("0.5", (0.5,) * 4), ("0.5,1", (0.5, 1, 0.5, 1)), ("1,2,3,4", (1, 2, 3, 4)),
                              (" 1 , 2 ", (1, 2, 1, 2)), ("1in", (1,) * 4), ("1;2", (1,) * 4), ("-0", (0,) * 4),
                              ("1e-1", (0.1,) * 4), (".5", (0.5,) * 4)):
            with self.subTest(text=text):
                self.assertEqual(geometry.margins_from_text(text), margins)

    def test_options_may_follow_the_documents(self):
        small_pdf("a.pdf")
        self.assertEqual(self.said("out", "a.pdf", "--sharp", "-r", "standard"), (0, "", ""))
        self.assertEqual(os.listdir("out"), ["0001.tif"])

    def test_report_has_what_the_pages_cost(self):
        support.postscript_to_pdf("a.pdf", "100 500 200 200 rectfill showpage 50 50 10 10 rectfill showpage")
        pathlib.Path("b\tc").write_text("text\n", encoding="ascii")
        status, text, errors = self.said("--report", "-r", "standard", "out", "a.pdf", "b\tc")
        self.assertEqual((status, errors), (0, ""))
        support.run(support.CONVERTER, "-c", "g4", "-r", "standard", "-o", "fax.tif", "out/0001.pdf", "out/0002.pdf")
        expected = ["source\tpage\tbytes\tseconds at 14400 bit/s\tseconds at 33600 bit/s"]
        pages = (("a.pdf", 1), ("a.pdf", 2), ("b\\x09c", 1))
        information = support.run("tiffdump", "fax.tif").stdout.decode()
        sizes = [line.split("<")[1].split(">")[0] for line in information.splitlines() if "StripByteCounts" in line]
        self.assertEqual(len(sizes), 3)
        for (name, number), size in zip(pages, sizes):
            total = sum(map(int, size.split()))
            expected.append(f"{name}\t{number}\t{total}\t{total / 1800:.1f}\t{total / 4200:.1f}")
        self.assertEqual(text.splitlines(), expected)


if __name__ == "__main__":
    unittest.main()
