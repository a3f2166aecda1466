#pragma once

class QByteArray;
class QString;

/// Tells PDF files from everything else by the rule of Ghostscript itself,
/// which would execute what is not PDF as a PostScript program.
class PdfSignature
{
public:
    /// True if the file can be read and is a PDF. A file that starts with 16 MiB
    /// of bytes of value 0x20 or below is not.
    static bool isPdfFile(const QString& fileName);

    /// The rule on the first bytes of a file: `start` holds up to 1023 bytes
    /// that follow the leading bytes of value 0x20 or below.
    static bool isPdfStart(const QByteArray& start);
};
