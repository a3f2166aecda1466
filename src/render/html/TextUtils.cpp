#include "render/html/TextUtils.h"

#include "qt/Utf8.h"

#include <QString>
#include <QTextStream>

QString TextUtils::loadUtf8String(QIODevice* device)
{
    QTextStream stream(device);
    Utf8::useFor(stream);
    return stream.readAll();
}
