"""Bytes of a stranger's mail to text that can be printed, whatever they are."""

import codecs
import re
import unicodedata

# What senders write, and what they mean: names that Python does not know, and
# subsets of what such mails really contain.
_MEANT = {
    "ascii": "utf-8",
    "us-ascii": "utf-8",
    "ansi_x3.4-1968": "utf-8",
    "iso-8859-1": "cp1252",
    "latin1": "cp1252",
    "iso-8859-6-i": "iso-8859-6",
    "iso-8859-8-i": "iso-8859-8",
    "iso-8859-8-e": "iso-8859-8",
    "iso-8859-9": "cp1254",
    "gb2312": "gb18030",
    "gbk": "gb18030",
    "x-gbk": "gb18030",
    "euc-kr": "cp949",
    "ks_c_5601-1987": "cp949",
    "shift_jis": "cp932",
    "x-sjis": "cp932",
    "windows-31j": "cp932",
    "unicode-1-1-utf-7": "utf-7",
}
# They are no charsets of mail, and some of them are slow or run in circles.
_REFUSED = {"idna", "punycode", "unicode_escape", "raw_unicode_escape", "undefined"}


def _codec(charset):
    """The name of Python's codec for a charset, or None."""
    name = (charset or "").strip().strip("\"'").lower()
    if not re.fullmatch(r"[a-z0-9_.:+-]{1,40}", name):
        return None
    try:
        info = codecs.lookup(_MEANT.get(name, name))
        bytes(4).decode(info.name, "replace")
    except Exception:  # importing a codec by a stranger's word may fail in any way
        return None
    return None if info.name.replace("-", "_") in _REFUSED else info.name


def decode(data, charset):
    """Text of bytes in a charset. What cannot be read becomes U+FFFD. Without a
    charset that is known, each line is taken for UTF-8, or else for Windows'
    western one."""
    name = _codec(charset)
    for known in (name, "utf-8"):
        if known:
            try:
                return data.decode(known).lstrip("\ufeff")
            except (UnicodeError, ValueError):
                pass
    if name is None:
        return "\n".join(map(_western, data.split(b"\n")))
    try:
        return data.decode(name, "replace")
    except (UnicodeError, ValueError):
        return data.decode("ascii", "replace")


def _western(line):
    try:
        return line.decode("utf-8")
    except UnicodeDecodeError:
        return line.decode("cp1252", "replace")


def _printable(character):
    kind = unicodedata.category(character)
    if kind == "Cs":
        return "\ufffd"
    # Invisible ones that senders use as filling.
    if kind == "Cc" or character in "\u00ad\u034f\u200b\u2060\ufeff":
        return ""
    return character


_LINE_ENDS = re.compile("\r\n|[\r\n\v\f\x1c\x1d\x1e\x85\u2028\u2029]")


def lines(text):
    """The lines of a text, without anything that is neither printed nor shapes
    what is printed."""
    for line in _LINE_ENDS.split(text):
        line = line.expandtabs(8)
        if not line.isascii() or not line.isprintable():
            line = "".join(map(_printable, line))
        yield line.rstrip()


def printable(text):
    """A line of a program's own, less what a terminal would obey."""
    return "".join(character for character in text if character.isprintable())


_DIRECTIONS = re.compile("[\u061c\u200e\u200f\u202a-\u202e\u2066-\u2069]")


def one_line(text, longest=None):
    """A name or a heading for one line: nothing in it can begin another line, or
    turn the direction of what stands beside it."""
    line = " ".join(" ".join(lines(_DIRECTIONS.sub("", text))).split())
    if longest and len(line) > longest:
        return line[: longest - 1].rstrip() + "\u2026"
    return line
