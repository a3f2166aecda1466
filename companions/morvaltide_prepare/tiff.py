"""Reads the tags of TIFF files and joins their pages."""

import os
import struct

from . import tools
from .failure import Failure

WIDTH, HEIGHT, BITS, PHOTOMETRIC, ORIENTATION = 256, 257, 258, 262, 274
SAMPLES, STRIP_SIZES, X_RESOLUTION, Y_RESOLUTION, PLANES = 277, 279, 282, 283, 284
UNIT, EXTRA_SAMPLES, SAMPLE_FORMAT = 296, 338, 339
_KNOWN = {WIDTH, HEIGHT, BITS, PHOTOMETRIC, ORIENTATION, SAMPLES, STRIP_SIZES, X_RESOLUTION,
          Y_RESOLUTION, PLANES, UNIT, EXTRA_SAMPLES, SAMPLE_FORMAT}

# Whole numbers and fractions: no tag above is anything else.
_FORMATS = {1: "B", 3: "H", 4: "I", 5: "II", 6: "b", 8: "h", 9: "i", 10: "ii", 13: "I",
            16: "Q", 17: "q", 18: "Q"}
_MOST_PAGES = 10000
_MOST_VALUES = 1 << 20
_DAMAGED = "the TIFF file is damaged"


def directories(path: str):
    """The tags of one page after the other: a list of values for each of the
    tags above."""
    with open(path, "rb") as file:
        yield from _directories(file)


def _directories(file):
    start = file.read(8)
    order = "<" if start[:2] == b"II" else ">"
    big = start[2:4] in (b"+\0", b"\0+")
    if big:
        start = file.read(8)
    word, count_format = ("Q", "Q") if big else ("I", "H")
    offset = _unpack(order + word, start if big else start[4:])[0]
    seen = set()
    while offset:
        if offset in seen or len(seen) == _MOST_PAGES:
            raise Failure(_DAMAGED)
        seen.add(offset)
        _go_to(file, offset)
        count = _unpack(order + count_format, file.read(struct.calcsize(order + count_format)))[0]
        entry = struct.Struct(order + "HH" + word + ("8s" if big else "4s"))
        if count > 0xFFFF:
            raise Failure(_DAMAGED)
        data = file.read(entry.size * count)
        offset = _unpack(order + word, file.read(struct.calcsize(order + word)))[0]
        yield {tag: _values(file, order, word, kind, number, value)
               for tag, kind, number, value in (_unpack(entry, data[at:at + entry.size])
                                                for at in range(0, entry.size * count, entry.size))
               if tag in _KNOWN and kind in _FORMATS}


def _values(file, order, word, kind, number, value) -> list:
    format_ = _FORMATS[kind]
    size = struct.calcsize(order + format_) * number
    if number > _MOST_VALUES:
        raise Failure(_DAMAGED)
    if size > len(value):
        _go_to(file, _unpack(order + word, value)[0])
        value = file.read(size)
    numbers = _unpack(f"{order}{number * len(format_)}{format_[0]}", value[:size])
    if kind in (5, 10):
        return [top / bottom if bottom else 0.0
                for top, bottom in zip(numbers[::2], numbers[1::2])]
    return list(numbers)


def _go_to(file, offset: int) -> None:
    try:
        file.seek(offset)
    except (OSError, ValueError):  # farther than any file goes
        raise Failure(_DAMAGED) from None


def _unpack(format_, data: bytes) -> tuple:
    reader = format_ if isinstance(format_, struct.Struct) else struct.Struct(format_)
    if len(data) != reader.size:
        raise Failure(_DAMAGED)
    return reader.unpack(data)


def first(tags: dict, tag: int, default=0):
    """The first value of a tag."""
    values = tags.get(tag)
    return values[0] if values else default


def joined(parts: list, target: str, folder: str) -> str:
    """Joins TIFF files, named in `folder`, into one; gives its path."""
    if len(parts) == 1:
        return os.path.join(folder, parts[0])
    tools.need(("tiffcp",), "libtiff-tools", parts + [target], folder)
    return os.path.join(folder, target)
