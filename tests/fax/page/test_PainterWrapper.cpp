#include "fax/page/PainterWrapper.h"

#include "support/ReferencePage.h"

#include <QGuiApplication>
#include <QPainter>

#include <string>

namespace {

constexpr auto ltr = Qt::LeftToRight;
constexpr auto rtl = Qt::RightToLeft;

constexpr QSize pageSize(100, 80);
constexpr QRect area(10, 20, 60, 50);
constexpr QSize small(20, 15);
constexpr QRect wholeSmall(0, 0, 20, 15);

// Every pixel has a colour of its own.
QImage numbered(const QSize& size)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            image.setPixel(x, y, qRgb(x, y, 77));
        }
    }
    return image;
}

QImage whitePage(double pixelRatio = 1.0)
{
    QImage page(pageSize, QImage::Format_ARGB32_Premultiplied);
    page.setDevicePixelRatio(pixelRatio);
    page.fill(Qt::white);
    return page;
}

// The page with the part `source` of the image at `position`, all in pixels.
QImage pasted(QImage page, const QImage& image, const QRect& source, const QPoint& position)
{
    for (int y = 0; y < source.height(); ++y) {
        for (int x = 0; x < source.width(); ++x) {
            page.setPixel(position.x() + x, position.y() + y,
                          image.pixel(source.x() + x, source.y() + y));
        }
    }
    return page;
}

struct Row
{
    const char* name;
    Qt::LayoutDirection direction;
    Qt::Alignment alignment;
    QSize imageSize;
    QRect visiblePart; // of the image
    QPoint position;   // of that part on the page
};

const Row rows[] = {
    {"CentreIsInTheMiddle", ltr, Qt::AlignCenter, small, wholeSmall, {30, 37}},
    {"CentreIsInTheMiddleInRightToLeftText", rtl, Qt::AlignCenter, small, wholeSmall, {30, 37}},
    {"TopLeftIsAtTheBottomLeft", ltr, Qt::AlignTop | Qt::AlignLeft, small, wholeSmall, {10, 55}},
    {"BottomRightIsAtTheTopRight",
     ltr,
     Qt::AlignBottom | Qt::AlignRight,
     small,
     wholeSmall,
     {50, 20}},
    {"NoFlagIsAtTheTopLeft", ltr, Qt::Alignment(), small, wholeSmall, {10, 20}},
    {"NoFlagIsAtTheTopRightInRightToLeftText", rtl, Qt::Alignment(), small, wholeSmall, {50, 20}},
    {"LeftIsAtTheRightInRightToLeftText",
     rtl,
     Qt::AlignLeft | Qt::AlignVCenter,
     small,
     wholeSmall,
     {50, 37}},
    {"AbsoluteLeftIsAtTheLeftInRightToLeftText",
     rtl,
     Qt::AlignLeft | Qt::AlignAbsolute | Qt::AlignVCenter,
     small,
     wholeSmall,
     {10, 37}},
    {"RightIsAtTheLeftInRightToLeftText", rtl, Qt::AlignRight, small, wholeSmall, {10, 20}},
    {"JustifyIsAtTheLeft", rtl, Qt::AlignJustify, small, wholeSmall, {10, 20}},
    {"HorizontalCentreWinsOverRight",
     ltr,
     Qt::AlignHCenter | Qt::AlignRight,
     small,
     wholeSmall,
     {30, 20}},
    {"VerticalCentreWinsOverTop",
     ltr,
     Qt::AlignVCenter | Qt::AlignTop,
     small,
     wholeSmall,
     {10, 37}},
    {"OddFreeSpaceIsHalvedDownwards", ltr, Qt::AlignCenter, {21, 15}, {0, 0, 21, 15}, {29, 37}},
    {"AnImageOfTheSizeOfTheAreaCoversIt", ltr, Qt::AlignCenter, {60, 50}, {0, 0, 60, 50}, {10, 20}},
    {"ALargerImageIsCutEquallyOnBothSides",
     ltr,
     Qt::AlignCenter,
     {80, 60},
     {10, 5, 60, 50},
     {10, 20}},
    {"AnOddSurplusIsHalvedTowardsZero", ltr, Qt::AlignCenter, {63, 53}, {1, 1, 60, 50}, {10, 20}},
    {"ALargerImageAtTheLeftIsCutAtTheRight",
     ltr,
     Qt::AlignLeft,
     {80, 60},
     {0, 0, 60, 50},
     {10, 20}},
    {"ALargerImageAtTheRightIsCutAtTheLeft",
     ltr,
     Qt::AlignRight | Qt::AlignTop,
     {80, 60},
     {20, 10, 60, 50},
     {10, 20}},
    {"AWiderImageIsCutInOneDirectionOnly",
     ltr,
     Qt::AlignCenter,
     {80, 15},
     {10, 0, 60, 15},
     {10, 37}},
};

