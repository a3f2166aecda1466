"""Pictures through morvaltide-prepare: upright, on white, in proportion."""

import pathlib
import struct
import unittest
import zlib

import support
from support import fax_pages

support.need("tiffcp", "jpegtran", "djpeg", support.MAGICK)

WIDTH, HEIGHT = 400, 240

# What turns an upright picture into one that is stored with that orientation.
STORED = {1: [], 2: ["-flop"], 3: ["-rotate", "180"], 4: ["-flip"], 5: ["-transpose"],
          6: ["-rotate", "270"], 7: ["-transverse"], 8: ["-rotate", "90"]}

DRAWING = ["-size", f"{WIDTH}x{HEIGHT}", "xc:white", "-fill", "black",
           "-draw", "rectangle 0,0 199,119", "-draw", "rectangle 360,200 399,239"]


def exif(orientation):
    return b"Exif\0\0" + b"MM\0*\0\0\0\x08" + struct.pack(">HHHIHHI", 1, 274, 3, 1, orientation, 0, 0)


def tag_jpeg(path, orientation):
    data, block = pathlib.Path(path).read_bytes(), exif(orientation)
    pathlib.Path(path).write_bytes(
        data[:2] + b"\xff\xe1" + struct.pack(">H", len(block) + 2) + block + data[2:])


def tag_png(path, orientation):
    data, block = pathlib.Path(path).read_bytes(), b"eXIf" + exif(orientation)[6:]
    chunk = struct.pack(">I", len(block) - 4) + block + struct.pack(">I", zlib.crc32(block))
    pathlib.Path(path).write_bytes(data[:33] + chunk + data[33:])


def tag_webp(path, orientation, size):
    frame = pathlib.Path(path).read_bytes()[12:]
    block = exif(orientation)[6:]
    head = struct.pack("<B3x", 8) + b"".join((side - 1).to_bytes(3, "little") for side in size)
    body = b"WEBPVP8X" + struct.pack("<I", 10) + head + frame
    body += b"EXIF" + struct.pack("<I", len(block)) + block
    pathlib.Path(path).write_bytes(b"RIFF" + struct.pack("<I", len(body)) + body)


class PictureTest(support.CompanionTest):
    def assertUpright(self, page, what):
        """The page shows the drawing in its proportions across its whole width."""
        left, top, right, bottom = page.box()
        shape = ((right - left) / page.dpi[0]) / ((bottom - top) / page.dpi[1])
        with self.subTest(what=what):
            self.assertEqual((left, right), (0, page.width))
            self.assertAlmostEqual(shape, WIDTH / HEIGHT, delta=0.02)
            part = fax_pages.Page(page.width, bottom - top, page.rows[top:bottom], page.dpi)
            self.assertGreater(part.darkness(0.02, 0.02, 0.48, 0.48), 0.98)
            self.assertGreater(part.darkness(0.92, 0.86, 0.98, 0.98), 0.98)
            self.assertLess(part.darkness(0.52, 0.02, 0.98, 0.8), 0.02)
            self.assertLess(part.darkness(0.02, 0.52, 0.88, 0.98), 0.02)


class Orientation(PictureTest):
    def shown(self, *names):
        for name, page in zip(names, self.fax(*names, options=["-rstandard"]), strict=True):
            self.assertUpright(page, name)

    def test_small_jpeg(self):
        for orientation, steps in STORED.items():
            support.magick(*DRAWING, *steps, "-strip", f"{orientation}.jpg")
            tag_jpeg(f"{orientation}.jpg", orientation)
        self.shown(*(f"{orientation}.jpg" for orientation in STORED))

    def test_png(self):
        for orientation, steps in STORED.items():
            support.magick(*DRAWING, *steps, "-strip", f"{orientation}.png")
            tag_png(f"{orientation}.png", orientation)
        self.shown(*(f"{orientation}.png" for orientation in STORED))

    def test_webp(self):
        for orientation, steps in STORED.items():
            support.magick(*DRAWING, *steps, "-strip", "-define", "webp:lossless=true", f"{orientation}.webp")
            size = (WIDTH, HEIGHT) if orientation < 5 else (HEIGHT, WIDTH)
            tag_webp(f"{orientation}.webp", orientation, size)
        self.shown(*(f"{orientation}.webp" for orientation in STORED))

    def test_pages_of_a_tiff(self):
        names = ["top-left", "top-right", "bottom-right", "bottom-left",
                 "left-top", "right-top", "right-bottom", "left-bottom"]
        for orientation, steps in STORED.items():
            support.magick(*DRAWING, *steps, "-compress", "LZW", f"{orientation}.tif")
            support.run("tiffset", "-s", "274", orientation, f"{orientation}.tif")
        support.run("tiffcp", *(f"{orientation}.tif" for orientation in STORED), "all.tif")
        pages = self.fax("all.tif", options=["-rstandard"])
        self.assertEqual(len(pages), len(names))
        for name, page in zip(names, pages):
            self.assertUpright(page, name)


