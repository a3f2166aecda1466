#include "render/GhostScriptFileName.h"

namespace {

constexpr QChar byteOrderMark = QChar::ByteOrderMark;

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

} // namespace

GhostScriptFileName::GhostScriptFileName(const QString& fileName) : m_fileName(fileName) {}

bool GhostScriptFileName::isLiteral() const
{
    // In a PostScript string a backslash starts an escape, a carriage return
    // reads as a line feed, and a parenthesis without its partner ends the
    // string. Ghostscript drops byte order marks from its arguments.
    return !m_fileName.contains(QLatin1Char('\\')) && !m_fileName.contains(QLatin1Char('\r')) &&
           !m_fileName.contains(byteOrderMark) && areParenthesesBalanced(m_fileName);
}

QString GhostScriptFileName::argument() const
{
    // '-' starts an option, '@' names a file of arguments, '%' a device, and
    // leading white space is skipped.
    static const QString specialFirst = QStringLiteral("-@% \t\n\v\f");
    const bool isSpecial = !m_fileName.isEmpty() && specialFirst.contains(m_fileName.at(0));
    // Ghostscript runs a program of its own instead of the document if a bare
    // name is that of one. With "./" it fails cleanly in such a case.
    const bool isProgram =
        !m_fileName.contains(QLatin1Char('/')) && m_fileName.endsWith(QLatin1String(".ps"));
    return isSpecial || isProgram ? QStringLiteral("./") + m_fileName : m_fileName;
}
