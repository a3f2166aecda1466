#include "support/ReferencePage.h"

#include "qt/SmoothScaling.h"
#include "render/decode/PictureDecoder.h"

#include <QFile>
#include <QImageReader>
#include <QPainter>
#include <QTransform>

#include <cstdint>

namespace {

constexpr QRgb opaqueWhite = 0xFFFFFFFF;
constexpr QRgb opaqueBlack = 0xFF000000;

int offset(int freeSpace, bool isCentred, bool isAtEnd)
{
    if (isCentred) {
        return freeSpace / 2;
    }
    return isAtEnd ? freeSpace : 0;
}

// The bits of one pixel as they lie in memory, without the byte that an RGB32
// image does not use.
std::uint64_t pixelBits(const QImage& image, int x, int y)
{
    constexpr std::uint64_t colourBits = 0x00FFFFFF;
    if (image.depth() == 1) {
        return static_cast<std::uint64_t>(image.pixelIndex(x, y));
    }
    const int width = image.depth() / 8;
    const uchar* bytes = image.constScanLine(y) + static_cast<std::ptrdiff_t>(x) * width;
    std::uint64_t bits = 0;
    for (int i = width - 1; i >= 0; --i) {
        bits = bits << 8U | bytes[i];
    }
    return image.format() == QImage::Format_RGB32 ? bits & colourBits : bits;
}

testing::AssertionResult isSamePixels(const QImage& actual, const QImage& expected)
{
    for (int y = 0; y < expected.height(); ++y) {
        for (int x = 0; x < expected.width(); ++x) {
            if (pixelBits(actual, x, y) != pixelBits(expected, x, y)) {
                return testing::AssertionFailure()
                       << "differs first in row " << y << ", column " << x << ": " << std::hex
                       << pixelBits(actual, x, y) << ", expected " << pixelBits(expected, x, y);
            }
        }
    }
    return testing::AssertionSuccess();
}

} // namespace

QImage ReferencePage::decoded(const std::string& fileName, const char* format, int index,
                              const QSize& size)
{
    QFile file(QString::fromStdString(fileName));
    QImageReader reader(&file, format);
    reader.setAutoDetectImageFormat(false);
    reader.setAutoTransform(true);
    reader.jumpToImage(index);
    reader.setScaledSize(size);
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    // Pages look as with Qt 5, whose reader tests/render/decode compares with this.
    QImage image;
    PictureDecoder::read(reader, image);
    return image;
#else
    return reader.read();
#endif
}

QImage ReferencePage::rotated(const QImage& image, int angle)
{
    return angle == 0 ? image : image.transformed(QTransform().rotate(angle));
}

QImage ReferencePage::scaled(const QImage& image, const QSize& box, bool enlarge)
{
    if (box.width() < 1 || box.height() < 1) {
        return image;
    }
    const bool isTooLarge = image.width() > box.width() || image.height() > box.height();
    const bool canGrow = image.width() < box.width() && image.height() < box.height();
    if (!isTooLarge && !(enlarge && canGrow)) {
        return image;
    }
    // Tested by itself, against hashes of what Qt 5 gives.
    return SmoothScaling::scaled(image, box, Qt::KeepAspectRatio);
}

QImage ReferencePage::filled(const QImage& image, const QSize& size, const QRect& rect,
                             Qt::Alignment alignment)
{
    if (size.width() < 1 || size.height() < 1 || image.size() == size) {
        return image;
    }
    const double ratio = image.devicePixelRatio();
    const int width = qRound(image.width() / ratio);
    const int height = qRound(image.height() / ratio);
    const int left = rect.left() + offset(rect.width() - width, alignment & Qt::AlignHCenter,
                                          alignment & Qt::AlignRight);
    // Qt::AlignTop places at the bottom.
    const int top = rect.top() + offset(rect.height() - height, alignment & Qt::AlignVCenter,
                                        alignment & Qt::AlignTop);
    const QRect visible = QRect(left, top, width, height).intersected(rect);

    QImage page(size, QImage::Format_ARGB32_Premultiplied);
    page.setDevicePixelRatio(ratio);
    page.fill(Qt::white);
    QPainter painter(&page);
    painter.drawImage(visible.topLeft(), image,
                      QRect(visible.left() - left, visible.top() - top,
                            qRound(visible.width() * ratio), qRound(visible.height() * ratio)));
    painter.end();
    return page;
}

QImage ReferencePage::monochromized(const QImage& image)
{
    if (image.format() != QImage::Format_Mono) {
        return image.convertToFormat(QImage::Format_Mono, Qt::MonoOnly);
    }
    if (image.color(1) != opaqueWhite) {
        return image;
    }
    QImage result = image.copy();
    result.setColorTable({opaqueWhite, image.color(0)});
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            result.setPixel(x, y, image.pixelIndex(x, y) == 0 ? 1 : 0);
        }
    }
    return result;
}

QImage ReferencePage::composed(const QImage& image, int angle, bool fitToPaper,
                               const FaxSizeDetails& details)
{
    const QImage fitted = scaled(rotated(image, angle), details.contentRect.size(), fitToPaper);
    return monochromized(filled(fitted, details.pageSize, details.contentRect));
}

QImage ReferencePage::bilevelPage(const QImage& picture, const QSize& pageSize,
                                  const QPoint& position)
{
    QImage page(pageSize, QImage::Format_Mono);
    page.setColorTable({opaqueWhite, opaqueBlack});
    page.fill(0);
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            page.setPixel(position.x() + x, position.y() + y,
                          picture.pixel(x, y) == opaqueWhite ? 0 : 1);
        }
    }
    return page;
}

testing::AssertionResult ReferencePage::isIdenticalImage(const QImage& actual,
                                                         const QImage& expected)
{
    if (actual.size() != expected.size()) {
        return testing::AssertionFailure()
               << "is " << actual.width() << " x " << actual.height() << ", expected "
               << expected.width() << " x " << expected.height();
    }
    if (actual.format() != expected.format()) {
        return testing::AssertionFailure()
               << "has the format " << actual.format() << ", expected " << expected.format();
    }
    if (actual.colorTable() != expected.colorTable()) {
        return testing::AssertionFailure()
               << "has the colours " << testing::PrintToString(actual.colorTable().toList())
               << ", expected " << testing::PrintToString(expected.colorTable().toList());
    }
    if (actual.devicePixelRatio() != expected.devicePixelRatio()) {
        return testing::AssertionFailure() << "has the pixel ratio " << actual.devicePixelRatio()
                                           << ", expected " << expected.devicePixelRatio();
    }
    return isSamePixels(actual, expected);
}
