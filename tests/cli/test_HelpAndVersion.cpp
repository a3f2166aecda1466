#include "CliTest.h"

namespace {

// The library that lays the listing out leaves a blank at the end of a line
// that it breaks.
const char* const helpText =
    "usage: morvaltide [option]... [file]...\n"
    "options:\n"
    "  -h [ --help ]                  display this help message\n"
    "  -v [ --version ]               display version information\n"
    "  -p [ --paper-size ] <size>     specify paper size: a4, letter, legal \n"
    "                                 (default: a4)\n"
    "  -r [ --resolution ] <type>     specify resolution: standard, fine, superfine,\n"
    "                                 ultrafine (default: fine)\n"
    "  -R [ --rotation ] <angle>      specify rotation angle: 0, 90, 180, 270, -90, \n"
    "                                 -180, -270\n"
    "  -t [ --transformation ] <flag> specify transformation: fittopaper\n"
    "  -m [ --margins ] <value>       specify margins in inches (in L,T,R,B or H,V \n"
    "                                 or M formats)\n"
    "  -c [ --compression ] <group>   specify group encoding compression: g3, g4 \n"
    "                                 (default: g3)\n"
    "  -C [ --cover-page ] <file>     specify cover page HTML file\n"
    "  -o [ --output-file ] <file>    specify output file name\n"
    "\n";

const char* const versionText = "morvaltide version 1.0.0\n";

struct Row
{
    const char* name;
    std::vector<std::string> arguments;
    const char* text;
};

const Row rows[] = {
    {"HelpInFull", {"--help"}, helpText},
    {"VersionInFull", {"--version"}, versionText},
    {"HelpWinsOverVersion", {"--version", "--help"}, helpText},
    {"HelpOnACompleteCommandLine", {"-o", "out.tif", "missing.png", "-h"}, helpText},
    {"VersionOnACompleteCommandLine", {"-v", "-o", "out.tif", "missing.png"}, versionText},
    {"HelpWithMarginsThatAreTooLarge", {"-m", "9", "--help"}, helpText},
    {"VersionWithMarginsThatAreTooLarge", {"-m", "9", "--version"}, versionText},
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
    EXPECT_EQ(result.output, helpText);
    EXPECT_EQ(result.error, "");
    EXPECT_EQ(result.exitStatus, 0);
}

TEST_F(WithoutQt, TheVersionIsPrinted)
{
    const ProgramResult result = runTalkative({"--version"});
    EXPECT_EQ(result.output, versionText);
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
