"""Guesses the encoding of a text that is not Unicode.

A guess that is not clear is none: a text in the wrong letters is worse than
a refusal.
"""

import re

# In Western European texts, accents stand alone or in pairs ("Größe"). Where
# more of these bytes than this stand in a longer row, it is another script.
_MOST_IN_ROWS = 0.3

# What Polish letters become when they are taken for Western European ones.
_SIGN_IN_WORD = re.compile("[A-Za-z][¹²³¿¼½¾±¥¦¨¬´¸¶]+[A-Za-z]")

# The encodings of Cyrillic and Greek differ in where the frequent letters are.
_CYRILLIC, _GREEK = re.compile("[оеаинтсрвлк]"), re.compile("[αοιετσνηυρπκςάέίόή]")
_KANA, _HANGUL = re.compile("[ぁ-んァ-ヶー]"), re.compile("[가-힣]")

# Codec, the characters to look for and their least share of those outside
# ASCII. The order matters: Korean read as Chinese looks right, not vice versa.
_CANDIDATES = (
    ("euc_jp", _KANA, 0.25), ("cp932", _KANA, 0.25), ("euc_kr", _HANGUL, 0.75),
    ("cp1253", _GREEK, 0.65),
    ("cp1251", _CYRILLIC, 0.5), ("koi8_r", _CYRILLIC, 0.5), ("iso8859_5", _CYRILLIC, 0.5),
)
_FEWEST = 16  # bytes outside ASCII, below which nothing is clear

# The lead bytes of the frequent Chinese characters; punctuation lies below.
_CHINESE = (("gb18030", 0xA1, 0xD7), ("big5", 0xA1, 0xC6))
_LEAST_FREQUENT = 0.9


def guessed(data: bytes) -> str:
    """The text of `data`; empty if its encoding is not clear."""
    rows = re.findall(rb"[\x80-\xff]+", data)
    total = sum(map(len, rows))
    if sum(len(row) for row in rows if len(row) > 2) <= _MOST_IN_ROWS * total:
        text = _decoded(data, "cp1252")
        return "" if _SIGN_IN_WORD.search(text) else text
    if total < _FEWEST:
        return ""
    for codec, letters, least in _CANDIDATES:
        text = _decoded(data, codec)
        others = [character for character in text if ord(character) > 0x7F]
        if others and len(letters.findall(text)) >= least * len(others):
            return text
    for codec, first, last in _CHINESE:
        text = _decoded(data, codec)
        codes = [character.encode(codec) for character in text if ord(character) > 0x7F]
        frequent = sum(1 for code in codes if len(code) == 2 and first <= code[0] <= last
                       and (codec == "big5" or code[1] >= 0xA1))
        if codes and frequent >= _LEAST_FREQUENT * len(codes):
            return text
    return ""


def _decoded(data: bytes, codec: str) -> str:
    try:
        return data.decode(codec)
    except UnicodeDecodeError:
        return ""