void PrintTo(const Row& row, std::ostream* stream)
{
    *stream << row.name;
}

class PainterWrapperPlacing : public testing::TestWithParam<Row>
{
};

TEST_P(PainterWrapperPlacing, IsExactToThePixel)
{
    const Row& row = GetParam();
    const QImage image = numbered(row.imageSize);
    QImage page = whitePage();
    QPainter painter(&page);
    PainterWrapper(&painter).drawImage(area, row.direction, row.alignment, image);
    painter.end();
    EXPECT_TRUE(ReferencePage::isIdenticalImage(
        page, pasted(whitePage(), image, row.visiblePart, row.position)));
}

INSTANTIATE_TEST_SUITE_P(Rows, PainterWrapperPlacing, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

// With a pixel ratio the area is in painter units, the rest in pixels.
struct RatioRow
{
    const char* name;
    double ratio;
    QRect areaUnits;
    Qt::Alignment alignment;
    QSize imageSize;
    QRect visiblePart;
    QPoint position;
};

const RatioRow ratioRows[] = {
    {"AnImageOfRatioTwoIsHalfAsLarge",
     2.0,
     {2, 4, 40, 30},
     Qt::AlignCenter,
     {40, 20},
     {0, 0, 40, 20},
     {24, 28}},
    {"AnOddSizeIsRoundedUpInPainterUnits",
     2.0,
     {2, 4, 40, 30},
     Qt::AlignRight,
     {41, 21},
     {0, 0, 41, 21},
     {42, 8}},
    {"AnImageOfRatioOneAndAHalfIsTwoThirdsAsLarge",
     1.5,
     {2, 4, 40, 30},
     Qt::AlignCenter,
     {30, 21},
     {0, 0, 30, 21},
     {18, 18}},
    // 80 x 60 pixels are 40 x 30 units, 10 too many in both directions: the five
    // units cut at the left and at the top are five pixels of the image.
    {"TheCutAtTheLeftAndTopIsNotMultiplied",
     2.0,
     {2, 4, 30, 20},
     Qt::AlignCenter,
     {80, 60},
     {5, 5, 60, 40},
     {4, 8}},
};

void PrintTo(const RatioRow& row, std::ostream* stream)
{
    *stream << row.name;
}

class PainterWrapperPixelRatio : public testing::TestWithParam<RatioRow>
{
};

TEST_P(PainterWrapperPixelRatio, DecidesTheSizeInPainterUnits)
{
    const RatioRow& row = GetParam();
    QImage image = numbered(row.imageSize);
    image.setDevicePixelRatio(row.ratio);
    QImage page = whitePage(row.ratio);
    QPainter painter(&page);
    PainterWrapper(&painter).drawImage(row.areaUnits, ltr, row.alignment, image);
    painter.end();
    EXPECT_TRUE(ReferencePage::isIdenticalImage(
        page, pasted(whitePage(row.ratio), image, row.visiblePart, row.position)));
}

INSTANTIATE_TEST_SUITE_P(Rows, PainterWrapperPixelRatio, testing::ValuesIn(ratioRows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(PainterWrapper, FollowsTheLayoutDirectionOfTheApplication)
{
    const QImage image = numbered(small);
    QImage page = whitePage();
    QPainter painter(&page);
    QGuiApplication::setLayoutDirection(rtl);
    PainterWrapper(&painter).drawImage(area, Qt::AlignLeft, image);
    QGuiApplication::setLayoutDirection(ltr);
    painter.end();
    EXPECT_TRUE(ReferencePage::isIdenticalImage(
        page, pasted(whitePage(), image, wholeSmall, QPoint(50, 20))));
}

TEST(PainterWrapper, DrawsAnImageWithTransparencyOverWhatIsThere)
{
    QImage image(small, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    image.setPixel(3, 4, 0xFF102030);
    QImage page = whitePage();
    QPainter painter(&page);
    PainterWrapper(&painter).drawImage(area, Qt::AlignLeft, image);
    painter.end();
    EXPECT_TRUE(ReferencePage::isIdenticalImage(
        page, pasted(whitePage(), image, QRect(3, 4, 1, 1), QPoint(13, 24))));
}

} // namespace
