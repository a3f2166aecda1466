"""Which parts of a mail become text, which documents, and what is refused."""

import base64
import email
import unittest
from email.message import EmailMessage
from email.mime.multipart import MIMEMultipart
from email.mime.text import MIMEText

import support
from morvaltide_companions import parts

PNG = support.sample("chart.png")
PDF = support.sample("report.pdf")


def picture(width, height):
    """The first bytes of a PNG picture, which tell its size."""
    return (b"\x89PNG\r\n\x1a\n\0\0\0\rIHDR" + width.to_bytes(4, "big")
            + height.to_bytes(4, "big") + b"\x08\x02\0\0\0")


def read(data, inline_pixels=100000):
    data = data if isinstance(data, bytes) else data.encode()
    return parts.Reader(inline_pixels).read(parts.parse(data))


def found(data, **options):
    """The texts and the names of the documents of a mail."""
    content = read(data, **options)
    return [text.strip() for text in content.texts], [each.name for each in content.documents]


def part(kind, body, more=""):
    return f"Content-Type: {kind}\n{more}\n{body}\n"


def multipart(kind, *children, boundary="XX", end="--XX--\n"):
    head = f'Content-Type: multipart/{kind}; boundary="{boundary}"\n\n'
    return head + "".join(f"--{boundary}\n{child}" for child in children) + end


def attached(kind, name, body="x"):
    return part(kind, body, f'Content-Disposition: attachment; filename="{name}"\n')


PLAIN = part("text/plain", "plain")
HTML = part("text/html", "<p>html")
PDF_PART = attached("application/pdf", "a.pdf")
NESTED = part("message/rfc822", "From: Ann\nSubject: Hi\n\ninner")

SHAPES = {
    "text alone": ("Subject: s\n\nhello", ["hello"], []),
    "headers alone": ("Subject: s\n", [], []),
    "no headers": ("\nhello", ["hello"], []),
    "HTML alone": (HTML, ["html"], []),
    "a document alone": (PDF_PART, [], ["a.pdf"]),
    "mixed": (multipart("mixed", PLAIN, PDF_PART, PLAIN), ["plain", "plain"], ["a.pdf"]),
    "unknown multipart": (multipart("strange", PLAIN, PDF_PART), ["plain"], ["a.pdf"]),
    "alternative": (multipart("alternative", PLAIN, HTML), ["plain"], []),
    "alternative, empty plain": (
        multipart("alternative", part("text/plain", " \n"), HTML), ["html"], []),
    "alternative with a calendar": (
        multipart("alternative", PLAIN, HTML, part("text/calendar", "BEGIN")), ["plain"], []),
    "alternative of a calendar alone": (
        multipart("alternative", part("text/calendar", "BEGIN:")), ["BEGIN:"], []),
    "alternative that hides a document": (
        multipart("alternative", PLAIN,
                  multipart("mixed", HTML, PDF_PART, boundary="YY", end="--YY--\n")),
        ["plain"], ["a.pdf"]),
    "text as attachment": (
        multipart("mixed", PLAIN, attached("text/plain", "notes.txt")), ["plain"], ["notes.txt"]),
    "document without a name": (
        multipart("mixed", PLAIN, part("application/zip", "x")), ["plain"],
        ["part 3 (application/zip)"]),
    "signature": (
        multipart("signed", PLAIN, attached("application/pgp-signature", "s.asc")), ["plain"], []),
    "mail within": (
        multipart("mixed", PLAIN, NESTED),
        ["plain", "----- Mail within this mail -----\nFrom: Ann\nSubject: Hi", "inner"], []),
    "delivery report": (
        multipart("report", PLAIN, part("message/delivery-status", "Reporting-MTA: dns; x\n")),
        ["plain", "Reporting-MTA: dns; x"], []),
    "text with a stray NUL": ("Subject: s\n\nhel\0lo" + " words" * 9, ["hel\0lo" + " words" * 9], []),
    "headers of a lost mail": (
        multipart("report", PLAIN, part("text/rfc822-headers", "From: Ann")),
        ["plain", "From: Ann"], []),
    "end missing": (multipart("mixed", PLAIN, PDF_PART, end=""), ["plain"], ["a.pdf"]),
    "boundary not named": (
        multipart("mixed", PLAIN, PDF_PART).replace('; boundary="XX"', ""), ["plain"], ["a.pdf"]),
    "wrong boundary named": (
        multipart("mixed", PLAIN, PDF_PART).replace('"XX"', '"ZZ"'), ["plain"], ["a.pdf"]),
    "boundary nowhere": (
        'Content-Type: multipart/mixed; boundary="ZZ"\n\nhello', ["hello"], []),
    "broken type": ("Content-Type: ;;;=\n\nhello", ["hello"], []),
    "broken quoted-printable": (
        part("text/plain", "a=ZZ b=C3=BC c=", "Content-Transfer-Encoding: quoted-printable\n"),
        ["a=ZZ bü c"], []),
    "broken base64": (
        part("text/plain", "aGVs*bG8\n!!", "Content-Transfer-Encoding: base64\n"), ["hello"], []),
    "base64 with a letter too many": (
        part("text/plain", "aGVsbG8hX", "Content-Transfer-Encoding: BASE64\n"), ["hello!"], []),
    "base64 with a footer": (
        part("text/plain", "aGVsbG8=\n___\nA list", "Content-Transfer-Encoding: base64\n"),
        ["hello"], []),
    "unknown coding": (
        part("text/plain", "hello", "Content-Transfer-Encoding: x-martian\n"), ["hello"], []),
}


