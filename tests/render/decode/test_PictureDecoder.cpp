#include "render/decode/PictureDecoder.h"

#include "render/decode/CmykPicture.h"

#include "support/OddPictures.h"
#include "support/SampleImages.h"

#include <QBuffer>
#include <QColorSpace>
#include <QImageReader>

#include <gtest/gtest.h>

#include <cctype>

#include <malloc.h>

namespace {

std::vector<OddPictures::File> allFiles()
{
    std::vector<OddPictures::File> all = OddPictures::files();
    const std::vector<OddPictures::File> truncated = OddPictures::truncatedFiles();
    all.insert(all.end(), truncated.begin(), truncated.end());
    return all;
}

// The picture as it comes out where memory had been filled with bytes that
// depend on `fill`; null if it cannot be decoded. Of the memory that is smaller
// than about one kilobyte nothing can be said.
QImage decoded(const QByteArray& content, const QSize& scaledSize, int fill)
{
    QByteArray bytes = content;
    QBuffer device(&bytes);
    EXPECT_TRUE(device.open(QIODevice::ReadOnly));
    mallopt(M_PERTURB, fill);
    QImageReader reader(&device);
    reader.setScaledSize(scaledSize);
    QImage image;
    const bool isDecoded = PictureDecoder::read(reader, image);
    mallopt(M_PERTURB, 0);
    return isDecoded ? image : QImage();
}

class LeftoverMemory : public testing::TestWithParam<OddPictures::File>
{
};

TEST_P(LeftoverMemory, DoesNotShow)
{
    const QByteArray& content = GetParam().content;
    for (const QSize& size : {QSize(), QSize(50, 70), QSize(300, 200)}) {
        const QImage plain = decoded(content, size, 0);
        for (const int fill : {0x55, 0xAA, 0xFF}) {
            EXPECT_TRUE(SampleImages::isSameImage(decoded(content, size, fill), plain))
                << "at the width " << size.width();
        }
    }
}

// Reading into an image that is there already must make no other difference.
TEST_P(LeftoverMemory, IsAllThatDiffersFromThePictureOfQt)
{
    QByteArray bytes = GetParam().content;
    QBuffer device(&bytes);
    ASSERT_TRUE(device.open(QIODevice::ReadOnly));
    QImageReader reader(&device);
    QImage byQt = reader.read();
    CmykPicture::convertToRgb(byQt);
    const QImage image = decoded(bytes, QSize(), 0);
    EXPECT_EQ(image.size(), byQt.size());
    EXPECT_EQ(image.format(), byQt.format());
    EXPECT_EQ(image.colorTable(), byQt.colorTable());
    EXPECT_EQ(image.dotsPerMeterX(), byQt.dotsPerMeterX());
    EXPECT_EQ(image.colorSpace(), byQt.colorSpace());
}

INSTANTIATE_TEST_SUITE_P(PictureDecoder, LeftoverMemory, testing::ValuesIn(allFiles()),
                         [](const auto& test) {
                             std::string name = test.param.name;
                             for (char& letter : name) {
                                 letter = std::isalnum(static_cast<unsigned char>(letter)) != 0
                                              ? letter
                                              : '_';
                             }
                             return name;
                         });

// The plug-in has no format for it, and gives whatever stood in the memory.
TEST(PictureDecoder, FailsForAJpegWithADamagedHeader)
{
    QByteArray content = SampleImages::jpegFile(SampleImages::quarters({40, 30}));
    const auto header = content.indexOf(QByteArray::fromHex("ffc0"));
    ASSERT_GT(header, 0);
    constexpr int precisionOffset = 4;
    content[header + precisionOffset] = '\x63';
    for (const int fill : {0x00, 0x55, 0xAA, 0xFF}) {
        EXPECT_TRUE(decoded(content, QSize(), fill).isNull());
    }
}

TEST(PictureDecoder, LeavesTheReaderAsItWas)
{
    QByteArray bytes = SampleImages::pngFile(SampleImages::quarters({40, 20}));
    QBuffer device(&bytes);
    ASSERT_TRUE(device.open(QIODevice::ReadOnly));
    QImageReader reader(&device);
    reader.setScaledSize({20, 10});
    reader.setAutoTransform(true);
    QImage image;
    ASSERT_TRUE(PictureDecoder::read(reader, image));
    EXPECT_EQ(reader.scaledSize(), QSize(20, 10));
    EXPECT_TRUE(reader.autoTransform());
}

} // namespace
