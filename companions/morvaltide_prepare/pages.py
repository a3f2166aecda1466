"""Turns photographed or tinted pages of text into clean black and white, and
tells such pages from photographs of things."""

import os
import re

from . import magick
from .geometry import FaxPage

# The paper is the brightest within this many pixels of a picture that is an
# eighth as large: about 5 mm at fine resolution.
_SHRINK = 8
_PAPER_WINDOW = 7

# Where there is no paper in sight, black stays black.
_DARKEST_PAPER = "30%"

# Ink is darker than this share of the paper around it.
_INK = "76%"

# The picture that is looked at has this many pixels along its longer side.
_LOOK = 900


def _evened(width: int, height: int) -> list:
    """The operations that divide a picture of this size by its paper."""
    small = f"{max(1, width // _SHRINK)}x{max(1, height // _SHRINK)}!"
    return ["-resize", f"{width}x{height}!",
            "(", "+clone", "-resize", small,
            "-statistic", "Maximum", f"{_PAPER_WINDOW}x{_PAPER_WINDOW}", "-blur", "0x3",
            "-evaluate", "Max", _DARKEST_PAPER, "-resize", f"{width}x{height}!", ")",
            "-compose", "Divide_Src", "-composite"]


def threshold(source: str, target: str, dots: tuple, page: FaxPage, folder: str) -> None:
    """Writes the grey picture `source` as a bilevel TIFF of `dots`."""
    magick.run([f"pgm:{source}"] + _evened(*dots) + [
        "-threshold", _INK, "-type", "Bilevel", "-define", "quantum:polarity=min-is-white",
        "-units", "PixelsPerInch", "-density", f"{page.dpi[0]}x{page.dpi[1]}",
        "-compress", "Group4", f"tiff:{target}"], folder)


def is_page(source: str, size: tuple, folder: str) -> bool:
    """Whether the grey picture is surely a page of text or lines.

    Nearly all of it is evenly bright once the paper is evened out, there are
    hardly any tones between paper and ink, and the ink is in thin strokes.
    """
    scale = min(1.0, _LOOK / max(size))
    width, height = (max(1, round(side * scale)) for side in size)
    magick.run([f"pgm:{source}"] + _evened(width, height) + ["-depth", "8", "gray:look"], folder)
    look = _read(folder, "look")
    return _looks_like_page(look, width)


def is_tinted_page(source: str, folder: str) -> bool:
    """Whether the drawing of a PDF page is a page of text on no white paper."""
    width, height = magick.pgm_size(os.path.join(folder, source))
    magick.run([f"pgm:{source}", "-resize", "100x100!", "-depth", "8", "gray:tint"], folder)
    tones = sorted(_read(folder, "tint"))
    return tones[len(tones) // 2] < _WHITE_PAPER and is_page(source, (width, height), folder)


_WHITE_PAPER = 245
_PAPER_TONE, _INK_TONE = 205, 140
_CLASSES = bytes(0x64 if tone < _INK_TONE else 0x6D if tone < _PAPER_TONE else 0x77
                 for tone in range(256))
_LEAST_PAPER, _MOST_BETWEEN = 0.78, 0.10
_LEAST_INK, _MOST_INK = 0.002, 0.18
_LONGEST_STROKE = 12
_LEAST_IN_STROKES = 0.8
_LEAST_STROKES = 150


def _looks_like_page(look: bytes, width: int) -> bool:
    classes = look.translate(_CLASSES)
    total = len(classes)
    paper, between, ink = (classes.count(name) / total for name in (b"w", b"m", b"d"))
    rows = b"|".join(classes[start:start + width] for start in range(0, total, width))
    strokes = [len(run) for run in re.findall(rb"d+", rows)]
    thin = sum(length for length in strokes if length <= _LONGEST_STROKE)
    return (paper >= _LEAST_PAPER and between <= _MOST_BETWEEN
            and _LEAST_INK <= ink <= _MOST_INK and len(strokes) >= _LEAST_STROKES
            and thin >= _LEAST_IN_STROKES * sum(strokes))


def _read(folder: str, name: str) -> bytes:
    with open(os.path.join(folder, name), "rb") as file:
        return file.read()
