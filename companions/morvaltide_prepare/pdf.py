"""Makes PDF documents ready: upright, without a password, sharp."""

import os

from . import pages, tiff, tools
from .failure import Failure
from .geometry import FaxPage

_REPAIRED = 3  # exit status of qpdf for warnings

# What qpdf warns of when the object of a page is gone, each row all of its words:
# version 11 keeps the page, at which Ghostscript would end, version 12 drops it.
_LOST_PAGE = (("/Type key should be /Page but is not", "of type null"),
              ("Pages tree includes non-dictionary object",))

# A picture inside the page is drawn without smoothing, so that it is taken
# from a drawing with more dots.
_OVERSAMPLING = 2


def prepare(source: str, folder: str, options) -> str:
    """Gives the path of the PDF document, or of a TIFF of its pages."""
    clean = _cleaned(source, folder)
    count = _page_count(folder)
    if options.page_photo or options.auto:
        drawn = _with_thresholds(count, folder, options)
        if drawn:
            return drawn
    if options.sharp:
        return _drawn(folder, options.page, "sharp.tif")
    return clean


def _cleaned(source: str, folder: str) -> str:
    path = tools.find(("qpdf",), "qpdf")
    status, said = tools.run([path, "--decrypt", "--flatten-rotation",
                              os.path.relpath(source, folder), "clean.pdf"], folder)
    if "invalid password" in said:
        raise Failure("the PDF document needs a password")
    if status not in (0, _REPAIRED):
        raise tools.failed("qpdf", status, said)
    if any(all(words in said for words in row) for row in _LOST_PAGE):
        raise Failure("a page of the PDF document is lost")
    return os.path.join(folder, "clean.pdf")


def _page_count(folder: str) -> int:
    path = tools.find(("qpdf",), "qpdf")
    status, _ = tools.run([path, "--show-npages", "clean.pdf"], folder, "count")
    with open(os.path.join(folder, "count"), encoding="ascii") as file:
        text = file.read().strip()
    if status not in (0, _REPAIRED) or not text.isdigit() or int(text) == 0:
        raise Failure("the PDF document has no pages")
    return int(text)


def _gs(folder: str, device: str, output: str, dpi: tuple, size: tuple, number: int = 0) -> None:
    arguments = ["-q", "-dBATCH", "-dNOPAUSE", "-dSAFER", "-dFIXEDMEDIA", "-dPDFFitPage",
                 f"-sDEVICE={device}", "-dAdjustWidth=0", f"-r{dpi[0]}x{dpi[1]}",
                 f"-g{size[0]}x{size[1]}"]
    if number:
        arguments += [f"-dFirstPage={number}", f"-dLastPage={number}"]
    tools.need(("gs",), "ghostscript", arguments + [f"-sOutputFile={output}", "clean.pdf"], folder)


def _drawn(folder: str, page: FaxPage, output: str, number: int = 0) -> str:
    """Has gs draw every page, or page `number`, at the very dots of the fax."""
    _gs(folder, "tiffg4", output, page.dpi, page.area, number)
    return os.path.join(folder, output)


def _with_thresholds(count: int, folder: str, options) -> str:
    """A TIFF in which photographed or tinted pages are black and white.

    Empty if --auto finds no such page.
    """
    page = options.page
    dpi = tuple(value * _OVERSAMPLING for value in page.dpi)
    size = tuple(value * _OVERSAMPLING for value in page.area)
    parts, found = [], False
    for number in range(1, count + 1):
        part = f"part-{number}.tif"
        _gs(folder, "pgmraw", "page.pgm", dpi, size, number)
        if options.page_photo or pages.is_tinted_page("page.pgm", folder):
            pages.threshold("page.pgm", part, page.area, page, folder)
            found = True
        else:
            _drawn(folder, page, part, number)
        parts.append(part)
        os.remove(os.path.join(folder, "page.pgm"))
    return tiff.joined(parts, "pages.tif", folder) if found else ""

