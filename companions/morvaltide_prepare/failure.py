"""What goes wrong with a document, and how it is told in one safe line."""

import os
import unicodedata


class Failure(Exception):
    """A document cannot be prepared; the text is the reason, without a full stop."""


class ToolMissing(Failure):
    """A program is not installed."""

    def __init__(self, program: str, package: str):
        super().__init__(f"{program} is missing (Debian package {package})")


# Control, format (among them those that reverse the direction of writing),
# surrogate and separator characters could break the line or forge another one.
_UNSAFE = {"Cc", "Cf", "Cs", "Co", "Cn", "Zl", "Zp"}


def _shown(character: str) -> str:
    if unicodedata.category(character) not in _UNSAFE:
        return character
    code = ord(character)
    if code >= 0xDC80 and code <= 0xDCFF:
        return f"\\x{code - 0xDC00:02x}"  # a byte of a name that is no UTF-8
    if code < 0x100:
        return f"\\x{code:02x}"
    return f"\\u{code:04x}" if code < 0x10000 else f"\\U{code:08x}"


def one_line(text: str) -> str:
    """`text` as one line in which nothing moves the cursor."""
    return "".join(_shown(character) for character in text)


def write_line(descriptor: int, text: str) -> None:
    """Writes `text` and a line feed as UTF-8, whatever the locale says."""
    data = (text + "\n").encode("utf-8", "backslashreplace")
    try:
        while data:
            data = data[os.write(descriptor, data):]
    except OSError:
        pass  # nobody listens; the exit status still tells
