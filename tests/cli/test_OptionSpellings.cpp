#include "CliTest.h"

#include "support/SampleImages.h"

namespace {

struct Row
{
    const char* name;
    std::vector<std::string> given;
    std::vector<std::string> plain; ///< Another way to say the same.
};

const Row rows[] = {
    {"LongOptionWithEqualsSign", {"--paper-size=letter"}, {"-p", "letter"}},
    {"LongOptionWithNextArgument", {"--paper-size", "letter"}, {"-p", "letter"}},
    {"ShortOptionWithAttachedValue", {"-pletter"}, {"-p", "letter"}},
    {"ResolutionInFull", {"--resolution", "standard"}, {"-r", "standard"}},
    {"RotationInFull", {"--rotation", "90"}, {"-R", "90"}},
    {"NegativeRotationIsNoOption", {"-R", "-90"}, {"-R", "270"}},
    {"AttachedNegativeRotation", {"-R-90"}, {"-R", "270"}},
    {"TransformationInFull", {"--transformation", "fittopaper"}, {"-t", "fittopaper"}},
    {"MarginsInFull", {"--margins", "1"}, {"-m", "1"}},
    {"CompressionInFull", {"--compression", "g4"}, {"-c", "g4"}},
    {"CoverPageInFull", {"--cover-page", "cover.html"}, {"-C", "cover.html"}},
    {"PrefixOfPaperSize", {"--p", "letter"}, {"-p", "letter"}},
    {"PrefixOfResolution", {"--re", "standard"}, {"-r", "standard"}},
    {"PrefixOfRotation", {"--ro", "90"}, {"-R", "90"}},
    {"PrefixOfTransformation", {"--trans", "fittopaper"}, {"-t", "fittopaper"}},
    {"PrefixOfMargins", {"--mar=1"}, {"-m", "1"}},
    {"PrefixOfCompression", {"--com", "g4"}, {"-c", "g4"}},
    {"PrefixOfCoverPage", {"--cov", "cover.html"}, {"-C", "cover.html"}},
    {"PrefixOfFile", {"--fi", "in.png"}, {"in.png"}},
    {"RepeatedTransformation", {"-t", "fittopaper", "-t", "fittopaper"}, {"-t", "fittopaper"}},
    {"OneMarginForAllSides", {"-m", "1"}, {"-m", "1,1,1,1"}},
    {"TwoMarginsForOppositeSides", {"-m", "0.5,1"}, {"-m", "0.5,1,0.5,1"}},
    {"BlanksAroundMargins", {"-m", " 1 , 2 "}, {"-m", "1,2"}},
    {"TextBehindAMargin", {"-m", "1in"}, {"-m", "1"}},
    {"SemicolonIsNoSeparator", {"-m", "1;2"}, {"-m", "1"}},
    {"HexadecimalMargin", {"-m", "0x1p1"}, {"-m", "2"}},
    {"MarginWithExponent", {"-m", "10e-1"}, {"-m", "1"}},
    {"NegativeZeroMargin", {"-m", "-0"}, {}},
    {"TinyMarginsAreNone", {"-m", "1e-13"}, {}},
    {"LargestMarginsForA4", {"-m", "4"}, {"-m", "4,4,4,4"}},
    {"ExactlyATenthOfAnInchOfPaper",
     {"-p", "letter", "-m", "8.25,0,0.15,0"},
     {"-p", "letter", "-m", "8.25,0.0,0.15,0.0"}},
    {"InputFileBehindADoubleDash", {"-c", "g4", "--", "in.png"}, {"in.png", "-c", "g4"}},
};

class Spelling : public CliTest, public testing::WithParamInterface<Row>
{
protected:
    void SetUp() override
    {
        folder().write("in.png", SampleImages::pngFile(pageWith({40, 20}, {0, 0, 10, 6})));
        folder().write("cover.html", "<html><body>Cover</body></html>");
    }

    QByteArray outputOf(const std::vector<std::string>& options) const
    {
        std::vector<std::string> arguments = {"-o", "out.tif", "in.png"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        EXPECT_TRUE(isSilentSuccess(run(arguments)));
        return content("out.tif");
    }
};

TEST_P(Spelling, GivesTheSameFile)
{
    EXPECT_TRUE(outputOf(GetParam().given) == outputOf(GetParam().plain));
}

INSTANTIATE_TEST_SUITE_P(Cli, Spelling, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

struct OutputRow
{
    const char* name;
    std::vector<std::string> arguments;
};

const OutputRow outputRows[] = {
    {"ByItsLetter", {"-o", "out.tif"}},
    {"ByItsLetterWithAttachedName", {"-oout.tif"}},
    {"InFull", {"--output-file", "out.tif"}},
    {"InFullWithEqualsSign", {"--output-file=out.tif"}},
    {"ByItsShortestPrefix", {"--o", "out.tif"}},
    {"ByAPrefixWithEqualsSign", {"--out=out.tif"}},
};

class OutputFileOption : public CliTest, public testing::WithParamInterface<OutputRow>
{
};

TEST_P(OutputFileOption, NamesTheOutput)
{
    folder().write("in.png", blackPng({20, 20}));
    std::vector<std::string> arguments = GetParam().arguments;
    arguments.emplace_back("in.png");
    ASSERT_TRUE(isSilentSuccess(run(arguments)));
    EXPECT_EQ(pages().size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(Cli, OutputFileOption, testing::ValuesIn(outputRows),
                         [](const auto& test) { return std::string{test.param.name}; });

} // namespace
