"""Tells what each page costs on the line."""

import os
import resource

from . import tiff, tools
from .failure import Failure, one_line

HEADER = "source\tpage\tbytes\tseconds at 14400 bit/s\tseconds at 33600 bit/s"
_SPEEDS = (14400, 33600)


def lines(source: str, prepared: str, folder: str, options) -> list:
    """A line for each page that the converter makes of the file `prepared`."""
    page = options.page
    margins = ",".join(repr(value) for value in page.margins)
    program = options.converter or tools.find(("morvaltide",), "morvaltide")
    # Its memory is not limited here, because it will not be when the fax is made.
    status, said = tools.run(
        [program, "-r", page.resolution, "-p", page.paper, "-m", margins, "-c", "g4",
         "-o", "report.tif", "--", prepared], folder, memory=resource.RLIM_INFINITY)
    if status != 0:
        raise tools.failed("morvaltide", status, said)
    fax = os.path.join(folder, "report.tif")
    result = []
    for number, tags in enumerate(tiff.directories(fax), start=1):
        count = sum(tags.get(tiff.STRIP_SIZES, []))
        seconds = "\t".join(f"{count * 8 / speed:.1f}" for speed in _SPEEDS)
        result.append(f"{one_line(source)}\t{number}\t{count}\t{seconds}")
    os.remove(fax)
    if not result:
        raise Failure("it has no pages")
    return result
