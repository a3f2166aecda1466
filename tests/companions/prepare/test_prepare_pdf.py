"""PDF documents through morvaltide-prepare: upright, readable, sharp."""

import math
import pathlib
import unittest

import support
from support import fax_pages

support.need("gs", "qpdf", "tiffcp")

# A mark in the upper left corner, a smaller one in the upper right.
MARKS = """
<< /PageSize [595 842] >> setpagedevice
50 592 200 200 rectfill 470 742 50 50 rectfill showpage
"""


def at_corner(page):
    """In which corner the large mark is, in the order upper left, upper right,
    lower left, lower right."""
    halves = [(0, 0), (0.5, 0), (0, 0.5), (0.5, 0.5)]
    shares = [page.darkness(x, y, x + 0.5, y + 0.5) for x, y in halves]
    return shares.index(max(shares))


class Upright(support.CompanionTest):
    def rotated(self, angle):
        support.postscript_to_pdf("plain.pdf", MARKS)
        support.run("qpdf", f"--rotate={angle}", "plain.pdf", "rotated.pdf")
        return self.fax("rotated.pdf")[0]

    def test_half_turn(self):
        self.assertEqual(at_corner(self.rotated(180)), 3)

    def test_quarter_turn_of_a_landscape_page(self):
        # What the reader of such a document sees is an upright page.
        for angle, corner in ((90, 1), (270, 2)):
            support.postscript_to_pdf("plain.pdf", """
                << /PageSize [842 595] >> setpagedevice
                50 345 200 200 rectfill 742 495 50 50 rectfill showpage""")
            support.run("qpdf", f"--rotate={angle}", "plain.pdf", "rotated.pdf")
            page = self.fax("rotated.pdf")[0]
            with self.subTest(angle=angle):
                self.assertEqual(at_corner(page), corner)
                left, top, right, bottom = page.box()
                self.assertGreater((bottom - top) / 196, (right - left) / 204)

    def test_result_has_no_rotation_left(self):
        support.postscript_to_pdf("plain.pdf", MARKS)
        support.run("qpdf", "--rotate=90", "plain.pdf", "rotated.pdf")
        self.assertEqual(self.prepared("rotated.pdf"), ["0001.pdf"])
        support.run("qpdf", "--qdf", "out/0001.pdf", "plain-again.pdf")
        self.assertNotIn(b"/Rotate 90", pathlib.Path("plain-again.pdf").read_bytes())


class Readable(support.CompanionTest):
    def setUp(self):
        super().setUp()
        support.postscript_to_pdf("plain.pdf", MARKS)

    def encrypt(self, user):
        support.run("qpdf", "--encrypt", user, "owner", "256", "--", "plain.pdf", "locked.pdf")

    def test_empty_password_is_removed(self):
        self.encrypt("")
        self.assertEqual(at_corner(self.fax("locked.pdf")[0]), 0)
        self.assertNotIn(b"/Encrypt", pathlib.Path("out/0001.pdf").read_bytes())

    def test_other_password_is_named(self):
        self.encrypt("secret")
        self.assertEqual(self.refused("locked.pdf"), "the PDF document needs a password")

    def test_lost_table_of_objects_is_repaired(self):
        data = pathlib.Path("plain.pdf").read_bytes()
        pathlib.Path("cut.pdf").write_bytes(data[:data.rindex(b"startxref")])
        self.assertEqual(at_corner(self.fax("cut.pdf")[0]), 0)

    def test_lost_page_is_no_repair(self):
        support.run("qpdf", "--qdf", "--object-streams=disable", "--empty", "--pages", "plain.pdf", "plain.pdf",
                    "--", "two.pdf")
        data = pathlib.Path("two.pdf").read_bytes()
        page = data.rindex(b"/Type /Page\n")
        start, end = data.rindex(b"\n\n", 0, page), data.index(b"endobj", page) + 7
        pathlib.Path("lost.pdf").write_bytes(data[:start] + data[end:])
        self.assertEqual(self.refused("lost.pdf"), "a page of the PDF document is lost")

    def test_name_without_suffix(self):
        pathlib.Path("plain.pdf").rename("document")
        self.assertEqual(at_corner(self.fax("document")[0]), 0)

    def test_name_with_a_wrong_suffix(self):
        pathlib.Path("plain.pdf").rename("document.jpg")
        self.assertEqual(at_corner(self.fax("document.jpg")[0]), 0)

    def test_beyond_repair(self):
        pathlib.Path("broken.pdf").write_bytes(b"%PDF-1.4\n" + b"nothing\n" * 100)
        self.assertTrue(self.refused("broken.pdf").startswith("qpdf: "))


PAPERS = {"a4": ("595x842", 11.69291338582677), "letter": ("612x792", 11.0), "legal": ("612x1008", 14.0)}
RESOLUTIONS = {"standard": (204, 98, 1728), "fine": (204, 196, 1728),
               "superfine": (204, 391, 1728), "ultrafine": (408, 391, 3456)}
