#include "options/StringConverter.h"

#include "support/PrintQt.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

boost::optional<QMarginsF> fromString(const std::string& text)
{
    return StringConverter<boost::optional<QMarginsF>>::fromString(text);
}

std::string toShortString(const QMarginsF& margins)
{
    return StringConverter<QMarginsF>::toShortString(margins);
}

// The comparison of QMarginsF has a tolerance.
testing::AssertionResult isExactly(const boost::optional<QMarginsF>& actual,
                                   const QMarginsF& expected)
{
    if (!actual) {
        return testing::AssertionFailure() << "no margins were read";
    }
    if (actual->left() != expected.left() || actual->top() != expected.top() ||
        actual->right() != expected.right() || actual->bottom() != expected.bottom()) {
        return testing::AssertionFailure() << testing::PrintToString(*actual) << " instead of "
                                           << testing::PrintToString(expected);
    }
    return testing::AssertionSuccess();
}

struct ReadRow
{
    const char* name;
    const char* text;
    QMarginsF margins;
};

const ReadRow readRows[] = {
    {"OneNumberIsForAllSides", "0.5", {0.5, 0.5, 0.5, 0.5}},
    {"TwoNumbersAreHorizontalAndVertical", "0.5,1", {0.5, 1, 0.5, 1}},
    {"FourNumbersAreLeftTopRightAndBottom", "1,2,3,4", {1, 2, 3, 4}},
    {"BlanksAroundNumbersAreIgnored", " 1 , 2 ", {1, 2, 1, 2}},
    {"AllWhiteSpaceAroundNumbersIsIgnored", "\t1\n,\v2\f,\r3 , \t 4\r\n", {1, 2, 3, 4}},
    {"TrailingTextIsIgnored", "1in", {1, 1, 1, 1}},
    {"TrailingTextIsIgnoredInEveryPiece", "1in,2in,3in,4in", {1, 2, 3, 4}},
    {"ASemicolonIsNoSeparator", "1;2", {1, 1, 1, 1}},
    {"ABlankIsNoSeparator", "1 2", {1, 1, 1, 1}},
    {"HexadecimalNumbersAreRead", "0x1p1", {2, 2, 2, 2}},
    {"ExponentsAreRead", "1e3", {1000, 1000, 1000, 1000}},
    {"AnUnfinishedExponentIsTrailingText", "1.5e", {1.5, 1.5, 1.5, 1.5}},
    {"APlusSignIsRead", "+2", {2, 2, 2, 2}},
    {"AMinusSignIsRead", "-1,-2", {-1, -2, -1, -2}},
    {"ANumberMayBeginWithThePoint", ".5", {0.5, 0.5, 0.5, 0.5}},
    {"ANumberMayEndWithThePoint", "5.", {5, 5, 5, 5}},
    {"AThirdDecimalPlaceIsKept", "0.125,0.1", {0.125, 0.1, 0.125, 0.1}},
    {"InfinityIsReadByItsShortWord", "inf", {infinity, infinity, infinity, infinity}},
    {"InfinityIsReadByItsLongWord", "infinity,1", {infinity, 1, infinity, 1}},
    {"InfinityIsReadInAnyCase", "1,INF,2,Infinity", {1, infinity, 2, infinity}},
    {"TheLargestNumberIsRead",
     "1.7976931348623157e308,0",
     {1.7976931348623157e308, 0, 1.7976931348623157e308, 0}},
    {"TheSmallestNormalNumberIsRead",
     "2.2250738585072014e-308,0",
     {2.2250738585072014e-308, 0, 2.2250738585072014e-308, 0}},
};

class ReadMargins : public testing::TestWithParam<ReadRow>
{
};

TEST_P(ReadMargins, AreExactlyThoseOfTheText)
{
    EXPECT_TRUE(isExactly(fromString(GetParam().text), GetParam().margins));
}

