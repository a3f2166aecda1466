#include "render/decode/PngScaling.h"

#include "support/PngFile.h"
#include "support/PrintQt.h"
#include "support/SampleImages.h"

#include <QBuffer>
#include <QFile>
#include <QImageReader>

#include <gtest/gtest.h>

#include <cstddef>
#include <ostream>
#include <string>

#include <unistd.h>

namespace {

TEST(PngScaling, AveragesByTheAreaThatAPixelCovers)
{
    QImage image(3, 1, QImage::Format_RGB32);
    image.setPixel(0, 0, qRgb(30, 0, 255));
    image.setPixel(1, 0, qRgb(60, 0, 255));
    image.setPixel(2, 0, qRgb(200, 9, 255));
    const QImage averaged = PngScaling::averaged(image, {2, 1});
    EXPECT_EQ(averaged.pixel(0, 0), qRgb(40, 0, 255));
    EXPECT_EQ(averaged.pixel(1, 0), qRgb(153, 6, 255));
}

// Rounded down after the rows: 15 / 2 = 7 and 6 / 2 = 3, then 10 / 2 = 5.
TEST(PngScaling, RoundsDownAfterEachDirection)
{
    QImage image(2, 2, QImage::Format_RGB32);
    image.setPixel(0, 0, qRgb(7, 0, 0));
    image.setPixel(0, 1, qRgb(8, 0, 0));
    image.setPixel(1, 0, qRgb(3, 0, 0));
    image.setPixel(1, 1, qRgb(4, 0, 0));
    EXPECT_EQ(qRed(PngScaling::averaged(image, {1, 1}).pixel(0, 0)), 5);
}

TEST(PngScaling, AveragesTheAlphaValueByItself)
{
    QImage image(2, 1, QImage::Format_ARGB32);
    image.setPixel(0, 0, qRgba(200, 100, 0, 0));
    image.setPixel(1, 0, qRgba(100, 0, 0, 255));
    const QImage averaged = PngScaling::averaged(image, {1, 1});
    EXPECT_EQ(averaged.format(), QImage::Format_ARGB32);
    EXPECT_EQ(averaged.pixel(0, 0), qRgba(150, 50, 0, 127));
}

TEST(PngScaling, LeavesAPictureOfThisSizeAsItIs)
{
    const QImage image = SampleImages::quarters({21, 17});
    EXPECT_EQ(PngScaling::averaged(image, image.size()), image);
}

template <QImage::Format format>
QByteArray pngFile()
{
    return SampleImages::pngFile(SampleImages::transparent({32, 16}).convertToFormat(format));
}

// As the header says; the rows are not, but nobody looks at them.
QByteArray interlacedFile()
{
    constexpr int headerBytes = 13;
    QByteArray file = pngFile<QImage::Format_RGB32>();
    const auto start = static_cast<int>(qstrlen(PngFile::signature));
    QByteArray header = file.mid(start + 8, headerBytes);
    header[headerBytes - 1] = 1;
    return file.replace(start, headerBytes + 12, PngFile::chunk("IHDR", header));
}

QByteArray jpegFile()
{
    return SampleImages::jpegFile(SampleImages::quarters({32, 16}));
}

struct FileRow
{
    const char* name;
    QByteArray (*file)();
    QSize size;
    bool isAveraged;
};

const FileRow fileRows[] = {
    {"Opaque", pngFile<QImage::Format_RGB32>, {16, 8}, true},
    {"Transparent", pngFile<QImage::Format_ARGB32>, {16, 8}, true},
    {"Lower", pngFile<QImage::Format_RGB32>, {32, 15}, true},
    {"Narrower", pngFile<QImage::Format_RGB32>, {31, 16}, true},
    {"Grey", pngFile<QImage::Format_Grayscale8>, {16, 8}, false},
    {"Bilevel", pngFile<QImage::Format_Mono>, {16, 8}, false},
    {"Deep", pngFile<QImage::Format_RGBX64>, {16, 8}, false},
    {"NotScaled", pngFile<QImage::Format_RGB32>, {}, false},
    {"WithoutColumns", pngFile<QImage::Format_RGB32>, {0, 8}, false},
    {"OfThisSize", pngFile<QImage::Format_RGB32>, {32, 16}, false},
    {"Wider", pngFile<QImage::Format_RGB32>, {33, 8}, false},
    {"Higher", pngFile<QImage::Format_RGB32>, {16, 17}, false},
    {"Interlaced", interlacedFile, {16, 8}, false},
    {"Jpeg", jpegFile, {16, 8}, false},
};

void PrintTo(const FileRow& row, std::ostream* stream)
{
    *stream << row.name;
}

class PngFileScaled : public testing::TestWithParam<FileRow>
{
};

TEST_P(PngFileScaled, IsAveragedIfItIsReducedAndNotInterlaced)
{
    QByteArray file = GetParam().file();
    QBuffer device(&file);
    ASSERT_TRUE(device.open(QIODevice::ReadOnly));
    QImageReader reader(&device);
    ASSERT_EQ(reader.size(), QSize(32, 16));
    reader.setScaledSize(GetParam().size);
    EXPECT_EQ(PngScaling::isAveraged(reader), GetParam().isAveraged);
}

INSTANTIATE_TEST_SUITE_P(PngScaling, PngFileScaled, testing::ValuesIn(fileRows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(PngScaling, LooksForNoHeaderInWhatCanBeReadOnlyOnce)
{
    const QByteArray content = pngFile<QImage::Format_RGB32>();
    int ends[2] = {-1, -1};
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_EQ(write(ends[1], content.constData(), static_cast<std::size_t>(content.size())),
              content.size());
    close(ends[1]);
    QFile device;
    ASSERT_TRUE(device.open(ends[0], QIODevice::ReadOnly, QFileDevice::AutoCloseHandle));
    ASSERT_TRUE(device.isSequential());
    QImageReader reader(&device, "png");
    reader.setScaledSize({16, 8});
    EXPECT_TRUE(PngScaling::isAveraged(reader));
}

TEST(PngScaling, LeavesTheDeviceWhereItIs)
{
    QByteArray file = pngFile<QImage::Format_RGB32>();
    QBuffer device(&file);
    ASSERT_TRUE(device.open(QIODevice::ReadOnly));
    QImageReader reader(&device);
    reader.setScaledSize({16, 8});
    ASSERT_EQ(reader.imageFormat(), QImage::Format_RGB32);
    const qint64 position = device.pos();
    EXPECT_TRUE(PngScaling::isAveraged(reader));
    EXPECT_EQ(device.pos(), position);
    EXPECT_GT(position, 0);
}

} // namespace
