"""Tells what a document is by its content; its name has no say."""

import re
import zipfile

from . import texts
from .failure import Failure

PDF, POSTSCRIPT, OFFICE, TEXT = "PDF", "PostScript", "office", "text"
JPEG, PNG, TIFF, GIF, BMP, WEBP, HEIC = "jpeg", "png", "tiff", "gif", "bmp", "webp", "heic"
PICTURES = (JPEG, PNG, TIFF, GIF, BMP, WEBP, HEIC)

_START = 4096  # bytes that are looked at
_TEXT_LIMIT = 16 << 20  # bytes of a text

_KNOWN = (
    (b"\xff\xd8\xff", JPEG),
    (b"\x89PNG\r\n\x1a\n", PNG),
    (b"II*\0", TIFF), (b"MM\0*", TIFF), (b"II+\0", TIFF), (b"MM\0+", TIFF),
    (b"GIF87a", GIF), (b"GIF89a", GIF),
    (b"\xc5\xd0\xd3\xc6", POSTSCRIPT),  # with a preview in front
    (b"{\\rtf", OFFICE),
)
_HEIC_BRANDS = (b"heic", b"heix", b"heim", b"heis", b"hevc", b"hevx", b"mif1", b"msf1", b"avif")
_BMP_HEADERS = tuple(size.to_bytes(4, "little") for size in (12, 40, 52, 56, 64, 108, 124))

_FONT_PROGRAM = b"%!PS-AdobeFont"  # PostScript without a page
_REFUSED = (
    (b"PK\x03\x04", "a ZIP archive"), (b"PK\x05\x06", "a ZIP archive"),
    (b"Rar!\x1a\x07", "a RAR archive"), (b"7z\xbc\xaf\x27\x1c", "a 7-Zip archive"),
    (b"\x1f\x8b", "a gzip file"), (b"BZh", "a bzip2 file"), (b"\xfd7zXZ\0", "an xz file"),
    (b"\x28\xb5\x2f\xfd", "a Zstandard file"), (b"MSCF", "a cabinet archive"),
    (b"\x7fELF", "a program"), (b"MZ", "a program"), (b"\xca\xfe\xba\xbe", "a program"),
    (b"\0\0\0\x0cjP  ", "a JPEG 2000 picture"), (b"\xff\x4f\xff\x51", "a JPEG 2000 picture"),
    (b"\xff\x0a", "a JPEG XL picture"), (b"\0\0\0\x0cJXL ", "a JPEG XL picture"),
    (b"8BPS", "a Photoshop picture"), (b"\0\0\x01\0", "an icon"),
    (b"AT&TFORM", "a DjVu document"), (b"\xd7\xcd\xc6\x9a", "a WMF drawing"),
    (b"\x1bE", "a PCL print job"), (b"\x1b%-12345X", "a print job"),
    (b"ID3", "an MP3 sound"), (b"\xff\xfb", "an MP3 sound"), (b"OggS", "an Ogg recording"),
    (b"fLaC", "a FLAC sound"), (b"#!AMR", "an AMR sound"), (b"\x1aE\xdf\xa3", "a Matroska video"),
    (b"SQLite format 3", "a database"), (b"\0\x01\0\0\0", "a font"), (b"OTTO", "a font"),
    (b"-----BEGIN PGP MESSAGE", "an encrypted message"), (b"\x78\x9f\x3e\x22", "a TNEF attachment"),
    (b"BEGIN:VCARD", "a business card (vCard)"), (b"BEGIN:VCALENDAR", "a calendar (iCalendar)"),
)

# Streams of the container of Microsoft Office 97, named in UTF-16.
_OLD_OFFICE = ("WordDocument", "Workbook", "Book", "PowerPoint Document")
_OUTLOOK = "__substg1.0"

# A comment ends at its first end: otherwise many of them could be divided in so
# many ways that trying all takes for ever.
_MARKUP = re.compile(rb"\s*(?:<\?xml[^>]*\?>\s*)?(?:(?><!--.*?-->)\s*)*"
                     rb"<(!doctype\s+)?(html|svg)\b",
                     re.IGNORECASE | re.DOTALL)
