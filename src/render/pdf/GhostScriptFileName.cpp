#include "render/pdf/GhostScriptFileName.h"

namespace {

bool areParenthesesBalanced(const QString& text)
{
    int depth = 0;
    for (const QChar character : text) {
        if (character == QLatin1Char('(')) {
            ++depth;
        } else if (character == QLatin1Char(')') && --depth < 0) {
            return false;
        }
    }
    return depth == 0;
}

// True for relative names that could be those of programs in Ghostscript's own
// folders, where it looks first: with align.ps, even with ./align.ps, it would
// run its program of that name instead of reading the document.
bool couldBeProgram(const QString& fileName)
{
    return !fileName.startsWith(QLatin1Char('/')) && fileName.endsWith(QLatin1String(".ps"));
}

} // namespace

GhostScriptFileName::GhostScriptFileName(const QString& fileName) : m_fileName(fileName) {}

bool GhostScriptFileName::isLiteral() const
{
    // In a PostScript string a backslash starts an escape, a carriage return
    // reads as a line feed, and a parenthesis without its partner ends the
    // string. Ghostscript drops byte order marks from its arguments.
    return !m_fileName.contains(QLatin1Char('\\')) && !m_fileName.contains(QLatin1Char('\r')) &&
           !m_fileName.contains(QChar(QChar::ByteOrderMark)) && areParenthesesBalanced(m_fileName);
}

QString GhostScriptFileName::argument() const
{
    // '-' starts an option, '@' names a file of arguments, '%' a device, and
    // leading white space is skipped.
    static const QString specialFirst = QStringLiteral("-@% \t\n\v\f");
    if (!m_fileName.isEmpty() && specialFirst.contains(m_fileName.at(0))) {
        return QStringLiteral("./") + m_fileName;
    }
    return couldBeProgram(m_fileName) ? QStringLiteral("/proc/self/cwd/") + m_fileName : m_fileName;
}
