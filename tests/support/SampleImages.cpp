#include "support/SampleImages.h"

#include "support/TemporaryFolder.h"

#include <QBuffer>
#include <QFile>
#include <QPainter>

#include <tiffio.h>

#include <cstring>
#include <memory>
#include <string>

namespace {

QByteArray encoded(const QImage& image, const char* format)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(image.save(&buffer, format, 100));
    return buffer.data();
}

// An EXIF segment: its marker and length, the name, and a big-endian TIFF
// header with one directory that holds one SHORT, tag 0x0112.
QByteArray orientationSegment(int orientation)
{
    QByteArray segment = QByteArray::fromHex("ffe1"
                                             "0022"
                                             "457869660000"
                                             "4d4d002a00000008"
                                             "0001"
                                             "011200030000000100000000"
                                             "00000000");
    constexpr int valueAt = 29;
    segment[valueAt] = static_cast<char>(orientation);
    return segment;
}

struct MemoryTiffCloser
{
    void operator()(TIFF* handle) const { TIFFClose(handle); }
};

void setLayout(TIFF* tiff, const QImage& rows, const SampleImages::TiffSamplePage& page)
{
    const bool isBilevel = rows.format() == QImage::Format_Mono;
    const int photometric = !isBilevel                             ? PHOTOMETRIC_RGB
                            : rows.color(0) == qRgb(255, 255, 255) ? PHOTOMETRIC_MINISWHITE
                                                                   : PHOTOMETRIC_MINISBLACK;
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, rows.width());
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, rows.height());
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, static_cast<int>(page.orientation));
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, isBilevel ? 1 : 8);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, isBilevel ? 1 : 3);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, photometric);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, rows.height());
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, isBilevel ? COMPRESSION_CCITTFAX4 : COMPRESSION_NONE);
}

void writePage(TIFF* tiff, const SampleImages::TiffSamplePage& page)
{
    const QImage rows = page.image.format() == QImage::Format_Mono
                            ? page.image
                            : page.image.convertToFormat(QImage::Format_RGB888);
    setLayout(tiff, rows, page);
    for (int y = 0; y < rows.height(); ++y) {
        // libtiff takes the row as not const, and may change it.
        std::vector<uchar> row(rows.constScanLine(y), rows.constScanLine(y) + rows.bytesPerLine());
        EXPECT_EQ(TIFFWriteScanline(tiff, row.data(), static_cast<std::uint32_t>(y), 0), 1);
    }
    EXPECT_EQ(TIFFWriteDirectory(tiff), 1);
}

} // namespace

QImage SampleImages::quarters(const QSize& size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::white);
    const int halfWidth = size.width() / 2;
    const int halfHeight = size.height() / 2;
    QPainter painter(&image);
    painter.fillRect(0, 0, halfWidth, halfHeight, Qt::red);
    painter.fillRect(halfWidth, 0, size.width() - halfWidth, halfHeight, Qt::green);
    painter.fillRect(0, halfHeight, halfWidth, size.height() - halfHeight, Qt::blue);
    painter.end();
    return image;
}

QImage SampleImages::bilevel(const QSize& size)
{
    QImage image(size, QImage::Format_Mono);
    image.setColorTable({qRgb(255, 255, 255), qRgb(0, 0, 0)});
    image.fill(0);
    for (int y = 0; y < size.height() / 2; ++y) {
        for (int x = 0; x < size.width() / 2; ++x) {
            image.setPixel(x, y, 1);
        }
    }
    for (int x = 0; x < size.width(); x += 3) {
        image.setPixel(x, size.height() - 1, 1);
    }
    return image;
}

QImage SampleImages::transparent(const QSize& size)
{
    QImage image(size, QImage::Format_ARGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const int across = 255 * x / size.width();
            const int down = 255 * y / size.height();
            image.setPixel(x, y, qRgba(across, down, 128, (across + down) / 2));
        }
    }
    return image;
}

QByteArray SampleImages::pngFile(const QImage& image)
{
    return encoded(image, "png");
}

QByteArray SampleImages::jpegFile(const QImage& image)
{
    return encoded(image, "jpeg");
}

QByteArray SampleImages::jpegFile(const QImage& image, int orientation)
{
    constexpr int startMarkerLength = 2;
    return jpegFile(image).insert(startMarkerLength, orientationSegment(orientation));
}

QByteArray SampleImages::tiffFile(const std::vector<TiffSamplePage>& pages)
{
    const TemporaryFolder folder;
    const std::string name = folder.path("sample.tif");
    {
        const std::unique_ptr<TIFF, MemoryTiffCloser> tiff(TIFFOpen(name.c_str(), "w"));
        EXPECT_NE(tiff, nullptr);
        for (const TiffSamplePage& page : pages) {
            writePage(tiff.get(), page);
        }
    }
    QFile file(QString::fromStdString(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

QImage SampleImages::withColoursExchanged(const QImage& bilevel)
{
    QImage image = bilevel;
    image.invertPixels();
    image.setColorTable({bilevel.color(1), bilevel.color(0)});
    return image;
}

testing::AssertionResult SampleImages::isSameImage(const QImage& actual, const QImage& expected)
{
    if (actual.size() != expected.size()) {
        return testing::AssertionFailure()
               << "is " << actual.width() << " x " << actual.height() << ", expected "
               << expected.width() << " x " << expected.height();
    }
    for (int y = 0; y < expected.height(); ++y) {
        for (int x = 0; x < expected.width(); ++x) {
            if (actual.pixel(x, y) != expected.pixel(x, y)) {
                return testing::AssertionFailure()
                       << "differs first in row " << y << ", column " << x << ": " << std::hex
                       << actual.pixel(x, y) << ", expected " << expected.pixel(x, y);
            }
        }
    }
    return testing::AssertionSuccess();
}
