"""No line of a text is lost on the way to the fax, at any paper and resolution:

    test_mail_pages.py PAPER RESOLUTION...

The lines are made of letters without parts above or below, so that each is one
band of ink on its page.
"""

import os
import sys
import unittest

import support
from morvaltide_companions import tiff

support.need("tiffcp", "libtiff-tools")
PAPER, *CHOSEN = sys.argv[1:]
LINES = 100
# The text begins below the second rule of a page: that of the head.
HEIGHTS = {"a4": 297 / 25.4, "letter": 11, "legal": 14}


def bands(rows):
    """The parts of a page with ink in them, as pairs of first and last row."""
    blank = bytes(len(rows[0]))
    edges = [i for i in range(1, len(rows)) if (rows[i] == blank) != (rows[i - 1] == blank)]
    return list(zip(edges[::2], edges[1::2]))


def is_rule(rows, band):
    return any(row.count(0xFF) > len(row) * 3 // 4 for row in rows[band[0] : band[1]])


class Pages(support.Case):
    def text_lines(self, rows):
        found = bands(rows)
        rules = [i for i, band in enumerate(found) if is_rule(rows, band)]
        self.assertEqual(len(rules), 1, "a page has one rule below its head")
        return len(found) - rules[0] - 1

    def test_every_line_is_on_a_page(self):
        # The subject is one word that is wider than the page.
        mail = ("Subject: " + "W" * 100 + "\n\n" + ("x" * 84 + "\n") * LINES).encode()
        for resolution in CHOSEN:
            with self.subTest(resolution):
                ended = self.run_program("morvaltide-mail", "-p", PAPER, "-r", resolution,
                                         "-c", "g4", "-o", "fax.tif", stdin=mail)
                self.assertEqual(ended, (0, ""))
                dpi = support.RESOLUTIONS[resolution]
                count = tiff.page_count(self.path("fax.tif"))
                lines = []
                for number in range(count):
                    rows = self.dots("fax.tif", number)
                    self.assertLess(abs(len(rows) / dpi[1] - HEIGHTS[PAPER]), 0.03)
                    self.assert_margins(rows, dpi)
                    lines.append(self.text_lines(rows))
                self.assertEqual(sum(lines), LINES)
                # All but the last are full: as many lines as a page has room for.
                self.assertGreater(min(lines[:-1]), 40)
                os.unlink(self.path("fax.tif"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
