"""Turns PostScript into PDF, by Ghostscript under -dSAFER."""

import os

from . import tools
from .failure import Failure

_DOS_HEADER = b"\xc5\xd0\xd3\xc6"  # EPS with a preview; Ghostscript knows it


def prepare(source: str, folder: str) -> str:
    """Makes a PDF document of a PostScript or EPS file; gives its path."""
    with open(source, "rb") as file:
        data = file.read()
    if not data.startswith(_DOS_HEADER):
        _, mark, program = data.partition(b"%!")
        if not mark:
            raise Failure("the print job has no PostScript program")
        data = mark + program  # without the job header of a printer driver
    with open(os.path.join(folder, "program.ps"), "wb") as file:
        file.write(data)
    return to_pdf("program.ps", folder)


def to_pdf(name: str, folder: str) -> str:
    """The PDF document of the PostScript file `name` in `folder`."""
    tools.need(("gs",), "ghostscript", [
        "-q", "-dBATCH", "-dNOPAUSE", "-dSAFER", "-dEPSCrop", "-sDEVICE=pdfwrite",
        "-sOutputFile=printed.pdf", "-f", name], folder)
    return os.path.join(folder, "printed.pdf")
