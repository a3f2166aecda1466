#pragma once

#include <QByteArray>

/// The parts of a PNG file (ISO/IEC 15948), for files that Qt would not write.
namespace PngFile {

/// What every file begins with.
inline constexpr char signature[] = "\x89PNG\r\n\x1a\n";

QByteArray bigEndian(quint32 number);

/// A chunk with its length and its check sum. `type` has four letters.
QByteArray chunk(const QByteArray& type, const QByteArray& data);

} // namespace PngFile
