"""One job of a batch, here or on another machine."""

import os
import shlex
import subprocess
import tempfile

from morvaltide_companions import batch, charsets, durable, tiff, tools

# What is sent to another machine: the documents go there as a tar file, and the
# fax comes back on standard output, all over one connection.
_REMOTE = """
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
mkdir "$work/in" && cd "$work/in" && tar -xf - || exit 1
limit=$1 options=$2 cover=$3
shift 3
export TMPDIR="$work"
set -f
set -- -o "$work/fax.tif" -- "$@"
[ -z "$cover" ] || set -- -C "$cover" "$@"
timeout --kill-after=5 "$limit" morvaltide $options "$@" >"$work/words" 2>&1
status=$?
sed "s/^/@/" "$work/words" >&2
[ "$status" -eq 0 ] || exit "$status"
cat "$work/fax.tif"
"""


def _here(path):
    """A name that no program takes for an option."""
    return path if os.path.isabs(path) else os.path.join(".", path)


def _convert_here(job, part, limit, words, beside):
    program = tools.find("morvaltide", beside)
    arguments = ["timeout", "--kill-after=5", str(limit), program, *job.options.split()]
    if job.cover:
        arguments += ["-C", _here(job.cover) if job.cover.startswith("-") else job.cover]
    arguments += ["-o", _here(part), "--", *job.documents]
    # The lock of the batch is inherited.
    return subprocess.run(
        arguments, stdin=subprocess.DEVNULL, stdout=words, stderr=words, close_fds=False, check=False
    ).returncode


def _convert_on(machine, job, part, limit, words):
    ssh = os.environ.get("BATCH_SSH", "ssh").split()
    cover = _here(job.cover) if job.cover.startswith("-") else job.cover
    command = ["sh", "-c", _REMOTE, "morvaltide-batch", str(limit), job.options, cover]
    # A document that is missing here is missing there as well, and reported.
    tar = subprocess.Popen(
        ["tar", "-cf", "-", *map(_here, job.inputs())],
        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
        close_fds=False,
    )
    with open(part, "wb") as fax:
        status = subprocess.run(
            [*ssh, "-o", "BatchMode=yes", "-o", "ConnectTimeout=10", machine,
             shlex.join([*command, *job.documents])],
            stdin=tar.stdout, stdout=fax, stderr=words, close_fds=False, check=False,
        ).returncode
    tar.stdout.close()
    tar.wait()
    return status


def _words(file):
    file.seek(max(0, file.seek(0, os.SEEK_END) - 65536))
    return file.read().decode("utf-8", "replace").splitlines()


def _convert(job, part, limit, slot, beside):
    """Makes the fax; returns the exit status, and what was said."""
    machines = os.environ.get("BATCH_HOSTS", "").split()
    if not machines:
        with tempfile.TemporaryFile() as file:
            return _convert_here(job, part, limit, file, beside), _words(file)
    # A machine that cannot be reached leaves its jobs to the others.
    for i in range(len(machines)):
        machine = machines[(slot - 1 + i) % len(machines)]
        with tempfile.TemporaryFile() as file:
            status = _convert_on(machine, job, part, limit, file)
            words = _words(file)
        if status != 255:
            break
    # Logging in has its own words, which say nothing of the fax.
    own = [line[1:] for line in words if line.startswith("@")]
    return status, own if own or status == 0 else words


def _reason(status, limit, words):
    """Why a job failed, in one line."""
    if status in (124, 137, -9):
        return f"stopped after {limit} seconds"
    if status == 127:
        return "morvaltide is not installed"
    if status == 255:
        return "no machine can be reached"
    lines = [line for line in words if line.strip()]
    # Those of libtiff and Ghostscript are around the program's own message.
    own = [line for line in lines if line.startswith("can't ")]
    return charsets.printable((own or lines or [f"exit status {status}"])[-1].strip())


def _finish(job, part, words, hold):
    """Puts a complete fax in its place. Returns the record of the job."""
    pages = tiff.page_count(part)
    if pages == 0:
        raise tiff.TiffError("no pages")
    durable.sync(part)
    lines = tools.remarks("\n".join(words))
    held = bool(hold and lines)
    target = job.output + ".held" if held else job.output
    size = os.path.getsize(part)
    mask = os.umask(0)
    os.umask(mask)
    os.chmod(part, 0o666 & ~mask)
    os.rename(part, target)
    durable.sync(os.path.dirname(target) or ".")
    kind = "held" if held else "remarks" if lines else "done"
    return {"kind": kind, "words": "; ".join(lines)[:2000], "pages": pages, "bytes": size}


def run(folder, key, slot, seconds, hold, beside):
    """Runs a job of a batch and keeps a record of it; returns its exit status."""
    state = batch.State(folder)
    job = state.job(key)
    inputs = {path: batch.fingerprint(path) for path in job.inputs()}
    limit = seconds * len(job.documents)
    place = os.path.dirname(job.output) or "."
    part = None
    try:
        os.makedirs(place, exist_ok=True)
        part = os.path.join(place, f".{os.path.basename(job.output)[:200]}.{os.getpid()}.part")
        status, words = _convert(job, part, limit, slot, beside)
        if status == 0:
            record = _finish(job, part, words, hold)
        else:
            record = {"kind": "failed", "words": _reason(status, limit, words)}
    except (tools.Missing, tiff.TiffError) as error:
        record = {"kind": "failed", "words": charsets.printable(str(error))}
    except OSError as error:
        name = error.filename or job.output
        reason = f"can't write '{name}': {error.strerror}"
        record = {"kind": "failed", "words": charsets.printable(reason)}
    finally:
        if part is not None and os.path.lexists(part):
            os.unlink(part)
    state.put_record(key, {**record, "inputs": inputs})
    return 1 if record["kind"] == "failed" else 0
