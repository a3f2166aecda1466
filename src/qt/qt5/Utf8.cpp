#include "qt/Utf8.h"

#include <QTextStream>

void Utf8::useFor(QTextStream& stream)
{
    stream.setCodec("UTF-8");
}
