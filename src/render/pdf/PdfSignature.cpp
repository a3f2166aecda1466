#include "render/pdf/PdfSignature.h"

#include <QByteArray>
#include <QFile>

#include <algorithm>

namespace {

constexpr int startLength = 1023;
constexpr char lastSkippedByte = 0x20;

// More than this is never skipped: a device file or a file with a hole could
// go on with zeros for ever.
constexpr qint64 longestSkip = qint64{16} * 1024 * 1024;
constexpr int blockLength = 16 * 1024;

bool isSkipped(char byte)
{
    return static_cast<unsigned char>(byte) <= lastSkippedByte;
}

QByteArray startOf(QIODevice& device)
{
    QByteArray block;
    for (qint64 skipped = 0; skipped < longestSkip; skipped += block.size()) {
        block = device.read(blockLength);
        const auto* first = std::find_if_not(block.cbegin(), block.cend(), isSkipped);
        if (block.isEmpty() || first != block.cend()) {
            block.remove(0, static_cast<int>(first - block.cbegin()));
            return (block + device.read(startLength)).left(startLength);
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
    const auto header = start.indexOf("%PDF-");
    const auto postScript = start.indexOf("%!PS");
    return header >= 0 && (postScript < 0 || postScript > header);
}
