#include "app/settings/FaxSizeDetails.h"

#include "support/PrintQt.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

FaxSizeDetails detailsFor(FaxPaperSize paperSize, FaxResolution resolution,
                          const QMarginsF& margins = {})
{
    return faxSizeDetailsFor({paperSize, resolution, FaxRotation::Rotate0, FaxTransformationFlags(),
                              margins, FaxCompression::G3});
}

// Its sides are the numbers that the printable area is described with.
QRect corners(int left, int top, int right, int bottom)
{
    return {QPoint(left, top), QPoint(right, bottom)};
}

struct PageRow
{
    const char* name;
    FaxPaperSize paperSize;
    FaxResolution resolution;
    LogicalDpi dpi;
    int width;
    int height;
};

const PageRow pageRows[] = {
    {"A4Standard", FaxPaperSize::A4, FaxResolution::Standard, {204, 98}, 1728, 1146},
    {"A4Fine", FaxPaperSize::A4, FaxResolution::Fine, {204, 196}, 1728, 2292},
    {"A4Superfine", FaxPaperSize::A4, FaxResolution::Superfine, {204, 391}, 1728, 4572},
    {"A4Ultrafine", FaxPaperSize::A4, FaxResolution::Ultrafine, {408, 391}, 3456, 4572},
    {"LetterStandard", FaxPaperSize::Letter, FaxResolution::Standard, {204, 98}, 1728, 1078},
    {"LetterFine", FaxPaperSize::Letter, FaxResolution::Fine, {204, 196}, 1728, 2156},
    {"LetterSuperfine", FaxPaperSize::Letter, FaxResolution::Superfine, {204, 391}, 1728, 4301},
    {"LetterUltrafine", FaxPaperSize::Letter, FaxResolution::Ultrafine, {408, 391}, 3456, 4301},
    {"LegalStandard", FaxPaperSize::Legal, FaxResolution::Standard, {204, 98}, 1728, 1372},
    {"LegalFine", FaxPaperSize::Legal, FaxResolution::Fine, {204, 196}, 1728, 2744},
    {"LegalSuperfine", FaxPaperSize::Legal, FaxResolution::Superfine, {204, 391}, 1728, 5474},
    {"LegalUltrafine", FaxPaperSize::Legal, FaxResolution::Ultrafine, {408, 391}, 3456, 5474},
};

class PageGeometry : public testing::TestWithParam<PageRow>
{
protected:
    FaxSizeDetails m_details = detailsFor(GetParam().paperSize, GetParam().resolution);
};

TEST_P(PageGeometry, HasTheDotsPerInchOfTheResolution)
{
    EXPECT_EQ(m_details.dpi.horizontal, GetParam().dpi.horizontal);
    EXPECT_EQ(m_details.dpi.vertical, GetParam().dpi.vertical);
}

TEST_P(PageGeometry, HasThePageSizeOfPaperAndResolution)
{
    EXPECT_EQ(m_details.pageSize, QSize(GetParam().width, GetParam().height));
}

TEST_P(PageGeometry, IsAllPrintableWithoutMargins)
{
    EXPECT_EQ(m_details.contentRect, corners(0, 0, GetParam().width - 1, GetParam().height - 1));
}

INSTANTIATE_TEST_SUITE_P(FaxSizeDetails, PageGeometry, testing::ValuesIn(pageRows),
                         [](const auto& test) { return std::string{test.param.name}; });

struct MarginRow
{
    const char* name;
    FaxPaperSize paperSize;
    FaxResolution resolution;
    QMarginsF margins;
    QRect contentRect;
};

const MarginRow marginRows[] = {
    {"HalfAnInchAllRoundAtStandardOnA4",
     FaxPaperSize::A4,
     FaxResolution::Standard,
     {0.5, 0.5, 0.5, 0.5},
     corners(102, 49, 1625, 1096)},
    {"EverySideHasItsOwnMargin",
     FaxPaperSize::Letter,
     FaxResolution::Ultrafine,
     {1, 2, 3, 4},
     corners(408, 782, 2231, 2736)},
    {"EverySideIsRoundedDown",
     FaxPaperSize::A4,
     FaxResolution::Fine,
     {0.999, 0.999, 0.999, 0.999},
     corners(203, 195, 1524, 2096)},
    {"A10ToTheMinus13thOfAnInchIsNoMargin",
     FaxPaperSize::A4,
     FaxResolution::Fine,
     {1e-13, 1e-13, 1e-13, 1e-13},
     corners(0, 0, 1727, 2291)},
    {"AThousandthOfAnInchOnOneSideRoundsDownToNothing",
     FaxPaperSize::A4,
     FaxResolution::Fine,
     {0.001, 0, 0, 0},
     corners(0, 0, 1727, 2291)},
    {"ATinyMarginRoundsDownToNothingBesideARealOne",
     FaxPaperSize::A4,
     FaxResolution::Fine,
     {1e-13, 1, 1e-13, 1e-13},
     corners(0, 196, 1727, 2291)},
    {"ATinyNegativeMarginRoundsDownToOnePixelBesideARealOne",
     FaxPaperSize::A4,
     FaxResolution::Fine,
     {-1e-13, 1, -1e-13, -1e-13},
     corners(-1, 196, 1728, 2292)},
    {"ANegativeMarginReachesBeyondThePage",
     FaxPaperSize::A4,
     FaxResolution::Standard,
     {-0.5, -0.5, -0.5, -0.5},
     corners(-102, -49, 1829, 1194)},
    {"TwoMarginsThatMeetLeaveNoWidth",
     FaxPaperSize::Letter,
     FaxResolution::Standard,
     {5, 0, 5, 0},
     corners(1020, 0, 707, 1077)},
};

