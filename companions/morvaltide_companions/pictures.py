"""The size of a picture by its first bytes, without decoding it."""

import struct


def _jpeg(data):
    position = 2
    while position + 9 <= len(data) and data[position] == 0xFF:
        marker = data[position + 1]
        if 0xC0 <= marker <= 0xCF and marker not in (0xC4, 0xC8, 0xCC):
            height, width = struct.unpack_from(">HH", data, position + 5)
            return width * height
        position += 2 + struct.unpack_from(">H", data, position + 2)[0]
    return None


def _webp(data):
    if data[12:16] == b"VP8X" and len(data) >= 30:
        width = int.from_bytes(data[24:27], "little") + 1
        return width * (int.from_bytes(data[27:30], "little") + 1)
    if data[12:16] == b"VP8 " and len(data) >= 30:
        width, height = struct.unpack_from("<HH", data, 26)
        return (width & 0x3FFF) * (height & 0x3FFF)
    if data[12:16] == b"VP8L" and len(data) >= 25:
        bits = int.from_bytes(data[21:25], "little")
        return ((bits & 0x3FFF) + 1) * ((bits >> 14 & 0x3FFF) + 1)
    return None


def pixels(data):
    """Width times height of a PNG, JPEG, GIF, BMP or WebP picture, or None."""
    try:
        if data.startswith(b"\x89PNG\r\n\x1a\n"):
            width, height = struct.unpack_from(">II", data, 16)
            return width * height
        if data.startswith(b"\xff\xd8\xff"):
            return _jpeg(data)
        if data.startswith((b"GIF87a", b"GIF89a")):
            width, height = struct.unpack_from("<HH", data, 6)
            return width * height
        if data.startswith(b"BM"):
            width, height = struct.unpack_from("<ii", data, 18)
            return abs(width * height)
        if data.startswith(b"RIFF") and data[8:12] == b"WEBP":
            return _webp(data)
    except struct.error:
        pass
    return None