MARGINS = [("", (0, 0, 0, 0)), ("-m0.1", (0.1,) * 4), ("-m0.5,0.3,0.25,0.77", (0.5, 0.3, 0.25, 0.77))]
TEXT = """
<< /PageSize [{} {}] >> setpagedevice
/Times-Roman 9 selectfont
30 12 770 {{ 40 exch moveto (The quick brown fox, -147.50 EUR; 0.25 points) show }} for
0.25 setlinewidth 20 20 moveto 500 700 lineto stroke
0.5 setgray 300 300 200 200 rectfill
showpage
"""


class Sharp(support.CompanionTest):
    """Every dot is one that gs draws at the size of the printable area."""

    def check(self, resolution):
        across, down, width = RESOLUTIONS[resolution]
        # Every two of paper, margins and resolution meet in one of the tests.
        first = list(RESOLUTIONS).index(resolution)
        for number, (paper, (points, inches)) in enumerate(PAPERS.items(), start=first):
            margins, (left, top, right, bottom) = MARGINS[number % len(MARGINS)]
            with self.subTest(paper=paper, margins=margins):
                support.postscript_to_pdf("text.pdf", TEXT.format(*points.split("x")))
                left, top = math.floor(left * across), math.floor(top * down)
                height = math.ceil(inches * down)
                area = (width - left - math.floor(right * across),
                        height - top - math.floor(bottom * down))
                support.run("gs", "-q", "-dSAFER", "-sDEVICE=tiffg4", "-dAdjustWidth=0", "-dFIXEDMEDIA",
                            "-dPDFFitPage", f"-r{across}x{down}", f"-g{area[0]}x{area[1]}",
                            "-o", "expected.tif", "text.pdf")
                expected = fax_pages.read_pages("expected.tif")[0]
                self.assertEqual((expected.width, expected.height), area)
                options = [f"-r{resolution}", f"-p{paper}"] + ([margins] if margins else [])
                page = self.fax("text.pdf", options=["--sharp", *options])[0]
                self.assertEqual((page.width, page.height), (width, height))
                self.assertSameDots(page, expected.cut(0, 0, *area), left, top)

    def test_standard(self):
        self.check("standard")

    def test_fine(self):
        self.check("fine")

    def test_superfine(self):
        self.check("superfine")

    def test_ultrafine(self):
        self.check("ultrafine")


class MinusSigns(support.CompanionTest):
    """A page of fifty amounts at standard resolution."""

    COUNT = 50

    def setUp(self):
        super().setUp()
        self.tops = [800 - 15.37 * line for line in range(self.COUNT)]
        text = "".join(f"100 {top} moveto (-147.50 EUR) show\n" for top in self.tops)
        support.postscript_to_pdf(
            "amounts.pdf", f"<< /PageSize [595.28 841.89] >> setpagedevice\n"
            f"/Times-Roman 8 selectfont\n{text}showpage")

    def signs(self, page):
        """How many lines have a black stroke where their minus sign is."""
        found = 0
        for top in self.tops:
            # The sign is as wide as a third of the type, and lies within it.
            left = round(page.width / 2 + (100 - 595.28 / 2) / 72 * 204)
            middle = round((841.89 - top - 2) / 72 * 98)
            part = page.cut(left, middle - 3, 8, 5)
            found += any("111" in row for row in part)
        return found

    def test_none_is_lost_when_drawn_sharp(self):
        page = self.fax("amounts.pdf", options=["--sharp", "-rstandard"])[0]
        self.assertEqual(self.signs(page), self.COUNT)

    def test_some_are_lost_otherwise(self):
        # Else the test above would say nothing.
        page = self.fax("amounts.pdf", options=["-rstandard"])[0]
        self.assertLess(self.signs(page), self.COUNT)


class Tinted(support.CompanionTest):
    """Pages on coloured paper, between pages on white."""

    def setUp(self):
        super().setUp()
        lines = " ".join(f"60 {y} moveto (Line {y} of a page with some words in it, and more) show"
                         for y in range(100, 780, 14))
        page = f"/Times-Roman 11 selectfont 0 setgray {lines} showpage"
        tint = "0.75 setgray 0 0 595 842 rectfill"
        support.postscript_to_pdf("tinted.pdf", f"<< /PageSize [595 842] >> setpagedevice {tint} {page} {page}")

    def test_paper_becomes_white(self):
        for option in ("--page-photo", "--auto"):
            with self.subTest(option=option):
                tinted, white = self.fax("tinted.pdf", options=[option, "-rstandard"])
                self.assertLess(tinted.darkness(0.1, 0.01, 0.9, 0.05), 0.0001)
                self.assertLess(abs(tinted.darkness(0, 0, 1, 1) - white.darkness(0, 0, 1, 1)), 0.02)
                self.assertGreater(tinted.darkness(0.1, 0.1, 0.5, 0.8), 0.03)

    def test_pages_on_white_stay_a_document(self):
        support.run("qpdf", "tinted.pdf", "--pages", ".", "2", "--", "white.pdf")
        self.assertEqual(self.prepared("--auto", "white.pdf"), ["0001.pdf"])


if __name__ == "__main__":
    unittest.main()
