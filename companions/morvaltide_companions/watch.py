"""A watched folder: what arrives in FOLDER/incoming is converted into FOLDER/done,
or goes to FOLDER/failed with a message.

A document is never copied, only renamed, so that it is in one place at any time.
Each has a folder of its own below FOLDER/work, whose name tells how far it is:

    ID          arrived, and perhaps being converted
    ID.done     converted; fax.tif goes to FOLDER/done, then the rest is removed
    ID.failed   cannot be converted; the document goes to FOLDER/failed

In there it is called document, with the suffix that it had; its own name, which
may be one that no program takes, stands in a file. The renaming from ID to one of
the others decides what becomes of a document, so that a run that is killed anywhere
is finished by the next one without doing a thing twice.
"""

import datetime
import fcntl
import os
import re
import shutil
import stat

from morvaltide_companions import charsets, durable

# A document on whose conversion this program was killed so often is to blame.
MAX_TRIES = 3
_FOLDERS = ("incoming", "work", "done", "failed")
_ID = re.compile(r"\d{8}-\d{6}-\d{6}(\.done|\.failed)?")
_SUFFIX = re.compile(r"\.[A-Za-z0-9]{1,8}")
# What a file system takes, less what is put around a name.
_LONGEST_NAME = 255 - 32


def shown(name):
    """A name for a message, whatever is in it."""
    return charsets.one_line(os.fsencode(name).decode("utf-8", "replace"), 200)


def _shortened(name):
    data = os.fsencode(name)
    if len(data) > _LONGEST_NAME:
        data = data[: _LONGEST_NAME - 20] + b"~" + data[-19:]
    return os.fsdecode(data)


