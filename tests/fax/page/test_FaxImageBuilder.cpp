#include "fax/page/FaxImageBuilder.h"

#include "support/PrintQt.h"
#include "support/ReferencePage.h"
#include "support/TiffFile.h"

#include <QGuiApplication>

#include <string>
#include <tuple>

namespace {

using ReferencePage::isIdenticalImage;

constexpr QRgb white = 0xFFFFFFFF;
constexpr QRgb black = 0xFF000000;

// Every pixel has a colour of its own.
QImage numbered(const QSize& size)
{
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            image.setPixel(x, y, qRgb(x % 256, y % 256, x / 256 + 16 * (y / 256)));
        }
    }
    return image;
}

QImage blank(const QSize& size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::black);
    return image;
}

// The diagonal has index 1, the rest index 0.
QImage diagonal(QRgb colour0, QRgb colour1)
{
    QImage image(19, 11, QImage::Format_Mono);
    image.setColorTable({colour0, colour1});
    image.fill(0);
    for (int i = 0; i < image.height(); ++i) {
        image.setPixel(i, i, 1);
    }
    return image;
}

// A white page with the part `source` of the image at `position`, in pixels.
QImage pageWith(const QSize& size, const QImage& image, const QRect& source, const QPoint& position)
{
    QImage page(size, QImage::Format_ARGB32_Premultiplied);
    page.setDevicePixelRatio(image.devicePixelRatio());
    page.fill(Qt::white);
    for (int y = 0; y < source.height(); ++y) {
        for (int x = 0; x < source.width(); ++x) {
            page.setPixel(position.x() + x, position.y() + y,
                          image.pixel(source.x() + x, source.y() + y));
        }
    }
    return page;
}

// --- Rotating

TEST(FaxImageBuilderRotate, ByZeroDegreesLeavesTheImageUntouched)
{
    const QImage image = numbered({100, 50});
    EXPECT_EQ(FaxImageBuilder(image).rotate(0).image().cacheKey(), image.cacheKey());
}

TEST(FaxImageBuilderRotate, ByNinetyDegreesTurnsClockwise)
{
    const QImage image = numbered({100, 50});
    const QImage turned = FaxImageBuilder(image).rotate(90).image();
    ASSERT_EQ(turned.size(), QSize(50, 100));
    for (int y = 0; y < 50; ++y) {
        for (int x = 0; x < 100; ++x) {
            ASSERT_EQ(turned.pixel(49 - y, x), image.pixel(x, y)) << x << ", " << y;
        }
    }
}

TEST(FaxImageBuilderRotate, ByHalfATurnKeepsTheSize)
{
    const QImage image = numbered({100, 50});
    const QImage turned = FaxImageBuilder(image).rotate(180).image();
    ASSERT_EQ(turned.size(), QSize(100, 50));
    for (int y = 0; y < 50; ++y) {
        for (int x = 0; x < 100; ++x) {
            ASSERT_EQ(turned.pixel(99 - x, 49 - y), image.pixel(x, y)) << x << ", " << y;
        }
    }
}

TEST(FaxImageBuilderRotate, ByTwoHundredAndSeventyDegreesTurnsCounterclockwise)
{
    const QImage image = numbered({100, 50});
    const QImage turned = FaxImageBuilder(image).rotate(270).image();
    ASSERT_EQ(turned.size(), QSize(50, 100));
    for (int y = 0; y < 50; ++y) {
        for (int x = 0; x < 100; ++x) {
            ASSERT_EQ(turned.pixel(y, 99 - x), image.pixel(x, y)) << x << ", " << y;
        }
    }
}

TEST(FaxImageBuilderRotate, ByAFullTurnGivesTheSamePicture)
{
    const QImage image = numbered({100, 50});
    EXPECT_TRUE(isIdenticalImage(FaxImageBuilder(image).rotate(360).image(), image));
}

// Angles that the program does not offer, but the builder takes.
class FaxImageBuilderOddAngle : public testing::TestWithParam<std::tuple<int, QImage::Format>>
{
};

TEST_P(FaxImageBuilderOddAngle, GrowsTheCanvasAsQtDoes)
{
    const auto& [angle, format] = GetParam();
    const QImage image = numbered({70, 30}).convertToFormat(format);
    EXPECT_TRUE(
        isIdenticalImage(FaxImageBuilder(image).rotate(static_cast<unsigned short>(angle)).image(),
                         ReferencePage::rotated(image, angle)));
}

