#include "render/decode/CmykPicture.h"

#include "render/decode/PictureDecoder.h"
#include "support/OddPictures.h"
#include "support/SampleImages.h"

#include <QBuffer>
#include <QImage>
#include <QImageReader>

#include <gtest/gtest.h>

namespace {

TEST(CmykPicture, IsDecodedToRgb)
{
    QByteArray bytes = OddPictures::jpegFiles().back().content;
    QBuffer device(&bytes);
    ASSERT_TRUE(device.open(QIODevice::ReadOnly));
    QImageReader reader(&device);
    QImage image;
    ASSERT_TRUE(PictureDecoder::read(reader, image));
    EXPECT_EQ(image.format(), QImage::Format_RGB32);
}

TEST(CmykPicture, OfAnotherKindStaysAsItIs)
{
    const QImage image = SampleImages::transparent({20, 10});
    QImage converted = image;
    CmykPicture::convertToRgb(converted);
    EXPECT_EQ(converted.format(), image.format());
    EXPECT_EQ(converted, image);
}

#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
TEST(CmykPicture, LosesLightToItsInks)
{
    QImage image(2, 1, QImage::Format_CMYK8888);
    const uchar inks[] = {0, 51, 255, 0, 100, 20, 7, 128};
    std::copy(std::begin(inks), std::end(inks), image.scanLine(0));
    CmykPicture::convertToRgb(image);
    EXPECT_EQ(image.pixel(0, 0), qRgb(255, 204, 0));
    EXPECT_EQ(image.pixel(1, 0), qRgb(77, 117, 123));
}
#endif

} // namespace
