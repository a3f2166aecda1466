#include "bilevel/BilevelImage.h"

#include "bilevel/RandomImages.h"
#include "support/PrintQt.h"

#include <QPainter>
#include <QTransform>

#include <gtest/gtest.h>

namespace {

constexpr QRgb white = 0xFFFFFFFF;
constexpr QRgb black = 0xFF000000;

const QVector<QVector<QRgb>> colorTables = {
    {white, black}, {black, white}, {0xFF204060, 0x80FFFFFF}};

void expectSame(const QImage& actual, const QImage& expected)
{
    EXPECT_EQ(actual.size(), expected.size());
    EXPECT_EQ(actual.format(), expected.format());
    EXPECT_EQ(actual.colorTable(), expected.colorTable());
    EXPECT_EQ(actual.devicePixelRatio(), expected.devicePixelRatio());
    EXPECT_EQ(actual.dotsPerMeterX(), expected.dotsPerMeterX());
    EXPECT_EQ(actual.dotsPerMeterY(), expected.dotsPerMeterY());
    // Compares the bits within the width.
    EXPECT_TRUE(actual == expected);
}

bool isPaddingClear(const QImage& image)
{
    for (int y = 0; y < image.height(); ++y) {
        const uchar* row = image.constScanLine(y);
        for (int x = image.width(); x < 8 * image.bytesPerLine(); ++x) {
            if ((row[x / 8] & (0x80 >> x % 8)) != 0) {
                return false;
            }
        }
    }
    return true;
}

QImage squeezedByQt(const QImage& image, const QSize& size)
{
    return image.scaled(size, Qt::IgnoreAspectRatio, Qt::FastTransformation);
}

// The two resolutions of every page, as it lies and turned by a quarter.
struct Resolution
{
    const char* name;
    int stretched; // dots per inch of the axis that keeps its size
    int squeezed;  // dots per inch of the axis that is squeezed
    int mostLines; // the largest side of that axis after the squeeze
};

const Resolution resolutions[] = {
    {"Standard", 204, 98, 1372},
    {"Fine", 204, 196, 2744},
    {"Superfine", 391, 204, 1728},
    {"Ultrafine", 408, 391, 5474},
};

class PageSqueeze : public testing::TestWithParam<Resolution>
{
};

// Every number of lines that a page or its printable area can have.
TEST_P(PageSqueeze, DropsTheRowsThatQtDrops)
{
    const Resolution& resolution = GetParam();
    RandomImages random;
    const double ratio = static_cast<double>(resolution.stretched) / resolution.squeezed;
    const QImage noise = random.bilevel({8, 5800}, colorTables[0]);
    for (int lines = 1; lines <= resolution.mostLines; ++lines) {
        const QImage page = noise.copy(0, 0, 8, qRound(lines * ratio));
        const QSize size(8, lines);
        ASSERT_TRUE(BilevelImage::squeezed(page, size) == squeezedByQt(page, size)) << lines;
    }
}

TEST_P(PageSqueeze, DropsTheColumnsThatQtDrops)
{
    const Resolution& resolution = GetParam();
    RandomImages random;
    const double ratio = static_cast<double>(resolution.squeezed) / resolution.stretched;
    const QImage noise = random.bilevel({5800, 3}, colorTables[0]);
    for (int lines = 1; lines <= resolution.mostLines; ++lines) {
        const QImage page = noise.copy(0, 0, qRound(lines / ratio), 3);
        const QSize size(lines, 3);
        ASSERT_TRUE(BilevelImage::squeezed(page, size) == squeezedByQt(page, size)) << lines;
    }
}

INSTANTIATE_TEST_SUITE_P(BilevelImage, PageSqueeze, testing::ValuesIn(resolutions),
                         [](const auto& test) { return std::string{test.param.name}; });

// Sides around those where numbers of 32 bits overflow, with and without sign.
class LongSide : public testing::TestWithParam<int>
{
};

TEST_P(LongSide, IsSqueezedAcrossAsQtDoes)
{
    RandomImages random;
    const QImage image = random.bilevel({GetParam(), 3}, colorTables[0]);
    for (const QSize& size : {QSize(GetParam() - 1, 2), QSize(1728, 3), QSize(1, 1)}) {
        const QImage squeezed = BilevelImage::squeezed(image, size);
        expectSame(squeezed, squeezedByQt(image, size));
        EXPECT_TRUE(isPaddingClear(squeezed)) << size.width();
    }
}

TEST_P(LongSide, IsSqueezedDownAsQtDoes)
{
    RandomImages random;
    const QImage image = random.bilevel({11, GetParam()}, colorTables[0]);
    for (const QSize& size : {QSize(11, GetParam() - 1), QSize(5, 2292), QSize(1, 1)}) {
        const QImage squeezed = BilevelImage::squeezed(image, size);
        expectSame(squeezed, squeezedByQt(image, size));
        EXPECT_TRUE(isPaddingClear(squeezed)) << size.height();
    }
}

INSTANTIATE_TEST_SUITE_P(BilevelImage, LongSide,
                         testing::Values(524286, 524287, 524288, 524289, 700001, 1048575, 1048576,
                                         1048577, 1500000));

TEST(BilevelImage, SqueezesBothDirectionsAsQtDoes)
{
    RandomImages random;
    for (int i = 0; i < 10000; ++i) {
        QImage image = random.bilevel(random.size({100, 40}), colorTables[i % 3]);
        image.setDevicePixelRatio(1 + i % 2);
        image.setDotsPerMeterX(4000 + i % 7);
        const QSize size = random.size(image.size());
        const QImage squeezed = BilevelImage::squeezed(image, size);
        expectSame(squeezed, squeezedByQt(image, size));
        ASSERT_TRUE(isPaddingClear(squeezed)) << i;
        ASSERT_FALSE(testing::Test::HasFailure()) << i;
    }
}

TEST(BilevelImage, TurnsAsQtDoes)
{
    RandomImages random;
    for (int i = 0; i < 10000; ++i) {
        QImage image = random.bilevel(random.size({70, 70}), colorTables[i % 3]);
        image.setDevicePixelRatio(1 + i % 2);
        image.setDotsPerMeterY(4000 + i % 7);
        const QImage clockwise = BilevelImage::turnedClockwise(image);
        const QImage counterclockwise = BilevelImage::turnedCounterclockwise(image);
        expectSame(clockwise, image.transformed(QTransform().rotate(90)));
        expectSame(counterclockwise, image.transformed(QTransform().rotate(270)));
        ASSERT_TRUE(isPaddingClear(clockwise) && isPaddingClear(counterclockwise)) << i;
        ASSERT_FALSE(testing::Test::HasFailure()) << i;
    }
}

TEST(BilevelImage, PlacesAsPaintingAndDitheringDo)
{
    RandomImages random;
    for (int i = 0; i < 10000; ++i) {
        const QImage image = random.bilevel(random.size({80, 20}), colorTables[i % 2]);
        const QRect source = random.part(image.size());
        const QSize size = source.size() + QSize(random.number(0, 40), random.number(0, 10));
        const QPoint position(random.number(0, size.width() - source.width()),
                              random.number(0, size.height() - source.height()));

        QImage page(size, QImage::Format_ARGB32_Premultiplied);
        page.fill(Qt::white);
        QPainter painter(&page);
        painter.drawImage(position, image, source);
        painter.end();

        const QImage placed = BilevelImage::placed(image, source, size, position);
        expectSame(placed, page.convertToFormat(QImage::Format_Mono, Qt::MonoOnly));
        ASSERT_TRUE(isPaddingClear(placed)) << i;
        ASSERT_FALSE(testing::Test::HasFailure()) << i;
    }
}

TEST(BilevelImage, AWhitePageIsWhiteAtIndexZero)
{
    const QImage page = BilevelImage::whitePage({1728, 3});
    EXPECT_EQ(page.colorTable(), QVector<QRgb>({white, black}));
    EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(page.constBits()), 3 * 216),
              QByteArray(3 * 216, '\0'));
}