INSTANTIATE_TEST_SUITE_P(Angles, FaxImageBuilderOddAngle,
                         testing::Combine(testing::Values(1, 45, 89, 359, 450, 630, 65535),
                                          testing::Values(QImage::Format_Mono, QImage::Format_RGB32,
                                                          QImage::Format_ARGB32)));

// --- Scaling

struct ScaleRow
{
    const char* name;
    QSize image;
    QSize box;
    bool enlarge;
    QSize result;
};

const ScaleRow scaleRows[] = {
    {"AWiderImageIsReduced", {400, 100}, {200, 100}, false, {200, 50}},
    {"ATallerImageIsReduced", {100, 400}, {200, 100}, false, {25, 100}},
    {"AnImageThatIsTooLargeInOneDirectionIsReduced", {300, 10}, {200, 100}, false, {200, 6}},
    {"AWiderImageIsReducedWithEnlargingToo", {400, 100}, {200, 100}, true, {200, 50}},
    {"ASmallerImageStaysWithoutEnlarging", {100, 50}, {200, 100}, false, {100, 50}},
    {"ASmallerImageGrowsWithEnlarging", {100, 50}, {200, 100}, true, {200, 100}},
    {"AnImageThatFillsTheHeightIsNotEnlarged", {100, 100}, {200, 100}, true, {100, 100}},
    {"AnImageThatFillsTheWidthIsNotEnlarged", {200, 40}, {200, 100}, true, {200, 40}},
    {"AnImageOfTheSizeOfTheBoxStays", {200, 100}, {200, 100}, true, {200, 100}},
    {"TheProportionalSizeIsTruncated", {150, 40}, {200, 100}, true, {200, 53}},
    {"OneRowAtLeastRemains", {20000, 3}, {1728, 2292}, false, {1728, 1}},
    {"OneColumnAtLeastRemains", {3, 20000}, {1728, 2292}, false, {1, 2292}},
    {"ABoxWithoutWidthChangesNothing", {400, 100}, {0, 100}, true, {400, 100}},
    {"ABoxWithoutHeightChangesNothing", {400, 100}, {200, 0}, true, {400, 100}},
    {"ABoxOfNegativeWidthChangesNothing", {400, 100}, {-200, 100}, true, {400, 100}},
    {"AnInvalidBoxChangesNothing", {400, 100}, QSize(), true, {400, 100}},
};

void PrintTo(const ScaleRow& row, std::ostream* stream)
{
    *stream << row.name;
}

class FaxImageBuilderScale : public testing::TestWithParam<ScaleRow>
{
};

TEST_P(FaxImageBuilderScale, KeepsTheProportions)
{
    const ScaleRow& row = GetParam();
    FaxImageBuilder builder(blank(row.image));
    EXPECT_EQ(builder.scale(row.box, row.enlarge).image().size(), row.result);
}

