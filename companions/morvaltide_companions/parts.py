"""What of a mail goes into the fax: its text, and its documents in their order."""

import dataclasses
import email
import re

from morvaltide_companions import charsets, headers, html_text, pictures

# No mail of a person comes near these.
MAX_BYTES = 64 * 1024 * 1024
MAX_PARTS = 200
MAX_DEPTH = 20
MAX_CHARACTERS = 1_000_000

_SIGNATURES = {
    "application/pgp-signature",
    "application/pkcs7-signature",
    "application/x-pkcs7-signature",
}
_NOT_TEXT = (b"%PDF", b"%!PS", b"\x89PNG", b"\xff\xd8\xff", b"GIF8", b"II*\0", b"MM\0*",
             b"PK\x03\x04", b"{\\rtf", b"\xd0\xcf\x11\xe0", b"BM")
_HEADINGS = ("From", "To", "Date", "Subject")


class Refused(Exception):
    """The mail cannot become a fax. The text is one line for the user."""


@dataclasses.dataclass
class Document:
    """An attachment: how people call it, and its bytes."""

    name: str
    data: bytes


@dataclasses.dataclass
class Content:
    """What was found in a part and below it."""

    texts: list = dataclasses.field(default_factory=list)
    documents: list = dataclasses.field(default_factory=list)

    def add(self, other):
        self.texts += other.texts
        self.documents += other.documents


def parse(data):
    """Reads a mail. Refused if it is empty, too large or nested too deeply."""
    if not data.strip():
        raise Refused("the message is empty")
    if len(data) > MAX_BYTES:
        raise Refused(f"the message has more than {MAX_BYTES // 1024 // 1024} MiB")
    # The parser splits lines at a carriage return alone too, but keeps an mbox
    # line in front of the headers.
    try:
        return email.message_from_bytes(data)
    except RecursionError as error:
        raise Refused(f"its parts are nested more than {MAX_DEPTH} deep") from error


def heading(message):
    """The headers that a reader wants, as pairs of name and text."""
    found = ((name, charsets.one_line(headers.header(message, name.lower())))
             for name in _HEADINGS)
    return [(name, text) for name, text in found if text]


