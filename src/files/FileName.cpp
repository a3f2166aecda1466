#include "files/FileName.h"

#include <QByteArray>

namespace {

constexpr char byteOrderMark[] = "\xef\xbb\xbf";

} // namespace

QString FileName::fromUtf8(const std::string& bytes)
{
    // Qt drops one mark in front of a text. This one instead of that of the name.
    return QString::fromUtf8(QByteArray::fromStdString(byteOrderMark + bytes));
}
