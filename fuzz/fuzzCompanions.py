#!/usr/bin/python3
"""Damages mails, pictures and texts, and has the companions read them.

    fuzz/fuzzCompanions.py SECONDS [SEED]

Each reader may refuse what it is given in the way that it says, and nothing else:
no other exception, and no long thinking. What breaks that is written to the folder
build/fuzz/findings; the exit status is 1 then. The same seed gives the same inputs.
"""

import base64
import os
import pathlib
import random
import signal
import sys
import tempfile
import time
import traceback

sys.dont_write_bytecode = True
TOP = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(TOP / "companions"))

from morvaltide_companions import charsets, html_text, parts, pictures  # noqa: E402
from morvaltide_prepare import headers, kinds  # noqa: E402
from morvaltide_prepare.failure import Failure  # noqa: E402

LONGEST_SECONDS = 10  # of processor time, for one input
LARGEST = 8192  # bytes

MAIL = b"""\
From: =?iso-8859-1?Q?J=F6rg?= <j@example.org>
To: "B" <b@example.org>
Subject: =?utf-8?B?w6TDtsO8?= and =?utf-8?q?more?=
Date: Sat, 21 Nov 2026 12:00:00 +0000
MIME-Version: 1.0
Content-Type: multipart/mixed; boundary="b0"

--b0
Content-Type: multipart/alternative; boundary=b1

--b1
Content-Type: text/plain; charset="utf-8"; format=flowed
Content-Transfer-Encoding: quoted-printable

A line=20
and =E2=82=AC 100

--b1
Content-Type: text/html; charset=windows-1252

<html><head><title>t</title></head><body><p>A&nbsp;line<br>and &euro; 100<!-- c -->
<table><tr><td>1</td><td>2</td></tr></table><img src="cid:1" alt="a picture"></body></html>
--b1--
--b0
Content-Type: image/png; name*=utf-8''%C3%A4.png
Content-Disposition: inline; filename="a.png"
Content-ID: <1>
Content-Transfer-Encoding: base64

@PNG@
--b0
Content-Type: message/rfc822

Subject: inner
Content-Type: text/plain

inner text
--b0--
"""
TEXTS = [b"plain text\n", "Größe, naïve, déjà vu\n".encode("cp1252"),
         "Съешь же ещё этих мягких французских булок\n".encode("koi8_r"),
         "日本語の文章です。これは試験です。\n".encode("euc_jp"), "text".encode("utf-16"),
         b"<?xml version='1.0'?>\n<!-- c --><svg>", b"Received: from x\nSubject: y\n\ntext",
         b"<p>a<ul><li>b</ul><pre>c\n d</pre><script>x</script>&amp;&#x41;&bogus;"]
WORDS = [b"\n", b"\r\n", b"\r", b"--b0\n", b"--b1--\n", b"=?utf-8?B?", b"?=", b"boundary=", b'"',
         b"Content-Type: ", b"multipart/mixed; ", b"message/rfc822\n\n", b"charset=utf-7", b"<!--",
         b"-->", b"<", b"&#", b"\xff\xd8", b"\xff\xe1", b"Exif\0\0II*\0", b"\0", b"\xff", b"II*\0"]


def seeds():
    """What is damaged: real documents of every kind that is read here."""
    picture_folder = TOP / "fuzz" / "corpus" / "fuzzPictures"
    found = [path.read_bytes()[1:] for path in sorted(picture_folder.iterdir())]
    picture = base64.b64encode(found[0])
    return [*found, *TEXTS, MAIL.replace(b"@PNG@", picture)] * 2 + [MAIL] * 10


def damaged(data, others, generator):
    data = bytearray(data)
    for _ in range(generator.choice((1, 1, 2, 4, 16))):
        begin = generator.randrange(len(data) + 1)
        end = min(len(data), begin + generator.choice((0, 1, 2, 4, 40)))
        kind = generator.randrange(6)
        if kind == 0 and begin < len(data):
            data[begin] ^= 1 << generator.randrange(8)
        elif kind == 1:
            data[begin:end] = generator.randbytes(end - begin)
        elif kind == 2:
            data[begin:end] = generator.choice(WORDS) * generator.choice((1, 1, 1, 30))
        elif kind == 3:
            data[begin:end] = data[begin:end] * generator.choice((0, 2, 20))
        elif kind == 4:
            other = generator.choice(others)
            data[begin:end] = other[generator.randrange(len(other) + 1):][:200]
        else:
            data[begin:end] = generator.choice((b"\0", b"\xff", b"0", b"9")) * (end - begin)
    return bytes(data[:LARGEST])


def read_mail(data, _):
    try:
        message = parts.parse(data)
        parts.heading(message)
        content = parts.Reader(100).read(message)
    except parts.Refused:
        return
    for text in content.texts:
        for line in charsets.lines(text):
            line.encode("utf-8")
    for document in content.documents:
        pictures.pixels(document.data)


def read_page(data, _):
    html_text.text_of(data.decode("latin-1"))


def read_document(data, path):
    with open(path, "wb") as file:
        file.write(data)
    try:
        kind = kinds.kind_of(path)
        if kind in kinds.PICTURES:
            headers.frames(kind, path)
    except Failure:
        pass


def give_up(_, __):
    raise TimeoutError(f"more than {LONGEST_SECONDS} seconds")


def main():
    seconds = float(sys.argv[1])
    seed = int(sys.argv[2]) if len(sys.argv) > 2 else 1
    generator = random.Random(seed)
    originals = seeds()
    findings = TOP / "build" / "fuzz" / "findings"
    signal.signal(signal.SIGVTALRM, give_up)
    end = time.monotonic() + seconds
    runs, places = 0, set()
    with tempfile.TemporaryDirectory() as folder:
        while time.monotonic() < end:
            data = damaged(generator.choice(originals), originals, generator)
            for reader in (read_mail, read_page, read_document):
                runs += 1
                signal.setitimer(signal.ITIMER_VIRTUAL, LONGEST_SECONDS)
                try:
                    reader(data, os.path.join(folder, "in"))
                except Exception as error:  # which is what this looks for
                    place = traceback.extract_tb(error.__traceback__)[-1]
                    if (place.filename, place.lineno) not in places:
                        places.add((place.filename, place.lineno))
                        findings.mkdir(parents=True, exist_ok=True)
                        path = findings / f"fuzzCompanions-{reader.__name__}-{seed}-{runs}"
                        path.write_bytes(data)
                        print(f"{path}: {type(error).__name__}: {error}, {place.filename}:"
                              f"{place.lineno}", flush=True)
                finally:
                    signal.setitimer(signal.ITIMER_VIRTUAL, 0)
    print(f"{runs} runs, {len(places)} findings")
    return 1 if places else 0


if __name__ == "__main__":
    sys.exit(main())
