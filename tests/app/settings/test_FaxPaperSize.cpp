#include "app/settings/FaxPaperSize.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace {

struct Row
{
    const char* name;
    int number;
    double widthInches;
    double heightInches;
};

const Row rows[] = {
    {"A4IsZeroAndHasTheCutInches", 0, 8.26771653543307, 11.69291338582677},
    {"LetterIsOne", 1, 8.5, 11.0},
    {"LegalIsTwo", 2, 8.5, 14.0},
    {"NumbersAboveHaveNoSize", 3, -1.0, -1.0},
    {"NumbersBelowHaveNoSize", -1, -1.0, -1.0},
};

class PaperSize : public testing::TestWithParam<Row>
{
};

TEST_P(PaperSize, HasItsWidth)
{
    EXPECT_EQ(paperWidthInches(static_cast<FaxPaperSize>(GetParam().number)),
              GetParam().widthInches);
}

TEST_P(PaperSize, HasItsHeight)
{
    EXPECT_EQ(paperHeightInches(static_cast<FaxPaperSize>(GetParam().number)),
              GetParam().heightInches);
}

INSTANTIATE_TEST_SUITE_P(FaxPaperSize, PaperSize, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(FaxPaperSize, NumbersItsMembersFromZero)
{
    EXPECT_EQ(static_cast<int>(FaxPaperSize::A4), 0);
    EXPECT_EQ(static_cast<int>(FaxPaperSize::Letter), 1);
    EXPECT_EQ(static_cast<int>(FaxPaperSize::Legal), 2);
}

TEST(FaxPaperSize, A4WidthIsOneUnitInTheLastPlaceBelow210Millimetres)
{
    EXPECT_EQ(std::nextafter(paperWidthInches(FaxPaperSize::A4), 9.0), 210 / 25.4);
}

TEST(FaxPaperSize, A4HeightIsOneUnitInTheLastPlaceBelow297Millimetres)
{
    EXPECT_EQ(std::nextafter(paperHeightInches(FaxPaperSize::A4), 12.0), 297 / 25.4);
}

} // namespace
