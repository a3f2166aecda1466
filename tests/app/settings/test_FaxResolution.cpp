#include "app/settings/FaxResolution.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace {

struct Row
{
    const char* name;
    int number;
    std::uint16_t horizontal;
    std::uint16_t vertical;
    int widthPixels;
};

const Row rows[] = {
    {"StandardIsZero", 0, 204, 98, 1728},  {"FineIsOne", 1, 204, 196, 1728},
    {"SuperfineIsTwo", 2, 204, 391, 1728}, {"UltrafineIsThree", 3, 408, 391, 3456},
    {"NumbersAboveHaveNone", 4, 0, 0, -1}, {"NumbersBelowHaveNone", -1, 0, 0, -1},
};

class Resolution : public testing::TestWithParam<Row>
{
};

TEST_P(Resolution, HasItsDotsPerInch)
{
    const LogicalDpi dpi = logicalDpiFor(static_cast<FaxResolution>(GetParam().number));
    EXPECT_EQ(dpi.horizontal, GetParam().horizontal);
    EXPECT_EQ(dpi.vertical, GetParam().vertical);
}

TEST_P(Resolution, HasItsLineLength)
{
    EXPECT_EQ(pageWidthPixels(static_cast<FaxResolution>(GetParam().number)),
              GetParam().widthPixels);
}

INSTANTIATE_TEST_SUITE_P(FaxResolution, Resolution, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(FaxResolution, NumbersItsMembersFromZero)
{
    EXPECT_EQ(static_cast<int>(FaxResolution::Standard), 0);
    EXPECT_EQ(static_cast<int>(FaxResolution::Fine), 1);
    EXPECT_EQ(static_cast<int>(FaxResolution::Superfine), 2);
    EXPECT_EQ(static_cast<int>(FaxResolution::Ultrafine), 3);
}

TEST(FaxResolution, SuperfineAndUltrafineShareTheVerticalDotsPerInch)
{
    EXPECT_EQ(logicalDpiFor(FaxResolution::Superfine).vertical,
              logicalDpiFor(FaxResolution::Ultrafine).vertical);
}

} // namespace
