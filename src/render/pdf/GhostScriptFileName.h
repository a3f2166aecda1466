#pragma once

#include <QString>

/// A file name on its way to Ghostscript, which gives some characters a meaning
/// of their own. Decides without looking at any file.
class GhostScriptFileName
{
public:
    explicit GhostScriptFileName(const QString& fileName);

    /// True if Ghostscript opens exactly this file when the name stands,
    /// unescaped, in a PostScript string. Any other name could open another
    /// file or run a command and must not reach Ghostscript.
    bool isLiteral() const;

    /// The name as it is handed over: the name as it is, or with "./" in front
    /// where its first character would make it something else than a file name,
    /// or with the working folder in front where it could be that of one of
    /// Ghostscript's own programs (a relative name that ends in ".ps").
    QString argument() const;

private:
    QString m_fileName;
};
