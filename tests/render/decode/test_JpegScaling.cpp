#include "render/decode/JpegScaling.h"

#include "support/SampleImages.h"
#include "support/TemporaryFolder.h"

#include <QBuffer>
#include <QImage>
#include <QImageReader>
#include <QString>

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

struct Row
{
    const char* name;
    QSize wanted; // of a picture of 800 x 400
    int eighths;
};

const Row rows[] = {
    {"LargerIsDecodedWhole", {900, 450}, 8},
    {"EqualIsDecodedWhole", {800, 400}, 8},
    {"HardlySmallerIsDecodedWhole", {701, 350}, 8},
    {"SevenEighthsNeedSeven", {700, 350}, 7},
    {"HalfNeedsFour", {400, 200}, 4},
    {"MoreThanHalfNeedsFive", {401, 200}, 5},
    {"TheLargerSideDecides", {100, 300}, 6},
    {"ATenthNeedsOne", {80, 40}, 1},
    {"NothingIsDecodedWhole", {0, 40}, 8},
};

class JpegEighths : public testing::TestWithParam<Row>
{
};

TEST_P(JpegEighths, AreThoseOfThePlugin)
{
    EXPECT_EQ(JpegScaling::eighths({800, 400}, GetParam().wanted), GetParam().eighths);
}

INSTANTIATE_TEST_SUITE_P(JpegScaling, JpegEighths, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(JpegScaling, PadsBothSidesToWholeBlocks)
{
    const QByteArray file = SampleImages::jpegFile(SampleImages::quarters({41, 16}), 6);
    const QByteArray padded = JpegScaling::padded(file);
    EXPECT_EQ(QImage::fromData(padded, "jpeg").size(), QSize(48, 16));
    EXPECT_EQ(padded.size(), file.size());
}

TEST(JpegScaling, PadsNothingWithoutAHeader)
{
    EXPECT_TRUE(JpegScaling::padded(QByteArray()).isEmpty());
    EXPECT_TRUE(JpegScaling::padded(QByteArray::fromHex("ffd8ffe0ffff00")).isEmpty());
    EXPECT_TRUE(JpegScaling::padded(QByteArray(100, '\xff')).isEmpty());
}

TEST(JpegScaling, PadsNoSideBeyondTheLimitOfTheDecoder)
{
    // Start of image, then a frame header of 65497 x 8.
    EXPECT_TRUE(
        JpegScaling::padded(QByteArray::fromHex("ffd8ffc0000b080008ffd901011100")).isEmpty());
}

struct NameRow
{
    const char* name;
    const char* file;
    double pixelRatio;
};

const NameRow nameRows[] = {
    {"NoMark", "picture.jpg", 1},
    {"Two", "picture@2x.jpg", 2},
    {"Nine", "picture@9x.jpg", 9},
    {"NothingButTheMark", "@3x.jpg", 3},
    {"One", "picture@1x.jpg", 1},
    {"NoDigit", "picture@:x.jpg", 1},
    {"AnotherSign", "picture#2x.jpg", 1},
    {"AnotherLetter", "picture@2y.jpg", 1},
    {"TooShort", "2x.jpg", 1},
};

class JpegPixelRatio : public testing::TestWithParam<NameRow>
{
};

// Nothing is padded where the picture is decoded whole: Qt decides there.
TEST_P(JpegPixelRatio, OfAReducedPictureIsThatOfAWholeOne)
{
    const TemporaryFolder folder;
    const std::string name =
        folder.write(GetParam().file, SampleImages::jpegFile(SampleImages::quarters({80, 40})));
    for (const QSize& wanted : {QSize(40, 20), QSize(80, 40)}) {
        QImageReader reader(QString::fromStdString(name));
        QImage image;
        ASSERT_TRUE(JpegScaling::read(reader, wanted, image));
        EXPECT_EQ(image.size(), wanted);
        EXPECT_EQ(image.devicePixelRatio(), GetParam().pixelRatio) << wanted.width();
    }
}

INSTANTIATE_TEST_SUITE_P(JpegScaling, JpegPixelRatio, testing::ValuesIn(nameRows),
                         [](const auto& test) { return std::string{test.param.name}; });

// Noise, so that what an encoder puts behind the edges shows in the colours before
// them: these have half of the size, and of an even number of columns the last one
// takes a part of its colour from the pair behind it.
QByteArray noisyJpegFile(const QSize& size)
{
    QImage image(size, QImage::Format_RGB32);
    std::minstd_rand random;
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            image.setPixel(x, y, static_cast<QRgb>(random()) | 0xFF000000U);
        }
    }
    QByteArray file;
    QBuffer buffer(&file);
    EXPECT_TRUE(image.save(&buffer, "jpeg", 30));
    return file;
}

TEST(JpegScaling, LeavesAPictureThatIsDecodedWholeToQt)
{
    const QByteArray file = noisyJpegFile({42, 18});
    QByteArray copy = file;
    QBuffer buffer(&copy);
    QImageReader reader(&buffer, "jpeg");
    QImage image;
    ASSERT_TRUE(JpegScaling::read(reader, {42, 18}, image));
    EXPECT_EQ(image, QImage::fromData(file, "jpeg"));
    EXPECT_NE(image, QImage::fromData(JpegScaling::padded(file), "jpeg").copy(0, 0, 42, 18));
}

} // namespace
