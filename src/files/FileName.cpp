#include "files/FileName.h"

namespace {

constexpr char byteOrderMark[] = "\xef\xbb\xbf";

} // namespace

QString FileName::fromUtf8(const std::string& bytes)
{
    // Qt drops one mark in front of a text. This one instead of that of the name.
    const std::string text = byteOrderMark + bytes;
    // With its size: Qt 5 ends a QByteArray at the first null character.
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}