class WithoutLoss(PictureTest):
    """Large JPEG pictures of whole blocks are turned as they are coded."""

    def setUp(self):
        super().setUp()
        # Other colours and noise, so that a second coding would show.
        support.magick("-seed", "7", "-size", "1760x176", "plasma:red-green", "-strip", "-quality", "75",
                       "-sampling-factor", "4:2:0", "upright.jpg")

    def pixels(self, name, *options):
        return support.run("djpeg", *options, "-grayscale", "-pnm", name).stdout

    def test_all_orientations(self):
        # The transforms that turn the upright picture into the stored one.
        stored = {2: ["-flip", "horizontal"], 3: ["-rotate", "180"], 4: ["-flip", "vertical"],
                  5: ["-transpose"], 6: ["-rotate", "270"], 7: ["-transverse"], 8: ["-rotate", "90"]}
        upright = self.pixels("upright.jpg")
        for orientation, steps in stored.items():
            name = f"{orientation}.jpg"
            support.run("jpegtran", "-perfect", *steps, "-outfile", name, "upright.jpg")
            tag_jpeg(name, orientation)
            self.assertNotEqual(self.pixels(name), upright)
        self.assertEqual(self.prepared("-rstandard", *(f"{orientation}.jpg" for orientation in stored)),
                         [f"{number:04}.jpg" for number in range(1, 8)])
        for number, orientation in enumerate(stored, start=1):
            with self.subTest(orientation=orientation):
                self.assertEqual(self.pixels(f"out/{number:04}.jpg"), upright)

    def test_upright_picture_is_taken_as_it_is(self):
        self.assertEqual(self.prepared("-rstandard", "upright.jpg"), ["0001.jpg"])
        self.assertEqual(pathlib.Path("out/0001.jpg").read_bytes(),
                         pathlib.Path("upright.jpg").read_bytes())

    def test_edges_that_are_no_whole_blocks_are_kept(self):
        support.magick(*DRAWING, "-sample", "1990x1194!", "-rotate", "270", "-strip", "turned.jpg")
        tag_jpeg("turned.jpg", 6)
        self.assertUpright(self.fax("turned.jpg", options=["-rstandard"])[0], "turned")