class Watch:
    """Handles the documents of one folder.

    `convert(document, name, fax, work)` writes a fax and returns why it could not,
    or None, and what there is to remark; `name` is for its messages. `complain`
    takes a line for the operator.
    """

    def __init__(self, folder, convert, complain):
        self._folder = folder
        self._convert = convert
        self._complain = complain
        self._last_id = ""
        self.troubled = False  # something is wrong with the folder, not with a document

    def run(self, check):
        """Handles all that is there, and all that arrives meanwhile.

        `check` is called before the first document is taken; what it raises ends
        the run with every document where it was.
        """
        handle = os.open(self._folder, os.O_RDONLY | os.O_DIRECTORY)
        try:
            # A second one waits, and then finds little to do.
            fcntl.flock(handle, fcntl.LOCK_EX)
            for name in _FOLDERS:
                os.makedirs(self._path(name), exist_ok=True)
            unfinished = self._recover()
            if unfinished or self._arrived():
                check()
            refused = set()
            while True:
                arrived = [name for name in self._arrived() if name not in refused]
                if arrived:
                    for name in arrived:
                        if not self._guarded(self._handle, name):
                            refused.add(name)
                elif unfinished:
                    # What a killed run was at comes last: it may be the reason.
                    self._guarded(self._finish, unfinished.pop(0))
                else:
                    return
        finally:
            os.close(handle)

    def _path(self, *names):
        return os.path.join(self._folder, *names)

    def _guarded(self, step, name):
        """A step that goes wrong must not keep the other documents waiting."""
        try:
            step(name)
            return True
        except Exception as error:
            reason = getattr(error, "strerror", None) or error
            self._complain(f"can't handle '{shown(name)}': {reason}")
            self.troubled = True
            return False

    def _arrived(self):
        """The names of what has arrived, oldest first."""
        with os.scandir(self._path("incoming")) as entries:
            found = [entry.name for entry in entries if not entry.name.startswith(".")]

        def age(name):
            try:
                return os.lstat(self._path("incoming", name)).st_mtime_ns
            except FileNotFoundError:
                return 0

        return sorted(found, key=lambda name: (age(name), name))

    def _recover(self):
        """Finishes what a killed run had decided, and returns what it had not."""
        unfinished = []
        for name in sorted(filter(_ID.fullmatch, os.listdir(self._path("work")))):
            if name.endswith(".done"):
                self._guarded(self._deliver_done, name)
            elif name.endswith(".failed"):
                self._guarded(self._deliver_failed, name)
            elif self._document(name):
                unfinished.append(name)
            else:
                shutil.rmtree(self._path("work", name))
        return unfinished

    def _document(self, job):
        """The path of the document of a job, or None if it has gone."""
        for entry in os.listdir(self._path("work", job)):
            if entry.startswith("document"):
                return self._path("work", job, entry)
        return None

    def _name(self, job):
        """The name that the document of a job arrived with."""
        with open(self._path("work", job, "name"), "rb") as file:
            return os.fsdecode(file.read())

    def _new_job(self):
        while True:
            name = datetime.datetime.now(datetime.timezone.utc).strftime("%Y%m%d-%H%M%S-%f")
            if name > self._last_id and not any(
                os.path.lexists(self._path("work", name + end)) for end in ("", ".done", ".failed")
            ):
                self._last_id = name
                os.mkdir(self._path("work", name))
                return name

    def _handle(self, name):
        job = self._new_job()
        self._write(self._path("work", job, "name"), os.fsencode(name))
        durable.sync(self._path("work", job))
        durable.sync(self._path("work"))
        suffix = os.path.splitext(name)[1]
        document = "document" + (suffix if _SUFFIX.fullmatch(suffix) else "")
        try:
            os.rename(self._path("incoming", name), self._path("work", job, document))
        except OSError as error:
            shutil.rmtree(self._path("work", job))
            if isinstance(error, FileNotFoundError):
                return  # whoever delivered it has taken it away again
            raise
        durable.sync(self._path("work", job))
        durable.sync(self._path("incoming"))
        self._finish(job)

    def _finish(self, job):
        """Converts the document of a job, decides, and delivers."""
        document = self._document(job)
        tries = sum(entry.startswith("try-") for entry in os.listdir(self._path("work", job)))
        if not stat.S_ISREG(os.lstat(document).st_mode):
            self._decide_failed(job, "it is no regular file")
        elif tries >= MAX_TRIES:
            self._decide_failed(job, f"its conversion was broken off {tries} times")
        else:
            self._try(job, document, tries + 1)

    def _try(self, job, document, number):
        marker = self._path("work", job, f"try-{number}")
        os.mkdir(marker)
        fax = os.path.join(marker, "fax.tif")
        try:
            reason, remarks = self._convert(document, shown(self._name(job)), fax, marker)
        except BaseException as error:
            if not isinstance(error, Exception):
                # Stopped by a signal, which is not the document's fault.
                shutil.rmtree(marker)
            raise
        if reason is not None:
            self._decide_failed(job, reason)
            return
        if remarks:
            self._complain(f"remarks on '{shown(self._name(job))}': {remarks}")
            self._write_message(job, remarks)
        durable.sync(fax)
        os.rename(fax, self._path("work", job, "fax.tif"))
        durable.sync(self._path("work", job))
        os.rename(self._path("work", job), self._path("work", job + ".done"))
        durable.sync(self._path("work"))
        self._deliver_done(job + ".done")

    def _decide_failed(self, job, reason):
        self._complain(f"can't convert '{shown(self._name(job))}': {reason}")
        self._write_message(job, reason)
        durable.sync(self._path("work", job))
        os.rename(self._path("work", job), self._path("work", job + ".failed"))
        durable.sync(self._path("work"))
        self._deliver_failed(job + ".failed")

    def _write_message(self, job, text):
        self._write(self._path("work", job, "message"), (text + "\n").encode("utf-8", "replace"))

    @staticmethod
    def _write(path, data):
        with open(path, "wb") as file:
            file.write(data)
            file.flush()
            os.fsync(file.fileno())

    def _move(self, source, target):
        """Renames, and never over anything: nobody else may have given such a
        name, but if somebody has, the document waits instead."""
        if os.path.lexists(target):
            raise FileExistsError(17, f"'{shown(target)}' is already there")
        os.rename(source, target)

    def _deliver_done(self, job):
        fax = self._path("work", job, "fax.tif")
        if os.path.lexists(fax):
            name = f"{job.partition('.')[0]}-{_shortened(self._name(job))}.tif"
            message = self._path("work", job, "message")
            if os.path.lexists(message):
                self._move(message, self._path("done", name + ".txt"))
            self._move(fax, self._path("done", name))
            durable.sync(self._path("done"))
        shutil.rmtree(self._path("work", job))

    def _deliver_failed(self, job):
        document = self._document(job)
        if document is not None:
            name = f"{job.partition('.')[0]}-{_shortened(self._name(job))}"
            message = self._path("work", job, "message")
            if os.path.lexists(message):
                self._move(message, self._path("failed", name + ".txt"))
            self._move(document, self._path("failed", name))
            durable.sync(self._path("failed"))
        shutil.rmtree(self._path("work", job))
