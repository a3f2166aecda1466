"""Text, PostScript and office documents through morvaltide-prepare."""

import os
import pathlib
import stat
import sys
import unittest
import zipfile

import support

sys.path.insert(0, str(support.SOURCES / "companions"))
from morvaltide_prepare import charsets  # noqa: E402

support.need("gs", "qpdf", "paps", "fc-list", "tiffcp")


class Text(support.CompanionTest):
    def pages_of(self, *texts, options=("-rstandard",)):
        """The pages of several texts, converted together."""
        names = []
        for number, data in enumerate(texts):
            names.append(f"{number}.jpg")
            pathlib.Path(names[-1]).write_bytes(data)
        return self.fax(*names, options=list(options))

    def rows(self, page):
        return [page.row(y) for y in range(page.height)]

    def test_encodings_give_the_same_page(self):
        text = "Grüße aus Köln, à bientôt – 5 €\nund eine zweite Zeile\n"
        codecs = ("utf-8", "utf-8-sig", "utf-16", "utf-16-le", "utf-16-be", "utf-32", "cp1252")
        pages = self.pages_of(*(text.encode(codec) for codec in codecs))
        self.assertIsNotNone(pages[0].box())
        for codec, page in zip(codecs, pages, strict=True):
            with self.subTest(codec=codec):
                self.assertEqual(self.rows(page), self.rows(pages[0]))

    def test_line_ends_give_the_same_page(self):
        text = b"one\ntwo\n\nthree\n"
        pages = self.pages_of(text, text.replace(b"\n", b"\r\n"), text.replace(b"\n", b"\r"))
        self.assertEqual(len(pages), 3)
        for page in pages:
            self.assertEqual(self.rows(page), self.rows(pages[0]))

    def test_other_scripts_have_ink(self):
        words = ("Ελληνικά κείμενα", "Русский текст", "עברית כתובה", "نص عربي")
        latin, *others = self.pages_of(b"abc\n", *(f"abc {word}\n".encode() for word in words))
        for word, page in zip(words, others, strict=True):
            with self.subTest(word=word):
                self.assertGreater(page.darkness(0, 0, 1, 1), latin.darkness(0, 0, 1, 1) * 2)

    def test_letters_without_a_font_are_refused(self):
        os.environ["FONTCONFIG_FILE"] = str(self.folder / "fonts.conf")
        self.addCleanup(os.environ.pop, "FONTCONFIG_FILE")
        pathlib.Path("fonts.conf").write_text(
            "<fontconfig><dir>/usr/share/fonts/truetype/dejavu</dir><cachedir>cache</cachedir></fontconfig>")
        pathlib.Path("text").write_text("A letter: \u4f60\u597d\n", encoding="utf-8")
        self.assertEqual(self.refused("text"), "no font has '\u4f60' (U+4F60)")

    def test_signs_without_a_font_are_replaced(self):
        # The replacement has much ink, where the sign itself would be a blank.
        replaced, letter = self.pages_of("a \U000FFFFD \U0001f9ff\n".encode(), b"a\n")
        self.assertGreater(replaced.darkness(0, 0, 1, 1), letter.darkness(0, 0, 1, 1) * 1.5)

    def test_form_feed_begins_a_page(self):
        pages = self.pages_of(b"first\n\fsecond\n\fthird\n")
        self.assertEqual(len(pages), 3)
        for page in pages:
            self.assertGreater(page.darkness(0, 0, 0.5, 0.2), 0)

    def test_many_lines_become_many_pages_and_none_is_lost(self):
        pages = self.pages_of(b"line\n" * 400)
        self.assertGreater(len(pages), 5)
        lines = 0
        for page in pages:
            inked = "".join("x" if any(row) else " " for row in page.rows)
            lines += len(inked.split())
        self.assertEqual(lines, 400)

    def test_long_lines_are_wrapped_with_all_their_words(self):
        for line in ("word " * 500, "x" * 2500):
            # At a resolution at which it matters little how a line lies between the rows of dots.
            page, part = self.pages_of(line.encode() + b"\n", line[:50].encode() + b"\n", options=["-rsuperfine"])
            times = len(line) / 50
            self.assertAlmostEqual(page.darkness(0, 0, 1, 1) / part.darkness(0, 0, 1, 1), times, delta=times / 20)

    def test_margins_that_machines_print(self):
        left, top, right, bottom = self.pages_of(b"x" * 9000, options=())[0].box()
        self.assertGreater(min(left / 204, top / 196, (1728 - right) / 204), 0.3)

    def test_control_characters_are_left_out(self):
        plain, other = self.pages_of(b"one two " * 40, b"one\x1b two " + b"one two " * 39)
        self.assertEqual(self.rows(other), self.rows(plain))

    def test_unknown_encoding_is_refused(self):
        pathlib.Path("text").write_bytes("เรียนท่าน ขอแจ้งใบแจ้งหนี้".encode("tis_620"))
        self.assertEqual(self.refused("text"),
                         "a text in an unknown encoding cannot be faxed (UTF-8 can)")

    def test_paper(self):
        self.assertEqual(self.pages_of(b"x\n", options=("-pletter",))[0].height, 2156)


