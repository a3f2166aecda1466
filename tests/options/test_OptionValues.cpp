#include "options/OptionValues.h"

#include "options/CommandLine.h"
#include "support/PrintQt.h"

#include <boost/program_options/errors.hpp>

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace po = boost::program_options;

namespace {

using Tokens = std::vector<std::string>;
using Reader = void (*)(boost::any& slot, const Tokens& tokens);

template <typename Value>
void readInto(boost::any& slot, const Tokens& tokens)
{
    validate(slot, tokens, static_cast<Value*>(nullptr), 0);
}

template <typename Value>
Value valueOf(const std::string& token)
{
    boost::any slot;
    readInto<Value>(slot, {token});
    return boost::any_cast<Value>(slot);
}

template <typename Value>
struct WordRow
{
    const char* token;
    Value value;
};

// A token may hold what a test name cannot.
template <typename Row>
std::string tokenAsName(const testing::TestParamInfo<Row>& test)
{
    std::string name;
    for (const char letter : std::string(test.param.token)) {
        name += letter == '-' ? "Minus" : letter == '+' ? "Plus" : std::string(1, letter);
    }
    return name;
}

class PaperSizeWord : public testing::TestWithParam<WordRow<FaxPaperSize>>
{
};

TEST_P(PaperSizeWord, GivesThePaperSize)
{
    EXPECT_EQ(valueOf<FaxPaperSize>(GetParam().token), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(OptionValues, PaperSizeWord,
                         testing::Values(WordRow<FaxPaperSize>{"a4", FaxPaperSize::A4},
                                         WordRow<FaxPaperSize>{"letter", FaxPaperSize::Letter},
                                         WordRow<FaxPaperSize>{"legal", FaxPaperSize::Legal}),
                         tokenAsName<WordRow<FaxPaperSize>>);

class ResolutionWord : public testing::TestWithParam<WordRow<FaxResolution>>
{
};

TEST_P(ResolutionWord, GivesTheResolution)
{
    EXPECT_EQ(valueOf<FaxResolution>(GetParam().token), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(
    OptionValues, ResolutionWord,
    testing::Values(WordRow<FaxResolution>{"standard", FaxResolution::Standard},
                    WordRow<FaxResolution>{"fine", FaxResolution::Fine},
                    WordRow<FaxResolution>{"superfine", FaxResolution::Superfine},
                    WordRow<FaxResolution>{"ultrafine", FaxResolution::Ultrafine}),
    tokenAsName<WordRow<FaxResolution>>);

class CompressionWord : public testing::TestWithParam<WordRow<FaxCompression>>
{
};

TEST_P(CompressionWord, GivesTheCompression)
{
    EXPECT_EQ(valueOf<FaxCompression>(GetParam().token), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(OptionValues, CompressionWord,
                         testing::Values(WordRow<FaxCompression>{"g3", FaxCompression::G3},
                                         WordRow<FaxCompression>{"g4", FaxCompression::G4}),
                         tokenAsName<WordRow<FaxCompression>>);

class RotationAngle : public testing::TestWithParam<WordRow<FaxRotation>>
{
};

TEST_P(RotationAngle, GivesTheRotationWithinOneTurn)
{
    EXPECT_EQ(valueOf<FaxRotation>(GetParam().token), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(OptionValues, RotationAngle,
                         testing::Values(WordRow<FaxRotation>{"0", FaxRotation::Rotate0},
                                         WordRow<FaxRotation>{"90", FaxRotation::Rotate90},
                                         WordRow<FaxRotation>{"180", FaxRotation::Rotate180},
                                         WordRow<FaxRotation>{"270", FaxRotation::Rotate270},
                                         WordRow<FaxRotation>{"-90", FaxRotation::Rotate270},
                                         WordRow<FaxRotation>{"-180", FaxRotation::Rotate180},
                                         WordRow<FaxRotation>{"-270", FaxRotation::Rotate90},
                                         WordRow<FaxRotation>{"+90", FaxRotation::Rotate90},
                                         WordRow<FaxRotation>{"-0", FaxRotation::Rotate0},
                                         WordRow<FaxRotation>{"00090", FaxRotation::Rotate90},
                                         WordRow<FaxRotation>{"360", FaxRotation::Rotate0},
                                         WordRow<FaxRotation>{"-360", FaxRotation::Rotate0},
                                         WordRow<FaxRotation>{"450", FaxRotation::Rotate90},
                                         WordRow<FaxRotation>{"-450", FaxRotation::Rotate270},
                                         WordRow<FaxRotation>{"-720", FaxRotation::Rotate0},
                                         WordRow<FaxRotation>{"2147483610", FaxRotation::Rotate90},
                                         WordRow<FaxRotation>{"-2147483610",
                                                              FaxRotation::Rotate270}),
                         tokenAsName<WordRow<FaxRotation>>);

TEST(OptionValues, FitToPaperSetsItsFlagOnly)
{
    EXPECT_EQ(static_cast<int>(valueOf<FaxTransformationFlags>("fittopaper")), 1);
}

TEST(OptionValues, TransformationsMayBeRepeatedAndAddUp)
{
    boost::any slot;
    readInto<FaxTransformationFlags>(slot, {"fittopaper"});
    readInto<FaxTransformationFlags>(slot, {"fittopaper"});
    EXPECT_EQ(static_cast<int>(boost::any_cast<FaxTransformationFlags>(slot)), 1);
}

TEST(OptionValues, TransformationsWithoutATokenAreAnEmptySet)
{
    boost::any slot;
    readInto<FaxTransformationFlags>(slot, {});
    EXPECT_EQ(static_cast<int>(boost::any_cast<FaxTransformationFlags>(slot)), 0);
}

TEST(OptionValues, EveryTransformationTokenOfAnOccurrenceCounts)
{
    boost::any slot;
    EXPECT_THROW(readInto<FaxTransformationFlags>(slot, {"fittopaper", "fit"}),
                 po::invalid_option_value);
}

TEST(OptionValues, MarginsAreLeftTopRightAndBottom)
{
    const auto margins = valueOf<QMarginsF>("1,2,3,4");
    EXPECT_EQ(margins.left(), 1);
    EXPECT_EQ(margins.top(), 2);
    EXPECT_EQ(margins.right(), 3);
    EXPECT_EQ(margins.bottom(), 4);
}

TEST(OptionValues, NegativeZeroMarginsAreAcceptedAsZero)
{
    EXPECT_EQ(valueOf<QMarginsF>("-0"), QMarginsF(0, 0, 0, 0));
}

TEST(OptionValues, MarginsThatAreNotANumberAreAccepted)
{
    EXPECT_TRUE(std::isnan(valueOf<QMarginsF>("nan").left()));
}

TEST(OptionValues, InfiniteMarginsAreAccepted)
{
    EXPECT_TRUE(std::isinf(valueOf<QMarginsF>("inf").left()));
}

TEST(OptionValues, MarginsOf1000InchesAreAccepted)
{
    EXPECT_EQ(valueOf<QMarginsF>("1e3"), QMarginsF(1000, 1000, 1000, 1000));
}

TEST(OptionValues, NegativeMarginsStayInTheSlot)
{
    boost::any slot;
    EXPECT_THROW(readInto<QMarginsF>(slot, {"1,-0.5"}), po::invalid_option_value);
    ASSERT_FALSE(slot.empty());
    EXPECT_EQ(boost::any_cast<QMarginsF>(slot), QMarginsF(1, -0.5, 1, -0.5));
}

struct RejectedRow
{
    const char* name;
    Reader read;
    const char* token;
};

const RejectedRow rejectedRows[] = {
    {"PaperSizeInUpperCase", readInto<FaxPaperSize>, "A4"},
    {"PaperSizeWithACapital", readInto<FaxPaperSize>, "Letter"},
    {"PaperSizeThatDoesNotExist", readInto<FaxPaperSize>, "a5"},
    {"PaperSizeAfterABlank", readInto<FaxPaperSize>, " a4"},
    {"PaperSizeBeforeABlank", readInto<FaxPaperSize>, "a4 "},
    {"PaperSizeCutShort", readInto<FaxPaperSize>, "let"},
    {"PaperSizeOfAResolution", readInto<FaxPaperSize>, "fine"},
    {"ResolutionInUpperCase", readInto<FaxResolution>, "FINE"},
    {"ResolutionWithACapital", readInto<FaxResolution>, "Fine"},
    {"ResolutionThatDoesNotExist", readInto<FaxResolution>, "high"},
    {"CompressionInUpperCase", readInto<FaxCompression>, "G4"},
    {"CompressionThatDoesNotExist", readInto<FaxCompression>, "g5"},
    {"RotationByAnEighth", readInto<FaxRotation>, "45"},
    {"RotationByMinusAnEighth", readInto<FaxRotation>, "-45"},
    {"RotationWithADecimalPoint", readInto<FaxRotation>, "90.0"},
    {"RotationWithAnExponent", readInto<FaxRotation>, "9e1"},
    {"RotationInHexadecimal", readInto<FaxRotation>, "0x5a"},
    {"RotationAfterABlank", readInto<FaxRotation>, " 90"},
    {"RotationBeforeABlank", readInto<FaxRotation>, "90 "},
    {"RotationWithTwoSigns", readInto<FaxRotation>, "+-90"},
    {"RotationInWords", readInto<FaxRotation>, "ninety"},
    {"RotationBeyond32Bits", readInto<FaxRotation>, "4294967296"},
    {"RotationOfTheNextMultipleBeyond32Bits", readInto<FaxRotation>, "2147483700"},
    {"RotationOfThePreviousMultipleBeyond32Bits", readInto<FaxRotation>, "-2147483700"},
    {"RotationOfTheSmallestInteger", readInto<FaxRotation>, "-2147483648"},
    {"TransformationCutShort", readInto<FaxTransformationFlags>, "fit"},
    {"TransformationWithCapitals", readInto<FaxTransformationFlags>, "FitToPaper"},
    {"TransformationList", readInto<FaxTransformationFlags>, "fittopaper,fittopaper"},
    {"MarginsOfThreeNumbers", readInto<QMarginsF>, "1,2,3"},
    {"MarginsOfFiveNumbers", readInto<QMarginsF>, "1,2,3,4,5"},
    {"MarginsWithAnEmptyPiece", readInto<QMarginsF>, "1,,2,3"},
    {"MarginsWithoutANumber", readInto<QMarginsF>, "abc"},
    {"MarginsOfBlanksOnly", readInto<QMarginsF>, "  "},
    {"MarginsTooLargeToRepresent", readInto<QMarginsF>, "1e309"},
    {"MarginsTooSmallToRepresent", readInto<QMarginsF>, "1e-310"},
    {"MarginsAllNegative", readInto<QMarginsF>, "-1"},
    {"MarginsNegativeVertically", readInto<QMarginsF>, "1,-0.5"},
    {"MarginsNegativeOnTheLeft", readInto<QMarginsF>, "-1,2,3,4"},
    {"MarginsNegativeAtTheTop", readInto<QMarginsF>, "1,-2,3,4"},
    {"MarginsNegativeOnTheRight", readInto<QMarginsF>, "1,2,-3,4"},
    {"MarginsNegativeAtTheBottom", readInto<QMarginsF>, "1,2,3,-4"},
    {"MarginsNegativeBesideNotANumber", readInto<QMarginsF>, "nan,2,3,-4"},
    {"MarginsNegativeButTiny", readInto<QMarginsF>, "-1e-13"},
    {"MarginsOfMinusInfinity", readInto<QMarginsF>, "-inf"},
};

class RejectedToken : public testing::TestWithParam<RejectedRow>
{
};

TEST_P(RejectedToken, IsAnInvalidOptionValue)
{
    boost::any slot;
    EXPECT_THROW(GetParam().read(slot, {GetParam().token}), po::invalid_option_value);
}

TEST_P(RejectedToken, IsNamedByTheError)
{
    const auto error = errorOf<po::invalid_option_value>([] {
        boost::any slot;
        GetParam().read(slot, {GetParam().token});
    });
    const std::string quoted = "'" + std::string(GetParam().token) + "'";
    EXPECT_NE(std::string(error.what()).find(quoted), std::string::npos) << error.what();
}

INSTANTIATE_TEST_SUITE_P(OptionValues, RejectedToken, testing::ValuesIn(rejectedRows),
                         [](const auto& test) { return std::string{test.param.name}; });

struct EmptyRow
{
    const char* name;
    Reader read;
};

const EmptyRow emptyRows[] = {
    {"PaperSize", readInto<FaxPaperSize>},
    {"Resolution", readInto<FaxResolution>},
    {"Compression", readInto<FaxCompression>},
    {"Rotation", readInto<FaxRotation>},
    {"Transformation", readInto<FaxTransformationFlags>},
    {"Margins", readInto<QMarginsF>},
};

class EmptyToken : public testing::TestWithParam<EmptyRow>
{
};

TEST_P(EmptyToken, IsAnInvalidOptionValue)
{
    boost::any slot;
    EXPECT_THROW(GetParam().read(slot, {""}), po::invalid_option_value);
}

INSTANTIATE_TEST_SUITE_P(OptionValues, EmptyToken, testing::ValuesIn(emptyRows),
                         [](const auto& test) { return std::string{test.param.name}; });

struct SingleRow
{
    const char* name;
    Reader read;
    const char* token;
};

const SingleRow singleRows[] = {
    {"PaperSize", readInto<FaxPaperSize>, "a4"},
    {"Resolution", readInto<FaxResolution>, "fine"},
    {"Compression", readInto<FaxCompression>, "g3"},
    {"Rotation", readInto<FaxRotation>, "90"},
    {"Margins", readInto<QMarginsF>, "1"},
};

class SingleValue : public testing::TestWithParam<SingleRow>
{
};

TEST_P(SingleValue, MayNotBeRepeatedEvenWithTheSameToken)
{
    boost::any slot;
    GetParam().read(slot, {GetParam().token});
    EXPECT_THROW(GetParam().read(slot, {GetParam().token}), po::multiple_occurrences);
}

TEST_P(SingleValue, IsRepeatedBeforeItIsInvalid)
{
    boost::any slot;
    GetParam().read(slot, {GetParam().token});
    EXPECT_THROW(GetParam().read(slot, {"x"}), po::multiple_occurrences);
}

TEST_P(SingleValue, NeedsAToken)
{
    const auto error = errorOf<po::validation_error>([] {
        boost::any slot;
        GetParam().read(slot, {});
    });
    EXPECT_EQ(error.kind(), po::validation_error::at_least_one_value_required);
}

TEST_P(SingleValue, TakesNoSecondToken)
{
    const auto error = errorOf<po::validation_error>([] {
        boost::any slot;
        GetParam().read(slot, {GetParam().token, GetParam().token});
    });
    EXPECT_EQ(error.kind(), po::validation_error::multiple_values_not_allowed);
}

INSTANTIATE_TEST_SUITE_P(OptionValues, SingleValue, testing::ValuesIn(singleRows),
                         [](const auto& test) { return std::string{test.param.name}; });

} // namespace
