#include "files/FileName.h"

#include <QTextCodec>

QString FileName::fromUtf8(const std::string& bytes)
{
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    return QTextCodec::codecForName("UTF-8")->toUnicode(bytes.data(),
                                                        static_cast<int>(bytes.size()), &state);
}
