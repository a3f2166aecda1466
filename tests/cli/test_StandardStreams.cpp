#include "CliTest.h"

#include "support/FakeGhostscript.h"
#include "support/SamplePdf.h"

#include <csignal>
#include <filesystem>

namespace {

struct ClosedRow
{
    const char* name;
    std::set<int> closed;
};

const ClosedRow closedRows[] = {
    {"Input", {0}},
    {"Output", {1}},
    {"Error", {2}},
    {"InputAndOutput", {0, 1}},
    {"InputAndError", {0, 2}},
    {"OutputAndError", {1, 2}},
    {"InputOutputAndError", {0, 1, 2}},
};

class ClosedStreams : public CliTest, public testing::WithParamInterface<ClosedRow>
{
protected:
    ProgramStart startClosed(const std::vector<std::string>& arguments) const
    {
        ProgramStart closed = start(arguments);
        closed.closedDescriptors = GetParam().closed;
        return closed;
    }
};

TEST_P(ClosedStreams, AtStartChangeNothingInTheFile)
{
    const FakeGhostscript ghostscript(GhostscriptAnswer::remark("warning\n") +
                                      GhostscriptAnswer::real());
    folder().write("in.png", blackPng({20, 20}));
    folder().write("in.pdf", SamplePdf::equalPages(2));
    const std::vector<std::string> arguments = {"-r",      "standard", "-o",
                                                "out.tif", "in.png",   "in.pdf"};
    // The same for all of them.
    static QByteArray plain;
    if (plain.isEmpty()) {
        ASSERT_EQ(run(arguments).error, "warning\nwarning\n");
        plain = content("out.tif");
        std::filesystem::remove(folder().path("out.tif"));
    }
    const ProgramResult result = runProgram(startClosed(arguments));
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(pages().size(), 3U);
    EXPECT_TRUE(content("out.tif") == plain);
}

TEST_P(ClosedStreams, AtStartDoNotKeepAFailedOutput)
{
    folder().write("in.png", blackPng({20, 20}));
    EXPECT_EQ(runProgram(startClosed({"-o", "out.tif", "in.png", "missing.png"})).exitStatus, 1);
    EXPECT_EQ(folder().entries(), QStringList(QStringLiteral("in.png")));
}

TEST_P(ClosedStreams, AtStartDoNotMakeHelpFail)
{
    EXPECT_EQ(runProgram(startClosed({"--help"})).exitStatus, 0);
}

INSTANTIATE_TEST_SUITE_P(Cli, ClosedStreams, testing::ValuesIn(closedRows),
                         [](const auto& test) { return std::string{test.param.name}; });

struct FailureRow
{
    const char* name;
    std::vector<std::string> arguments;
};

const FailureRow failureRows[] = {
    {"MissingPage", {"-o", "out.tif", "in.png", "missing.png"}},
    {"PageOfAnUnknownFormat", {"-o", "out.tif", "in.png", "in.txt"}},
    {"MissingCoverPage", {"-C", "missing.html", "-o", "out.tif", "in.png"}},
    {"PageThatTheDecoderRemarksOn", {"-o", "out.tif", "in.png", "in.tif"}},
};

// A failure that cannot be reported.
class LostMessage : public CliTest, public testing::WithParamInterface<FailureRow>
{
protected:
    void SetUp() override
    {
        folder().write("in.png", blackPng({20, 20}));
        folder().write("in.txt", "text");
        folder().write("in.tif", "junk");
        folder().write("out.tif", "old");
    }
};

TEST_P(LostMessage, OnAFullDeviceLeavesNoOutput)
{
    ProgramStart full = start(GetParam().arguments);
    full.errorFile = "/dev/full";
    EXPECT_EQ(runProgram(full).exitStatus, 1);
    EXPECT_FALSE(exists("out.tif"));
}

TEST_P(LostMessage, InABrokenPipeLeavesNoOutput)
{
    ProgramStart broken = start(GetParam().arguments);
    broken.hasBrokenErrorPipe = true;
    EXPECT_EQ(runProgram(broken).signal, SIGPIPE);
    EXPECT_FALSE(exists("out.tif"));
}

TEST_P(LostMessage, InABrokenPipeWithoutItsSignalLeavesNoOutput)
{
    ProgramStart broken = start(GetParam().arguments);
    broken.hasBrokenErrorPipe = true;
    broken.ignoredSignals = {SIGPIPE};
    EXPECT_EQ(runProgram(broken).exitStatus, 1);
    EXPECT_FALSE(exists("out.tif"));
}

INSTANTIATE_TEST_SUITE_P(Cli, LostMessage, testing::ValuesIn(failureRows),
                         [](const auto& test) { return std::string{test.param.name}; });

class SuccessWithoutStandardError : public CliTest
{
};

TEST_F(SuccessWithoutStandardError, WorksOnAFullDevice)
{
    folder().write("in.png", blackPng({20, 20}));
    ProgramStart full = start({"-o", "out.tif", "in.png"});
    full.errorFile = "/dev/full";
    EXPECT_EQ(runProgram(full).exitStatus, 0);
    EXPECT_EQ(pages().size(), 1U);
}

TEST_F(SuccessWithoutStandardError, WorksWithABrokenPipe)
{
    folder().write("in.png", blackPng({20, 20}));
    ProgramStart broken = start({"-o", "out.tif", "in.png"});
    broken.hasBrokenErrorPipe = true;
    EXPECT_EQ(runProgram(broken).exitStatus, 0);
    EXPECT_EQ(pages().size(), 1U);
}

} // namespace
