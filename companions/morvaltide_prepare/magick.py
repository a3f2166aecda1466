"""Runs ImageMagick with limits and without any guessing of formats."""

import os
import re

from . import tools
from .failure import Failure

# Version 7 is "magick"; "convert" alone may be another program.
_PROGRAMS = ("magick", "convert-im6.q16", "convert")
_LIMITS = ("-limit", "memory", "512MiB", "-limit", "map", "1GiB", "-limit", "disk", "2GiB",
           "-limit", "area", "128MP", "-limit", "width", "30KP", "-limit", "height", "30KP",
           "-limit", "thread", "1")
_DAMAGED = re.compile(r"premature|corrupt|truncated|unexpected end|not enough|insufficient|"
                      r"bogus|improper", re.IGNORECASE)


def run(arguments: list, folder: str) -> None:
    """Runs ImageMagick in `folder`; pictures that are damaged are a Failure."""
    path = tools.find(_PROGRAMS, "imagemagick")
    status, said = tools.run([path, *_LIMITS, *arguments], folder)
    if status != 0 or _DAMAGED.search(said):
        raise _failure(status, said)


def _failure(status: int, said: str) -> Failure:
    if "no decode delegate" in said or "no encode delegate" in said:
        return Failure("ImageMagick cannot read this kind of picture on this machine")
    if "no images defined" in said:
        return Failure("the picture is damaged or too large")
    if "cache resources exhausted" in said or "exceeds limit" in said:
        return Failure("the picture is too large")
    # "convert-im6.q16: what is wrong `in' @ error/tiff.c/ReadTIFF/12."
    said = re.sub(r" @ \w+/\S+", "", re.sub(r"^[\w.-]+: ", "", said, flags=re.MULTILINE))
    return tools.failed("ImageMagick", status, said)


def pgm_size(path: str) -> tuple:
    """Width and height of a grey picture."""
    with open(path, "rb") as file:
        found = re.match(rb"P5\s+(?:#[^\n]*\n\s*)*(\d+)\s+(?:#[^\n]*\n\s*)*(\d+)", file.read(4096))
    if not found:
        raise Failure("the picture cannot be read")
    return int(found.group(1)), int(found.group(2))


def remove(folder: str, *names: str) -> None:
    """Removes files that are no longer needed."""
    for name in names:
        os.remove(os.path.join(folder, name))
