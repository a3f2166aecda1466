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
    {"AttachedNegativeRotation", {"-R-90"}, {"-R", "270"}},
    {"PrefixOfMargins", {"--mar=1"}, {"-m", "1"}},
    {"PrefixOfFile", {"--fi", "in.png"}, {"in.png"}},
    {"RepeatedTransformation", {"-t", "fittopaper", "-t", "fittopaper"}, {"-t", "fittopaper"}},
    {"NegativeZeroMargin", {"-m", "-0"}, {}},
    {"TinyMarginsAreNone", {"-m", "1e-13"}, {}},
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

TEST_F(CliTest, WritesTheOutputThatIsNamedInFull)
{
    folder().write("in.png", blackPng({20, 20}));
    ASSERT_TRUE(isSilentSuccess(run({"--output-file=out.tif", "in.png"})));
    EXPECT_EQ(pages().size(), 1U);
}

} // namespace
