// The way of an arbitrary decoded picture to a fax page in a file, against the
// same steps done by Qt alone.

#include "Require.h"

#include "app/settings/LogicalDpi.h"
#include "fax/output/FaxTiffWriter.h"
#include "fax/page/FaxImageBuilder.h"

#include <QImage>
#include <QPainter>
#include <QTransform>

#include <fuzzer/FuzzedDataProvider.h>

#include <tiffio.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <sys/mman.h>

namespace {

constexpr int maximumSide = 150;
constexpr QRgb opaqueWhite = 0xFFFFFFFF;

// All but those that no decoder gives. Among these are the formats of 30 bits,
// of which Qt makes partly transparent pictures when it scales them.
constexpr QImage::Format decodedFormats[] = {
    QImage::Format_Mono,       QImage::Format_MonoLSB,
    QImage::Format_Indexed8,   QImage::Format_RGB32,
    QImage::Format_ARGB32,     QImage::Format_ARGB32_Premultiplied,
    QImage::Format_RGB16,      QImage::Format_RGB888,
    QImage::Format_RGBX8888,   QImage::Format_RGBA8888,
    QImage::Format_Grayscale8, QImage::Format_Grayscale16,
    QImage::Format_RGBX64,     QImage::Format_RGBA64,
    QImage::Format_Alpha8,     QImage::Format_RGBA64_Premultiplied,
};

struct Settings
{
    unsigned short rotation;
    QSize contentSize;
    bool enlarges;
    QSize pageSize;
    QRect contentRect;
    FaxCompression compression;
};

Settings consumeSettings(FuzzedDataProvider& input)
{
    Settings settings = {};
    settings.rotation = input.PickValueInArray<unsigned short>({0, 90, 180, 270});
    settings.pageSize = {input.ConsumeIntegralInRange(1, maximumSide),
                         input.ConsumeIntegralInRange(1, maximumSide)};
    settings.contentRect = QRect(input.ConsumeIntegralInRange(-maximumSide, maximumSide),
                                 input.ConsumeIntegralInRange(-maximumSide, maximumSide),
                                 input.ConsumeIntegralInRange(1, maximumSide),
                                 input.ConsumeIntegralInRange(1, maximumSide));
    settings.contentSize = settings.contentRect.size();
    settings.enlarges = input.ConsumeBool();
    settings.compression = input.ConsumeBool() ? FaxCompression::G4 : FaxCompression::G3;
    return settings;
}

void fillWith(QImage& picture, FuzzedDataProvider& input)
{
    picture.fill(0);
    for (int row = 0; row < picture.height(); ++row) {
        const std::vector<std::uint8_t> bytes =
            input.ConsumeBytes<std::uint8_t>(static_cast<std::size_t>(picture.bytesPerLine()));
        std::copy(bytes.begin(), bytes.end(), picture.scanLine(row));
    }
}

QRgb consumeColour(FuzzedDataProvider& input)
{
    return input.ConsumeBool() ? input.PickValueInArray<QRgb>({0xFFFFFFFF, 0xFF000000})
                               : input.ConsumeIntegral<QRgb>();
}

// A picture as a decoder may leave it: its colour table is complete, and bits
// without a meaning are as Qt wants them.
QImage consumePicture(FuzzedDataProvider& input)
{
    const auto format = input.PickValueInArray(decodedFormats);
    const QSize size(input.ConsumeIntegralInRange(1, maximumSide),
                     input.ConsumeIntegralInRange(1, maximumSide));
    if (format > QImage::Format_Indexed8) {
        QImage picture(size, QImage::Format_RGBA64);
        fillWith(picture, input);
        if (format == QImage::Format_RGB32 && input.ConsumeBool()) {
            // The TIFF plug-in leaves the alpha of grey pictures in the unused byte.
            picture = picture.convertToFormat(QImage::Format_ARGB32_Premultiplied);
            picture.reinterpretAsFormat(format);
            return picture;
        }
        return picture.convertToFormat(format);
    }
    QImage picture(size, format);
    const int colourCount = 1 << picture.depth();
    for (int index = 0; index < colourCount; ++index) {
        picture.setColor(index, consumeColour(input));
    }
    fillWith(picture, input);
    return picture;
}

// The steps one after another, each a call of Qt.
QImage composeWithQt(QImage image, const Settings& settings)
{
    if (settings.rotation != 0) {
        image = image.transformed(QTransform().rotate(settings.rotation), Qt::FastTransformation);
    }
    const QSize& content = settings.contentSize;
    const bool isFitting = image.width() <= content.width() && image.height() <= content.height();
    const bool isSmaller = image.width() < content.width() && image.height() < content.height();
    if (!isFitting || (settings.enlarges && isSmaller)) {
        image = image.scaled(content, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    }
    if (image.size() != settings.pageSize) {
        QImage page(settings.pageSize, QImage::Format_ARGB32_Premultiplied);
        page.fill(Qt::white);
        QPainter painter(&page);
        const QRect& rect = settings.contentRect;
        const QPoint position = rect.topLeft() + QPoint((rect.width() - image.width()) / 2,
                                                        (rect.height() - image.height()) / 2);
        const QRect visible = QRect(position, image.size()) & rect;
        painter.drawImage(visible.topLeft(), image, visible.translated(-position));
        painter.end();
        image = page;
    }
    if (image.format() != QImage::Format_Mono) {
        image = image.convertToFormat(QImage::Format_Mono, Qt::MonoOnly);
    } else if (image.color(1) == opaqueWhite) {
        image.setColor(1, image.color(0));
        image.setColor(0, opaqueWhite);
        image.invertPixels(QImage::InvertRgb);
    }
    return image;
}

bool areEqual(const QImage& one, const QImage& other)
{
    bool result = one.size() == other.size() && one.colorTable() == other.colorTable();
    for (int y = 0; result && y < one.height(); ++y) {
        for (int x = 0; result && x < one.width(); ++x) {
            result = one.pixelIndex(x, y) == other.pixelIndex(x, y);
        }
    }
    return result;
}

void requireSameInFile(const std::string& fileName, const QImage& page)
{
    TIFF* tiff = TIFFOpen(fileName.c_str(), "r");
    require(tiff != nullptr, "the file can be opened");
    std::vector<unsigned char> row(static_cast<std::size_t>(TIFFScanlineSize(tiff)));
    const int wholeBytes = page.width() / 8;
    for (int y = 0; y < page.height(); ++y) {
        require(TIFFReadScanline(tiff, row.data(), static_cast<std::uint32_t>(y), 0) == 1,
                "every row can be read");
        require(std::equal(row.begin(), row.begin() + wholeBytes, page.constScanLine(y)),
                "the file holds the page");
    }
    TIFFClose(tiff);
}

// libtiff cannot decode every row of group 3 that it encodes, so only group 4
// is read back.
void writeAndReadBack(const QImage& page, FaxCompression compression)
{
    static const int descriptor = memfd_create("page", 0);
    static const std::string fileName = "/proc/self/fd/" + std::to_string(descriptor);
    FaxTiffWriter writer(fileName);
    require(writer.isOpen() && writer.write(page, {204, 196}, compression), "a page is written");
    writer.close();
    require(writer.isComplete(), "the file is complete");
    if (compression == FaxCompression::G4) {
        requireSameInFile(fileName, page);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    const Settings settings = consumeSettings(input);
    const QImage picture = consumePicture(input);

    FaxImageBuilder builder(picture);
    builder.rotate(settings.rotation)
        .scale(settings.contentSize, settings.enlarges)
        .fill(settings.pageSize, settings.contentRect, Qt::AlignCenter)
        .monochromize();
    const QImage& page = builder.image();
    require(page.format() == QImage::Format_Mono, "a page is bilevel");
    require(page.size() == settings.pageSize, "a page has the size of the page");
    require(areEqual(page, composeWithQt(picture, settings)), "a page is what Qt makes of it");
    writeAndReadBack(page, settings.compression);
    return 0;
}
