#include "support/PngFile.h"

#include <QtEndian>

namespace {

// The check sum of PNG, ISO 3309.
quint32 checksum(const QByteArray& bytes)
{
    quint32 sum = 0xFFFFFFFF;
    for (const char byte : bytes) {
        sum ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit) {
            sum = (sum >> 1) ^ ((sum & 1) != 0 ? 0xEDB88320U : 0U);
        }
    }
    return ~sum;
}

} // namespace

QByteArray PngFile::bigEndian(quint32 number)
{
    QByteArray bytes(sizeof number, '\0');
    qToBigEndian(number, bytes.data());
    return bytes;
}

QByteArray PngFile::chunk(const QByteArray& type, const QByteArray& data)
{
    return bigEndian(static_cast<quint32>(data.size())) + type + data +
           bigEndian(checksum(type + data));
}
