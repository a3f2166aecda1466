#include "render/decode/JpegScaling.h"

#include <QBuffer>
#include <QFileInfo>
#include <QImage>
#include <QImageReader>
#include <QtEndian>
#include <QtMath>

#include <algorithm>

namespace {

constexpr int blockSide = 8;

// The largest side that libjpeg decodes.
constexpr int largestSide = 65500;

int roundedUp(int side)
{
    return (side + blockSide - 1) / blockSide * blockSide;
}

int reduced(int side, int eighths)
{
    return (side * eighths + blockSide - 1) / blockSide;
}

QSize reduced(const QSize& size, int eighths)
{
    return {reduced(size.width(), eighths), reduced(size.height(), eighths)};
}

// Start of frame: 0xC0 to 0xCF without DHT, JPG and DAC (ITU-T T.81, table B.1).
bool isStartOfFrame(uchar marker)
{
    return (marker & 0xF0) == 0xC0 && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

// Where the height stands, with the width behind it; -1 without a frame header.
qsizetype sidesAt(const QByteArray& file)
{
    constexpr int markerBytes = 2;
    constexpr int sidesInSegment = 5; // marker, length, precision
    const auto* bytes = reinterpret_cast<const uchar*>(file.constData());
    const qsizetype size = file.size();
    qsizetype at = markerBytes; // behind the start of the image
    while (at + sidesInSegment + 4 <= size && bytes[at] == 0xFF) {
        const uchar marker = bytes[at + 1];
        if (isStartOfFrame(marker)) {
            return at + sidesInSegment;
        }
        // A marker may have any number of these in front.
        at += marker == 0xFF ? 1 : markerBytes + qFromBigEndian<quint16>(bytes + at + markerBytes);
    }
    return -1;
}

QByteArray content(QIODevice& device)
{
    if (device.isSequential()) {
        return {};
    }
    const qint64 position = device.pos();
    device.seek(0);
    QByteArray bytes = device.readAll();
    device.seek(position);
    return bytes;
}

// What QImageReader takes from the name of a file: that of "picture@2x.jpg" is 2.
double pixelRatio(const QString& fileName)
{
    const QString suffix = QFileInfo(fileName).baseName().right(3);
    const bool isRatio = suffix.size() == 3 && suffix.at(0) == QLatin1Char('@') &&
                         suffix.at(1) >= QLatin1Char('2') && suffix.at(1) <= QLatin1Char('9') &&
                         suffix.at(2) == QLatin1Char('x');
    return isRatio ? suffix.at(1).digitValue() : 1;
}

} // namespace

int JpegScaling::eighths(const QSize& stored, const QSize& wanted)
{
    if (stored.isEmpty() || wanted.isEmpty()) {
        return blockSide;
    }
    // In the numbers of the plug-in, so that it is rounded as there.
    const double factor = std::min(static_cast<double>(stored.width()) / wanted.width(),
                                   static_cast<double>(stored.height()) / wanted.height());
    return std::clamp(qCeil(blockSide / factor), 1, blockSide);
}

QByteArray JpegScaling::padded(const QByteArray& file)
{
    const qsizetype at = sidesAt(file);
    if (at < 0) {
        return {};
    }
    QByteArray result = file;
    for (char* side : {result.data() + at, result.data() + at + 2}) {
        const int length = roundedUp(qFromBigEndian<quint16>(side));
        if (length > largestSide) {
            return {};
        }
        qToBigEndian(static_cast<quint16>(length), side);
    }
    return result;
}

bool JpegScaling::read(QImageReader& reader, const QSize& wanted, QImage& image)
{
    const QSize stored = reader.size();
    const int parts = eighths(stored, wanted);
    QByteArray file;
    if (parts < blockSide) {
        file = padded(content(*reader.device()));
    }
    if (file.isEmpty()) {
        return reader.read(&image);
    }
    QBuffer buffer(&file);
    QImageReader paddedReader(&buffer, "jpeg");
    paddedReader.setScaledSize(
        reduced(QSize(roundedUp(stored.width()), roundedUp(stored.height())), parts));
    if (!paddedReader.read(&image)) {
        return false;
    }
    image = image.copy(QRect(QPoint(0, 0), reduced(stored, parts)));
    image.setDevicePixelRatio(pixelRatio(reader.fileName()));
    return true;
}
