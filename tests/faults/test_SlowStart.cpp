#include "faults/Conversion.h"
#include "support/FakeGhostscript.h"
#include "support/SamplePdf.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <set>
#include <string>

namespace {

class SlowStart : public testing::Test
{
protected:
    // Sends SIGPIPE while the program is starting Ghostscript.
    ProgramResult interruptTheStart(const std::set<int>& ignoredSignals)
    {
        ProgramStart start = Conversion::with(
            {"-o", m_output, m_folder.write("a.pdf", SamplePdf::equalPages(1))},
            MORVALTIDE_SLOW_START, {{"START_GO", m_go}, {"START_REPORT", m_report}});
        start.ignoredSignals = ignoredSignals;
        ProgramRun run(start);
        EXPECT_TRUE(waitUntil([this] { return hasReported(); })) << "Ghostscript was not started";
        EXPECT_TRUE(std::filesystem::exists(m_output));
        run.sendSignal(SIGPIPE);
        m_folder.write("go", "");
        return run.finish();
    }

    TemporaryFolder m_folder;
    std::string m_output = m_folder.path("out.tif");

private:
    bool hasReported() const
    {
        return std::filesystem::exists(m_report) && !std::filesystem::is_empty(m_report);
    }

    std::string m_go = m_folder.path("go");
    std::string m_report = m_folder.path("report");
};

TEST_F(SlowStart, OfGhostscriptLosesNoBrokenPipe)
{
    const FakeGhostscript ghostscript(GhostscriptAnswer::hang());
    EXPECT_EQ(interruptTheStart({}).signal, SIGPIPE);
    EXPECT_FALSE(std::filesystem::exists(m_output));
}

TEST_F(SlowStart, OfGhostscriptLeavesABrokenPipeIgnoredIfItWas)
{
    const ProgramResult result = interruptTheStart({SIGPIPE});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.error, "");
}

} // namespace
