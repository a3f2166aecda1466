"""What becomes of each kind of thing that arrives in a watched folder."""

import os
import shutil
import signal
import subprocess
import unittest

import support
from morvaltide_companions import tiff

DOT = support.layout.DOT
BAD = DOT + b"bad"
STAMP = len("20261121-221709-123456-")


class Watched(support.Case):
    def setUp(self):
        super().setUp()
        os.makedirs(self.path("fax", "incoming"))
        self.age = 0

    def arrive(self, name, data=DOT):
        path = os.path.join(os.fsencode(self.path("fax", "incoming")), os.fsencode(name))
        with open(path, "wb") as file:
            file.write(data)
        self.age += 1
        os.utime(path, (self.age, self.age))

    def watch(self, *arguments, expected=0):
        status, words = self.run_program("morvaltide-watch", *arguments)
        self.assertEqual(status, expected, words)
        return words.splitlines()

    def names(self, folder):
        """The names in a folder without the stamp in front, in order of arrival."""
        return [name[STAMP:] for name in sorted(os.listdir(self.path("fax", folder)))]

    def message(self, number=0):
        folder = self.path("fax", "failed")
        found = sorted(name for name in os.listdir(folder) if name.endswith(".txt"))
        with open(os.path.join(folder, found[number]), encoding="utf-8") as file:
            return file.read()

    def test_names_are_only_names(self):
        names = ["message.txt", "-o x.png", "two\nlines.png", "work", "a;b&c $(d).png", "ä.png",
                 "(back\\slash.png", os.fsdecode(b"\xff\xfe.png"), "n" * 250 + ".png"]
        for name in names:
            self.arrive(name)
        self.arrive("a(.pdf", support.sample("report.pdf"))
        self.arrive("fax.tif", b"junk")
        self.arrive(".unfinished.png")
        self.assertEqual(self.watch("fax"), [
            "morvaltide-watch: can't convert 'fax.tif': "
            "can't write page file 'fax.tif', invalid data"])
        self.assertEqual(os.listdir(self.path("fax", "incoming")), [".unfinished.png"])
        long = "n" * 203 + "~" + "n" * 15 + ".png"
        self.assertEqual(self.names("done"),
                         [name + ".tif" for name in [*names[:-1], long, "a(.pdf"]])
        self.assertEqual(self.names("failed"), ["fax.tif", "fax.tif.txt"])
        self.assertEqual(os.listdir(self.path("fax", "work")), [])

    def test_documents_of_one_name_do_not_meet(self):
        for i in range(3):
            self.arrive("letter.png")
            self.arrive("bad.png", b"junk %d" % i)
            self.watch("fax")
        self.assertEqual(self.names("done"), ["letter.png.tif"] * 3)
        self.assertEqual(self.names("failed"), ["bad.png", "bad.png.txt"] * 3)

    def test_what_is_no_file_is_moved_away(self):
        os.symlink("/etc/passwd", self.path("fax", "incoming", "link.png"))
        os.mkdir(self.path("fax", "incoming", "folder"))
        self.write("fax/incoming/folder/inside.png", DOT)
        os.mkfifo(self.path("fax", "incoming", "fifo.png"))
        self.watch("fax")
        self.assertEqual(sorted(self.names("failed")), [
            "fifo.png", "fifo.png.txt", "folder", "folder.txt", "link.png", "link.png.txt"])
        self.assertEqual(self.message(), "it is no regular file\n")

    def converter(self, body):
        """A stand-in: `body` in a shell for documents like BAD, the real program
        for the others. $fax is the output."""
        self.write("bad", BAD)
        self.stand_in("morvaltide", f"""
for name; do :; done
fax=$2
if cmp -s "$name" {self.path('bad')}; then
    {body}
fi
exec {support.CONVERTER} "$@"
""")

    def test_a_crash_or_a_hang_does_not_block_the_others(self):
        for body, reason in (("kill -SEGV $$", "ended by signal 11"),
                             ("echo part >$fax; sleep 60", "stopped after 8 seconds"),
                             ("sleep 60 & exit 1", "exit status 1")):
            with self.subTest(body):
                self.converter(body)
                self.arrive("bad.png", BAD)
                self.arrive("good.png")
                # So long that a busy machine converts the good one meanwhile.
                self.assertEqual(self.watch("-t", "8", "fax"), [
                    f"morvaltide-watch: can't convert 'bad.png': {reason}"])
                self.assertEqual(self.message(-1), reason + "\n")
        self.assertEqual(self.names("done"), ["good.png.tif"] * 3)

    def test_a_document_that_kills_the_watcher_is_given_up(self):
        self.converter("kill -KILL $PPID; sleep 0.1")
        self.arrive("bad.png", BAD)
        self.arrive("good.png")
        self.watch("fax", expected=-signal.SIGKILL)
        self.watch("fax", expected=-signal.SIGKILL)
        self.assertEqual(self.names("done"), ["good.png.tif"])
        self.watch("fax", expected=-signal.SIGKILL)
        self.assertEqual(self.watch("fax"), [
            "morvaltide-watch: can't convert 'bad.png': its conversion was broken off 3 times"])
        self.assertEqual(self.names("failed"), ["bad.png", "bad.png.txt"])
        self.assertEqual(os.listdir(self.path("fax", "work")), [])

    def test_a_stop_is_not_the_fault_of_the_document(self):
        self.converter("kill -TERM $PPID; sleep 60")
        self.arrive("bad.png", BAD)
        for _ in range(4):
            self.watch("fax", expected=-signal.SIGTERM)
        self.converter(":")
        self.watch("fax")
        self.assertEqual(self.names("done"), ["bad.png.tif"])

    def test_what_arrives_meanwhile_is_taken_too(self):
        later = self.path("fax", "incoming", "later.png")
        self.write("later.png", DOT)
        self.converter(f"[ -e {self.path('later.png')} ] && mv {self.path('later.png')} {later}")
        self.arrive("bad.png", BAD)
        self.watch("fax")
        self.assertEqual(self.names("done"), ["bad.png.tif", "later.png.tif"])

    def test_a_wrong_option_takes_no_document(self):
        self.arrive("a.png")
        self.assertEqual(self.watch("fax", "--", "-r", "best", expected=1), [
            "morvaltide-watch: nothing can be converted: "
            "the argument ('best') for option '--resolution' is invalid"])
        self.assertEqual(os.listdir(self.path("fax", "incoming")), ["a.png"])
        self.watch("fax", "--", "-r", "standard")
        fax = os.path.join("fax", "done", os.listdir(self.path("fax", "done"))[0])
        (page,) = tiff.read(self.path(fax))[1]
        self.assertEqual(page.numbers(tiff.IMAGE_LENGTH), [1146])

    def test_remarks_stand_beside_the_fax(self):
        self.arrive("cut.tif", support.sample("scan.tif")[:20000])
        # That a tag is unknown says nothing of the picture.
        self.arrive("tagged.tif", support.tagged_tiff())
        (line,) = self.watch("fax")
        self.assertTrue(line.startswith("morvaltide-watch: remarks on 'cut.tif': TIFF"), line)
        self.assertEqual(self.names("done"), ["cut.tif.tif", "cut.tif.tif.txt", "tagged.tif.tif"])

    def test_mails(self):
        support.need("tiffcp", "libtiff-tools")
        self.arrive("1.eml", b"Subject: one\n\nHello")
        self.arrive("2.eml", b"Content-Type: application/zip; name=x.zip\n\nPK\3\4")
        (line,) = self.watch("--mail", "fax", "--", "-r", "standard")
        self.assertIn("can't fax 'x.zip'", line)
        self.assertEqual(self.names("done"), ["1.eml.tif", "2.eml.tif", "2.eml.tif.txt"])

    def test_prepared_documents(self):
        self.arrive("report", support.sample("report.pdf"))
        self.arrive("no document", b"PK\3\4junk")
        (line,) = self.watch("--prepare", "fax")
        self.assertTrue(line.startswith("morvaltide-watch: can't convert 'no document': "), line)
        self.assertEqual(self.names("done"), ["report.tif"])
        self.assertEqual(self.names("failed"), ["no document", "no document.txt"])

    def test_documents_are_prepared_for_the_pages_that_they_are_converted_to(self):
        # As installed, with a stand-in beside it that tells how it was called.
        code = self.path("share", "morvaltide", "morvaltide_companions")
        shutil.copytree(os.path.join(support.COMPANIONS, "morvaltide_companions"), code)
        program = shutil.copy(os.path.join(support.COMPANIONS, "morvaltide-watch"), self.bin)
        self.stand_in("morvaltide-prepare", f"""echo "$@" >{self.path('called')}
while [ $# -gt 2 ]; do shift; done
mkdir "$1" && cp "$2" "$1/0001.png"
""")
        self.arrive("a.png")
        ended = self.run_program(
            program, "--prepare", "--auto", "--sharp", "fax", "--", "-rstandard", "--margins=0.5",
            "-c", "g4", "--paper", "letter", "-R", "-90")
        self.assertEqual(ended, (0, ""))
        with open(self.path("called"), encoding="utf-8") as file:
            *options, _, _ = file.read().split()
        self.assertEqual(options, ["--auto", "--sharp", "-r", "standard", "--margins", "0.5",
                                   "--paper-size", "letter"])

    def test_documents_that_are_not_prepared_take_no_option_for_that(self):
        self.arrive("a.png")
        for kind in ((), ("--mail",)):
            (*_, line) = self.watch(*kind, "--page-photo", "fax", expected=2)
            self.assertEqual(line, "morvaltide-watch: error: --page-photo needs --prepare")

    def test_prepared_documents_are_not_fitted_once_more(self):
        self.arrive("a.png")
        (*_, line) = self.watch("--prepare", "fax", "--", "--trans", "fittopaper", expected=2)
        self.assertEqual(
            line, "morvaltide-watch: error: prepared documents take no option -t")
        self.assertEqual(os.listdir(self.path("fax", "incoming")), ["a.png"])

    def test_two_runs_do_not_meet(self):
        for i in range(6):
            self.arrive(f"{i}.png")
        program = os.path.join(support.COMPANIONS, "morvaltide-watch")
        runs = [subprocess.Popen(["/usr/bin/python3", program, "fax"], cwd=self.folder,
                                 env=self.environment) for _ in range(2)]
        self.assertEqual([run.wait() for run in runs], [0, 0])
        self.assertEqual(self.names("done"), [f"{i}.png.tif" for i in range(6)])
        self.assertEqual(self.names("failed"), [])

    def test_there_is_no_folder(self):
        self.assertEqual(self.watch("nowhere", expected=1), [
            "morvaltide-watch: can't use 'nowhere': No such file or directory"])
        self.watch(expected=2)


if __name__ == "__main__":
    unittest.main()
