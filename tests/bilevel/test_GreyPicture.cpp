#include "bilevel/GreyPicture.h"

#include <QImage>
#include <QRect>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace {

using Levels = std::vector<std::uint8_t>;

QImage row(const std::vector<QRgb>& pixels)
{
    QImage image(static_cast<int>(pixels.size()), 1, QImage::Format_RGB32);
    std::copy(pixels.begin(), pixels.end(), reinterpret_cast<QRgb*>(image.scanLine(0)));
    return image;
}

TEST(GreyPicture, IsReadInTwoFormats)
{
    for (int number = QImage::Format_Mono; number < QImage::NImageFormats; ++number) {
        const auto format = static_cast<QImage::Format>(number);
        const bool isExpected =
            format == QImage::Format_RGB32 || format == QImage::Format_Grayscale8;
        EXPECT_EQ(GreyPicture::isReadable(QImage(2, 2, format)), isExpected) << number;
    }
    EXPECT_FALSE(GreyPicture::isReadable(QImage()));
}

TEST(GreyPicture, WeighsColoursAsQtDoes)
{
    const std::vector<QRgb> pixels = {0xFF000000, 0xFFFFFFFF, 0xFFFF0000, 0xFF00FF00,
                                      0xFF0000FF, 0xFF010203, 0xFFFEFDFC};
    Levels levels(pixels.size());
    EXPECT_TRUE(GreyPicture::copyRow(row(pixels), {0, 0, 7, 1}, 0, levels.data()));
    EXPECT_EQ(levels, Levels({0, 255, 87, 127, 39, 1, 253}));
}

TEST(GreyPicture, ReadsOnlyThePartAskedFor)
{
    QImage image(5, 4, QImage::Format_Grayscale8);
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 5; ++x) {
            image.scanLine(y)[x] = static_cast<uchar>(10 * y + x);
        }
    }
    const QRect part(1, 2, 3, 2);
    Levels levels(4, 99);
    EXPECT_TRUE(GreyPicture::copyRow(image, part, 1, levels.data()));
    EXPECT_EQ(levels, Levels({31, 32, 33, 99}));
    EXPECT_TRUE(
        GreyPicture::copyRow(image.convertToFormat(QImage::Format_RGB32), part, 0, levels.data()));
    EXPECT_EQ(levels, Levels({21, 22, 23, 99}));
}

TEST(GreyPicture, TellsWhetherTheRowIsOpaque)
{
    const QImage image = row({0xFFFFFFFF, 0xFEFFFFFF, 0xFFFFFFFF, 0x00FFFFFF});
    Levels levels(4);
    EXPECT_TRUE(GreyPicture::copyRow(image, {0, 0, 1, 1}, 0, levels.data()));
    EXPECT_FALSE(GreyPicture::copyRow(image, {1, 0, 1, 1}, 0, levels.data()));
    EXPECT_TRUE(GreyPicture::copyRow(image, {2, 0, 1, 1}, 0, levels.data()));
    EXPECT_FALSE(GreyPicture::copyRow(image, {0, 0, 4, 1}, 0, levels.data()));
}

} // namespace
