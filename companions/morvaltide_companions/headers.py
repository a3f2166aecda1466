"""Headers of a mail to text. Nothing in them, however broken, is an error."""

import binascii
import email.message
import email.utils
import quopri
import re

from morvaltide_companions import charsets

# Of a longer one the rest is not read, since it is nobody's heading.
_LONGEST = 20000
_WORD = re.compile(r"=\?([^?\s]{0,80})\?([bBqQ])\?([^?]*)\?=")


def _raw(value):
    """A header as it came: the parser keeps bytes above 127 as surrogates."""
    text = str(value)[:_LONGEST]
    if any("\ud800" <= character <= "\udfff" for character in text):
        return charsets.decode(text.encode("utf-8", "surrogateescape"), None)
    return text


def from_base64(text):
    """The bytes of base64 without padding, and with a letter too many at the end,
    as some senders have it. Other characters are skipped."""
    letters = re.sub(r"[^A-Za-z0-9+/]", "", text)
    letters = letters[: len(letters) - 1] if len(letters) % 4 == 1 else letters
    return binascii.a2b_base64(letters + "=" * (-len(letters) % 4))


def _word_bytes(kind, text):
    if kind in "qQ":
        return quopri.decodestring(text.replace("_", " ").encode("utf-8"), header=True)
    return from_base64(text)


def decoded(value):
    """The text of a header value, with its encoded words (RFC 2047) read."""
    text = re.sub(r"\r?\n(?=[ \t])", "", _raw(value))
    pieces = []  # text, or [charset, bytes] of neighbouring encoded words
    end = 0
    for match in _WORD.finditer(text):
        between = text[end : match.start()]
        charset = match[1].split("*")[0].lower()  # RFC 2231 adds a language
        try:
            data = _word_bytes(match[2], match[3])
        except (ValueError, binascii.Error):
            continue
        if pieces and isinstance(pieces[-1], list) and not between.strip():
            # A character may be cut in two by the end of a word.
            if pieces[-1][0] == charset:
                pieces[-1][1] += data
                end = match.end()
                continue
        else:
            pieces.append(between)
        pieces.append([charset, data])
        end = match.end()
    pieces.append(text[end:])
    return "".join(
        piece if isinstance(piece, str) else charsets.decode(piece[1], piece[0])
        for piece in pieces
    )


def header(part, name):
    """The decoded value of the first header of that name, or an empty text."""
    for key, value in part.raw_items():
        if key.lower() == name:
            return decoded(value)
    return ""


def content_type(part):
    """The type of a part in lower case."""
    try:
        return part.get_content_type()
    except Exception:  # the library stumbles over some parameters (RFC 2231)
        return "application/octet-stream"


def charset(part):
    """The charset that a part names, or None."""
    try:
        value = part.get_param("charset")
        return str(value[2] if isinstance(value, tuple) else value) if value else None
    except Exception:
        return None


def disposition(part):
    """"inline", "attachment", or an empty text."""
    return header(part, "content-disposition").split(";")[0].strip().lower()


def file_name(part):
    """The name that the sender gave to a part, without folders, for reading only:
    no file is ever called so."""
    try:
        # The library would replace bytes above 127 before it looks for the name.
        readable = email.message.Message()
        for key, value in part.raw_items():
            if key.lower() in ("content-disposition", "content-type"):
                readable[key] = _raw(value)
        found = readable.get_filename()
        name = decoded(email.utils.collapse_rfc2231_value(found)) if found else ""
    except Exception:
        name = ""
    return charsets.one_line(re.split(r"[/\\]", name)[-1], 80)
