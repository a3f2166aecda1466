"""One document: from the caller's file to a file that the converter takes."""

import dataclasses
import os
import shutil
import stat

from . import kinds, office, pdf, pictures, postscript, texts
from .failure import Failure
from .geometry import FaxPage


@dataclasses.dataclass(frozen=True)
class Options:
    page: FaxPage = FaxPage()
    sharp: bool = False
    page_photo: bool = False
    auto: bool = False
    report: bool = False
    converter: str = ""  # path of the converter, empty for the one on the search path

    def without_photo(self) -> "Options":
        """The same, for a picture that is known to be no page."""
        return dataclasses.replace(self, page_photo=False, auto=False)


def prepare(name: str, folder: str, options: Options) -> str:
    """Prepares the document `name` in the empty `folder`; gives the result's path.

    No program ever sees the name: they work on a copy that is called "in".
    """
    source = os.path.join(folder, "in")
    try:
        _copy(name, source)
    except OSError as error:
        raise Failure(error.strerror or "it cannot be read") from None
    kind = kinds.kind_of(source)
    if kind in kinds.PICTURES:
        return pictures.prepare(kind, source, folder, options)
    if kind == kinds.TEXT:
        source = texts.prepare(source, folder, options.page)
    elif kind == kinds.POSTSCRIPT:
        source = postscript.prepare(source, folder)
    elif kind == kinds.OFFICE:
        source = office.prepare(folder)
    return pdf.prepare(source, folder, options)


def _copy(name: str, target: str) -> None:
    # Without O_NONBLOCK, opening a fifo would wait for its other end.
    descriptor = os.open(name, os.O_RDONLY | os.O_NONBLOCK | os.O_NOCTTY | os.O_CLOEXEC)
    mode = os.fstat(descriptor).st_mode
    if not stat.S_ISREG(mode):
        os.close(descriptor)
        raise Failure("it is a folder" if stat.S_ISDIR(mode) else "it is no regular file")
    with open(descriptor, "rb") as read, open(target, "xb") as write:
        shutil.copyfileobj(read, write, 1 << 20)
