"""Files that are there as a whole or not at all, also after a power failure."""

import contextlib
import os
import tempfile


def sync(path):
    """Waits until a file, or the names in a folder, are on the disk."""
    handle = os.open(path, os.O_RDONLY)
    try:
        os.fsync(handle)
    finally:
        os.close(handle)


@contextlib.contextmanager
def replacing(path):
    """A binary file that takes the place of `path` when the block ends well.

    It is written under a temporary name in the same folder, which is removed if
    anything fails.
    """
    folder = os.path.dirname(path) or "."
    prefix = "." + os.path.basename(path)[:200] + "."
    handle, part = tempfile.mkstemp(prefix=prefix, suffix=".part", dir=folder)
    os.close(handle)
    try:
        with open(part, "r+b") as file:
            yield file
            file.flush()
            # mkstemp keeps others out; a fax is as readable as any other file.
            mask = os.umask(0)
            os.umask(mask)
            os.fchmod(file.fileno(), 0o666 & ~mask)
            os.fsync(file.fileno())
        os.rename(part, path)
    except BaseException:
        with contextlib.suppress(FileNotFoundError):
            os.unlink(part)
        raise
    sync(folder)
