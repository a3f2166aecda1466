#include "render/pdf/PageImage.h"

#include "support/PrintQt.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

struct Row
{
    const char* name;
    QSize size;
    int bytesPerLine;
    std::size_t bytes;
};

const Row rows[] = {
    {"AStandardFaxPage", {1728, 2386}, 216, 515376},
    {"ARotatedFaxPage", {2386, 1728}, 299, 516672},
    {"AnUltrafineFaxPage", {3456, 4771}, 432, 2061072},
    {"OneDot", {1, 1}, 1, 1},
    {"OneByteAndOneDot", {9, 3}, 2, 6},
    {"FourBytes", {32, 2}, 4, 8},
};

class NewPageImage : public testing::TestWithParam<Row>
{
};

TEST_P(NewPageImage, IsPackedToWholeBytes)
{
    const QImage image = PageImage::create(GetParam().size);
    EXPECT_EQ(image.size(), GetParam().size);
    EXPECT_EQ(image.format(), QImage::Format_Mono);
    EXPECT_EQ(image.colorTable(), (QVector<QRgb>{0xFFFFFFFF, 0xFF000000}));
    EXPECT_EQ(image.bytesPerLine(), GetParam().bytesPerLine);
    EXPECT_EQ(PageImage::bytes(GetParam().size), GetParam().bytes);
}

TEST_P(NewPageImage, IsWhiteWhateverTheMemoryHeldBefore)
{
    const std::size_t size = GetParam().bytes;
    for (int i = 0; i < 4; ++i) {
        const auto used = std::make_unique<unsigned char[]>(size);
        std::memset(used.get(), 0xFF, size);
    }
    const QImage image = PageImage::create(GetParam().size);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(image.constBits()), size),
              std::string(size, '\0'));
}

INSTANTIATE_TEST_SUITE_P(PageImage, NewPageImage, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

// 256 TiB, in rows of QImage and in packed ones.
TEST(PageImage, IsNullForWantOfMemory)
{
    EXPECT_TRUE(PageImage::create(QSize(2147483616, 1048576)).isNull());
    EXPECT_TRUE(PageImage::create(QSize(2147483640, 1048576)).isNull());
}

} // namespace
