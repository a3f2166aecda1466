"""Makes pictures ready: upright, on white, of the right proportions."""

import os

from . import headers, kinds, magick, pages, tiff, tools
from .failure import Failure
from .geometry import FaxPage

_SUFFIXES = {kinds.JPEG: "jpg", kinds.PNG: "png", kinds.TIFF: "tif"}

# What brings the pixels of orientation 2 to 8 upright, for ImageMagick and
# for jpegtran.
_TURNS = {2: ["-flop"], 3: ["-rotate", "180"], 4: ["-flip"], 5: ["-transpose"],
          6: ["-rotate", "90"], 7: ["-transverse"], 8: ["-rotate", "270"]}
_JPEG_TURNS = {2: ["-flip", "horizontal"], 3: ["-rotate", "180"], 4: ["-flip", "vertical"],
               5: ["-transpose"], 6: ["-rotate", "90"], 7: ["-transverse"], 8: ["-rotate", "270"]}

# A picture with fewer pixels than this is not enlarged to the whole page: an
# icon of 32 pixels becomes about an inch.
_LEAST_SIDE = 270

_FAX_DPI = (204, 408)


def prepare(kind: str, source: str, folder: str, options) -> str:
    """Gives the path of a JPEG, PNG or TIFF file that the converter shows right."""
    frames = headers.frames(kind, source)
    if not frames:
        raise Failure("the TIFF file has no pages")
    page = options.page
    if not (options.page_photo or options.auto):
        if all(_is_ready(frame, page) for frame in frames):
            return _renamed(source, folder, _SUFFIXES[kind])
        if kind == kinds.JPEG and _turned_without_loss(frames[0], page, folder):
            return os.path.join(folder, "turned.jpg")
    parts = [_part(kind, frame, number, len(frames), folder, options)
             for number, frame in enumerate(frames)]
    if len(frames) == 1 and parts[0] is None:
        return prepare(kind, source, folder, options.without_photo())
    return tiff.joined(parts, "joined.tif", folder)


def _renamed(source: str, folder: str, suffix: str) -> str:
    target = os.path.join(folder, f"ready.{suffix}")
    os.rename(source, target)
    return target


def _is_large(frame: headers.Frame, page: FaxPage) -> bool:
    """Whether the converter reduces the picture, which keeps its proportions."""
    return max(frame.width, frame.height) > max(page.size)


def _is_fax_page(frame: headers.Frame, page: FaxPage) -> bool:
    """Whether the picture has the dots of this fax already."""
    close = all(abs(has - wanted) <= 0.01 * wanted for has, wanted in zip(frame.dpi, page.dpi))
    return (frame.bilevel and close
            and frame.width <= page.area[0] and frame.height <= page.area[1])


def _is_ready(frame: headers.Frame, page: FaxPage) -> bool:
    return (frame.plain and frame.orientation == headers.UPRIGHT
            and (_is_fax_page(frame, page) or (_is_large(frame, page) and frame.stretch == 1.0)))


def _turned_without_loss(frame: headers.Frame, page: FaxPage, folder: str) -> bool:
    """Turns a JPEG by moving its coefficients; False where that is impossible."""
    if not (frame.plain and _is_large(frame, page) and frame.stretch == 1.0):
        return False
    path = tools.find(("jpegtran",), "libjpeg-turbo-progs")
    status, _ = tools.run([path, "-copy", "none", "-perfect", *_JPEG_TURNS[frame.orientation],
                           "-outfile", "turned.jpg", "in"], folder)
    return status == 0


