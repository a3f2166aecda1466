#include "CliTest.h"

namespace {

struct Row
{
    const char* name;
    std::vector<std::string> arguments; ///< In front of "-o out.tif in.png".
    const char* error;
};

const Row rows[] = {
    {"UnknownLongOption", {"--nope"}, "unrecognised option '--nope'\n"},
    {"UnknownShortOption", {"-q"}, "unrecognised option '-q'\n"},
    {"AmbiguousPrefixOfTwoOptions",
     {"--co", "g3"},
     "option '--co' is ambiguous and matches '--compression', and '--cover-page'\n"},
    {"AmbiguousFirstLetter",
     {"--r", "fine"},
     "option '--r' is ambiguous and matches '--resolution', and '--rotation'\n"},
    {"ValueForHelp", {"--help=1"}, "option '--help' does not take any arguments\n"},
    {"ValueForVersion", {"--version=1"}, "option '--version' does not take any arguments\n"},
    {"EmptyValueBehindTheEqualsSign",
     {"--paper-size="},
     "the argument for option '--paper-size' should follow immediately after the equal sign\n"},

    {"HelpTwice", {"-h", "-h"}, "option '--help' cannot be specified more than once\n"},
    {"VersionTwice", {"-v", "-v"}, "option '--version' cannot be specified more than once\n"},
    {"SamePaperSizeTwice",
     {"-p", "a4", "-p", "a4"},
     "option '--paper-size' cannot be specified more than once\n"},
    {"ResolutionTwice",
     {"-r", "fine", "--resolution", "standard"},
     "option '--resolution' cannot be specified more than once\n"},
    {"RotationTwice",
     {"-R", "0", "-R", "90"},
     "option '--rotation' cannot be specified more than once\n"},
    {"MarginsTwice",
     {"-m", "1", "-m", "1"},
     "option '--margins' cannot be specified more than once\n"},
    {"CompressionTwice",
     {"-c", "g3", "-c", "g4"},
     "option '--compression' cannot be specified more than once\n"},
    {"CoverPageTwice",
     {"-C", "a.html", "-C", "b.html"},
     "option '--cover-page' cannot be specified more than once\n"},
    {"OutputFileTwice",
     {"-o", "other.tif"},
     "option '--output-file' cannot be specified more than once\n"},

    {"UnknownPaperSize",
     {"-p", "a5"},
     "the argument ('a5') for option '--paper-size' is invalid\n"},
    {"UnknownResolution",
     {"-r", "high"},
     "the argument ('high') for option '--resolution' is invalid\n"},
    {"UnknownCompression",
     {"-c", "g5"},
     "the argument ('g5') for option '--compression' is invalid\n"},
    {"RotationByHalfARightAngle",
     {"-R", "45"},
     "the argument ('45') for option '--rotation' is invalid\n"},
    {"UnknownTransformation",
     {"-t", "fit"},
     "the argument ('fit') for option '--transformation' is invalid\n"},
    {"ThreeMargins", {"-m", "1,2,3"}, "the argument ('1,2,3') for option '--margins' is invalid\n"},
    {"NegativeMargin", {"-m", "-1"}, "the argument ('-1') for option '--margins' is invalid\n"},
    {"EmptyMargins", {"-m", ""}, "the argument for option '--margins' is invalid\n"},
    {"InvalidValueIsReportedBeforeHelp",
     {"-h", "-p", "a5"},
     "the argument ('a5') for option '--paper-size' is invalid\n"},

    {"MarginsWiderThanThePaper",
     {"-m", "9"},
     "the argument ('9.0') for option '--margins' is too large\n"},
};

class CommandLineError : public CliTest, public testing::WithParamInterface<Row>
{
};

TEST_P(CommandLineError, IsOneLineAndNothingIsWritten)
{
    std::vector<std::string> arguments = GetParam().arguments;
    arguments.insert(arguments.end(), {"-o", "out.tif", "in.png"});
    folder().write("in.png", blackPng({20, 20}));
    EXPECT_TRUE(isFailure(run(arguments), GetParam().error));
    EXPECT_EQ(folder().entries(), QStringList(QStringLiteral("in.png")));
}

INSTANTIATE_TEST_SUITE_P(Cli, CommandLineError, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

const Row incompleteRows[] = {
    {"WithoutArguments", {}, "the option '--file' is required but missing\n"},
    {"WithoutInputFile", {"-o", "out.tif"}, "the option '--file' is required but missing\n"},
    {"WithoutOutputFile", {"in.png"}, "the option '--output-file' is required but missing\n"},
    {"WithoutOutputFileButALargeMargin",
     {"-m", "9", "in.png"},
     "the option '--output-file' is required but missing\n"},
    {"WithoutTheNameOfTheOutputFile",
     {"in.png", "-o"},
     "the required argument for option '--output-file' is missing\n"},
    {"WithoutTheValueOfALongOption",
     {"in.png", "-o", "out.tif", "--margins"},
     "the required argument for option '--margins' is missing\n"},
    {"WithOptionsBehindADoubleDash",
     {"--", "-o", "out.tif"},
     "the option '--output-file' is required but missing\n"},
    // Neither is an option, so both are names of documents.
    {"WithALoneDash", {"-"}, "the option '--output-file' is required but missing\n"},
    {"WithAnEmptyArgument", {""}, "the option '--output-file' is required but missing\n"},
};

class IncompleteCommandLine : public CliTest, public testing::WithParamInterface<Row>
{
};

TEST_P(IncompleteCommandLine, IsReported)
{
    EXPECT_TRUE(isFailure(run(GetParam().arguments), GetParam().error));
    EXPECT_EQ(folder().entries(), QStringList());
}

INSTANTIATE_TEST_SUITE_P(Cli, IncompleteCommandLine, testing::ValuesIn(incompleteRows),
                         [](const auto& test) { return std::string{test.param.name}; });

} // namespace
