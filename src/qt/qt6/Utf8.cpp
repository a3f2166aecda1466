#include "qt/Utf8.h"

#include <QTextStream>

// Names are UTF-8 on every Unix.
void Utf8::useForFileNames() {}

void Utf8::useFor(QTextStream& stream)
{
    stream.setEncoding(QStringConverter::Utf8);
}
