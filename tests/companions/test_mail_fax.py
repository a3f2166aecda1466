"""The finished fax of a mail: its pages, what the cover says, and failures."""

import email.policy
import os
import signal
import subprocess
import time
import unittest
from email.message import EmailMessage

import support
from morvaltide_companions import cover, layout, tiff

support.need("tiffcp", "libtiff-tools")
support.need("gs", "ghostscript")


def mail(text="Hello", subject="Gauges"):
    message = EmailMessage(policy=email.policy.SMTP)
    message["From"] = "Åsa <asa@example.org>"
    message["Subject"] = subject
    message["Date"] = "Sat, 21 Nov 2026 10:00:00 +0100"
    message.set_content(text)
    return message


def attach(message, name, kind="application/octet-stream", data=None):
    main, sub = kind.split("/")
    data = support.sample(name) if data is None else data
    message.add_attachment(data, maintype=main, subtype=sub, filename=name)


ZIP = b"PK\x03\x04 not even a whole one"


class Fax(support.Case):
    def fax(self, message, *options, expected=(0, "")):
        data = message if isinstance(message, bytes) else message.as_bytes()
        ended = self.run_program("morvaltide-mail", "-o", "fax.tif", *options, stdin=data)
        self.assertEqual(ended, expected)
        self.assertEqual(os.listdir(self.path("tmp")), [], "temporary files are left")

    def own_page(self, headings, texts, pages, unfaxed=()):
        """The page that the converter makes of the cover that is expected."""
        lines = cover.rows(headings, texts, unfaxed)
        html = layout._page(cover.cover_head("Fax", headings, pages), lines, False)
        self.write("cover.html", html.encode())
        self.write("dot.png", layout.DOT)
        self.convert("cover.tif", "-C", "cover.html", "dot.png")
        return self.pages("cover.tif")[0]

    HEADINGS = [("From", "Åsa <asa@example.org>"), ("Date", "Sat, 21 Nov 2026 10:00:00 +0100"),
                ("Subject", "Gauges")]

    def test_a_mail_without_attachments_is_a_fax_of_its_text(self):
        self.fax(mail())
        self.assertEqual(self.pages("fax.tif"), [self.own_page(self.HEADINGS, ["Hello"], 1)])

    def test_attachments_follow_dot_for_dot_and_the_cover_counts_them(self):
        message = mail()
        for name in ("report.pdf", "photo.jpg", "scan.tif"):
            attach(message, name)
        self.fax(message, "-m", "0.5", "-t", "fittopaper")
        pages = self.pages("fax.tif")
        if not os.path.exists(os.path.join(support.COMPANIONS, "morvaltide-prepare")):
            samples = [os.path.join(support.SAMPLES, name)
                       for name in ("report.pdf", "photo.jpg", "scan.tif")]
            self.convert("direct.tif", "-m", "0.5", "-t", "fittopaper", *samples)
            self.assertEqual(pages[1:], self.pages("direct.tif"))
        self.assertEqual(pages[0], self.own_page(self.HEADINGS, ["Hello"], 8))
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
        self.stand_in("morvaltide-prepare", 'for d; do :; done; mkdir "$7"; cp "$d" "$7/0001.tif"')
        message = mail()
        attach(message, "bad.pdf", data=b"%PDF-1.4 junk")
        cut = support.sample("scan.tif")[:20000]
        attach(message, "cut.tif", data=cut)
        options = ("-m", "0.5")
        status, words = self.run_program(
            "morvaltide-mail", *options, "-o", "fax.tif", stdin=message.as_bytes())
        lines = words.splitlines()
        self.assertEqual((status, len(lines)), (3, 2))
        self.assertEqual(lines[0], "morvaltide-mail: can't fax 'bad.pdf': invalid data")
        self.assertTrue(lines[1].startswith(
            "morvaltide-mail: can't fax 'cut.tif': perhaps incomplete, "), lines[1])

    def test_html_reads_no_local_file(self):
        self.write("black.png", support.sample("chart.png"))
        black = self.path("black.png").encode()
        page = b"Content-Type: text/html\n\n<p>Hello"
        self.fax(page)
        plain = self.pages("fax.tif")
        for tag in (b'<img src="%b">', b'<img src="file://%b">', b'<body background="%b">',
                    b'<style>body { background-image: url("%b") }</style>',
                    b"<!-- --><img src='%b'>", b"<table background=%b><tr><td>"):
            self.fax(page.replace(b"<p>", tag % black + b"<p>"))
            self.assertEqual(self.pages("fax.tif"), plain, tag)
        # Nor does markup in a text, a heading or a name.
        self.fax(b"Subject: <img src=%b>\n\n<img src=%b>" % (black, black))
        text = f"<img src={black.decode()}>"
        self.assertEqual(self.pages("fax.tif"),
                         [self.own_page([("Subject", text)], [text], 1)])

    def test_a_long_heading_is_repeated_in_full(self):
        words = " ".join(f"word{i}" for i in range(60))
        self.fax(mail(subject=words))
        lines = cover.rows([("Subject", words)], [], [])
        self.assertEqual(" ".join(line.strip() for line in lines).strip(), f"Subject: {words}")

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
        for arguments in ((), ("-o", ""), ("-o", "a", "-r", "best"), ("-o", "a", "b")):
            self.assertEqual(self.run_program("morvaltide-mail", *arguments)[0], 2, arguments)


if __name__ == "__main__":
    unittest.main()
