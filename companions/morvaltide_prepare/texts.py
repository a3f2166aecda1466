"""Lays out plain text of any script as pages."""

import codecs
import os
import unicodedata

from . import charsets, postscript, tools
from .failure import Failure
from .geometry import FaxPage

# What a receiver can read at standard resolution; 0.5 inch is what machines
# leave blank anyway.
_FONT = "Monospace 10"
_MARGIN_POINTS = 36

_UNKNOWN_DATA = "unknown data cannot be faxed"
_UNKNOWN_CODE = "a text in an unknown encoding cannot be faxed (UTF-8 can)"

_MARKS = (
    (codecs.BOM_UTF8, "utf-8-sig"),
    (codecs.BOM_UTF32_LE, "utf-32"), (codecs.BOM_UTF32_BE, "utf-32"),
    (codecs.BOM_UTF16_LE, "utf-16"), (codecs.BOM_UTF16_BE, "utf-16"),
)
_JAPANESE_ESCAPES = (b"\x1b$B", b"\x1b$@", b"\x1b(J")

_CONTROLS = {*range(0x20), 0x7F} - {*b"\t\n\v\f\r\x1b\b"}


def decoded(data: bytes) -> str:
    """The text of `data`, with line feeds as ends of lines; Failure if it is none."""
    text = _decoded_as_is(data).replace("\r\n", "\n").replace("\r", "\n").replace("\v", "\n")
    return "".join(character for character in text
                   if character in "\t\n\f" or unicodedata.category(character) != "Cc")


def _decoded_as_is(data: bytes) -> str:
    for mark, codec in _MARKS:
        if data.startswith(mark):
            return _strictly(data, codec)
    if b"\0" in data:
        return _without_mark(data)
    # Some control characters are left behind by old programs; many mean that
    # this is no text.
    if sum(data.count(code) for code in _CONTROLS) * 100 > len(data):
        raise Failure(_UNKNOWN_DATA)
    if any(escape in data for escape in _JAPANESE_ESCAPES):
        return _strictly(data, "iso2022_jp_2")
    try:
        return data.decode("utf-8")
    except UnicodeDecodeError:
        return _guessed(data)


def _strictly(data: bytes, codec: str) -> str:
    try:
        return data.decode(codec)
    except UnicodeDecodeError:
        raise Failure(_UNKNOWN_CODE) from None


def _without_mark(data: bytes) -> str:
    # In UTF-16 nearly every second byte of a text in Latin letters is zero.
    half = len(data) // 2
    for codec, zeros in (("utf-16-le", data[1::2].count(0)), ("utf-16-be", data[0::2].count(0))):
        if zeros > half * 0.7 and data.count(0) - zeros < half * 0.05:
            return _strictly(data, codec)
    raise Failure(_UNKNOWN_DATA)


def _guessed(data: bytes) -> str:
    text = charsets.guessed(data)
    if not text:
        raise Failure(_UNKNOWN_CODE)
    return text


def prepare(source: str, folder: str, page: FaxPage) -> str:
    """Makes a PDF document of the text; gives its path."""
    with open(source, "rb") as file:
        text = decoded(file.read())
    if not text.strip():
        raise Failure("the text is empty")
    with open(os.path.join(folder, "text"), "w", encoding="utf-8") as file:
        file.write(_with_font(text, folder))
    paps = tools.find(("paps",), "paps")
    margins = [f"--{side}-margin={_MARGIN_POINTS}" for side in ("left", "top", "right", "bottom")]
    status, said = tools.run(
        [paps, f"--paper={page.paper}", f"--font={_FONT}", "--encoding=UTF-8"] + margins + ["text"],
        folder, "text.ps")
    if status != 0:
        raise tools.failed("paps", status, said)
    return postscript.to_pdf("text.ps", folder)


def _with_font(text: str, folder: str) -> str:
    """The text, if there is a font for each of its letters.

    What has no font would silently become a blank. Signs without one, such as
    emoji, become a visible replacement; a text without its letters is none.
    """
    wanted = {character for character in text if ord(character) > 0x7F
              and unicodedata.category(character)[0] not in "Z"
              and unicodedata.category(character) not in ("Cc", "Cf")}
    if not wanted:
        return text
    ranges = _fonts(folder)
    missing = {character for character in wanted if not _covered(character, ranges)}
    for character in sorted(missing):
        if unicodedata.category(character)[0] in "LMN":
            raise Failure(f"no font has '{character}' (U+{ord(character):04X})")
    return text.translate({ord(character): "\ufffd" for character in missing})


def _fonts(folder: str) -> list:
    """The ranges of characters that the installed outline fonts have."""
    path = tools.find(("fc-list",), "fontconfig")
    status, said = tools.run([path, "--format", "%{charset}\n", ":scalable=true"], folder, "fonts")
    if status != 0:
        raise tools.failed("fc-list", status, said)
    with open(os.path.join(folder, "fonts"), encoding="ascii") as file:
        words = set(file.read().split())
    ranges = []
    for word in words:
        first, _, last = word.partition("-")
        ranges.append((int(first, 16), int(last or first, 16)))
    return ranges


def _covered(character: str, ranges: list) -> bool:
    return any(first <= ord(character) <= last for first, last in ranges)
