"""What the headers of pictures say: size, orientation and whether the
converter can take them as they are."""

import dataclasses
import os
import struct

from . import kinds, tiff
from .failure import Failure

UPRIGHT = 1  # the orientation of a picture that needs no turning


@dataclasses.dataclass
class Frame:
    """One page of a picture file."""

    width: int = 0  # pixels, before it is turned
    height: int = 0
    orientation: int = UPRIGHT  # 1 to 8, as in TIFF and Exif
    dpi: tuple = (0.0, 0.0)  # pixels per inch across and down; 0 where unknown
    plain: bool = False  # of a kind that the converter shows right: grey or RGB, opaque
    bilevel: bool = False

    @property
    def stretch(self) -> float:
        """How many times wider than high a pixel is."""
        across, down = self.dpi
        ratio = down / across if across > 0 and down > 0 else 1.0
        return ratio if 0.1 < ratio < 10 and abs(ratio - 1.0) > 0.01 else 1.0


def frames(kind: str, path: str) -> list:
    """The pages of the picture file; those of animated pictures are not counted."""
    if kind == kinds.TIFF:
        return [_tiff_frame(tags) for tags in tiff.directories(path)]
    with open(path, "rb") as file:
        if kind == kinds.JPEG:
            return [_jpeg_frame(file)]
        if kind == kinds.PNG:
            return [_png_frame(file)]
        if kind == kinds.WEBP:
            return [Frame(orientation=_webp_orientation(file))]
    return [Frame()]


def _valid(orientation: int) -> int:
    return orientation if 1 <= orientation <= 8 else UPRIGHT


def _tiff_frame(tags: dict) -> Frame:
    bits = set(tags.get(tiff.BITS, [1]))
    samples = tiff.first(tags, tiff.SAMPLES, 1)
    photometric = tiff.first(tags, tiff.PHOTOMETRIC)
    unit = {2: 1.0, 3: 2.54}.get(tiff.first(tags, tiff.UNIT, 2), 1.0)
    plain = (bits in ({1}, {8}) and photometric in (0, 1, 2) and samples in (1, 3)
             and not tags.get(tiff.EXTRA_SAMPLES)
             and tiff.first(tags, tiff.PLANES, 1) == 1
             and tiff.first(tags, tiff.SAMPLE_FORMAT, 1) == 1)
    return Frame(
        int(tiff.first(tags, tiff.WIDTH)), int(tiff.first(tags, tiff.HEIGHT)),
        _valid(tiff.first(tags, tiff.ORIENTATION, UPRIGHT)),
        (tiff.first(tags, tiff.X_RESOLUTION, 0.0) * unit,
         tiff.first(tags, tiff.Y_RESOLUTION, 0.0) * unit),
        plain, bits == {1} and samples == 1)


def exif_orientation(data: bytes) -> int:
    """The orientation in Exif data, which is a TIFF file without a picture."""
    data = data.removeprefix(b"Exif\0\0")
    order = {b"II": "<", b"MM": ">"}.get(data[:2])
    try:
        offset = struct.unpack_from(order + "I", data, 4)[0]
        for index in range(struct.unpack_from(order + "H", data, offset)[0]):
            tag, kind, count = struct.unpack_from(order + "HHI", data, offset + 2 + 12 * index)
            if (tag, kind, count) == (tiff.ORIENTATION, 3, 1):
                return _valid(struct.unpack_from(order + "H", data, offset + 10 + 12 * index)[0])
    except (struct.error, TypeError):
        pass  # damaged Exif data says nothing
    return UPRIGHT


_FRAME_MARKERS = {*range(0xC0, 0xD0)} - {0xC4, 0xC8, 0xCC}


def _jpeg_frame(file) -> Frame:
    frame = Frame()
    file.seek(2)
    while True:
        marker = _jpeg_marker(file)
        if marker == 0xDA:
            _find_end(file)
        if marker in (0, 0xD9, 0xDA):
            return frame
        if marker == 1 or 0xD0 <= marker <= 0xD8:
            continue
        length = int.from_bytes(file.read(2), "big") - 2
        data = file.read(max(0, length))
        if marker == 0xE1 and data[:6] == b"Exif\0\0" and frame.orientation == UPRIGHT:
            frame.orientation = exif_orientation(data)
        elif marker == 0xE0 and data[:5] == b"JFIF\0" and len(data) >= 12:
            frame.dpi = struct.unpack_from(">HH", data, 8)
        elif marker in _FRAME_MARKERS and len(data) >= 6:
            bits, frame.height, frame.width, components = struct.unpack_from(">BHHB", data)
            frame.plain = bits == 8 and components in (1, 3)


def _find_end(file) -> None:
    # Within coded pixels this pair of bytes never occurs. The converter would
    # show what is missing as grey, without a word.
    if b"\xff\xd9" not in file.read():
        raise Failure("the JPEG picture is cut short")


def _jpeg_marker(file) -> int:
    byte = file.read(1)
    while byte and byte != b"\xff":
        byte = file.read(1)
    while byte == b"\xff":
        byte = file.read(1)
    return byte[0] if byte else 0


def _png_frame(file) -> Frame:
    frame = Frame()
    file.seek(8)
    while True:
        head = file.read(8)
        if len(head) < 8:
            return frame
        length, name = struct.unpack(">I4s", head)
        if name in (b"IHDR", b"pHYs", b"eXIf"):
            data = file.read(min(length, 1 << 20))
            file.seek(length - len(data) + 4, os.SEEK_CUR)
        else:
            data = b""
            file.seek(length + 4, os.SEEK_CUR)
        if name == b"IHDR" and len(data) >= 10:
            frame.width, frame.height, bits, colours = struct.unpack_from(">IIBB", data)
            frame.plain = bits <= 8 and colours in (0, 2, 3)
        elif name == b"tRNS":
            frame.plain = False
        elif name == b"pHYs" and len(data) >= 8:
            frame.dpi = struct.unpack_from(">II", data)
        elif name == b"eXIf":
            frame.orientation = exif_orientation(data)


def _webp_orientation(file) -> int:
    file.seek(12)
    while True:
        head = file.read(8)
        if len(head) < 8:
            return UPRIGHT
        name, length = struct.unpack("<4sI", head)
        if name == b"EXIF":
            return exif_orientation(file.read(min(length, 1 << 20)))
        file.seek(length + length % 2, os.SEEK_CUR)
