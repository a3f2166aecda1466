#include "render/decode/PngScaling.h"

#include "support/SampleImages.h"

#include <gtest/gtest.h>

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

} // namespace
