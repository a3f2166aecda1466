#include "qt/Platform.h"

#include <QTextCodec>

// All else is what the offscreen platform of Qt 5 has by itself.
void Platform::prepare()
{
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
}

void Platform::complete() {}
