"""Hands finished files over to the folder of the caller: all of them or none,
each complete from the moment on that it has its name."""

import os
import re
import shutil

_NUMBERED = re.compile(r"\d{4,}\.")


class OutFolder:
    """The folder for the results; made if it is missing.

    Errors are OSError.
    """

    def __init__(self, path: str):
        self._path = path
        self._made = False

    def open(self) -> None:
        """Makes the folder, or sees that nothing in it can be taken for a result."""
        try:
            os.mkdir(self._path)
            self._made = True
        except FileExistsError:
            for name in sorted(os.listdir(self._path)):
                if _NUMBERED.match(name):
                    raise FileExistsError(f"it has {name} already") from None

    def abandon(self) -> None:
        """Removes the folder again if it was made for nothing."""
        if self._made:
            try:
                os.rmdir(self._path)
            except OSError:
                pass  # somebody else has put something there

    def take(self, files: list) -> None:
        """Copies `files` into the folder under numbers that keep their order."""
        digits = max(4, len(str(len(files))))
        hidden, names, named = [], [], []
        try:
            for number, file in enumerate(files, start=1):
                name = f"{number:0{digits}}{os.path.splitext(file)[1]}"
                part = os.path.join(self._path, f".{name}.{os.getpid()}")
                hidden.append(part)
                names.append(os.path.join(self._path, name))
                _copy(file, part)
            for part, name in zip(hidden, names):
                named.append(name)
                os.rename(part, name)
        except BaseException:
            for path in hidden + named:
                _remove(path)
            raise


def _copy(source: str, target: str) -> None:
    with open(source, "rb") as read, open(target, "xb") as write:
        shutil.copyfileobj(read, write, 1 << 20)
        write.flush()
        os.fsync(write.fileno())


def _remove(path: str) -> None:
    try:
        os.remove(path)
    except OSError:
        pass