class Kinds(PictureTest):
    """Told by their content, whatever they are called."""

    def shown(self, name, *steps, drawing=DRAWING):
        support.magick(*drawing, *steps, name)
        pathlib.Path(name.split(":")[-1]).rename("document.png")
        self.assertUpright(self.fax("document.png", options=["-rstandard"])[0], name)

    def test_jpeg(self):
        self.shown("picture.jpg")

    def test_cmyk_jpeg(self):
        self.shown("picture.jpg", "-colorspace", "CMYK")

    def test_cmyk_tiff(self):
        self.shown("picture.tif", "-colorspace", "CMYK")

    def test_sixteen_bits(self):
        self.shown("png48:picture.png", "-depth", "16")
        self.shown("picture.tif", "-depth", "16", "-type", "TrueColor")

    def test_webp(self):
        self.shown("picture.webp")

    def test_bmp(self):
        self.shown("picture.bmp")

    def test_gif(self):
        self.shown("picture.gif")

    def test_transparent_parts_are_white(self):
        # The colour behind what is transparent is black.
        clear = ["-size", f"{WIDTH}x{HEIGHT}", "xc:#00000000", *DRAWING[3:]]
        for name in ("png32:picture.png", "picture.webp", "picture.gif", "picture.tif"):
            self.shown(name, drawing=clear)

    def test_first_frame_of_an_animation(self):
        support.magick("-delay", "10", "(", *DRAWING, ")", "(", "-size", f"{WIDTH}x{HEIGHT}",
                       "xc:black", ")", "moving.gif")
        pages = self.fax("moving.gif", options=["-rstandard"])
        self.assertEqual(len(pages), 1)
        self.assertUpright(pages[0], "gif")

    def test_heic(self):
        try:
            self.shown("picture.heic")
        except support.subprocess.CalledProcessError:
            self.skipTest("this machine cannot write HEIC")

    def test_damaged_picture_is_refused(self):
        support.magick(*DRAWING, "-depth", "16", "picture.png")
        data = pathlib.Path("picture.png").read_bytes()
        pathlib.Path("cut.png").write_bytes(data[:len(data) // 2])
        self.assertTrue(self.refused("cut.png"))

    def test_picture_cut_short_is_refused(self):
        # Wide enough to be handed over as it is.
        support.magick("-size", "2400x160", "xc:gray", "+noise", "Random", "whole.jpg")
        data = pathlib.Path("whole.jpg").read_bytes()
        pathlib.Path("cut.jpg").write_bytes(data[:len(data) // 2])
        self.assertEqual(self.refused("cut.jpg"), "the JPEG picture is cut short")


class Dots(PictureTest):
    def fax_page(self, options=()):
        """A page as another machine has sent it: a pattern of single dots."""
        support.magick("-size", "1700x300", "pattern:GRAY40", "-type", "Bilevel",
                       "-units", "PixelsPerInch", "-density", "204x98", "-compress", "Group4", "fax-page.tif")
        return fax_pages.read_pages("fax-page.tif")[0]

    def test_fax_page_of_the_same_resolution_keeps_its_dots(self):
        sent = self.fax_page()
        page = self.fax("fax-page.tif", options=["-rstandard"])[0]
        self.assertSameDots(page, sent.cut(0, 0, 1700, 300), (1728 - 1700) // 2, (1146 - 300) // 2)

    def test_fax_page_of_a_lower_resolution_has_each_row_twice(self):
        sent = self.fax_page()
        page = self.fax("fax-page.tif")[0]
        rows = [row for row in sent.cut(0, 0, 1700, 300) for _ in (1, 2)]
        self.assertSameDots(page, rows, (1728 - 1700) // 2, (2292 - 600) // 2)

    def test_pixels_that_are_not_square_are_made_so(self):
        support.magick(*DRAWING, "-resize", "100%x50%!", "-units", "PixelsPerInch",
                       "-density", "200x100", "-type", "Grayscale", "flat.tif")
        self.assertUpright(self.fax("flat.tif")[0], "flat")

    def test_proportions_at_other_resolutions(self):
        support.magick(*DRAWING, "picture.png")
        for resolution in ("fine", "superfine"):
            self.assertUpright(self.fax("picture.png", options=[f"-r{resolution}"])[0], resolution)

    def test_icon_does_not_fill_the_page(self):
        support.magick("-size", "27x27", "xc:black", "icon.png")
        left, top, right, bottom = self.fax("icon.png")[0].box()
        self.assertLess((right - left) / 204, 1.2)
        self.assertAlmostEqual((right - left) / 204, (bottom - top) / 196, delta=0.05)


LINES = [word for y in range(150, 1500, 40) for word in
         ("-draw", f"text 100,{y} 'A line of a page that somebody has photographed, {y}'")]


class PagePhoto(PictureTest):
    def photograph(self):
        """A page of text in uneven light, with noise."""
        support.magick("-size", "1200x1600", "xc:white", "-fill", "black", "-font", "DejaVu-Sans",
                       "-pointsize", "26", *LINES,
                       "(", "-size", "1600x1200", "gradient:#f0e8d0-#706858", "-rotate", "90", ")",
                       "-compose", "Multiply", "-composite", "-seed", "5", "-attenuate", "0.2",
                       "+noise", "Gaussian", "-blur", "0x0.7", "page.jpg")

    def test_page_becomes_readable(self):
        self.photograph()
        plain = self.fax("page.jpg", options=["-rstandard"])[0]
        self.assertGreater(plain.darkness(0.1, 0.88, 0.9, 0.92), 0.1)
        dithered = pathlib.Path("fax.tif").stat().st_size
        # Told to, or because it is recognised.
        for option in ("--page-photo", "--auto"):
            with self.subTest(option=option):
                page = self.fax("page.jpg", options=[option, "-rstandard"])[0]
                self.assertLess(pathlib.Path("fax.tif").stat().st_size * 10, dithered)
                # Paper is white between the lines, and each line has ink.
                left, top, right, bottom = page.box()
                lines = "".join("x" if any(page.rows[y]) else " " for y in range(top, bottom)).split()
                self.assertEqual(len(lines), len(LINES) // 2)

    def test_photographs_of_things_stay_dithered(self):
        names = []
        for number, picture in enumerate(("plasma:white-gray", "gradient:white-black", "plasma:blue-yellow",
                                          "radial-gradient:white-gray")):
            names.append(f"{number}.jpg")
            support.magick("-seed", "3", "-size", "900x700", picture, "-blur", "0x2", names[-1])
        names.append(str(support.SOURCES / "samples" / "photo.jpg"))
        self.assertEqual(self.prepared("--auto", "-rstandard", *names),
                         [f"{number:04}.png" for number in range(1, 6)])


if __name__ == "__main__":
    unittest.main()