INSTANTIATE_TEST_SUITE_P(Rows, FaxImageBuilderScale, testing::ValuesIn(scaleRows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(FaxImageBuilderScaleFilter, IsSmooth)
{
    QImage stripes(400, 100, QImage::Format_RGB32);
    for (int x = 0; x < 400; ++x) {
        for (int y = 0; y < 100; ++y) {
            stripes.setPixel(x, y, x % 2 == 0 ? white : black);
        }
    }
    const QImage grey = FaxImageBuilder(stripes).scale({200, 100}, false).image();
    EXPECT_EQ(qGray(grey.pixel(100, 25)), 127);
}

TEST(FaxImageBuilderScaleFilter, LeavesAFittingImageAlone)
{
    const QImage image = numbered({100, 50});
    EXPECT_EQ(FaxImageBuilder(image).scale({200, 100}, false).image().cacheKey(), image.cacheKey());
}

// --- Placing

TEST(FaxImageBuilderFill, LeavesAnImageOfThePageSizeAsItIs)
{
    const QImage image = numbered({60, 40});
    FaxImageBuilder builder(image);
    builder.fill({60, 40}, QRect(10, 10, 5, 5), Qt::AlignLeft);
    EXPECT_EQ(builder.image().cacheKey(), image.cacheKey());
}

TEST(FaxImageBuilderFill, CentresAnImageOnAWhitePage)
{
    const QImage image = numbered({1000, 1000});
    FaxImageBuilder builder(image);
    builder.fill({1728, 2200}, QRect(0, 0, 1728, 2200), Qt::AlignCenter);
    EXPECT_TRUE(
        isIdenticalImage(builder.image(), pageWith({1728, 2200}, image, image.rect(), {364, 600})));
}

TEST(FaxImageBuilderFill, CutsAnImageThatIsLargerThanTheAreaEquallyOnBothSides)
{
    const QImage image = numbered({90, 70});
    FaxImageBuilder builder(image);
    builder.fill({100, 80}, QRect(20, 15, 60, 50), Qt::AlignCenter);
    EXPECT_TRUE(isIdenticalImage(builder.image(),
                                 pageWith({100, 80}, image, QRect(15, 10, 60, 50), {20, 15})));
}

TEST(FaxImageBuilderFill, PlacesTopLeftAtTheBottomLeft)
{
    const QImage image = numbered({30, 20});
    FaxImageBuilder builder(image);
    builder.fill({100, 80}, QRect(20, 15, 60, 50), Qt::AlignTop | Qt::AlignLeft);
    EXPECT_TRUE(
        isIdenticalImage(builder.image(), pageWith({100, 80}, image, image.rect(), {20, 45})));
}

TEST(FaxImageBuilderFill, PlacesBottomRightAtTheTopRight)
{
    const QImage image = numbered({30, 20});
    FaxImageBuilder builder(image);
    builder.fill({100, 80}, QRect(20, 15, 60, 50), Qt::AlignBottom | Qt::AlignRight);
    EXPECT_TRUE(
        isIdenticalImage(builder.image(), pageWith({100, 80}, image, image.rect(), {50, 15})));
}

TEST(FaxImageBuilderFill, FollowsTheLayoutDirectionOfTheApplication)
{
    const QImage image = numbered({30, 20});
    FaxImageBuilder builder(image);
    QGuiApplication::setLayoutDirection(Qt::RightToLeft);
    builder.fill({100, 80}, QRect(20, 15, 60, 50), Qt::AlignLeft);
    QGuiApplication::setLayoutDirection(Qt::LeftToRight);
    EXPECT_TRUE(
        isIdenticalImage(builder.image(), pageWith({100, 80}, image, image.rect(), {50, 15})));
}

TEST(FaxImageBuilderFill, ShowsWhiteThroughTransparentPixels)
{
    QImage image(30, 20, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    image.setPixel(4, 3, 0xFF112233);
    FaxImageBuilder builder(image);
    builder.fill({100, 80}, QRect(20, 15, 60, 50), Qt::AlignLeft);
    EXPECT_TRUE(
        isIdenticalImage(builder.image(), pageWith({100, 80}, image, QRect(4, 3, 1, 1), {24, 18})));
}

TEST(FaxImageBuilderFill, KeepsThePixelRatio)
{
    // 30 x 20 pixels are 15 x 10 units, which leave 45 x 40 of the area: the
    // image starts at 42, 35 units.
    QImage image = numbered({30, 20});
    image.setDevicePixelRatio(2.0);
    FaxImageBuilder builder(image);
    builder.fill({200, 160}, QRect(20, 15, 60, 50), Qt::AlignCenter);
    EXPECT_TRUE(
        isIdenticalImage(builder.image(), pageWith({200, 160}, image, image.rect(), {84, 70})));
}

TEST(FaxImageBuilderFill, CutsAnImageAtTheEdgeOfThePage)
{
    // With a pixel ratio the middle of the area lies far right and down.
    QImage image = numbered({100, 60});
    image.setDevicePixelRatio(2.0);
    FaxImageBuilder builder(image);
    builder.fill({300, 200}, QRect(0, 0, 300, 200), Qt::AlignCenter);
    EXPECT_TRUE(isIdenticalImage(builder.image(),
                                 pageWith({300, 200}, image, QRect(0, 0, 50, 30), {250, 170})));
}

TEST(FaxImageBuilderFill, GivesAWhitePageForAnAreaBesideThePage)
{
    const QImage image = numbered({30, 20});
    FaxImageBuilder builder(image);
    builder.fill({100, 80}, QRect(200, 15, 60, 50), Qt::AlignCenter);
    EXPECT_TRUE(isIdenticalImage(builder.image(), pageWith({100, 80}, image, QRect(), {0, 0})));
}

class FaxImageBuilderFillSize : public testing::TestWithParam<QSize>
{
};

TEST_P(FaxImageBuilderFillSize, ThatIsEmptyChangesNothing)
{
    const QImage image = numbered({30, 20});
    FaxImageBuilder builder(image);
    builder.fill(GetParam(), QRect(0, 0, 10, 10), Qt::AlignCenter);
    EXPECT_EQ(builder.image().cacheKey(), image.cacheKey());
}

INSTANTIATE_TEST_SUITE_P(Sizes, FaxImageBuilderFillSize,
                         testing::Values(QSize(0, 10), QSize(10, 0), QSize(-1, 10), QSize()));

// --- Black and white

TEST(FaxImageBuilderMonochromize, ExchangesTheIndexesWhereWhiteIsOne)
{
    const QImage image = diagonal(black, white);
    const QImage result = FaxImageBuilder(image).monochromize().image();
    EXPECT_EQ(result.colorTable(), QVector<QRgb>({white, black}));
    EXPECT_TRUE(isSamePicture(result, image));
    EXPECT_EQ(result.pixelIndex(0, 0), 0);
    EXPECT_EQ(result.pixelIndex(1, 0), 1);
}

TEST(FaxImageBuilderMonochromize, KeepsTheOtherColourBesideWhite)
{
    const QImage result = FaxImageBuilder(diagonal(0x80123456, white)).monochromize().image();
    EXPECT_EQ(result.colorTable(), QVector<QRgb>({white, 0x80123456}));
    EXPECT_EQ(result.pixelIndex(0, 0), 0);
    EXPECT_EQ(result.pixelIndex(1, 0), 1);
}

struct TableRow
{
    const char* name;
    QRgb colour0;
    QRgb colour1;
};

const TableRow untouchedTables[] = {
    {"WhiteAndBlack", white, black},
    {"WhiteAndColour", white, 0xFF804020},
    {"BlackAndBlack", black, black},
    {"BlackAndAlmostWhite", black, 0xFFFFFFFE},
    {"BlackAndWhiteWithAlpha", black, 0xFEFFFFFF},
    {"BlackAndTransparent", black, 0x00FFFFFF},
};

void PrintTo(const TableRow& row, std::ostream* stream)
{
    *stream << row.name;
}

class FaxImageBuilderMonochromizeTable : public testing::TestWithParam<TableRow>
{
};

TEST_P(FaxImageBuilderMonochromizeTable, IsLeftExactlyAsItIs)
{
    const QImage image = diagonal(GetParam().colour0, GetParam().colour1);
    EXPECT_EQ(FaxImageBuilder(image).monochromize().image().cacheKey(), image.cacheKey());
}

INSTANTIATE_TEST_SUITE_P(Rows, FaxImageBuilderMonochromizeTable, testing::ValuesIn(untouchedTables),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(FaxImageBuilderMonochromize, LeavesAnImageOfOneColourAsItIs)
{
    QImage image(19, 11, QImage::Format_Mono);
    image.fill(0);
    image.setColorTable({white});
    EXPECT_EQ(FaxImageBuilder(image).monochromize().image().cacheKey(), image.cacheKey());
}

TEST(FaxImageBuilderMonochromize, DithersAGreyGradient)
{
    QImage gradient(256, 64, QImage::Format_RGB32);
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 256; ++x) {
            gradient.setPixel(x, y, qRgb(x, x, x));
        }
    }
    const QImage result = FaxImageBuilder(gradient).monochromize().image();
    EXPECT_TRUE(
        isIdenticalImage(result, gradient.convertToFormat(QImage::Format_Mono, Qt::MonoOnly)));

    int blackPixels = 0;
    for (int y = 0; y < 64; ++y) {
        for (int x = 96; x < 160; ++x) {
            blackPixels += result.pixel(x, y) == black ? 1 : 0;
        }
    }
    // Half of the 64 x 64 pixels in the middle of the gradient, give or take.
    EXPECT_NEAR(blackPixels, 2048, 64);
}

TEST(FaxImageBuilderMonochromize, LeavesBlackAndWhiteOfAColourImageAsTheyAre)
{
    const QImage image = diagonal(white, black);
    for (const QImage::Format format :
         {QImage::Format_RGB32, QImage::Format_ARGB32_Premultiplied, QImage::Format_Grayscale8,
          QImage::Format_RGB888, QImage::Format_MonoLSB}) {
        EXPECT_TRUE(isSamePicture(
            FaxImageBuilder(image.convertToFormat(format)).monochromize().image(), image))
            << format;
    }
}

// --- The builder as a whole

// QPainter paints in 16-bit coordinates. Whatever it leaves blank on pages that
// are larger, every kind of picture has to look the same.

struct LargePageRow
{
    const char* name;
    QSize page;
};

const LargePageRow largePageRows[] = {
    {"LargestWidthThatIsPaintedWhole", {32767, 3}},
    {"LargestHeightThatIsPaintedWhole", {3, 32767}},
    {"WidthAboveTheLimit", {32768, 3}},
    {"HeightAboveTheLimit", {3, 32768}},
    {"WidthFarAboveTheLimit", {70000, 3}},
    {"HeightFarAboveTheLimit", {3, 70000}},
};

class LargePage : public testing::TestWithParam<LargePageRow>
{
protected:
    // A picture that is as long as the page, and leaves one line of it blank.
    static QImage picture(QImage::Format format)
    {
        const QSize page = GetParam().page;
        const QSize blank = page.width() > page.height() ? QSize(0, 1) : QSize(1, 0);
        QImage image(page - blank, QImage::Format_RGB32);
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                image.setPixel(x, y, (x * 7 + y * 3) % 5 < 2 ? black : white);
            }
        }
        return image.convertToFormat(format, Qt::MonoOnly);
    }
};