INSTANTIATE_TEST_SUITE_P(StringConverter, ReadMargins, testing::ValuesIn(readRows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(StringConverter, ReadsNotANumberInAnyCase)
{
    const boost::optional<QMarginsF> margins = fromString("nan,NaN");
    ASSERT_TRUE(margins);
    EXPECT_TRUE(std::isnan(margins->left()));
    EXPECT_TRUE(std::isnan(margins->top()));
    EXPECT_TRUE(std::isnan(margins->right()));
    EXPECT_TRUE(std::isnan(margins->bottom()));
}

TEST(StringConverter, KeepsTheSignOfZero)
{
    const boost::optional<QMarginsF> margins = fromString("-0,0");
    ASSERT_TRUE(isExactly(margins, {0, 0, 0, 0}));
    EXPECT_TRUE(std::signbit(margins->left()));
    EXPECT_FALSE(std::signbit(margins->top()));
}

struct RefusedRow
{
    const char* name;
    const char* text;
};

const RefusedRow refusedRows[] = {
    {"TheEmptyText", ""},
    {"BlanksOnly", "  "},
    {"WhiteSpaceOnly", " \t\n\v\f\r"},
    {"NoNumber", "abc"},
    {"TextBeforeTheNumber", "in1"},
    {"APointOnly", "."},
    {"ASignOnly", "-"},
    {"AnExponentOnly", "e5"},
    {"ABlankAfterTheSign", "- 1"},
    {"ThreeNumbers", "1,2,3"},
    {"FiveNumbers", "1,2,3,4,5"},
    {"ACommaOnly", ","},
    {"ThreeCommasOnly", ",,,"},
    {"ATrailingComma", "1,"},
    {"ALeadingComma", ",1"},
    {"ATrailingCommaAfterFourNumbers", "1,2,3,4,"},
    {"AnEmptyPieceAmongFour", "1,,2,3"},
    {"AnEmptyPieceThatWouldLeaveTwo", "1,,2"},
    {"ABlankPieceAmongFour", "1,2, ,4"},
    {"NoNumberInTheSecondOfTwoPieces", "1,x"},
    {"NoNumberInTheSecondOfFourPieces", "1,x,3,4"},
    {"NoNumberInTheThirdOfFourPieces", "1,2,x,4"},
    {"NoNumberInTheFourthOfFourPieces", "1,2,3,x"},
    {"ANumberTooLargeToRepresent", "1e309"},
    {"ANegativeNumberTooLargeToRepresent", "-1e309"},
    {"ANumberTooSmallToRepresent", "1e-310"},
    {"ANumberThatWouldRoundToZero", "1e-400"},
    {"ANumberOutOfRangeInTheSecondPiece", "1,1e309"},
    {"ANumberOutOfRangeInTheFourthPiece", "1,2,3,1e-310"},
};

class RefusedMargins : public testing::TestWithParam<RefusedRow>
{
};

TEST_P(RefusedMargins, AreEmpty)
{
    EXPECT_FALSE(fromString(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(StringConverter, RefusedMargins, testing::ValuesIn(refusedRows),
                         [](const auto& test) { return std::string{test.param.name}; });

struct WrittenRow
{
    const char* name;
    QMarginsF margins;
    const char* text;
};

const WrittenRow writtenRows[] = {
    {"FourEqualSidesAreOneNumber", {3, 3, 3, 3}, "3.0"},
    {"EqualOppositeSidesAreTwoNumbers", {1, 2, 1, 2}, "1.0,2.0"},
    {"DifferentSidesAreFourNumbers", {1, 2, 3, 4}, "1.0,2.0,3.0,4.0"},
    {"DifferentTopAndBottomAreFourNumbers", {0, 100, 0, 0}, "0.0,100.0,0.0,0.0"},
    {"DifferentLeftAndRightAreFourNumbers", {1, 2, 3, 2}, "1.0,2.0,3.0,2.0"},
    {"AllZeroIsOneNumber", {0, 0, 0, 0}, "0.0"},
    {"SidesWithinATrillionthAreEqual", {1, 1 + 5e-13, 1 - 5e-13, 1}, "1.0"},
    {"SidesMoreThanATrillionthApartDiffer", {1, 1, 1 + 2e-12, 1}, "1.0,1.0,1.000000000002,1.0"},
    {"OnlyZeroEqualsZero", {0, 0, 1e-13, 0}, "0.0,0.0,1e-13,0.0"},
    {"ZerosOfBothSignsAreEqual", {0.0, 0.0, -0.0, -0.0}, "0.0"},
    {"InfiniteSidesAreNeverEqual", {infinity, infinity, infinity, infinity}, "inf,inf,inf,inf"},
    {"NotANumberEqualsNothing", {notANumber, 9, notANumber, 9}, "nan,9.0,nan,9.0"},
};

class WrittenMargins : public testing::TestWithParam<WrittenRow>
{
};

TEST_P(WrittenMargins, TakeTheShortestForm)
{
    EXPECT_EQ(toShortString(GetParam().margins), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(StringConverter, WrittenMargins, testing::ValuesIn(writtenRows),
                         [](const auto& test) { return std::string{test.param.name}; });

struct NumberRow
{
    const char* name;
    double number;
    const char* text;
};

const NumberRow numberRows[] = {
    {"AWholeNumberKeepsOneDecimal", 9, "9.0"},
    {"AFractionIsLeftAlone", 0.5, "0.5"},
    {"ATenthIsAsShortAsItReadsBack", 0.1, "0.1"},
    {"SeventeenDigitsAreKeptWhereNeeded", 8.5 - 4.2 - 4.2, "0.09999999999999964"},
    {"NegativeZeroKeepsItsSign", -0.0, "-0.0"},
    {"ANegativeWholeNumberKeepsOneDecimal", -9, "-9.0"},
    {"AThousandHasNoExponent", 1e3, "1000.0"},
    {"TenToThe15thHasNoExponent", 1e15, "1000000000000000.0"},
    {"TenToThe16thHasAnExponent", 1e16, "1e+16"},
    {"ATenThousandthHasNoExponent", 1e-4, "0.0001"},
    {"AHundredThousandthHasAnExponent", 1e-5, "1e-05"},
};

class WrittenNumber : public testing::TestWithParam<NumberRow>
{
};

TEST_P(WrittenNumber, HasTheFormOfMessages)
{
    const double number = GetParam().number;
    EXPECT_EQ(toShortString({number, number, number, number}), GetParam().text);
}

TEST_P(WrittenNumber, ReadsBackAsTheSameNumber)
{
    const double number = GetParam().number;
    const QMarginsF margins(number, number, number, number);
    EXPECT_TRUE(isExactly(fromString(toShortString(margins)), margins));
}

INSTANTIATE_TEST_SUITE_P(StringConverter, WrittenNumber, testing::ValuesIn(numberRows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(StringConverter, ReadsTheTwoNumberFormBack)
{
    EXPECT_TRUE(isExactly(fromString(toShortString({0.1, 0.3, 0.1, 0.3})), {0.1, 0.3, 0.1, 0.3}));
}

TEST(StringConverter, ReadsTheFourNumberFormBack)
{
    EXPECT_TRUE(isExactly(fromString(toShortString({0.1, 1e16, 0, 2})), {0.1, 1e16, 0, 2}));
}

TEST(StringConverter, ReadsInfiniteMarginsBack)
{
    const QMarginsF margins(infinity, infinity, infinity, infinity);
    EXPECT_TRUE(isExactly(fromString(toShortString(margins)), margins));
}

TEST(StringConverter, ReadsSidesWithinTheToleranceBackAsEqual)
{
    EXPECT_TRUE(isExactly(fromString(toShortString({1, 2, 1 + 5e-13, 2 + 5e-13})), {1, 2, 1, 2}));
}

// The left side equals the top one and the right one, the top side the bottom
// one, but the left side not the bottom one.
TEST(StringConverter, WritesSidesThatAreEqualInTurnsOnce)
{
    EXPECT_EQ(
        toShortString({51115155511111.0, 51115155511113.0, 51115155511113.0, 51115155511163.0}),
        "51115155511111.0");
}

} // namespace
