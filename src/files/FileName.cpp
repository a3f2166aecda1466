#include "files/FileName.h"

#include <QTextCodec>

QString FileName::fromUtf8(const std::string& bytes)
{
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    QString name = QTextCodec::codecForName("UTF-8")->toUnicode(
        bytes.data(), static_cast<int>(bytes.size()), &state);
    // The decoder keeps the bytes of a character that is cut at the end, waiting
    // for the others. Without them the name would be that of another file.
    name += QString(state.remainingChars, QChar::ReplacementCharacter);
    return name;
}
