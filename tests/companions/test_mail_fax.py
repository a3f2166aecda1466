"""The finished fax of a mail: its pages, and what the cover says."""

import os
import shutil
import unittest

import support
from mail_case import ZIP, FaxCase, attach, mail
from morvaltide_companions import cover


class Fax(FaxCase):
    def test_a_mail_without_attachments_is_a_fax_of_its_text(self):
        self.fax(mail())
        self.assertEqual(self.pages("fax.tif"), [self.own_page(self.HEADINGS, ["Hello"], 1)])

    def test_attachments_follow_dot_for_dot_and_the_cover_counts_them(self):
        names = ("report.pdf", "photo.jpg", "scan.tif")
        message = mail()
        for name in names:
            attach(message, name)
        self.fax(message, "-m", "0.5")
        pages = self.pages("fax.tif")
        self.assertEqual(pages[0], self.own_page(self.HEADINGS, ["Hello"], 8))
        # The same by hand.
        samples = [os.path.join(support.SAMPLES, name) for name in names]
        self.assertEqual(self.run_program("morvaltide-prepare", "-m", "0.5", "ready", *samples),
                         (0, ""))
        ready = sorted(os.listdir(self.path("ready")))
        self.convert("direct.tif", "-m", "0.5", *(self.path("ready", name) for name in ready))
        self.assertTrue(pages[1:] == self.pages("direct.tif"), "other pages of attachments")
        self.assertEqual(len(pages), 8)

    def test_what_cannot_be_faxed_is_on_the_cover_and_on_standard_error(self):
        message = mail()
        attach(message, "a\tb <i>.zip", data=ZIP)
        attach(message, "report.pdf")
        status, words = self.run_program(
            "morvaltide-mail", "-o", "fax.tif", stdin=message.as_bytes())
        self.assertEqual(status, 3)
        head, _, reason = words.rstrip("\n").partition("': ")
        self.assertEqual(head, "morvaltide-mail: can't fax 'a b <i>.zip")
        self.assertNotIn("\n", reason)
        self.assertNotIn("/", reason.replace("application/", ""), "a temporary name is shown")
        self.assertEqual(self.pages("fax.tif")[0], self.own_page(
            self.HEADINGS, ["Hello"], 4, [("a b <i>.zip", reason)]))
        self.assertEqual(len(self.pages("fax.tif")), 4)

    def test_strict_refuses_such_a_mail(self):
        message = mail()
        attach(message, "a.zip", data=ZIP)
        status, words = self.run_program(
            "morvaltide-mail", "--strict", "-o", "fax.tif", stdin=message.as_bytes())
        lines = words.splitlines()
        self.assertEqual((status, lines[0], len(lines)), (
            1, "morvaltide-mail: the mail is refused, since a part of it cannot be faxed", 2))
        self.assertTrue(lines[1].startswith("morvaltide-mail: can't fax 'a.zip': "))
        self.assertFalse(os.path.exists(self.path("fax.tif")))

    def test_a_document_that_the_converter_refuses_or_remarks_on(self):
        # As installed, with a stand-in beside it that lets everything pass.
        code = self.path("share", "morvaltide", "morvaltide_companions")
        shutil.copytree(os.path.join(support.COMPANIONS, "morvaltide_companions"), code)
        shutil.copy(os.path.join(support.COMPANIONS, "morvaltide-mail"), self.bin)
        self.stand_in("morvaltide-prepare", 'mkdir "$7"; cp "$8" "$7/0001.tif"')
        message = mail()
        attach(message, "bad.pdf", data=b"%PDF-1.4 junk")
        attach(message, "cut.tif", data=support.sample("scan.tif")[:20000])
        attach(message, "tagged.tif", data=support.tagged_tiff())
        status, words = self.run_program(
            os.path.join(self.bin, "morvaltide-mail"), "-m", "0.5", "-o", "fax.tif",
            stdin=message.as_bytes())
        lines = words.splitlines()
        self.assertEqual((status, len(lines)), (3, 2))
        self.assertEqual(lines[0], "morvaltide-mail: can't fax 'bad.pdf': invalid data")
        self.assertTrue(lines[1].startswith(
            "morvaltide-mail: can't fax 'cut.tif': perhaps incomplete, "), lines[1])

    def test_a_long_heading_is_repeated_in_full(self):
        words = " ".join(f"word{i}" for i in range(60))
        self.fax(mail(subject=words))
        lines = cover.rows([("Subject", words)], [], [])
        self.assertEqual(" ".join(line.strip() for line in lines).strip(), f"Subject: {words}")


if __name__ == "__main__":
    unittest.main()
