"""morvaltide-mail: a mail from standard input becomes one fax TIFF."""

import os
import re
import tempfile

from morvaltide_companions import charsets, cover, durable, layout, parts, tiff, tools

# For each program that works on one attachment.
SECONDS = 300
MAX_PAGES = 500


class Failed(Exception):
    """There is no fax. The text is one line for the user."""


def _refuse_beyond(pages):
    if pages > MAX_PAGES:
        raise Failed(f"the fax would have more than {MAX_PAGES} pages")


class Fax:
    """Makes the fax of one mail in a folder for temporary files.

    `options` has the attributes of the command line: output, strict, paper,
    resolution, compression, margins, rotation, prepare (a list of options for
    morvaltide-prepare), title, inline_pixels.
    """

    def __init__(self, options, beside, work):
        self._options = options
        self._work = work
        self._beside = beside
        self._converter = tools.find("morvaltide", beside)
        self._tiffcp = tools.find("tiffcp", beside)
        self._words = os.path.join(work, "words")
        self.unfaxed = []  # pairs of name and reason

    def make(self, data):
        """Writes the fax of a mail, or nothing if anything fails."""
        message = parts.parse(data)
        headings = parts.heading(message)
        content = parts.Reader(self._options.inline_pixels).read(message)
        if not headings and not content.texts and not content.documents:
            raise Failed("the message has neither headers nor text")
        faxed = self._documents(content.documents)
        if self.unfaxed and self._options.strict:
            raise Failed("the mail is refused, since a part of it cannot be faxed")

        options = self._options
        pages = layout.Pages(self._converter, self._tiffcp, self._work, options.paper,
                             options.resolution, options.compression)
        lines = cover.rows(headings, content.texts, self.unfaxed)
        total = sum(map(tiff.page_count, faxed))
        _refuse_beyond(total + len(lines) // layout.MOST_ROWS)
        written = []
        for rows in cover.split(pages, headings, options.title, lines):
            written.append(rows)
            total += 1
            _refuse_beyond(total)
        subject = dict(headings).get("Subject", "")
        heads = [cover.cover_head(options.title, headings, total)]
        heads += [cover.further_head(subject, i + 1, total) for i in range(1, len(written))]

        with durable.replacing(options.output) as file:
            fax = tiff.Joiner(file)
            for i, (head, rows) in enumerate(zip(heads, written)):
                fax.add(pages.render(f"text{i}", head, rows), first_only=True)
            for path in faxed:
                fax.add(path)
            file.flush()
            # The receiver counts on it.
            found = tiff.page_count(file.name)
            if found != total:
                raise Failed(f"the fax has {found} pages, but its cover says {total}")

    def _documents(self, documents):
        """Converts the attachments, each for itself, so that it is known which of
        them cannot be faxed. Returns the fax files in order."""
        if not documents:
            return []
        prepare = tools.find("morvaltide-prepare", self._beside)
        faxed = []
        for i, document in enumerate(documents):
            folder = os.path.join(self._work, f"document{i:03}")
            os.mkdir(folder)
            path = self._document(prepare, document, folder)
            if path is not None:
                faxed.append(path)
        return faxed

    def _document(self, prepare, document, folder):
        source = os.path.join(folder, "attachment")
        with open(source, "wb") as file:
            file.write(document.data)
        document.data = b""  # a mail may be large, and this is not needed any more
        ready = os.path.join(folder, "ready")
        ended = tools.run([prepare, *self._options.prepare, ready, source], SECONDS, self._words)
        files = sorted(os.listdir(ready)) if os.path.isdir(ready) else []
        if ended.status != 0 or ended.late or not files:
            return self._without(document, ended)

        options = self._options
        result = os.path.join(folder, "fax.tif")
        arguments = ["-p", options.paper, "-r", options.resolution, "-c", options.compression]
        for name, value in (("-m", options.margins), ("-R", options.rotation)):
            arguments += [name, value] if value is not None else []
        arguments += ["-o", result, "--", *(os.path.join(ready, name) for name in files)]
        ended = tools.run([self._converter, *arguments], SECONDS, self._words)
        if ended.status != 0 or ended.late:
            return self._without(document, ended)
        remarks = tools.remarks(ended.words)
        if remarks:
            self._note(document, "perhaps incomplete, " + remarks[-1])
        return result

    def _without(self, document, ended):
        self._note(document, ended.reason())

    def _note(self, document, reason):
        # Of "can't prepare 'NAME': REASON" and the like only the reason counts:
        # the name is that of a temporary file.
        reason = re.sub(r"^.*?can't \w+ (page file )?'[^']*'[:,] ", "", reason)
        reason = reason.replace(self._work, "")
        self.unfaxed.append((document.name, charsets.one_line(reason, 160)))


def make(options, beside, data):
    """Makes the fax and returns what of the mail it does not have."""
    with tempfile.TemporaryDirectory(prefix="morvaltide-mail.") as work:
        # What killed programs leave behind goes away with it.
        os.environ["TMPDIR"] = work
        fax = Fax(options, beside, work)
        try:
            fax.make(data)
        except (Failed, parts.Refused):
            options.unfaxed = fax.unfaxed
            raise
        return fax.unfaxed
