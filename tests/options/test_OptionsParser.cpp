#include "options/OptionsParser.h"

#include "options/CommandLine.h"
#include "support/PrintQt.h"

#include <boost/any.hpp>
#include <boost/program_options/errors.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

namespace po = boost::program_options;

namespace {

TEST(OptionsParser, DefaultsToA4Paper)
{
    EXPECT_EQ(parsed({})->paperSize(), FaxPaperSize::A4);
}

TEST(OptionsParser, DefaultsToFineResolution)
{
    EXPECT_EQ(parsed({})->resolution(), FaxResolution::Fine);
}

TEST(OptionsParser, DefaultsToNoRotation)
{
    EXPECT_EQ(parsed({})->rotation(), FaxRotation::Rotate0);
}

TEST(OptionsParser, DefaultsToGroup3)
{
    EXPECT_EQ(parsed({})->compression(), FaxCompression::G3);
}

TEST(OptionsParser, DefaultsToZeroMargins)
{
    EXPECT_EQ(parsed({})->margins(), QMarginsF(0, 0, 0, 0));
}

TEST(OptionsParser, DefaultsToNoTransformation)
{
    EXPECT_EQ(static_cast<int>(parsed({})->transformationFlags()), 0);
}

TEST(OptionsParser, DefaultsToNoCoverPage)
{
    EXPECT_EQ(parsed({})->coverPage(), "");
}

constexpr char badCastText[] = "boost::bad_any_cast: failed conversion using boost::any_cast";

TEST(OptionsParser, HasNoDefaultForTheOutputFile)
{
    const auto error = errorOf<boost::bad_any_cast>([] { parsed({"a.pdf"})->outputFile(); });
    EXPECT_STREQ(error.what(), badCastText);
}

TEST(OptionsParser, HasNoDefaultForTheInputFiles)
{
    const auto error = errorOf<boost::bad_any_cast>([] { parsed({"-o", "out.tif"})->files(); });
    EXPECT_STREQ(error.what(), badCastText);
}

TEST(OptionsParser, ReadsNothingFromAnEmptyArgumentVector)
{
    char* values[] = {nullptr};
    OptionsParser parser;
    parser.parseCommandLine(0, values);
    EXPECT_THROW(parser.files(), boost::bad_any_cast);
}

struct SpellingRow
{
    const char* name;
    Arguments arguments;
    bool (*isRead)(const OptionsParser& options);
};

bool isLetter(const OptionsParser& options)
{
    return options.paperSize() == FaxPaperSize::Letter;
}

bool isSuperfine(const OptionsParser& options)
{
    return options.resolution() == FaxResolution::Superfine;
}

bool isRotated(const OptionsParser& options)
{
    return options.rotation() == FaxRotation::Rotate270;
}

bool isFitToPaper(const OptionsParser& options)
{
    return options.transformationFlags().testFlag(FaxTransformationFlag::FitToPaper);
}

bool isSpaced(const OptionsParser& options)
{
    return options.margins() == QMarginsF(1, 2, 3, 4);
}

bool isGroup4(const OptionsParser& options)
{
    return options.compression() == FaxCompression::G4;
}

bool isCovered(const OptionsParser& options)
{
    return options.coverPage() == "cover.html";
}

bool isWritten(const OptionsParser& options)
{
    return options.outputFile() == "out.tif";
}

bool isInput(const OptionsParser& options)
{
    return options.files() == std::vector<std::string>{"a.pdf"};
}

const SpellingRow spellingRows[] = {
    {"ShortPaperSize", {"-p", "letter"}, isLetter},
    {"AttachedPaperSize", {"-pletter"}, isLetter},
    {"LongPaperSize", {"--paper-size", "letter"}, isLetter},
    {"PaperSizeAfterAnEqualsSign", {"--paper-size=letter"}, isLetter},
    {"ShortestPaperSize", {"--p", "letter"}, isLetter},
    {"ShortResolution", {"-r", "superfine"}, isSuperfine},
    {"AttachedResolution", {"-rsuperfine"}, isSuperfine},
    {"LongResolution", {"--resolution", "superfine"}, isSuperfine},
    {"ResolutionAfterAnEqualsSign", {"--resolution=superfine"}, isSuperfine},
    {"ShortestResolution", {"--re", "superfine"}, isSuperfine},
    {"ShortRotation", {"-R", "270"}, isRotated},
    {"AttachedRotation", {"-R270"}, isRotated},
    {"NegativeRotationAsTheNextArgument", {"-R", "-90"}, isRotated},
    {"NegativeRotationAttached", {"-R-90"}, isRotated},
    {"LongRotation", {"--rotation", "270"}, isRotated},
    {"RotationAfterAnEqualsSign", {"--rotation=-90"}, isRotated},
    {"ShortestRotation", {"--ro", "270"}, isRotated},
    {"ShortTransformation", {"-t", "fittopaper"}, isFitToPaper},
    {"AttachedTransformation", {"-tfittopaper"}, isFitToPaper},
    {"LongTransformation", {"--transformation", "fittopaper"}, isFitToPaper},
    {"TransformationAfterAnEqualsSign", {"--transformation=fittopaper"}, isFitToPaper},
    {"ShortestTransformation", {"--t", "fittopaper"}, isFitToPaper},
    {"RepeatedTransformation", {"-t", "fittopaper", "-t", "fittopaper"}, isFitToPaper},
    {"ShortMargins", {"-m", "1,2,3,4"}, isSpaced},
    {"AttachedMargins", {"-m1,2,3,4"}, isSpaced},
    {"LongMargins", {"--margins", "1,2,3,4"}, isSpaced},
    {"MarginsAfterAnEqualsSign", {"--margins=1,2,3,4"}, isSpaced},
    {"ShortestMargins", {"--m", "1,2,3,4"}, isSpaced},
    {"ShortCompression", {"-c", "g4"}, isGroup4},
    {"AttachedCompression", {"-cg4"}, isGroup4},
    {"LongCompression", {"--compression", "g4"}, isGroup4},
    {"CompressionAfterAnEqualsSign", {"--compression=g4"}, isGroup4},
    {"ShortestCompression", {"--com", "g4"}, isGroup4},
    {"ShortCoverPage", {"-C", "cover.html"}, isCovered},
    {"AttachedCoverPage", {"-Ccover.html"}, isCovered},
    {"LongCoverPage", {"--cover-page", "cover.html"}, isCovered},
    {"CoverPageAfterAnEqualsSign", {"--cover-page=cover.html"}, isCovered},
    {"ShortestCoverPage", {"--cov", "cover.html"}, isCovered},
    {"ShortOutputFile", {"-o", "out.tif"}, isWritten},
    {"AttachedOutputFile", {"-oout.tif"}, isWritten},
    {"LongOutputFile", {"--output-file", "out.tif"}, isWritten},
    {"OutputFileAfterAnEqualsSign", {"--output-file=out.tif"}, isWritten},
    {"ShortestOutputFile", {"--o", "out.tif"}, isWritten},
    {"BareFile", {"a.pdf"}, isInput},
    {"HiddenFileOption", {"--file", "a.pdf"}, isInput},
    {"HiddenFileOptionAfterAnEqualsSign", {"--file=a.pdf"}, isInput},
    {"ShortestHiddenFileOption", {"--f", "a.pdf"}, isInput},
    {"ValueAttachedBehindSwitches", {"-hvcg4"}, isGroup4},
    {"ValueBehindSwitches", {"-hvc", "g4"}, isGroup4},
};

class Spelling : public testing::TestWithParam<SpellingRow>
{
};

TEST_P(Spelling, IsRead)
{
    EXPECT_TRUE(GetParam().isRead(*parsed(GetParam().arguments)));
}

INSTANTIATE_TEST_SUITE_P(OptionsParser, Spelling, testing::ValuesIn(spellingRows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(OptionsParser, KeepsCapitalsApartFromSmallLetters)
{
    const auto options = parsed({"-C", "cover.html", "-c", "g4", "-R", "270", "-r", "superfine"});
    EXPECT_EQ(options->coverPage(), "cover.html");
    EXPECT_EQ(options->compression(), FaxCompression::G4);
    EXPECT_EQ(options->rotation(), FaxRotation::Rotate270);
    EXPECT_EQ(options->resolution(), FaxResolution::Superfine);
}

TEST(OptionsParser, CollectsBareAndNamedFilesInTheirOrder)
{
    const auto options =
        parsed({"d.pdf", "--file", "b.tif", "-o", "out.tif", "c.png", "--file=a.jpg", "d.pdf"});
    EXPECT_EQ(options->files(),
              (std::vector<std::string>{"d.pdf", "b.tif", "c.png", "a.jpg", "d.pdf"}));
}

TEST(OptionsParser, TakesWhatFollowsADoubleDashForFiles)
{
    EXPECT_EQ(parsed({"a.pdf", "--", "-h", "--paper-size", "--"})->files(),
              (std::vector<std::string>{"a.pdf", "-h", "--paper-size", "--"}));
}

TEST(OptionsParser, TakesALoneDashForAFile)
{
    EXPECT_EQ(parsed({"-"})->files(), std::vector<std::string>{"-"});
}

TEST(OptionsParser, KeepsFileNamesByteForByte)
{
    const auto options = parsed({"-o", "out \xff\xc3\xa9", "-C", " \x80 ", "\xfe,\xc3\xa4.pdf"});
    EXPECT_EQ(options->outputFile(), "out \xff\xc3\xa9");
    EXPECT_EQ(options->coverPage(), " \x80 ");
    EXPECT_EQ(options->files(), std::vector<std::string>{"\xfe,\xc3\xa4.pdf"});
}

TEST(OptionsParser, AcceptsEmptyFileNames)
{
    const auto options = checked({"-o", "", "-C", "", ""});
    EXPECT_EQ(options->outputFile(), "");
    EXPECT_EQ(options->coverPage(), "");
    EXPECT_EQ(options->files(), std::vector<std::string>{""});
}

struct AmbiguousRow
{
    const char* name;
    const char* prefix;
    std::vector<std::string> alternatives;
};

const AmbiguousRow ambiguousRows[] = {
    {"C", "--c", {"compression", "cover-page"}},
    {"Co", "--co", {"compression", "cover-page"}},
    {"R", "--r", {"resolution", "rotation"}},
};

class AmbiguousPrefix : public testing::TestWithParam<AmbiguousRow>
{
};

TEST_P(AmbiguousPrefix, IsRefusedWithItsAlternatives)
{
    const auto error = errorOf<po::ambiguous_option>([] { parsed({GetParam().prefix, "x"}); });
    std::vector<std::string> alternatives = error.alternatives();
    std::sort(alternatives.begin(), alternatives.end());
    EXPECT_EQ(alternatives, GetParam().alternatives);
}

INSTANTIATE_TEST_SUITE_P(OptionsParser, AmbiguousPrefix, testing::ValuesIn(ambiguousRows),
                         [](const auto& test) { return std::string{test.param.name}; });

struct ArgumentsRow
{
    const char* name;
    Arguments arguments;
};

const ArgumentsRow unknownRows[] = {
    {"LongOption", {"--colour"}},
    {"LongOptionWithAnAddedLetter", {"--helpme"}},
    {"LongOptionInCapitals", {"--HELP"}},
    {"ShortOption", {"-x"}},
    {"ShortOptionInACapital", {"-P", "a4"}},
    {"ShortFormOfTheHiddenOption", {"-f", "a.pdf"}},
    {"OptionAmongFiles", {"a.pdf", "--colour", "b.pdf"}},
    {"OptionBesideHelp", {"--help", "--colour"}},
    {"OptionAfterAnUnacceptableValue", {"-p", "a5", "--colour"}},
    {"OptionAfterARepeatedOne", {"-p", "a4", "-p", "a4", "--colour"}},
};

class UnknownOption : public testing::TestWithParam<ArgumentsRow>
{
};

TEST_P(UnknownOption, IsRefused)
{
    EXPECT_THROW(parsed(GetParam().arguments), po::unknown_option);
}

INSTANTIATE_TEST_SUITE_P(OptionsParser, UnknownOption, testing::ValuesIn(unknownRows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(OptionsParser, RefusesAValueForTheHelpSwitch)
{
    const auto error = errorOf<po::invalid_command_line_syntax>([] { parsed({"--help=yes"}); });
    EXPECT_EQ(error.kind(), po::invalid_syntax::extra_parameter);
}

TEST(OptionsParser, RefusesAValueForTheVersionSwitch)
{
    const auto error = errorOf<po::invalid_command_line_syntax>([] { parsed({"--version=1"}); });
    EXPECT_EQ(error.kind(), po::invalid_syntax::extra_parameter);
}

struct ValueRow
{
    const char* name;
    const char* option;
    const char* good;
    const char* bad; // null where every text is a value
};

const ValueRow valueRows[] = {
    {"PaperSize", "--paper-size", "a4", "a5"},
    {"Resolution", "--resolution", "fine", "high"},
    {"Rotation", "--rotation", "90", "45"},
    {"Transformation", "--transformation", "fittopaper", "fit"},
    {"Margins", "--margins", "1", "-1"},
    {"Compression", "--compression", "g3", "g5"},
    {"CoverPage", "--cover-page", "cover.html", nullptr},
    {"OutputFile", "--output-file", "out.tif", nullptr},
    {"File", "--file", "a.pdf", nullptr},
};

class ValuedOption : public testing::TestWithParam<ValueRow>
{
};

TEST_P(ValuedOption, NeedsItsValue)
{
    const auto error =
        errorOf<po::invalid_command_line_syntax>([] { parsed({GetParam().option}); });
    EXPECT_EQ(error.kind(), po::invalid_syntax::missing_parameter);
}

TEST_P(ValuedOption, DoesNotTakeAnotherOptionForItsValue)
{
    const auto error =
        errorOf<po::invalid_command_line_syntax>([] { parsed({GetParam().option, "-h"}); });
    EXPECT_EQ(error.kind(), po::invalid_syntax::missing_parameter);
}

INSTANTIATE_TEST_SUITE_P(OptionsParser, ValuedOption, testing::ValuesIn(valueRows),
                         [](const auto& test) { return std::string{test.param.name}; });

std::vector<ValueRow> typedRows()
{
    std::vector<ValueRow> rows;
    std::copy_if(std::begin(valueRows), std::end(valueRows), std::back_inserter(rows),
                 [](const ValueRow& row) { return row.bad != nullptr; });
    return rows;
}

class TypedOption : public testing::TestWithParam<ValueRow>
{
};

TEST_P(TypedOption, NamesTokenAndOptionWhenTheValueIsUnacceptable)
{
    const auto error =
        errorOf<po::invalid_option_value>([] { parsed({GetParam().option, GetParam().bad}); });
    const std::string text = error.what();
    EXPECT_NE(text.find("'" + std::string(GetParam().bad) + "'"), std::string::npos) << text;
    EXPECT_NE(text.find("'" + std::string(GetParam().option) + "'"), std::string::npos) << text;
}

TEST_P(TypedOption, IsRefusedForItsValueBeforeHelp)
{
    EXPECT_THROW(checked({"--help", GetParam().option, GetParam().bad}), po::invalid_option_value);
}

INSTANTIATE_TEST_SUITE_P(OptionsParser, TypedOption, testing::ValuesIn(typedRows()),
                         [](const auto& test) { return std::string{test.param.name}; });

const ArgumentsRow repeatedRows[] = {
    {"Help", {"-h", "-h"}},
    {"HelpBehindOneDash", {"-hh"}},
    {"Version", {"-v", "--version"}},
    {"PaperSizeWithTheSameWord", {"-p", "a4", "-p", "a4"}},
    {"PaperSizeWithAnUnacceptableWord", {"-p", "a4", "--paper-size", "a5"}},
    {"Resolution", {"-r", "fine", "--re=standard"}},
    {"Rotation", {"-R", "90", "-R", "180"}},
    {"Margins", {"-m", "1", "-m", "1"}},
    {"Compression", {"-c", "g3", "-c", "g4"}},
    {"CoverPage", {"-C", "a.html", "-C", "b.html"}},
    {"OutputFile", {"-o", "a.tif", "-o", "b.tif"}},
};

class RepeatedOption : public testing::TestWithParam<ArgumentsRow>
{
};

TEST_P(RepeatedOption, IsRefused)
{
    EXPECT_THROW(parsed(GetParam().arguments), po::multiple_occurrences);
}

INSTANTIATE_TEST_SUITE_P(OptionsParser, RepeatedOption, testing::ValuesIn(repeatedRows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(OptionsParser, ReportsTheFirstOfTwoUnacceptableValues)
{
    const auto error =
        errorOf<po::invalid_option_value>([] { parsed({"-r", "high", "-p", "a5"}); });
    EXPECT_NE(std::string(error.what()).find("'high'"), std::string::npos) << error.what();
}

TEST(OptionsParser, ReportsAnUnacceptableValueBeforeALaterRepetition)
{
    EXPECT_THROW(parsed({"-p", "a5", "-p", "a4"}), po::invalid_option_value);
}

TEST(OptionsParser, ReportsAnUnacceptableTransformationAfterAnAcceptableOne)
{
    EXPECT_THROW(parsed({"-t", "fittopaper", "-t", "fit"}), po::invalid_option_value);
}

TEST(OptionsParser, NamesTheLongOptionWhenTheShortOneWasGiven)
{
    const auto error = errorOf<po::invalid_option_value>([] { parsed({"-p", "a5"}); });
    EXPECT_NE(std::string(error.what()).find("'--paper-size'"), std::string::npos) << error.what();
}

} // namespace
