#include "qt/SmoothScaling.h"

#include "support/SampleImages.h"

#include <QCryptographicHash>

#include <gtest/gtest.h>

#include <string>

namespace {

// A hash of all pixels, so that a literal can stand for them.
std::string pixelHash(const QImage& image)
{
    QCryptographicHash hash(QCryptographicHash::Md5);
    for (int y = 0; y < image.height(); ++y) {
        hash.addData(QByteArray::fromRawData(reinterpret_cast<const char*>(image.constScanLine(y)),
                                             image.width() * image.depth() / 8));
    }
    return hash.result().toHex().left(8).toStdString();
}

struct Row
{
    const char* name;
    QImage::Format format;
    QImage::Format scaledFormat;
    const char* smaller; // the hash at 90 x 70
    const char* larger;  // the hash at 150 x 300
};

// The hashes are those of QImage::scaled() with Qt 5.15.
const Row rows[] = {
    {"Mono", QImage::Format_Mono, QImage::Format_RGB32, "2d88e9aa", "5f5c6c91"},
    {"Indexed8", QImage::Format_Indexed8, QImage::Format_ARGB32_Premultiplied, "bcb4bd75",
     "de42a2b4"},
    {"RGB32", QImage::Format_RGB32, QImage::Format_RGB32, "9c63bf13", "fbd870a1"},
    {"ARGB32", QImage::Format_ARGB32, QImage::Format_ARGB32_Premultiplied, "9806b1a5", "15084b27"},
    {"ARGB32_Premultiplied", QImage::Format_ARGB32_Premultiplied,
     QImage::Format_ARGB32_Premultiplied, "9806b1a5", "15084b27"},
    {"RGBX64", QImage::Format_RGBX64, QImage::Format_RGBX64, "512c1e01", "0ebcd95a"},
    {"RGBA64", QImage::Format_RGBA64, QImage::Format_RGBA64_Premultiplied, "e0b6ed48", "85d5155d"},
    {"RGBA64_Premultiplied", QImage::Format_RGBA64_Premultiplied,
     QImage::Format_RGBA64_Premultiplied, "db6e117f", "f90066c7"},
};

class SmoothScalingOf : public testing::TestWithParam<Row>
{
protected:
    const QImage image = SampleImages::transparent({131, 97}).convertToFormat(GetParam().format,
                                                                              Qt::ThresholdDither);
};

TEST_P(SmoothScalingOf, GivesThePixelsOfQt5)
{
    EXPECT_EQ(pixelHash(SmoothScaling::scaled(image, {90, 70})), GetParam().smaller);
    EXPECT_EQ(pixelHash(SmoothScaling::scaled(image, {150, 300})), GetParam().larger);
}

TEST_P(SmoothScalingOf, GivesTheFormatOfQt5)
{
    EXPECT_EQ(SmoothScaling::scaled(image, {90, 70}).format(), GetParam().scaledFormat);
}

TEST_P(SmoothScalingOf, LeavesAPictureOfThisSizeAsItIs)
{
    const QImage scaled = SmoothScaling::scaled(image, image.size());
    EXPECT_EQ(scaled.format(), GetParam().format);
    EXPECT_EQ(scaled, image);
}

TEST_P(SmoothScalingOf, KeepsThePixelRatio)
{
    QImage halves = image;
    halves.setDevicePixelRatio(2);
    EXPECT_EQ(SmoothScaling::scaled(halves, {90, 70}).devicePixelRatio(), 2);
}

INSTANTIATE_TEST_SUITE_P(SmoothScaling, SmoothScalingOf, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(SmoothScaling, GivesNothingForAnEmptySize)
{
    EXPECT_TRUE(SmoothScaling::scaled(SampleImages::quarters({10, 10}), {0, 5}).isNull());
}

TEST(SmoothScaling, KeepsTheProportionsIfAsked)
{
    const QImage image = SampleImages::quarters({150, 40});
    EXPECT_EQ(SmoothScaling::scaled(image, {200, 100}, Qt::KeepAspectRatio).size(), QSize(200, 53));
}

} // namespace
