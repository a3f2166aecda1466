"""The few things that the companions do with fax TIFF files themselves.

Only files of our own making are read here (those of morvaltide and of tiffcp),
never what a stranger sent.
"""

import struct

STRIP_OFFSETS = 273
STRIP_BYTE_COUNTS = 279
IMAGE_WIDTH = 256
IMAGE_LENGTH = 257
PHOTOMETRIC = 262
MIN_IS_WHITE = 0

# The size in bytes of one value of each TIFF type.
_SIZES = {1: 1, 2: 1, 3: 2, 4: 4, 5: 8, 6: 1, 7: 1, 8: 2, 9: 4, 10: 8, 11: 4, 12: 8}
_LONG = 4


class TiffError(Exception):
    """The file is no TIFF file, or not one of the simple kind that is read here."""


class Page:
    """One directory of a TIFF file: the raw entries, and where the next one begins."""

    def __init__(self, data, order, position):
        self._data = data
        self._order = order
        (count,) = self._unpack("H", position)
        self.entries = {}
        for i in range(count):
            tag, kind, number = self._unpack("HHI", position + 2 + 12 * i)
            self.entries[tag] = (kind, number, position + 10 + 12 * i)
        self.link = position + 2 + 12 * count
        (self.next,) = self._unpack("I", self.link)

    def _unpack(self, form, position):
        try:
            return struct.unpack_from(self._order + form, self._data, position)
        except struct.error as error:
            raise TiffError("cut short") from error

    def raw(self, tag):
        """The bytes of the values of a tag."""
        kind, number, position = self.entries[tag]
        size = _SIZES.get(kind, 1) * number
        if size > 4:
            (position,) = self._unpack("I", position)
        if position + size > len(self._data):
            raise TiffError("cut short")
        return self._data[position : position + size]

    def numbers(self, tag):
        """The values of a tag of whole numbers; none if it is missing."""
        if tag not in self.entries:
            return []
        kind, number, _ = self.entries[tag]
        letter = {1: "B", 3: "H", 4: "I"}.get(kind)
        if letter is None:
            raise TiffError(f"tag {tag} has type {kind}")
        return list(struct.unpack(f"{self._order}{number}{letter}", self.raw(tag)))

    def strips(self):
        """The coded rows of the page, in pieces."""
        places = zip(self.numbers(STRIP_OFFSETS), self.numbers(STRIP_BYTE_COUNTS))
        return [self._data[offset : offset + count] for offset, count in places]


def read(path):
    """The byte order ("<" or ">") and the pages of a TIFF file."""
    with open(path, "rb") as file:
        data = file.read()
    order = {b"II*\0": "<", b"MM\0*": ">"}.get(data[:4])
    if order is None:
        raise TiffError("not a TIFF file")
    pages = []
    seen = set()
    (position,) = struct.unpack_from(order + "I", data, 4) if len(data) >= 8 else (0,)
    while position:
        if position in seen:
            raise TiffError("its pages go round in a circle")
        seen.add(position)
        pages.append(Page(data, order, position))
        position = pages[-1].next
    return order, pages


def page_count(path):
    """The number of pages of a TIFF file."""
    return len(read(path)[1])


class Joiner:
    """Puts pages of several files into one, coded bytes and tags as they are."""

    def __init__(self, file):
        self._file = file
        self._order = None
        self._link = 4  # where the offset of the next directory has to be written
        self.pages = 0

    def add(self, path, first_only=False):
        """Appends all pages of a file, or the first one only."""
        order, pages = read(path)
        if self._order is None:
            self._order = order
            self._file.write(b"II*\0" if order == "<" else b"MM\0*")
            self._file.write(bytes(4))
        elif order != self._order:
            raise TiffError("the pages differ in their byte order")
        for page in pages[:1] if first_only else pages:
            self._append(page)

    def _append(self, page):
        offsets = []
        for strip in page.strips():
            offsets.append(self._align())
            self._file.write(strip)
        entries = []
        for tag in sorted(page.entries):
            kind, number, _ = page.entries[tag]
            value = page.raw(tag)
            if tag == STRIP_OFFSETS:
                kind = _LONG
                value = struct.pack(f"{self._order}{number}I", *offsets)
            if len(value) > 4:
                position = self._align()
                self._file.write(value)
                value = struct.pack(self._order + "I", position)
            entries.append(
                struct.pack(self._order + "HHI", tag, kind, number) + value.ljust(4, b"\0")
            )
        directory = self._align()
        self._file.write(struct.pack(self._order + "H", len(entries)) + b"".join(entries))
        end = self._file.tell()
        self._file.write(bytes(4))
        self._file.seek(self._link)
        self._file.write(struct.pack(self._order + "I", directory))
        self._file.seek(0, 2)
        self._link = end
        self.pages += 1

    def _align(self):
        position = self._file.tell()
        if position % 2:
            self._file.write(b"\0")
            position += 1
        return position


def column(path, inches, dpi):
    """What stands in one column of an uncompressed bilevel page: True is black."""
    _, pages = read(path)
    page = pages[0]
    (width,) = page.numbers(IMAGE_WIDTH)
    (height,) = page.numbers(IMAGE_LENGTH)
    rows = b"".join(page.strips())
    stride = (width + 7) // 8
    if len(rows) < stride * height:
        raise TiffError("cut short")
    dot = int(inches * dpi)
    black = page.numbers(PHOTOMETRIC) == [MIN_IS_WHITE]
    mask = 0x80 >> dot % 8
    return [bool(byte & mask) == black for byte in rows[dot // 8 : stride * height : stride]]
