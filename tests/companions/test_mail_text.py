"""What a mail says comes out as text, whatever the sender's program made of it."""

import email
import unittest

import support  # noqa: F401  (it finds the modules)
from morvaltide_companions import charsets, headers, html_text, layout

CHARSETS = [
    ("utf-8", "Grüße".encode(), "Grüße"),
    ("ISO-8859-1", b"Gr\xfc\xdfe", "Grüße"),
    ("iso-8859-1", b"\x84Preis\x93 5 \x80", "„Preis“ 5 €"),
    ("iso-8859-15", b"5 \xa4", "5 €"),
    ("windows-1251", "Привет".encode("cp1251"), "Привет"),
    ("koi8-r", "Привет".encode("koi8-r"), "Привет"),
    ("iso-2022-jp", "日本".encode("iso-2022-jp"), "日本"),
    ("gb2312", "镕".encode("gb18030"), "镕"),
    ("ks_c_5601-1987", "똠".encode("cp949"), "똠"),
    ("shift_jis", "①".encode("cp932"), "①"),
    ("big5", "繁體".encode("big5"), "繁體"),
    ("utf-16", "Grüße".encode("utf-16"), "Grüße"),
    ("unicode-1-1-utf-7", b"Gr+APwA3w-e", "Grüße"),
    ("us-ascii", "Grüße".encode(), "Grüße"),
    ("us-ascii", b"Gr\xfc\xdfe", "Gr\ufffd\ufffde"),
    ("iso-8859-8-i", b"\xf9\xec\xe5\xed", "שלום"),
    (None, "Grüße".encode(), "Grüße"),
    (None, b"Gr\xfc\xdfe", "Grüße"),
    ("x-martian", b"Gr\xfc\xdfe", "Grüße"),
    ("x-martian", "Grüße\n".encode() + b"Gr\xfc\xdfe", "Grüße\nGrüße"),
    ("utf-8", b"Gr\xfc\xdfe", "Gr\ufffd\ufffde"),
    ("base64", b"text", "text"),
    ("rot13", b"text", "text"),
    ("unicode_escape", b"\\u0041", "\\u0041"),
    ("../../etc/passwd", b"text", "text"),
    ("x" * 10000, b"text", "text"),
    ("idna", b"text", "text"),
    ("utf-8\0", b"text", "text"),
]

HEADERS = [
    ("plain", "plain"),
    ("=?utf-8?q?Gr=C3=BC=C3=9Fe?=", "Grüße"),
    ("=?UTF-8?B?R3LDvMOfZQ==?= aus =?iso-8859-1?Q?M=FCnchen?=", "Grüße aus München"),
    ("=?utf-8?B?R3LD?= =?utf-8?B?vMOfZQ?=", "Grüße"),
    ("=?utf-8?q?a?=\n =?utf-8?q?b?=", "ab"),
    ("=?utf-8?q?a?= =?iso-8859-1?q?=FC?=", "aü"),
    ("=?utf-8*de?q?a_b?=", "a b"),
    ("=?x-martian?q?a=FC?=", "aü"),
    ("=?utf-8?B?R3LDvMOfZ?=", "Grüß"),
    ("=?utf-8?B?!!!?=x", "x"),
    ("=?utf-8?x?abc?=", "=?utf-8?x?abc?="),
    ("=?utf-8?q?cut", "=?utf-8?q?cut"),
    ("Gr\udcc3\udcbc\udcc3\udc9fe", "Grüße"),
    ("Gr\udcfc\udcdfe", "Grüße"),
]

NAMES = [
    (b'attachment; filename="a b.pdf"', "a b.pdf"),
    (b"attachment; filename*=utf-8''b%C3%B6se%20%22x%22.pdf", 'böse "x".pdf'),
    (b"attachment; filename*0*=utf-8''b%C3%B6; filename*1*=se.; filename*2=pdf", "böse.pdf"),
    (b'attachment; filename="=?utf-8?q?b=C3=B6se=2Epdf?="', "böse.pdf"),
    (b"attachment; filename*=x-martian''b%FC.pdf", "bü.pdf"),
    (b"attachment; filename*=%FF%FF", None),
    (b"attachment; filename*99999999999999999999*=x", None),
    (b'attachment; filename="b\xc3\xb6se.pdf"', "böse.pdf"),
    (b'attachment; filename="../../etc/passwd"', "passwd"),
    (b'attachment; filename="C:\\\\Temp\\\\a.pdf"', "a.pdf"),
    (b'attachment; filename="=?utf-8?q?a=0Ab=E2=80=AEfdp=2Eexe?="', "a bfdp.exe"),
    (b"attachment; filename=" + b"x" * 500, "x" * 79 + "…"),
    (b"attachment", ""),
]