def _part(kind: str, frame: headers.Frame, number: int, count: int, folder: str, options):
    """The file of one page, or None for a single page that --auto leaves alone."""
    page = options.page
    target = f"part-{number}.{'tif' if count > 1 else 'png'}"
    if frame.plain and frame.orientation == headers.UPRIGHT and not options.page_photo:
        if _is_fax_page(frame, page):
            tools.need(("tiffcp",), "libtiff-tools", [f"in,{number}", f"part-{number}.tif"], folder)
            return f"part-{number}.tif"
        dots = _repeated_dots(frame, page)
        if dots:
            return _with_dots_repeated(number, dots, page, folder)
    _decode(kind, frame, number, folder)
    width, height = magick.pgm_size(os.path.join(folder, "grey.pgm"))
    shown = (width * frame.stretch, height)
    if frame.orientation >= 5:  # turned by a quarter: the pixels were, too
        shown = (width, height * frame.stretch)
    if options.page_photo or (options.auto and pages.is_page("grey.pgm", _whole(shown), folder)):
        target = f"part-{number}.tif"
        pages.threshold("grey.pgm", target, page.fitted(*shown), page, folder)
    elif options.auto and count == 1:
        target = None
    else:
        _write(target, shown, (width, height), page, folder)
    magick.remove(folder, "grey.pgm")
    return target


def _whole(size: tuple) -> tuple:
    return round(size[0]), round(size[1])


def _decode(kind: str, frame: headers.Frame, number: int, folder: str) -> None:
    """Writes the upright picture in grey on white as "grey.pgm".

    Of an animated picture that is the first frame.
    """
    # Transparency over CMYK would be laid over black.
    placed = ["-colorspace", "sRGB", "-background", "white"]
    placed += ["-flatten"] if kind in (kinds.GIF, kinds.WEBP) else ["+repage", "-alpha", "remove"]
    # The decoder of HEIC turns pictures by itself.
    turn = _TURNS.get(frame.orientation, [])
    magick.run([f"{kind}:in[{number}]", *placed, "-alpha", "off", *turn, "+repage",
                "-colorspace", "Gray", "-depth", "8", "pgm:grey.pgm"], folder)


def _write(target: str, shown: tuple, size: tuple, page: FaxPage, folder: str) -> None:
    """Writes a picture with square pixels that is larger than the page.

    The converter then reduces it in the right proportions, whatever its
    options; a smaller one would keep a pixel for a dot, and dots are not square.
    """
    steps = []
    if _whole(shown) != size:
        # Square pixels, and none of them lost.
        grow = max(size[0] / shown[0], size[1] / shown[1], 1.0)
        shown = (shown[0] * grow, shown[1] * grow)
        steps += ["-resize", "{}x{}!".format(*_whole(shown))]
    if max(shown) < _LEAST_SIDE:
        steps += ["-background", "white", "-gravity", "center",
                  "-extent", f"{_LEAST_SIDE}x{_LEAST_SIDE}"]
    least = max(page.size) + 1
    if max(shown) < least:
        steps += ["-resize", f"{least}x{least}"]
    kind = ["-define", "png:compression-level=3"] if target.endswith("png") else \
        ["-compress", "Zip"]
    magick.run(["pgm:grey.pgm", *steps, "-depth", "8", *kind, target], folder)


def _repeated_dots(frame: headers.Frame, page: FaxPage):
    """The dots of a received fax at a higher resolution, or None if it is none."""
    across, down = frame.dpi
    if not frame.bilevel or not any(abs(across - known) <= 0.01 * known for known in _FAX_DPI):
        return None
    dots = (round(frame.width * page.dpi[0] / across), round(frame.height * page.dpi[1] / down))
    fits = dots[0] <= page.area[0] + 1 and dots[1] <= page.area[1] + 4
    dots = (min(dots[0], page.area[0]), min(dots[1], page.area[1]))
    return dots if fits and dots[0] >= frame.width * 0.99 and dots[1] >= frame.height else None


def _with_dots_repeated(number: int, dots: tuple, page: FaxPage, folder: str) -> str:
    target = f"part-{number}.tif"
    magick.run([f"tiff:in[{number}]", "-filter", "point", "-resize", f"{dots[0]}x{dots[1]}!",
                "-type", "Bilevel", "-units", "PixelsPerInch",
                "-density", f"{page.dpi[0]}x{page.dpi[1]}", "-compress", "Group4",
                f"tiff:{target}"], folder)
    return target
