"""Reads the dots of faxes, without the code that is tested."""

import os
import pathlib
import struct
import subprocess
import tempfile


class Page:
    """A bilevel page: rows of whole bytes, 1 for black."""

    def __init__(self, width, height, rows, dpi):
        self.width, self.height, self.rows, self.dpi = width, height, rows, dpi

    def row(self, y):
        """The dots of a row as text of 0 and 1."""
        return f"{int.from_bytes(self.rows[y], 'big'):0{len(self.rows[y]) * 8}b}"[:self.width]

    def cut(self, left, top, width, height):
        """A part of the page, as rows of text."""
        return [self.row(y)[left:left + width] for y in range(top, top + height)]

    def darkness(self, left, top, right, bottom):
        """The share of black dots in a part of the page, given in shares of its sides."""
        x0, x1 = round(left * self.width), round(right * self.width)
        y0, y1 = round(top * self.height), round(bottom * self.height)
        black = sum(self.row(y)[x0:x1].count("1") for y in range(y0, y1))
        return black / ((x1 - x0) * (y1 - y0))

    def box(self):
        """The smallest left, top, right and bottom (exclusive) around all black dots."""
        rows = [y for y in range(self.height) if any(self.rows[y])]
        if not rows:
            return None
        union = 0
        for y in rows:
            union |= int.from_bytes(self.rows[y], "big")
        columns = f"{union:0{len(self.rows[0]) * 8}b}"
        return columns.index("1"), rows[0], columns.rindex("1") + 1, rows[-1] + 1


def read_pages(path, number=None):
    """The pages of a bilevel TIFF file, or only the one with this number."""
    with tempfile.TemporaryDirectory() as folder:
        plain = os.path.join(folder, "plain.tif")
        source = path if number is None else f"{path},{number}"
        subprocess.run(["tiffcp", "-c", "none", "-r", "100000", source, plain],
                       check=True, capture_output=True)
        data = pathlib.Path(plain).read_bytes()
    pages, offset = [], struct.unpack_from("<I", data, 4)[0]
    while offset:
        tags = {}
        count = struct.unpack_from("<H", data, offset)[0]
        for index in range(count):
            tag, kind, _, value = struct.unpack_from("<HHII", data, offset + 2 + 12 * index)
            tags[tag] = value & 0xFFFF if kind == 3 else value
        offset = struct.unpack_from("<I", data, offset + 2 + 12 * count)[0]
        width, height, start = tags[256], tags[257], tags[273]
        length = (width + 7) // 8
        flip = bytes(value ^ 0xFF for value in range(256)) if tags[262] == 1 else None
        rows = [data[start + y * length:start + (y + 1) * length].translate(flip)
                for y in range(height)]
        dpi = tuple(struct.unpack_from("<I", data, tags[tag])[0] for tag in (282, 283))
        pages.append(Page(width, height, rows, dpi))
    return pages
