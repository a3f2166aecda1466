#include "app/settings/LogicalDpi.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct Row
{
    const char* name;
    LogicalDpi left;
    LogicalDpi right;
    bool areEqual;
};

const Row rows[] = {
    {"EqualIfBothMembersAre", {204, 98}, {204, 98}, true},
    {"DifferentIfOnlyTheHorizontalIs", {204, 391}, {408, 391}, false},
    {"DifferentIfOnlyTheVerticalIs", {204, 98}, {204, 196}, false},
    {"DifferentIfTheMembersAreSwapped", {204, 98}, {98, 204}, false},
};

class Comparison : public testing::TestWithParam<Row>
{
};

TEST_P(Comparison, LooksAtBothMembers)
{
    EXPECT_EQ(GetParam().left == GetParam().right, GetParam().areEqual);
}

TEST_P(Comparison, NotEqualIsTheOppositeOfEqual)
{
    EXPECT_EQ(GetParam().left != GetParam().right, !GetParam().areEqual);
}

INSTANTIATE_TEST_SUITE_P(LogicalDpi, Comparison, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(LogicalDpi, IsZeroUnlessSet)
{
    const LogicalDpi dpi;
    EXPECT_EQ(dpi.horizontal, 0);
    EXPECT_EQ(dpi.vertical, 0);
}

} // namespace
