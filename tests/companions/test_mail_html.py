"""Nothing that a stranger writes into a mail names a file of this machine."""

import unittest

import support
from mail_case import FaxCase


class Html(FaxCase):
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


if __name__ == "__main__":
    unittest.main()
