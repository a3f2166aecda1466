#include "qt/Utf8.h"

#include <QTextCodec>
#include <QTextStream>

void Utf8::useForFileNames()
{
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
}

void Utf8::useFor(QTextStream& stream)
{
    stream.setCodec("UTF-8");
}