_MAIL = re.compile(rb"(?:[!-9;-~]+:[^\n]*\n(?:[ \t][^\n]*\n)*)*?(?:Received|MIME-Version):",
                   re.IGNORECASE)


def kind_of(path: str) -> str:
    """The kind of the document; a Failure that names it if it cannot be faxed."""
    with open(path, "rb") as file:
        start = file.read(_START)
        if not start:
            raise Failure("the file is empty")
        kind = _kind_by_signature(path, start)
        if kind:
            return kind
        file.seek(0)
        data = file.read(_TEXT_LIMIT + 1)
    texts.decoded(data[:_TEXT_LIMIT])
    if len(data) > _TEXT_LIMIT:
        raise Failure(f"a text of more than {_TEXT_LIMIT >> 20} MiB cannot be faxed")
    return TEXT


def _kind_by_signature(path: str, start: bytes) -> str:
    if start.startswith(_FONT_PROGRAM):
        raise _refused("a font")
    for signature, kind in _KNOWN:
        if start.startswith(signature):
            return kind
    if start[:4] == b"RIFF":
        if start[8:12] == b"WEBP":
            return WEBP
        raise _refused("a sound or video (RIFF)")
    if start[4:8] == b"ftyp":
        if start[8:12] in _HEIC_BRANDS:
            return HEIC
        raise _refused("a video (MP4)")
    if start[:2] == b"BM" and start[6:10] == b"\0\0\0\0" and start[14:18] in _BMP_HEADERS:
        return BMP
    if _is_postscript(start):
        return POSTSCRIPT
    if b"%PDF-" in start[:1024]:
        return PDF
    if start[:8] == b"\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1":
        return _kind_of_compound(path)
    if start[:4] == b"PK\x03\x04" and _is_zipped_office(path):
        return OFFICE
    for signature, what in _REFUSED:
        # A text may begin with the same letters, but has no zero byte.
        if start.startswith(signature) and (b"\0" in start or not signature.isalnum()):
            raise _refused(what)
    if start[257:262] == b"ustar":
        raise _refused("a tar archive")
    markup = _MARKUP.match(start.removeprefix(b"\xef\xbb\xbf"))
    if markup:
        raise _refused("an SVG drawing" if markup.group(2).lower() == b"svg" else "an HTML page")
    if start.lstrip().startswith(b"<?xml"):
        raise _refused("XML data")
    if _MAIL.match(start.replace(b"\r\n", b"\n")):
        raise _refused("a mail message")
    return ""


def _refused(what: str) -> Failure:
    return Failure(f"{what} cannot be faxed")


def _is_postscript(start: bytes) -> bool:
    # Drivers of printers put an end-of-file character or a job header first.
    body = start.lstrip(b"\x04\r\n")
    if body.startswith(b"\x1b%-12345X"):
        return b"LANGUAGE=POSTSCRIPT" in start.upper().replace(b" ", b"")
    return body.startswith(b"%!")


def _kind_of_compound(path: str) -> str:
    with open(path, "rb") as file:
        data = file.read(64 << 20)
    if _OUTLOOK.encode("utf-16-le") in data:
        raise _refused("an Outlook message")
    if any(name.encode("utf-16-le") in data for name in _OLD_OFFICE):
        return OFFICE
    raise _refused("an unknown Microsoft file")


def _is_zipped_office(path: str) -> bool:
    try:
        with zipfile.ZipFile(path) as archive:
            names = set(archive.namelist())
            if "mimetype" in names and archive.getinfo("mimetype").file_size < 200:
                return archive.read("mimetype").startswith(b"application/vnd.oasis.opendocument.")
    except Exception:  # whatever the library finds wrong with the archive
        return False
    parts = ("word/document.xml", "xl/workbook.xml", "xl/workbook.bin", "ppt/presentation.xml")
    return any(part in names for part in parts)
