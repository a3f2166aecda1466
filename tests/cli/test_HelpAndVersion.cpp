#include "CliTest.h"

#include "support/ProgramTexts.h"

namespace {

struct Row
{
    const char* name;
    std::vector<std::string> arguments;
    const char* text;
};

const Row rows[] = {
    {"HelpInFull", {"--help"}, ProgramTexts::help},
    {"VersionInFull", {"--version"}, ProgramTexts::version},
    {"HelpWinsOverVersion", {"--version", "--help"}, ProgramTexts::help},
    {"HelpOnACompleteCommandLine", {"-o", "out.tif", "missing.png", "-h"}, ProgramTexts::help},
    {"VersionOnACompleteCommandLine",
     {"-v", "-o", "out.tif", "missing.png"},
     ProgramTexts::version},
    {"HelpWithMarginsThatAreTooLarge", {"-m", "9", "--help"}, ProgramTexts::help},
    {"VersionWithMarginsThatAreTooLarge", {"-m", "9", "--version"}, ProgramTexts::version},
};

class HelpAndVersion : public CliTest, public testing::WithParamInterface<Row>
{
};

TEST_P(HelpAndVersion, PrintTheirTextAndNothingElse)
{
    const ProgramResult result = run(GetParam().arguments);
    EXPECT_EQ(result.output, GetParam().text);
    EXPECT_EQ(result.error, "");
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(folder().entries(), QStringList());
}

TEST_P(HelpAndVersion, FailWhereTheirTextFindsNoRoom)
{
    ProgramStart full = start(GetParam().arguments);
    full.outputFile = "/dev/full";
    EXPECT_TRUE(isFailure(runProgram(full), "can't write standard output\n"));
}

INSTANTIATE_TEST_SUITE_P(Cli, HelpAndVersion, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

// Where Qt is used, it remarks on its plug-ins under these settings.
class WithoutQt : public CliTest
{
protected:
    ProgramResult runTalkative(const std::vector<std::string>& arguments) const
    {
        ProgramStart talkative = start(arguments);
        talkative.environment["QT_QPA_PLATFORM"] = "nonsense";
        talkative.environment["QT_DEBUG_PLUGINS"] = "1";
        talkative.environment["QT_LOGGING_RULES"] = "*=true";
        return runProgram(talkative);
    }
};

TEST_F(WithoutQt, TheSettingsMakeAConversionTalk)
{
    folder().write("in.png", blackPng({20, 20}));
    const ProgramResult result = runTalkative({"-o", "out.tif", "in.png"});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_NE(result.error, "");
}

TEST_F(WithoutQt, HelpIsPrinted)
{
    const ProgramResult result = runTalkative({"--help"});
    EXPECT_EQ(result.output, ProgramTexts::help);
    EXPECT_EQ(result.error, "");
    EXPECT_EQ(result.exitStatus, 0);
}

TEST_F(WithoutQt, TheVersionIsPrinted)
{
    const ProgramResult result = runTalkative({"--version"});
    EXPECT_EQ(result.output, ProgramTexts::version);
    EXPECT_EQ(result.error, "");
    EXPECT_EQ(result.exitStatus, 0);
}

TEST_F(WithoutQt, AMissingOptionIsReported)
{
    EXPECT_TRUE(isFailure(runTalkative({"in.png"}),
                          "the option '--output-file' is required but missing\n"));
}

TEST_F(WithoutQt, MarginsThatAreTooLargeAreReported)
{
    EXPECT_TRUE(isFailure(runTalkative({"-m", "9", "-o", "out.tif", "in.png"}),
                          "the argument ('9.0') for option '--margins' is too large\n"));
}

} // namespace