struct Kind
{
    const char* name;
    QImage image;
    bool isBlackAndWhite;
};

QImage mono(const QVector<QRgb>& colorTable, double pixelRatio = 1.0)
{
    QImage image(3, 3, QImage::Format_Mono);
    image.setColorTable(colorTable);
    image.setDevicePixelRatio(pixelRatio);
    return image;
}

class BlackAndWhite : public testing::TestWithParam<Kind>
{
};

TEST_P(BlackAndWhite, IsRecognised)
{
    EXPECT_EQ(BilevelImage::isBlackAndWhite(GetParam().image), GetParam().isBlackAndWhite);
}

const Kind kinds[] = {
    {"WhiteThenBlack", mono({white, black}), true},
    {"BlackThenWhite", mono({black, white}), true},
    {"NotWhenBothAreWhite", mono({white, white}), false},
    {"NotWithGrey", mono({white, 0xFF010101}), false},
    {"NotWithTransparentBlack", mono({white, 0x00000000}), false},
    {"NotWithAlmostOpaqueWhite", mono({0xFEFFFFFF, black}), false},
    {"NotWithoutAColourTable", mono({}), false},
    {"NotWithThreeColours", mono({white, black, white}), false},
    {"NotWithAPixelRatio", mono({white, black}, 2.0), false},
    {"NotWithTheLeastSignificantBitFirst", QImage(3, 3, QImage::Format_MonoLSB), false},
    {"NotInColour", QImage(3, 3, QImage::Format_RGB32), false},
    {"NotANullImage", QImage(), false},
};

INSTANTIATE_TEST_SUITE_P(BilevelImage, BlackAndWhite, testing::ValuesIn(kinds),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(BilevelImage, CanBePaintedUpTo32767DotsASide)
{
    EXPECT_FALSE(BilevelImage::isTooLargeToPaint({32767, 32767}));
    EXPECT_TRUE(BilevelImage::isTooLargeToPaint({32768, 1}));
    EXPECT_TRUE(BilevelImage::isTooLargeToPaint({1, 32768}));
}

} // namespace