PAGES = [
    ("<p>one<p>two", "one\n\ntwo"),
    ("one<br>two<BR/>three", "one\ntwo\nthree"),
    ("<b>a</b> <i>b</i>\n  c", "a b c"),
    ("&lt;tag&gt; &amp; &euro;&nbsp;5 &#252;", "<tag> & € 5 ü"),
    ("<head><title>t</title><style>p{}</style></head><body>text", "text"),
    ("<head><title>t</title><body>text", "text"),
    ("a<script>alert('<b>')</script>b", "ab"),
    ("a<style>never ended", "anever ended"),
    ("a<!-- c > -->b", "ab"),
    ("a<!-- never ended", "a"),
    ("<![if !mso]>a<![endif]>", "a"),
    ("<![CDATA[a]]>b", "b"),
    ("<ul><li>one<li>two</ul>x", "- one\n- two\nx"),
    ("<table><tr><td>a</td><td>b</td></tr><tr><td>c</td></tr></table>", "a   b\nc"),
    ("<pre>a  b\n c</pre>d", "a  b\n c\nd"),
    ('<img src="file:///etc/passwd" alt="Logo">x', "[Logo]x"),
    ("<img src=/etc/shadow>x", "x"),
    ("1 < 2 and 3 > 2", "1 < 2 and 3 > 2"),
    ("a <unfinished", "a <unfinished"),
    ("&#0;&#xD800;&#99999999;&bogus;", "\ufffd\ufffd\ufffd&bogus;"),
    ("", ""),
]

WRAPPED = [
    ("short", ["short"]),
    ("one two three", ["one two", "three"]),
    ("abcdefghijklmnop", ["abcdefgh", "ijklmnop"]),
    ("a bcdefghijklm", ["a", "bcdefghi", "jklm"]),
    ("日本日本日本", ["日本日本", "日本"]),
    ("  indented by two", ["  indent", "ed by", "two"]),
    ("e\u0301" * 9, ["e\u0301" * 8, "e\u0301"]),
    ("", [""]),
]


class Texts(unittest.TestCase):
    def test_charsets(self):
        for name, data, expected in CHARSETS:
            with self.subTest(charset=name, data=data):
                self.assertEqual(charsets.decode(data, name), expected)

    def test_headers(self):
        for value, expected in HEADERS:
            with self.subTest(value):
                self.assertEqual(headers.decoded(value), expected)

    def test_file_names(self):
        for value, expected in NAMES:
            with self.subTest(value):
                part = email.message_from_bytes(b"Content-Disposition: " + value + b"\n\nx")
                name = headers.file_name(part)
                if expected is not None:  # what such a name means is anybody's guess
                    self.assertEqual(name, expected)
                self.assertNotIn("\n", name)

    def test_html(self):
        for page, expected in PAGES:
            with self.subTest(page):
                self.assertEqual(html_text.text_of(page), expected)

    def test_hostile_html_takes_linear_time(self):
        # By quadratic rules each of them would take hours.
        for piece in ("<!--", "<a ", "<!", "<style>", "<pre>", "<", "&", "<td>", "x <b>"):
            with self.subTest(piece):
                html_text.text_of(piece * 100000)

    def test_hostile_headers_take_linear_time(self):
        for piece in ("=?a?b?", "=?utf-8?q?a?= ", "=?utf-8?b?YQ?=\n ", "=", "=?" + "x" * 79):
            with self.subTest(piece):
                headers.decoded(piece * 200000)

    def test_lines_without_control_characters(self):
        text = "a\r\nb\rc\x0cd\u2028e\tf\x00\x1b[31mg\ufeff\u200bh\ud800"
        self.assertEqual(list(charsets.lines(text)),
                         ["a", "b", "c", "d", "e       f[31mgh\ufffd"])

    def test_wrapping(self):
        for line, expected in WRAPPED:
            with self.subTest(line):
                self.assertEqual(layout.wrapped(line, 8), expected)

    def test_rows_are_text_whatever_is_in_them(self):
        self.assertEqual(layout.row('</td><img src="/etc/passwd">&amp;'),
                         "&lt;/td&gt;&lt;img src=&quot;/etc/passwd&quot;&gt;&amp;amp;")


if __name__ == "__main__":
    unittest.main()