class Charsets(unittest.TestCase):
    """The encoding is guessed right, or not at all."""

    TEXTS = (
        ("Grüße aus Köln, 5 €. „Schöne Größe“, Füße; 20 °C ± 2, 5 m²", ("cp1252",)),
        ("À l'été, l'élève créée déjà où naïf; «Être ou ne pas être».", ("cp1252", "latin-1")),
        ("Уважаемые господа, настоящим сообщаем, что счёт 5 оплачен.", ("cp1251", "koi8_r", "iso8859_5")),
        ("Invoice 5: Оплата по счёту за ноябрь, thank you very much indeed", ("cp1251", "koi8_r")),
        ("Αγαπητοί κύριοι, σας ενημερώνουμε ότι το τιμολόγιο πληρώθηκε.", ("cp1253",)),
        ("拝啓　時下ますますご清栄のこととお慶び申し上げます。請求書を送付いたします。", ("euc_jp", "cp932")),
        ("안녕하십니까. 청구서를 보내 드리오니 확인하여 주시기 바랍니다.", ("euc_kr",)),
        ("尊敬的先生：您好！附件是本月的发票，请查收。如有问题，请随时与我们联系。", ("gb18030",)),
        ("敬啟者：您好！附件是本月的發票，請查收。如有問題，請隨時與我們聯絡。", ("big5",)),
    )
    UNCLEAR = (
        ("Zażółć gęślą jaźń, dziękujemy za płatność", ("cp1250", "iso8859_2")),
        ("Уважаемые господа, настоящим сообщаем", ("cp866",)),
        ("שלום רב, מצורפת חשבונית על ההזמנה", ("cp1255",)),
        ("the ship 海洋 in port", ("gb18030",)),
    )

    def test_clear_ones(self):
        for text, codecs in self.TEXTS:
            for codec in codecs:
                with self.subTest(codec=codec):
                    self.assertEqual(charsets.guessed(text.encode(codec)), text)

    def test_unclear_ones(self):
        for text, codecs in self.UNCLEAR:
            for codec in codecs:
                with self.subTest(codec=codec):
                    self.assertEqual(charsets.guessed(text.encode(codec)), "")


class PostScript(support.CompanionTest):
    DRAWING = "%!PS\n<< /PageSize [595 842] >> setpagedevice 100 500 200 200 rectfill showpage\n"

    def shown(self, data):
        pathlib.Path("drawing.txt").write_bytes(data)
        return self.fax("drawing.txt")[0]

    def test_page_is_drawn(self):
        page = self.shown(self.DRAWING.encode())
        left, top, right, bottom = page.box()
        self.assertAlmostEqual((right - left) / 204 * 72, 200, delta=2)
        self.assertAlmostEqual((bottom - top) / 196 * 72, 200, delta=2)

    def test_job_header_of_a_printer_driver(self):
        head = b"\x1b%-12345X@PJL JOB\r\n@PJL ENTER LANGUAGE = POSTSCRIPT\r\n"
        self.assertIsNotNone(self.shown(head + self.DRAWING.encode()).box())
        self.assertIsNotNone(self.shown(b"\x04" + self.DRAWING.encode()).box())

    def test_encapsulated_drawing_is_cut_to_its_box(self):
        head = "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 100 500 300 700\n"
        page = self.shown((head + self.DRAWING.split("\n")[1].split("setpagedevice ")[1]).encode())
        self.assertGreater(page.darkness(0.05, 0.2, 0.95, 0.8), 0.99)

    def test_files_of_the_machine_are_out_of_reach(self):
        pathlib.Path("secret").write_text("secret\n", encoding="ascii")
        pathlib.Path("spy").write_text(
            f"%!PS\n({self.folder}/secret) (r) file 80 string readline pop == showpage\n", encoding="ascii")
        self.assertIn("invalidfileaccess", self.refused("spy"))
        pathlib.Path("spy").write_text(
            f"%!PS\n({self.folder}/made) (w) file closefile showpage\n", encoding="ascii")
        self.assertIn("invalidfileaccess", self.refused("spy"))
        self.assertFalse(os.path.exists("made"))


STAND_IN = """#!/bin/sh
# Stands in for LibreOffice: draws a page for the document that it is given.
for last do :; done
[ "$last" = in ] || exit 9
while [ "$1" != --outdir ]; do shift; done
mkdir -p "$2"
exec gs -q -sDEVICE=pdfwrite -sPAPERSIZE=a4 -o "$2/in.pdf" -c '100 500 200 200 rectfill showpage'
"""


class Office(support.CompanionTest):
    def install(self, script):
        os.mkdir("bin")
        for name in ("libreoffice", "soffice"):
            pathlib.Path("bin", name).write_text(script, encoding="ascii")
            os.chmod(f"bin/{name}", stat.S_IRWXU)
        self.search(f"{self.folder}/bin:{os.environ['PATH']}")

    def documents(self):
        with zipfile.ZipFile("docx", "w") as archive:
            archive.writestr("[Content_Types].xml", "<Types/>")
            archive.writestr("word/document.xml", "<document/>")
        with zipfile.ZipFile("odt", "w") as archive:
            archive.writestr("mimetype", "application/vnd.oasis.opendocument.text")
        compound = bytes.fromhex("d0cf11e0a1b11ae1") + bytes(1000)
        pathlib.Path("doc").write_bytes(compound + "WordDocument".encode("utf-16-le"))
        pathlib.Path("rtf").write_bytes(b"{\\rtf1 text}")
        return ["docx", "odt", "doc", "rtf"]

    def test_each_kind_goes_to_libreoffice(self):
        self.install(STAND_IN)
        for page in self.fax(*self.documents()):
            left, _, right, _ = page.box()
            self.assertAlmostEqual((right - left) / 204 * 72, 200, delta=2)

    def test_failure_is_told(self):
        self.install("#!/bin/sh\necho 'source file could not be loaded' >&2\nexit 1\n")
        self.documents()
        self.assertEqual(self.refused("rtf"), "soffice: source file could not be loaded")

    def test_silence_without_a_result_is_a_failure(self):
        self.install("#!/bin/sh\nexit 0\n")
        self.documents()
        self.assertEqual(self.refused("rtf"), "LibreOffice cannot read it")


if __name__ == "__main__":
    unittest.main()
