"""The command line of morvaltide-prepare."""

import getopt
import os
import shutil
import tempfile

from morvaltide_companions import VERSION, children

from . import documents, geometry, report
from .failure import Failure, one_line, write_line
from .outdir import OutFolder

_NAME = "morvaltide-prepare"
_OUT, _ERROR = 1, 2
_FAILED, _WRONG_USAGE = 1, 2

_HELP = """\
usage: morvaltide-prepare [option]... OUTDIR FILE...

Makes of any document (PDF, JPEG, PNG, TIFF, GIF, BMP, WebP, HEIC, text,
PostScript, office formats) a file that morvaltide converts best, and numbers
these files in OUTDIR: 0001.pdf, 0002.tif and so on. Convert them with the same
-r, -p and -m, and without -t.

options:
  -r, --resolution TYPE  standard, fine (default), superfine or ultrafine
  -p, --paper-size SIZE  a4 (default), letter or legal
  -m, --margins VALUE    margins in inches: M, H,V or L,T,R,B (default: none)
      --sharp            draw PDF pages at the very dots of the fax
      --page-photo       photographed or tinted pages of text become clean black
                         and white
      --auto             the same, but only for what is surely such a page
      --report           print bytes and seconds of each page
  -h, --help             print this help and exit
  -v, --version          print the version and exit
"""
_SHORT = "r:p:m:hv"
_LONG_NAMES = {"-r": "resolution", "-p": "paper-size", "-m": "margins",
               "-h": "help", "-v": "version"}
_LONG = ["resolution=", "paper-size=", "margins=", "sharp", "page-photo", "auto", "report",
         "help", "version"]


class _WrongUsage(Exception):
    pass


def _say(text: str) -> None:
    write_line(_ERROR, f"{_NAME}: {text}")


def _parsed(arguments: list) -> tuple:
    """The values of the options by their long names, and the other words."""
    try:
        pairs, names = getopt.gnu_getopt(arguments, _SHORT, _LONG)
    except getopt.GetoptError as error:
        raise _WrongUsage(error.msg) from None
    return {_LONG_NAMES.get(name, name[2:]): value for name, value in pairs}, names


def _word(words: dict, name: str, default: str, known: dict) -> str:
    word = words.get(name, default)
    if word not in known:
        raise _WrongUsage(f"'{word}' is no {name} ({', '.join(known)})")
    return word


def _options(words: dict, program_folder: str) -> documents.Options:
    resolution = _word(words, "resolution", "fine", geometry.RESOLUTIONS)
    paper = _word(words, "paper-size", "a4", geometry.PAPERS)
    text = words.get("margins", "0")
    try:
        margins = geometry.margins_from_text(text)
    except ValueError:
        raise _WrongUsage(f"'{text}' is no value for margins") from None
    if not geometry.leave_paper(margins, paper):
        raise _WrongUsage(f"margins of '{text}' are too large")
    converter = os.path.join(program_folder, "morvaltide")
    return documents.Options(
        page=geometry.FaxPage(paper, resolution, margins), sharp="sharp" in words,
        page_photo="page-photo" in words, auto="auto" in words, report="report" in words,
        converter=converter if os.path.exists(converter) else "")


def main(arguments: list, program_folder: str) -> int:
    """Runs the program; gives its exit status."""
    try:
        words, names = _parsed(arguments)
        if "help" in words or "version" in words:
            write_line(_OUT, _HELP.rstrip() if "help" in words else f"{_NAME} version {VERSION}")
            return 0
        options = _options(words, program_folder)
        if len(names) < 2:
            raise _WrongUsage("a folder and at least one document are needed")
    except _WrongUsage as error:
        _say(f"{one_line(str(error))} (see {_NAME} --help)")
        return _WRONG_USAGE
    children.raise_on_signals()
    work = ""
    try:
        work = tempfile.mkdtemp(prefix=f"{_NAME}-")
        return _run(names[0], names[1:], options, work)
    except OSError as error:
        _say(f"can't use a temporary folder: {error.strerror}")
        return _FAILED
    except children.Interrupted as interrupted:
        ending = interrupted.number
    finally:
        if work:
            shutil.rmtree(work, ignore_errors=True)
    # Ends as whoever sent the signal expects it.
    children.end_by_signal(ending)
    return 128 + ending


def _run(folder: str, names: list, options: documents.Options, work: str) -> int:
    target = OutFolder(folder)
    done = False
    try:
        target.open()
        results, lines = _prepared(names, options, work)
        if results:
            target.take(results)
            done = True
    except OSError as error:
        _say(f"can't write into '{one_line(folder)}': {error.strerror or error}")
    finally:
        if not done:
            target.abandon()
    if done and options.report:
        write_line(_OUT, "\n".join([report.HEADER] + lines))
    return 0 if done else _FAILED


def _prepared(names: list, options: documents.Options, work: str) -> tuple:
    """The prepared files and the lines of the report; both empty after a failure."""
    results, lines = [], []
    for number, name in enumerate(names, start=1):
        folder = os.path.join(work, "now")
        os.mkdir(folder)
        try:
            path = documents.prepare(name, folder, options)
            result = os.path.join(work, f"{number}{os.path.splitext(path)[1]}")
            os.rename(path, result)
            if options.report:
                lines += report.lines(name, result, folder, options)
        except Exception as error:  # whatever a stranger's document makes happen
            _say(f"can't prepare '{one_line(name)}': {_reason(error)}")
            return [], []
        results.append(result)
        shutil.rmtree(folder)
    return results, lines


def _reason(error: Exception) -> str:
    if isinstance(error, MemoryError):
        return "not enough memory"
    if isinstance(error, OSError):
        return error.strerror or "it cannot be read"
    if isinstance(error, Failure):
        return str(error)
    return f"something unforeseen is wrong with it ({type(error).__name__})"
