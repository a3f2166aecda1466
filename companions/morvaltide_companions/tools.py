"""Other programs: where they are, and how they are run with a limit of time."""

import os
import re
import shutil
import subprocess

from morvaltide_companions import children

# So much of what a program says is looked at; a hostile document may make one
# talk without end.
_MAX_WORDS = 65536

_PACKAGES = {
    "morvaltide": "morvaltide",
    "morvaltide-mail": "morvaltide",
    "morvaltide-prepare": "morvaltide",
    "parallel": "parallel",
    "tiffcp": "libtiff-tools",
}


# What libtiff says of the tags of programs that it does not know. It tells of no
# damage to the picture, and comes with many a scanner's files.
_OF_TAGS = re.compile(
    r"Warning, (Unknown field with tag|ASCII value for tag|Incompatible type for)"
    r"|; tag ignored\.?$|tags are not sorted in ascending order"
)


class Missing(Exception):
    """A program is not installed. The text is one line for the user."""


def find(name, beside):
    """The path of a program: beside the one that asks, or on PATH."""
    neighbour = os.path.join(beside, name)
    if os.access(neighbour, os.X_OK):
        return neighbour
    found = shutil.which(name)
    if found is None:
        raise Missing(f"can't find '{name}': install the Debian package {_PACKAGES[name]}")
    return found


def remarks(words):
    """The lines that a program said of a document although it was successful, and
    that somebody should look at."""
    lines = ("".join(filter(str.isprintable, line)).strip() for line in words.splitlines())
    return [line for line in lines if line and not _OF_TAGS.search(line)]


class Result:
    """How a program ended: its status as of children.run(), its words, and whether
    it ran out of time."""

    def __init__(self, status, words):
        self.status = status
        self.words = words
        self.late = status is None

    def reason(self):
        """Why it failed, in one line: the last line that it said, if any."""
        lines = [line.strip() for line in self.words.splitlines() if line.strip()]
        if self.late:
            return "out of time"
        if self.status < 0:
            return f"ended by signal {-self.status}"
        return lines[-1] if lines else f"exit status {self.status}"


def run(arguments, seconds, words_path, stdin=subprocess.DEVNULL, folder=None):
    """Runs a program, in a folder, as children.run(); what it prints goes to the
    file `words_path`."""
    with open(words_path, "wb") as words:
        status = children.run(
            arguments, seconds, stdin=stdin, stdout=words, stderr=words, cwd=folder)
    with open(words_path, "rb") as words:
        size = words.seek(0, os.SEEK_END)
        words.seek(max(0, size - _MAX_WORDS))
        text = words.read().decode("utf-8", "replace")
    return Result(status, text)
