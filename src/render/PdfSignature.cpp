#include "render/PdfSignature.h"

#include <QByteArray>
#include <QFile>

namespace {

constexpr int startLength = 1023;
constexpr char lastSkippedByte = 0x20;

bool isSkipped(char byte)
{
    return static_cast<unsigned char>(byte) <= lastSkippedByte;
}

QByteArray startOf(QIODevice& device)
{
    char byte = 0;
    while (device.getChar(&byte)) {
        if (!isSkipped(byte)) {
            device.ungetChar(byte);
            return device.read(startLength);
        }
    }
    return QByteArray();
}

} // namespace

bool PdfSignature::isPdfFile(const QString& fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) && isPdfStart(startOf(file));
}

bool PdfSignature::isPdfStart(const QByteArray& start)
{
    if (start.startsWith("%!") || start.startsWith("%%")) {
        return false;
    }
    const int header = start.indexOf("%PDF-");
    const int postScript = start.indexOf("%!PS");
    return header >= 0 && (postScript < 0 || postScript > header);
}
