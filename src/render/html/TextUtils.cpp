#include "render/html/TextUtils.h"

#include <QString>
#include <QTextStream>

QString TextUtils::loadUtf8String(QIODevice* device)
{
    QTextStream stream(device);
    stream.setCodec("UTF-8");
    return stream.readAll();
}