class Reader:
    """Goes through the parts of one mail.

    Inline pictures with fewer than `inline_pixels` pixels are left out: they
    are logos below signatures, lines and dots that count readers.
    """

    def __init__(self, inline_pixels):
        self._inline_pixels = inline_pixels
        self._parts = 0

    def read(self, message):
        """The content of the mail. Refused beyond the limits."""
        content = self._visit(message, 0, False)
        if sum(map(len, content.texts)) > MAX_CHARACTERS:
            raise Refused(f"its text has more than {MAX_CHARACTERS} characters")
        return content

    def _visit(self, part, depth, related):
        self._parts += 1
        if self._parts > MAX_PARTS:
            raise Refused(f"it has more than {MAX_PARTS} parts")
        if depth > MAX_DEPTH:
            raise Refused(f"its parts are nested more than {MAX_DEPTH} deep")
        kind = headers.content_type(part)
        if kind.startswith("message/") and part.is_multipart():
            return self._message(part, kind, depth)
        if kind == "multipart/alternative" and part.is_multipart():
            return self._alternative(part, depth)
        if part.is_multipart():
            content = Content()
            for i, child in enumerate(part.get_payload()):
                content.add(self._visit(child, depth + 1, kind.endswith("/related") and i > 0))
            return content
        if kind.startswith("multipart/"):
            return self._without_boundary(part, depth)
        return self._leaf(part, kind, related)

    def _message(self, part, kind, depth):
        """A mail within the mail, or the remarks of a mail server."""
        content = Content()
        if kind in ("message/rfc822", "message/global", "message/news"):
            for inner in part.get_payload():
                # Not allowed, but some senders code the whole mail.
                if not inner.items() and headers.header(part, "content-transfer-encoding"):
                    del part["content-type"]
                    part.set_payload(inner.get_payload())
                    inner = parse(_bytes_of(part) or b"-")
                lines = [f"{name}: {text}" for name, text in heading(inner)]
                content.texts.append("\n".join(["----- Mail within this mail -----", *lines]))
                content.add(self._visit(inner, depth + 1, False))
            return content
        for inner in part.get_payload():
            lines = [f"{name}: {headers.decoded(value)}" for name, value in inner.raw_items()]
            body = inner.get_payload()
            lines += ["", body] if isinstance(body, str) else []
            content.texts.append("\n".join(lines))
        return content

    def _alternative(self, part, depth):
        """The same text in several ways: the plain one, or else the last that has
        one. Documents hide in any of them."""
        plain, other = None, None
        content = Content()
        for child in part.get_payload():
            found = self._visit(child, depth + 1, False)
            kind = headers.content_type(child)
            if kind.startswith("text/") and not kind.endswith(("/plain", "/html")):
                # A calendar entry, say: one more way to tell the same.
                spare = [document.data.decode("utf-8", "replace") for document in found.documents]
                content.texts = content.texts or spare
                continue
            content.documents += found.documents
            if any(text.strip() for text in found.texts):
                if kind == "text/plain" and plain is None:
                    plain = found.texts
                other = found.texts
        content.texts = plain or other or content.texts
        return content

    def _without_boundary(self, part, depth):
        """A multipart whose boundary is missing or wrong. Its parts are still
        there, if a line that looks like a boundary is."""
        body = _bytes_of(part)
        found = re.search(rb"^--([^\s\"\\]{1,70})[ \t]*\r?\n(?=[A-Za-z-]+:)", body, re.MULTILINE)
        if found is None:
            return Content([charsets.decode(body, None)])
        head = b'Content-Type: multipart/mixed; boundary="' + found[1] + b'"\n\n'
        return self._visit(parse(head + body[found.start() :]), depth + 1, False)

    def _leaf(self, part, kind, related):
        data = _bytes_of(part)
        name = headers.file_name(part)
        place = headers.disposition(part)
        text = _text_of(data, kind, headers.charset(part))
        if kind in ("text/plain", "text/html", "text/rfc822-headers") and place != "attachment" and not name:
            if text is not None:
                return Content([text] if text.strip() else [])
        if kind in _SIGNATURES:
            return Content()
        inline = place == "inline" or headers.header(part, "content-id")
        if kind.startswith("image/") and inline and (related or place != "attachment"):
            pixels = pictures.pixels(data)
            if pixels is not None and pixels < self._inline_pixels:
                return Content()
        if text is not None:
            data = text.encode("utf-8", "replace")
        return Content([], [Document(name or f"part {self._parts} ({kind[:40]})", data)])


def _bytes_of(part):
    """The bytes of a part as they were before they were coded for the mail."""
    coding = headers.header(part, "content-transfer-encoding").strip().lower()
    if coding == "base64" and isinstance(part.get_payload(), str):
        # The library gives up on one letter too many. What stands behind the
        # padding has been added by a mailing list.
        letters = re.sub(r"[^A-Za-z0-9+/=]", "", part.get_payload()).split("=")[0]
        return headers.from_base64(letters)
    try:
        return part.get_payload(decode=True) or b""
    except Exception:  # whatever the library finds wrong with the coding
        return str(part.get_payload()).encode("utf-8", "replace")


def _text_of(data, kind, charset):
    """The text of a part that says to be text, unless it is none."""
    if not kind.startswith("text/") or data.startswith(_NOT_TEXT):
        return None
    wide = (charset or "").lower().startswith(("utf-16", "utf-32"))
    # A text may have a stray one; where they abound, it is something else.
    if data.count(b"\0") * 20 > len(data) and not wide:
        return None
    text = charsets.decode(data, charset)
    return html_text.text_of(text) if kind == "text/html" else text
