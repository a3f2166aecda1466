#include "options/OptionsParser.h"

#include "options/CommandLine.h"
#include "options/OptionsApplicationExit.h"
#include "support/ProgramTexts.h"

#include <boost/program_options/errors.hpp>

#include <gtest/gtest.h>

#include <exception>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace po = boost::program_options;

namespace {

static_assert(std::is_base_of_v<std::exception, OptionsApplicationExit>);
static_assert(!std::is_base_of_v<std::logic_error, OptionsApplicationExit>);

/// Holds back what is written to std::cout.
class StandardOutput
{
public:
    StandardOutput() : m_previous(std::cout.rdbuf(m_stream.rdbuf())) {}
    ~StandardOutput() { std::cout.rdbuf(m_previous); }
    StandardOutput(const StandardOutput&) = delete;
    StandardOutput(StandardOutput&&) = delete;
    StandardOutput& operator=(const StandardOutput&) = delete;
    StandardOutput& operator=(StandardOutput&&) = delete;

    std::string text() const { return m_stream.str(); }

private:
    std::ostringstream m_stream;
    std::streambuf* m_previous;
};

struct TextRow
{
    const char* name;
    Arguments arguments;
    const char* text;
};

const TextRow textRows[] = {
    {"ShortHelpAlone", {"-h"}, ProgramTexts::help},
    {"LongHelpAlone", {"--help"}, ProgramTexts::help},
    {"AbbreviatedHelpAlone", {"--he"}, ProgramTexts::help},
    {"HelpOnACompleteCommandLine", {"-o", "out.tif", "--help", "a.pdf"}, ProgramTexts::help},
    {"HelpBesideMarginsThatAreTooLarge", {"-m", "9", "--help"}, ProgramTexts::help},
    {"HelpBeforeVersion", {"--help", "--version"}, ProgramTexts::help},
    {"HelpAfterVersion", {"--version", "--help"}, ProgramTexts::help},
    {"HelpAndVersionBehindOneDash", {"-vh"}, ProgramTexts::help},
    {"ShortVersionAlone", {"-v"}, ProgramTexts::version},
    {"LongVersionAlone", {"--version"}, ProgramTexts::version},
    {"AbbreviatedVersionAlone", {"--ver"}, ProgramTexts::version},
    {"VersionOnACompleteCommandLine", {"-o", "out.tif", "-v", "a.pdf"}, ProgramTexts::version},
    {"VersionBesideMarginsThatAreTooLarge", {"-m", "9", "-v"}, ProgramTexts::version},
};

class InformationText : public testing::TestWithParam<TextRow>
{
protected:
    StandardOutput m_output;
};

TEST_P(InformationText, EndsTheProgram)
{
    EXPECT_THROW(checked(GetParam().arguments), OptionsApplicationExit);
}

TEST_P(InformationText, IsPrintedWhole)
{
    EXPECT_THROW(checked(GetParam().arguments), OptionsApplicationExit);
    EXPECT_EQ(m_output.text(), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(OptionsParser, InformationText, testing::ValuesIn(textRows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(OptionsParser, PrintsNothingUnlessAsked)
{
    const StandardOutput output;
    checked({"-o", "out.tif", "a.pdf"});
    EXPECT_EQ(output.text(), "");
}

TEST(OptionsParser, PrintsNothingWhileParsing)
{
    const StandardOutput output;
    parsed({"--help", "--version"});
    EXPECT_EQ(output.text(), "");
}

struct RequiredRow
{
    const char* name;
    Arguments arguments;
    const char* missing;
};

const RequiredRow requiredRows[] = {
    {"NothingAtAll", {}, "'--file'"},
    {"OutputFileOnly", {"-o", "out.tif"}, "'--file'"},
    {"OptionsOnly", {"-p", "a4", "-C", "cover.html"}, "'--file'"},
    {"InputFilesOnly", {"a.pdf", "b.pdf"}, "'--output-file'"},
    {"NamedInputFileOnly", {"--file", "a.pdf"}, "'--output-file'"},
    {"InputFileAndMarginsThatAreTooLarge", {"-m", "9", "a.pdf"}, "'--output-file'"},
};

class IncompleteCommandLine : public testing::TestWithParam<RequiredRow>
{
};

TEST_P(IncompleteCommandLine, IsRefusedWithTheMissingOption)
{
    const auto error = errorOf<po::required_option>([] { checked(GetParam().arguments); });
    EXPECT_NE(std::string(error.what()).find(GetParam().missing), std::string::npos)
        << error.what();
}

TEST_P(IncompleteCommandLine, PassesUntilRequiredOptionsAreChecked)
{
    const auto options = parsed(GetParam().arguments);
    options->checkHelp();
    options->checkVersion();
    EXPECT_THROW(options->checkRequiredOptions(), po::required_option);
}

INSTANTIATE_TEST_SUITE_P(OptionsParser, IncompleteCommandLine, testing::ValuesIn(requiredRows),
                         [](const auto& test) { return std::string{test.param.name}; });

struct FittingRow
{
    const char* name;
    const char* paperSize;
    const char* margins;
};

const FittingRow fittingRows[] = {
    {"FourInchesOnA4", "a4", "4,4"},
    {"ExactlyATenthRemainingOfTheWidth", "letter", "8.25,0,0.15,0"},
    {"ExactlyATenthRemainingOfTheHeight", "letter", "0,10.75,0,0.15"},
    {"NearlyTheWholeWidthOfA4", "a4", "8.1677,0,0,0"},
    {"NearlyTheWholeHeightOfA4", "a4", "0,0,0,11.5929"},
    {"MoreThanLetterIsHighOnLegal", "legal", "0,12,0,0"},
    {"MoreThanA4IsWideOnLetter", "letter", "8.3,0,0,0"},
    {"Zero", "a4", "0"},
    {"NegativeZero", "a4", "-0"},
    {"ATrillionthOfAnInch", "a4", "1e-12"},
    {"NotANumberOnEverySide", "a4", "nan"},
    {"NotANumberAcrossAndRoomAlong", "a4", "nan,1"},
};

class FittingMargins : public testing::TestWithParam<FittingRow>
{
};

TEST_P(FittingMargins, PassTheCheck)
{
    EXPECT_NO_THROW(parsed({"-p", GetParam().paperSize, "-m", GetParam().margins})->checkMargins());
}

INSTANTIATE_TEST_SUITE_P(OptionsParser, FittingMargins, testing::ValuesIn(fittingRows),
                         [](const auto& test) { return std::string{test.param.name}; });

struct TooLargeRow
{
    const char* name;
    Arguments arguments;
    const char* message;
};

const TooLargeRow tooLargeRows[] = {
    {"NineInchesOnA4", {"-m", "9"}, "the argument ('9.0') for option '--margins' is too large"},
    {"TheWidthIsNotRoundedUpToATenth",
     {"-p", "letter", "-m", "4.2,0"},
     "the argument ('4.2,0.0') for option '--margins' is too large"},
    {"TheLeftMarginIsSubtractedFirst",
     {"-p", "letter", "-m", "0.15,0,8.25,0"},
     "the argument ('0.15,0.0,8.25,0.0') for option '--margins' is too large"},
    {"TheTopMarginIsSubtractedFirst",
     {"-p", "letter", "-m", "0,0.15,0,10.75"},
     "the argument ('0.0,0.15,0.0,10.75') for option '--margins' is too large"},
    {"TheHeightAloneIsTooSmall",
     {"-m", "0,100,0,0"},
     "the argument ('0.0,100.0,0.0,0.0') for option '--margins' is too large"},
    {"TheWidthOfA4IsLessThanThatOfLetter",
     {"-m", "8.3,0,0,0"},
     "the argument ('8.3,0.0,0.0,0.0') for option '--margins' is too large"},
    {"TheHeightOfLetterIsLessThanThatOfLegal",
     {"-p", "letter", "-m", "0,12,0,0"},
     "the argument ('0.0,12.0,0.0,0.0') for option '--margins' is too large"},
    {"TheHeightOfLegalIsFourteenInches",
     {"-p", "legal", "-m", "0,7"},
     "the argument ('0.0,7.0') for option '--margins' is too large"},
    {"LessThanATenthRemainsOfTheA4Width",
     {"-m", "8.1678,0,0,0"},
     "the argument ('8.1678,0.0,0.0,0.0') for option '--margins' is too large"},
    {"LessThanATenthRemainsOfTheA4Height",
     {"-m", "0,0,0,11.593"},
     "the argument ('0.0,0.0,0.0,11.593') for option '--margins' is too large"},
    {"AThousandInches",
     {"-m", "1e3"},
     "the argument ('1000.0') for option '--margins' is too large"},
    {"TenToThe15thInches",
     {"-m", "1e15"},
     "the argument ('1000000000000000.0') for option '--margins' is too large"},
    {"TenToThe16thInches",
     {"-m", "1e16"},
     "the argument ('1e+16') for option '--margins' is too large"},
    {"Infinite",
     {"-m", "inf"},
     "the argument ('inf,inf,inf,inf') for option '--margins' is too large"},
    {"NotANumberAcrossAndNoRoomAlong",
     {"-m", "nan,9"},
     "the argument ('nan,9.0,nan,9.0') for option '--margins' is too large"},
    {"TheRotationDoesNotTurnThePaper",
     {"-R", "90", "-m", "5,0"},
     "the argument ('5.0,0.0') for option '--margins' is too large"},
    {"TheMessageNamesTheLongOption",
     {"--marg=9"},
     "the argument ('9.0') for option '--margins' is too large"},
    {"TheMessageHasTheNumbersAndNotTheText",
     {"-m", " 9in , 0x1p1 "},
     "the argument ('9.0,2.0') for option '--margins' is too large"},
};

class TooLargeMargins : public testing::TestWithParam<TooLargeRow>
{
};

TEST_P(TooLargeMargins, AreRefusedWithTheirShortForm)
{
    const auto options = parsed(GetParam().arguments);
    const auto error = errorOf<std::logic_error>([&options] { options->checkMargins(); });
    EXPECT_STREQ(error.what(), GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(OptionsParser, TooLargeMargins, testing::ValuesIn(tooLargeRows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(OptionsParser, PassesWithoutMargins)
{
    EXPECT_NO_THROW(parsed({"-p", "letter"})->checkMargins());
}

} // namespace