class PrintableArea : public testing::TestWithParam<MarginRow>
{
};

TEST_P(PrintableArea, LiesInsideTheMargins)
{
    const MarginRow& row = GetParam();
    EXPECT_EQ(detailsFor(row.paperSize, row.resolution, row.margins).contentRect, row.contentRect);
}

INSTANTIATE_TEST_SUITE_P(FaxSizeDetails, PrintableArea, testing::ValuesIn(marginRows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(FaxSizeDetails, MarginsLeaveThePageSizeAlone)
{
    EXPECT_EQ(detailsFor(FaxPaperSize::A4, FaxResolution::Fine, {1, 1, 1, 1}).pageSize,
              QSize(1728, 2292));
}

TEST(FaxSizeDetails, MarginsThatMeetLeaveAnEmptyArea)
{
    EXPECT_TRUE(
        detailsFor(FaxPaperSize::Letter, FaxResolution::Fine, {0, 6, 0, 6}).contentRect.isEmpty());
}

TEST(FaxSizeDetails, RotationFlagsAndCompressionDoNotChangeTheGeometry)
{
    const FaxSizeDetails details = faxSizeDetailsFor(
        {FaxPaperSize::A4, FaxResolution::Fine, FaxRotation::Rotate90,
         FaxTransformationFlag::FitToPaper, QMarginsF(1, 2, 3, 4), FaxCompression::G4});
    EXPECT_EQ(details.pageSize, QSize(1728, 2292));
    EXPECT_EQ(details.contentRect, corners(204, 392, 1115, 1507));
}

struct OddMarginRow
{
    const char* name;
    QMarginsF margins;
};

const OddMarginRow oddMarginRows[] = {
    {"NotANumberOnEverySide", {notANumber, notANumber, notANumber, notANumber}},
    {"NotANumberOnTheLeft", {notANumber, 0, 0, 0}},
    {"NotANumberAtTheTop", {0, notANumber, 0, 0}},
    {"NotANumberOnTheRight", {0, 0, notANumber, 0}},
    {"NotANumberAtTheBottom", {0, 0, 0, notANumber}},
    {"InfiniteOnTheLeft", {infinity, 0, 0, 0}},
    {"InfiniteAtTheBottom", {0, 0, 0, infinity}},
    {"BeyondTheRangeOfPixelsOnTheRight", {0, 0, 1e300, 0}},
    {"BeyondTheRangeOfPixelsOnEverySide", {1e300, 1e300, 1e300, 1e300}},
};

class OddMargins : public testing::TestWithParam<OddMarginRow>
{
};

TEST_P(OddMargins, LeaveAnEmptyArea)
{
    EXPECT_TRUE(detailsFor(FaxPaperSize::A4, FaxResolution::Fine, GetParam().margins)
                    .contentRect.isEmpty());
}

TEST_P(OddMargins, LeaveThePageSizeAlone)
{
    EXPECT_EQ(detailsFor(FaxPaperSize::A4, FaxResolution::Fine, GetParam().margins).pageSize,
              QSize(1728, 2292));
}

INSTANTIATE_TEST_SUITE_P(FaxSizeDetails, OddMargins, testing::ValuesIn(oddMarginRows),
                         [](const auto& test) { return std::string{test.param.name}; });

struct AbsenceRow
{
    const char* name;
    QMarginsF margins;
    bool areAbsent;
};

const AbsenceRow absenceRows[] = {
    {"ZeroIsAbsent", {0, 0, 0, 0}, true},
    {"NegativeZeroIsAbsent", {-0.0, -0.0, -0.0, -0.0}, true},
    {"TheThresholdItselfIsAbsent", {1e-12, -1e-12, 1e-12, -1e-12}, true},
    {"AboveTheThresholdOnTheLeftIsPresent", {1.1e-12, 0, 0, 0}, false},
    {"AboveTheThresholdAtTheTopIsPresent", {0, 1.1e-12, 0, 0}, false},
    {"AboveTheThresholdOnTheRightIsPresent", {0, 0, 1.1e-12, 0}, false},
    {"AboveTheThresholdAtTheBottomIsPresent", {0, 0, 0, 1.1e-12}, false},
    {"BelowTheNegativeThresholdIsPresent", {0, 0, 0, -1.1e-12}, false},
    {"NotANumberIsPresent", {0, 0, notANumber, 0}, false},
};

class MarginAbsence : public testing::TestWithParam<AbsenceRow>
{
};

TEST_P(MarginAbsence, IsDecidedByEverySide)
{
    EXPECT_EQ(areMarginsAbsent(GetParam().margins), GetParam().areAbsent);
}

INSTANTIATE_TEST_SUITE_P(FaxSizeDetails, MarginAbsence, testing::ValuesIn(absenceRows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(FaxSizeDetails, TheWholePageIgnoresMargins)
{
    const FaxSizeDetails details = wholePageDetails(
        detailsFor(FaxPaperSize::Legal, FaxResolution::Ultrafine, {0.5, 0.5, 0.5, 0.5}));
    EXPECT_EQ(details.contentRect, corners(0, 0, 3455, 5473));
}

TEST(FaxSizeDetails, TheWholePageKeepsSizeAndDotsPerInch)
{
    const FaxSizeDetails details = wholePageDetails(
        detailsFor(FaxPaperSize::Legal, FaxResolution::Ultrafine, {0.5, 0.5, 0.5, 0.5}));
    EXPECT_EQ(details.pageSize, QSize(3456, 5474));
    EXPECT_TRUE(details.dpi == (LogicalDpi{408, 391}));
}

} // namespace
