"""The pages that morvaltide-mail writes itself: the cover page, and the pages on
which its text goes on."""

import html

from morvaltide_companions import charsets, layout

# What a heading may take of the cover page, in characters. What is longer is
# repeated in full in front of the text.
_LONGEST_HEADING = 240
_RULE = '<table width="100%" cellpadding="0" cellspacing="0" border="0"><tr>' \
    '<td bgcolor="black" style="font-size: 1px">&nbsp;</td></tr></table>'


def _count_text(pages):
    following = pages - 1
    if following == 0:
        return "this one, none follows"
    return f"this one and {following} more"


def _heading(text, longest):
    return html.escape(layout.breakable(charsets.one_line(text, longest)))


def cover_head(title, headings, pages):
    """The upper part of the cover page of a fax of so many pages, as HTML."""
    lines = [*headings, ("Pages", _count_text(pages))]
    table = "".join(
        f'<tr><td class="head" width="80"><b>{name}</b></td>'
        f'<td class="head">{_heading(text, _LONGEST_HEADING)}</td></tr>'
        for name, text in lines
    )
    return (
        f'<p class="head"><span style="font-size: 26pt; font-weight: bold">'
        f"{html.escape(title)}</span></p>"
        f'<table width="100%" cellpadding="2" cellspacing="0" border="0">{table}</table>'
        f"{_RULE}"
    )


def further_head(subject, page, pages):
    """The upper part of a page on which the text goes on."""
    text = _heading(subject, 60) or "Text"
    return (
        '<table width="100%" cellpadding="0" cellspacing="0" border="0"><tr>'
        f'<td class="head">{text}</td>'
        f'<td class="head" align="right">page {page} of {pages}</td></tr></table>{_RULE}'
    )


def rows(headings, texts, unfaxed):
    """The lines below the head: what is missing in the fax, and the text."""
    found = [layout.row(" ")]
    if unfaxed:
        found.append(_bold("Of this mail the fax does not have, or not as a whole:"))
        for name, reason in unfaxed:
            found += map(_bold, layout.wrapped(f"- {name}: {reason}"))
        found.append(layout.row(" "))
    for name, text in headings:
        if len(text) > _LONGEST_HEADING:
            found += map(layout.row, layout.wrapped(f"{name}: {text}"))
            found.append(layout.row(" "))
    for text in texts:
        if len(found) > 1 and found[-1] != layout.row(" "):
            found.append(layout.row(" "))
        for line in charsets.lines(text.strip("\r\n")):
            found += map(layout.row, layout.wrapped(line))
    while found and found[-1] in (layout.row(" "), layout.row("")):
        found.pop()
    return found


def _bold(text):
    return layout.row(text, "font-weight: bold")


def split(pages, headings, title, lines):
    """Divides the lines among the cover page and as many further pages as they
    take: yields those of each page. Every line is on one page."""
    taken = pages.fitting(cover_head(title, headings, 999), lines) if lines else 0
    yield lines[:taken]
    head = further_head(dict(headings).get("Subject", ""), 999, 999)
    while taken < len(lines):
        rest = lines[taken : taken + layout.MOST_ROWS]
        count = max(1, pages.fitting(head, rest))
        yield rest[:count]
        taken += count
