"""A batch: its list of jobs, and what is known of each.

A job is told by its line of the list (output, options, cover page, documents),
not by its place, so that a list may grow between two runs. Its record says how
it went and what its documents were: if one of them changes, it is done again.
"""

import dataclasses
import hashlib
import json
import os

from morvaltide_companions import durable


class Stop(Exception):
    """Nothing can be begun. The text is one line for the user."""


@dataclasses.dataclass
class Job:
    """A line of the list."""

    line: int
    output: str
    options: str
    cover: str
    documents: list

    @property
    def key(self):
        columns = "\t".join([self.output, self.options, self.cover, *self.documents])
        return hashlib.sha256(os.fsencode(columns)).hexdigest()[:32]

    def inputs(self):
        return [self.cover, *self.documents] if self.cover else self.documents


def read_list(name):
    """The jobs of a list. Stop if it cannot be read or is not written rightly."""
    try:
        with open(name, encoding="utf-8", errors="surrogateescape", newline="\n") as file:
            lines = [line.rstrip("\n").removesuffix("\r") for line in file]
    except OSError as error:
        raise Stop(f"can't read '{name}': {error.strerror}") from error
    jobs = []
    writers = set()
    for number, line in enumerate(lines, 1):
        if not line.strip() or line.startswith("#"):
            continue
        columns = line.split("\t")
        output, options, cover, *documents = columns + [""] * (4 - len(columns))
        while documents and not documents[-1]:
            documents.pop()
        if not output or not documents or not all(documents):
            raise Stop(f"{name}: line {number} is not written as output, options, cover page, "
                       "documents")
        if os.path.normpath(output) in writers:
            raise Stop(f"{name}: more than one job writes {output}")
        writers.add(os.path.normpath(output))
        jobs.append(Job(number, output, options, cover, documents))
    if not jobs:
        raise Stop(f"{name} has no jobs")
    _spare_inputs(name, jobs)
    return jobs


def _identity(path):
    try:
        found = os.stat(path)
    except OSError:
        return None
    return found.st_dev, found.st_ino


def _spare_inputs(name, jobs):
    inputs = {_identity(path) for job in jobs for path in job.inputs()} - {None}
    for job in jobs:
        if _identity(job.output) in inputs:
            raise Stop(f"{name}: {job.output} is both an output and a document")


def fingerprint(path):
    """What tells whether a document has changed; None if it is not there."""
    try:
        with open(path, "rb") as file:
            found = os.fstat(file.fileno())
            digest = hashlib.sha256()
            while block := file.read(1 << 20):
                digest.update(block)
    except OSError:
        return None
    return [found.st_size, found.st_mtime_ns, digest.hexdigest()]


def _has_changed(path, known):
    try:
        found = os.stat(path)
    except OSError:
        return False  # tidied away after it was faxed
    if known is None or [found.st_size, found.st_mtime_ns] == known[:2]:
        return known is None
    now = fingerprint(path)
    return now is not None and now[2] != known[2]


class State:
    """The folder in which a batch keeps what is done."""

    def __init__(self, folder):
        self.folder = folder

    def _path(self, key, suffix):
        return os.path.join(self.folder, "jobs", key + suffix)

    def _store(self, path, value):
        with durable.replacing(path) as file:
            file.write(json.dumps(value).encode("ascii"))

    @staticmethod
    def _load(path):
        try:
            with open(path, "rb") as file:
                return json.loads(file.read())
        except (OSError, ValueError):
            return None

    def put_job(self, job):
        """Hands a job to the process that will run it."""
        with open(self._path(job.key, ".job"), "w", encoding="ascii") as file:
            json.dump(dataclasses.asdict(job), file)

    def job(self, key):
        return Job(**self._load(self._path(key, ".job")))

    def put_record(self, key, record):
        self._store(self._path(key, ".record"), record)

    def record(self, key):
        return self._load(self._path(key, ".record"))

    def forget(self, key):
        if os.path.exists(self._path(key, ".record")):
            os.unlink(self._path(key, ".record"))

    def is_done(self, job):
        """Whether a job was done, with the documents as they are now."""
        record = self.record(job.key)
        if record is None or record["kind"] == "failed":
            return False
        known = record["inputs"]
        return not any(_has_changed(path, known.get(path)) for path in job.inputs())