TEST_P(LargePage, ShowsEveryKindOfPictureAsPainted)
{
    const QSize size = GetParam().page;
    const QRect area(QPoint(0, 0), size);
    for (const QImage::Format format :
         {QImage::Format_Mono, QImage::Format_Grayscale8, QImage::Format_RGB32}) {
        const QImage image = picture(format);
        FaxImageBuilder painted(image);
        painted.fill(size, area, Qt::AlignCenter);
        const QImage expected = painted.image().convertToFormat(QImage::Format_Mono, Qt::MonoOnly);
        EXPECT_TRUE(isSamePicture(
            FaxImageBuilder(image).fill(size, area, Qt::AlignCenter).monochromize().image(),
            expected))
            << format;
    }
}

INSTANTIATE_TEST_SUITE_P(FaxImageBuilder, LargePage, testing::ValuesIn(largePageRows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(FaxImageBuilder, KeepsANullImageNull)
{
    FaxImageBuilder builder{QImage()};
    builder.rotate(90).scale({20, 20}, true).fill({20, 20}, QRect(0, 0, 20, 20), Qt::AlignCenter);
    EXPECT_TRUE(builder.monochromize().image().isNull());
}

TEST(FaxImageBuilder, DoesNotChangeTheImageItWasMadeFrom)
{
    const QImage image = diagonal(black, white);
    const QImage before = image.copy();
    FaxImageBuilder(image).monochromize();
    EXPECT_TRUE(isIdenticalImage(image, before));
}

TEST(FaxImageBuilder, CanBeCopiedInTheMiddle)
{
    const QImage image = diagonal(black, white);
    FaxImageBuilder builder(image);
    builder.fill({40, 30}, QRect(0, 0, 40, 30), Qt::AlignCenter);
    FaxImageBuilder copy = builder;
    copy.monochromize();
    EXPECT_TRUE(isIdenticalImage(builder.image(),
                                 ReferencePage::filled(image, {40, 30}, QRect(0, 0, 40, 30))));
}

TEST(FaxImageBuilder, GivesTheSamePageWhetherLookedAtInBetweenOrNot)
{
    const QImage image = numbered({90, 70});
    FaxImageBuilder looked(image);
    looked.fill({100, 80}, QRect(20, 15, 60, 50), Qt::AlignCenter);
    const QImage filled = looked.image();
    EXPECT_EQ(filled.format(), QImage::Format_ARGB32_Premultiplied);
    FaxImageBuilder straight(image);
    straight.fill({100, 80}, QRect(20, 15, 60, 50), Qt::AlignCenter);
    EXPECT_TRUE(isIdenticalImage(looked.monochromize().image(), straight.monochromize().image()));
}

} // namespace
