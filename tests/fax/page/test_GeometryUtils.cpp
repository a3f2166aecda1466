#include "fax/page/GeometryUtils.h"

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr Qt::Alignment noFlag;
constexpr Qt::Alignment left = Qt::AlignLeft;
constexpr Qt::Alignment right = Qt::AlignRight;
constexpr Qt::Alignment leftFixed = Qt::AlignLeft | Qt::AlignAbsolute;
constexpr Qt::Alignment rightFixed = Qt::AlignRight | Qt::AlignAbsolute;

struct Row
{
    const char* name;
    Qt::LayoutDirection direction;
    Qt::Alignment given;
    Qt::Alignment resolved;
};

const Row rows[] = {
    {"NoFlagMeansLeft", Qt::LeftToRight, noFlag, leftFixed},
    {"NoFlagMeansRightInRightToLeftText", Qt::RightToLeft, noFlag, rightFixed},
    {"LeftStaysLeft", Qt::LeftToRight, left, leftFixed},
    {"RightStaysRight", Qt::LeftToRight, right, rightFixed},
    {"LeftBecomesRightInRightToLeftText", Qt::RightToLeft, left, rightFixed},
    {"RightBecomesLeftInRightToLeftText", Qt::RightToLeft, right, leftFixed},
    {"AutomaticDirectionIsLeftToRight", Qt::LayoutDirectionAuto, left, leftFixed},
    {"AbsoluteLeftIsNeverMirrored", Qt::RightToLeft, leftFixed, leftFixed},
    {"AbsoluteRightIsNeverMirrored", Qt::RightToLeft, rightFixed, rightFixed},
    {"AbsoluteAloneIsReturnedUnchanged", Qt::RightToLeft, Qt::AlignAbsolute, Qt::AlignAbsolute},
    {"CentreIsReturnedUnchanged", Qt::RightToLeft, Qt::AlignHCenter, Qt::AlignHCenter},
    {"CentreInBothDirectionsMeansNoLeft", Qt::LeftToRight, Qt::AlignCenter, Qt::AlignCenter},
    {"JustifyIsReturnedUnchanged", Qt::RightToLeft, Qt::AlignJustify, Qt::AlignJustify},
    {"LeftAndRightTogetherVanishInRightToLeftText", Qt::RightToLeft, left | right | Qt::AlignTop,
     Qt::AlignAbsolute | Qt::AlignTop},
    {"LeftAndRightTogetherStayInLeftToRightText", Qt::LeftToRight, left | right,
     left | right | Qt::AlignAbsolute},
    {"VerticalFlagsAreKept", Qt::RightToLeft, left | Qt::AlignBottom, rightFixed | Qt::AlignBottom},
    {"AVerticalFlagAloneMeansLeft", Qt::LeftToRight, Qt::AlignTop, leftFixed | Qt::AlignTop},
};

class VisualAlignment : public testing::TestWithParam<Row>
{
};

TEST_P(VisualAlignment, IsResolvedForTheLayoutDirection)
{
    const Row& row = GetParam();
    EXPECT_EQ(GeometryUtils::visualAlignment(row.direction, row.given), row.resolved);
}

INSTANTIATE_TEST_SUITE_P(GeometryUtils, VisualAlignment, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

} // namespace
