"""Text on fax pages: which lines fit on which page.

The converter lays HTML out on one page and cuts off what does not fit. Its fonts
decide how high a line is (letters of another script come from another font), so
nothing is guessed: the lines are laid out by the converter itself, with a mark in
the margin beside each, and those whose mark ends above the lower margin fit.
"""

import html
import os
import re
import unicodedata

from morvaltide_companions import tiff, tools

MARGIN_INCHES = 0.625
# Beside and above the text, a little less than that: a page is laid out at 100 dots
# per inch.
_MARGIN = 60
# So many letters of the fixed-width font fit between the margins.
COLUMNS = 84
# More lines than the longest paper takes, so that a page is always filled.
MOST_ROWS = 110

RESOLUTIONS = {
    "standard": (204, 98),
    "fine": (204, 196),
    "superfine": (204, 391),
    "ultrafine": (408, 391),
}
SECONDS = 300

# One white dot, the document without which the converter makes no cover page.
DOT = bytes.fromhex(
    "89504e470d0a1a0a0000000d4948445200000001000000010100000000376ef924000000"
    "0a49444154789c636800000082008177cd72b60000000049454e44ae426082"
)


class LayoutError(Exception):
    """A page cannot be laid out. The text is one line for the user."""


def width(character):
    """The number of columns that a character takes."""
    if character.isascii():
        return 1
    if unicodedata.category(character) in ("Mn", "Me", "Cf"):
        return 0
    return 2 if unicodedata.east_asian_width(character) in "WF" else 1


def wrapped(line, columns=COLUMNS):
    """Cuts a line into pieces of at most so many columns, at blanks if there are
    any. Nothing but the blanks at the cuts is left out."""
    if line.isascii() and len(line) <= columns:
        return [line]
    pieces = []
    start = blank = used = 0
    for i, character in enumerate(line):
        used += width(character)
        if used > columns and i > start:
            cut = blank if line[start:blank].strip() else i
            pieces.append(line[start:cut].rstrip())
            start = cut
            while start < i and line[start] == " ":
                start += 1
            used = sum(map(width, line[start : i + 1]))
            blank = start
        if character == " ":
            blank = i + 1
    pieces.append(line[start:])
    return pieces


def breakable(text):
    """Lets long words be broken, by blanks without a width. The converter breaks
    lines between words only, and cuts off what is wider than the page."""
    return re.sub(
        r"\S{30,}",
        lambda word: "\u200b".join(re.findall(".{1,10}", word[0])),
        text,
    )


def row(text, style=""):
    """A line of text as HTML. Whatever is in it, it is text."""
    # Letters that the font lacks come from another one, and may be wider.
    text = text if text.isascii() else breakable(text)
    escaped = html.escape(text).replace("  ", " \xa0") or "\xa0"
    return f'<span style="{style}">{escaped}</span>' if style else escaped


class Pages:
    """Lays out pages with the converter `program` in the folder `work`."""

    def __init__(self, program, tiffcp, work, paper, resolution, compression):
        self._program = program
        self._tiffcp = tiffcp
        self._work = work
        self._options = ["-p", paper, "-r", resolution, "-c", compression]
        self._dpi = RESOLUTIONS[resolution]
        self._dot = os.path.join(work, "dot.png")
        with open(self._dot, "wb") as file:
            file.write(DOT)

    def render(self, name, head, rows, marked=False):
        """Writes a page into the work folder and returns the path of a TIFF file
        of which it is the first page. `head` is HTML, `rows` are lines of HTML."""
        page = os.path.join(self._work, name + ".html")
        with open(page, "w", encoding="utf-8", errors="replace") as file:
            file.write(_page(head, rows, marked))
        result = os.path.join(self._work, name + ".tif")
        words = os.path.join(self._work, "words")
        arguments = [self._program, *self._options, "-C", page, "-o", result, "--", self._dot]
        ended = tools.run(arguments, SECONDS, words)
        if ended.status != 0 or ended.late:
            raise LayoutError(f"can't lay out a page of text: {ended.reason()}")
        return result

    def fitting(self, head, rows):
        """How many of the lines fit below the head on one page."""
        rows = rows[:MOST_ROWS]
        measured = self.render("measure", head, rows, marked=True)
        plain = os.path.join(self._work, "plain.tif")
        words = os.path.join(self._work, "words")
        arguments = [self._tiffcp, "-c", "none", measured + ",0", plain]
        ended = tools.run(arguments, SECONDS, words)
        if ended.status != 0 or ended.late:
            raise LayoutError(f"can't measure a page of text: {ended.reason()}")
        marks = tiff.column(plain, MARGIN_INCHES / 2, self._dpi[0])
        last = len(marks) - int(MARGIN_INCHES * self._dpi[1])
        # Lines are marked black and white by turns: a change ends a line.
        changes = sum(marks[i] != marks[i - 1] for i in range(1, last))
        return min(len(rows), max(0, changes - 1))


def _page(head, rows, marked):
    """The HTML of a page. With marks it has the same layout to the dot."""
    side = f'<td width="{_MARGIN}"></td>'
    lines = [f'<tr>{side}<td style="padding-top: {_MARGIN}px">{head}</td>{side}</tr>']
    for i, text in enumerate([*rows, "\xa0"] if marked else rows):
        colour = ' bgcolor="black"' if marked and i % 2 == 0 else ""
        lines.append(f'<tr><td{colour}></td><td class="line">{text}</td><td></td></tr>')
    return f"""<!DOCTYPE html>
<html><head><meta charset="utf-8"><style>
body {{ font-family: 'DejaVu Sans Mono', monospace; font-size: 10pt; }}
.line {{ white-space: pre-wrap; }}
.head {{ font-family: sans-serif; font-size: 11pt; white-space: pre-wrap; }}
</style></head><body>
<table width="100%" cellpadding="0" cellspacing="0" border="0">
{chr(10).join(lines)}
</table></body></html>
"""
