"""What the tests of finished faxes of mails share."""

import email.policy
import os
from email.message import EmailMessage

import support
from morvaltide_companions import cover, layout

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


class FaxCase(support.Case):
    """Makes faxes of mails."""

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