class Shapes(unittest.TestCase):
    def test_shapes(self):
        for name, (mail, texts, documents) in SHAPES.items():
            with self.subTest(name):
                self.assertEqual(found(mail), (texts, documents))

    def test_documents_keep_their_bytes(self):
        mail = EmailMessage()
        mail.set_content("x")
        mail.add_attachment(PDF, maintype="application", subtype="octet-stream", filename="a")
        mail.add_attachment(PNG, maintype="text", subtype="plain", filename="b.txt")
        self.assertEqual([each.data for each in read(mail.as_bytes()).documents], [PDF, PNG])

    def test_attached_text_becomes_utf8(self):
        mail = MIMEMultipart()
        text = MIMEText("Grüße", "plain", "iso-8859-1")
        text.add_header("Content-Disposition", "attachment", filename="a.txt")
        page = MIMEText("<p>Grüße</p>", "html", "utf-16")
        page.add_header("Content-Disposition", "attachment", filename="a.html")
        mail.attach(text)
        mail.attach(page)
        data = [each.data for each in read(mail.as_bytes()).documents]
        self.assertEqual(data, ["Grüße".encode()] * 2)

    def test_a_mail_within_that_is_coded(self):
        inner = base64.b64encode(b"From: Ann\n\n" + b"inner words").decode()
        mail = part("message/rfc822", inner, "Content-Transfer-Encoding: base64\n")
        self.assertIn("inner words", found(mail)[0])

    def test_inline_pictures_below_a_size_are_left_out(self):
        def mail(data, disposition, related=True):
            outer = MIMEMultipart("related" if related else "mixed")
            outer.attach(MIMEText("<p>x", "html"))
            child = email.message_from_bytes(
                b"Content-Type: image/png\nContent-Transfer-Encoding: base64\n"
                + disposition + b"\n\n" + base64.b64encode(data))
            outer.attach(child)
            return len(found(outer.as_bytes())[1])

        inline, cid = b"Content-Disposition: inline", b"Content-ID: <a@b>"
        attachment = b"Content-Disposition: attachment"
        logo, large = picture(300, 333), picture(400, 250)
        self.assertEqual(mail(logo, inline), 0)
        self.assertEqual(mail(logo, cid), 0)
        self.assertEqual(mail(logo, inline, related=False), 0)
        self.assertEqual(mail(large, inline), 1)
        self.assertEqual(mail(logo, attachment, related=False), 1)
        self.assertEqual(mail(logo, attachment + b"\n" + cid, related=False), 1)
        self.assertEqual(mail(b"no picture", inline), 1)

    def test_limits(self):
        parts_ = multipart("mixed", *[part("application/zip", "x")] * 200)
        deep = "".join(f"Content-Type: multipart/mixed; boundary=b{i}\n\n--b{i}\n"
                       for i in range(30))
        deeper = "".join(f"Content-Type: multipart/mixed; boundary=b{i}\n\n--b{i}\n"
                         for i in range(3000))
        for mail, message in (
                ("", "the message is empty"), (" \n\n", "the message is empty"),
                (parts_, "it has more than 200 parts"),
                (deep, "its parts are nested more than 20 deep"),
                (deeper, "its parts are nested more than 20 deep"),
                ("Content-Type: message/rfc822\n\n" * 30, "its parts are nested more than 20 deep"),
                ("\n" + "x" * 1000001, "its text has more than 1000000 characters"),
                ("x" * (parts.MAX_BYTES + 1), "the message has more than 64 MiB")):
            with self.subTest(message):
                with self.assertRaises(parts.Refused) as refused:
                    read(mail)
                self.assertEqual(str(refused.exception), message)

    def test_no_damage_is_an_error(self):
        whole = multipart("mixed", PLAIN, HTML, PDF_PART, NESTED,
                          multipart("alternative", PLAIN, HTML, boundary="YY", end="--YY--\n"),
                          part("image/png", base64.b64encode(PNG[:300]).decode(),
                               "Content-Transfer-Encoding: base64\nContent-ID: <x>\n")).encode()
        for i in range(1, len(whole), 3):
            read(whole[:i])
            read(whole[:i] + bytes([i * 37 % 256]) + whole[i + 1 :])


if __name__ == "__main__":
    unittest.main()
