"""HTML to plain text.

Nothing is loaded and nothing is run: tags are thrown away, and what is left is
text. The standard library's parser takes quadratic time for some hostile pages;
this one looks at every character once.
"""

import html
import re

_SKIPPED = {"script", "style", "head", "title", "template", "svg"}
_BLOCKS = set(
    "address article aside blockquote body center dd div dl dt fieldset footer form "
    "header legend li main nav ol pre section table tbody tfoot thead tr ul".split()
)
_PARAGRAPHS = {"p", "h1", "h2", "h3", "h4", "h5", "h6", "hr"}
_NAME = re.compile(r"/?[a-zA-Z][a-zA-Z0-9:-]*")
_ALT = re.compile(r"""\balt\s*=\s*(?:"([^"]*)"|'([^']*)'|([^\s"'>]+))""", re.IGNORECASE)


class _Text:
    """Collects words, and the ends of lines between them."""

    def __init__(self):
        self.lines = []
        self._pieces = []  # of the last line
        self.preformatted = 0

    def is_empty(self):
        """Nothing is in the last line yet."""
        return not any(piece.strip() for piece in self._pieces)

    def new_line(self):
        self.lines.append("".join(self._pieces).replace("\xa0", " ").rstrip())
        self._pieces = []

    def end_line(self):
        if not self.is_empty():
            self.new_line()
        self._pieces = []

    def end_paragraph(self):
        self.end_line()
        if self.lines and self.lines[-1]:
            self.new_line()

    def end_cell(self):
        if not self.is_empty():
            self._pieces.append("   ")

    def add(self, text):
        if self.preformatted:
            first, *rest = text.split("\n")
            self._pieces.append(first)
            for line in rest:
                self.new_line()
                self._pieces.append(line)
            return
        words = re.sub(r"[ \t\r\n\f]+", " ", text)
        if not self._pieces or self._pieces[-1].endswith(" "):
            words = words.lstrip(" ")
        if words:
            self._pieces.append(words)


def _tags(page):
    """Yields ("text", words) and ("tag", content) from left to right."""
    position = 0
    missing = set()  # ends that are not found once are not looked for again

    def end_of(mark, start):
        if mark in missing:
            return -1
        found = page.find(mark, start)
        if found < 0:
            missing.add(mark)
        return found

    while position < len(page):
        start = page.find("<", position)
        if start < 0:
            start = len(page)
        if start > position:
            yield "text", page[position:start]
        if start == len(page):
            return
        if page.startswith("<!--", start):
            end = end_of("-->", start + 4)
            position = len(page) if end < 0 else end + 3
        elif page[start + 1 : start + 2] in ("!", "?"):
            end = end_of(">", start)
            position = len(page) if end < 0 else end + 1
        elif _NAME.match(page, start + 1):
            end = end_of(">", start)
            if end < 0:
                yield "text", page[start:]
                return
            yield "tag", page[start + 1 : end]
            position = end + 1
        else:
            yield "text", "<"
            position = start + 1


def _picture_text(tag):
    match = _ALT.search(tag[:2000])
    alt = html.unescape(next(filter(None, match.groups()), "")) if match else ""
    return f"[{alt.strip()}]" if alt.strip() else ""


def text_of(page):
    """The text of a page of HTML, one line for each paragraph, row or item."""
    text = _Text()
    lower = page.lower()
    never_ended = set()
    skipped = None  # the element whose content is not for the reader

    def has_end(name):
        # Of an element without an end everything would be lost.
        return f"</{name}" in lower or (name == "head" and "<body" in lower)

    for kind, value in _tags(page):
        if kind == "text":
            if skipped is None:
                text.add(html.unescape(value))
            continue
        name = _NAME.match(value)[0].lower()
        bare = name.lstrip("/")
        if skipped is not None:
            if name == "/" + skipped or (skipped == "head" and name == "body"):
                skipped = None
        elif name in _SKIPPED and not value.endswith("/") and name not in never_ended:
            if has_end(name):
                skipped = name
            else:
                never_ended.add(name)
        elif name == "br":
            text.new_line()
        elif name == "img":
            text.add(_picture_text(value))
        elif name in ("td", "th"):
            text.end_cell()
        elif bare in _PARAGRAPHS:
            text.end_paragraph()
        elif bare in _BLOCKS:
            text.end_line()
            if name == "li":
                text.add("- ")
        if bare == "pre":
            text.preformatted = max(0, text.preformatted + (-1 if name[0] == "/" else 1))
    text.new_line()
    return re.sub(r"\n{3,}", "\n\n", "\n".join(text.lines)).strip("\n")
