#include "faults/Conversion.h"
#include "support/FakeGhostscript.h"
#include "support/SamplePdf.h"
#include "support/TemporaryFolder.h"
#include "support/TiffFile.h"

#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <vector>

namespace {

using Answer = GhostscriptAnswer;

// Standard resolution on letter paper: Ghostscript draws 1728 x 2244 pixels,
// which are squeezed into 1728 x 1078.
constexpr int bytesPerPage = 216 * 2244;

class GhostscriptFault : public testing::Test
{
protected:
    ProgramResult convert(unsigned long pageCount)
    {
        m_folder.write("a.pdf", SamplePdf::equalPages(pageCount));
        return runProgram(Conversion::with(
            {"-p", "letter", "-r", "standard", "-o", m_output, m_folder.path("a.pdf")}));
    }

    // Expects the failure with this reason.
    void expectFailure(const ProgramResult& result, const std::string& reason) const
    {
        EXPECT_TRUE(Conversion::hasFailedCleanly(result, m_output));
        EXPECT_EQ(result.error,
                  "can't write page file '" + m_folder.path("a.pdf") + "', " + reason + '\n');
    }

    // `answer` for the runs that render; the query has its real answer.
    static FakeGhostscript::Answers whenRendering(const Answer& answer)
    {
        return {Answer::real(), answer};
    }

    // Passes on `bytes` bytes of what the real one draws.
    static Answer cutOff(int bytes)
    {
        return Answer::real().through(
            {QStringLiteral("head"), QStringLiteral("-c"), QString::number(bytes)});
    }

    TemporaryFolder m_folder;
    std::string m_output = m_folder.path("out.tif");
};

TEST_F(GhostscriptFault, FloodingStandardErrorChangesNoPage)
{
    ASSERT_EQ(convert(3).exitStatus, 0);
    const std::string content = Conversion::contentOf(m_output);
    const FakeGhostscript ghostscript(Answer::bytes(20000000, 'x').asRemark() + Answer::real());
    const ProgramResult result = convert(3);
    EXPECT_TRUE(result.exitStatus == 0 && result.output.empty());
    EXPECT_TRUE(Conversion::contentOf(m_output) == content);
    EXPECT_EQ(result.error.size(), 40000000U) << "one query and one run";
}

TEST_F(GhostscriptFault, KilledInTheMiddleOfARunIsAFailure)
{
    const FakeGhostscript ghostscript(
        whenRendering(cutOff(bytesPerPage * 3 / 2) + Answer::crash(SIGKILL)));
    expectFailure(convert(3), "invalid data");
}

TEST_F(GhostscriptFault, KilledInTheMiddleOfASinglePageIsAFailure)
{
    const FakeGhostscript ghostscript(
        whenRendering(cutOff(bytesPerPage / 2) + Answer::crash(SIGKILL)));
    expectFailure(convert(1), "invalid data");
}

TEST_F(GhostscriptFault, KilledAfterTheWholePageIsAFailure)
{
    const FakeGhostscript ghostscript(whenRendering(cutOff(bytesPerPage) + Answer::crash(SIGKILL)));
    expectFailure(convert(1), "invalid data");
}

TEST_F(GhostscriptFault, ThatEndsTheQueryWithASignalIsAFailure)
{
    const FakeGhostscript ghostscript(Answer::crash(SIGSEGV));
    expectFailure(convert(1), "invalid pdf format");
}

TEST_F(GhostscriptFault, OneByteMissingFromASinglePageIsAFailure)
{
    const FakeGhostscript ghostscript(whenRendering(cutOff(bytesPerPage - 1)));
    expectFailure(convert(1), "invalid data");
}

// Leftover memory on such a page would go to a stranger.
TEST_F(GhostscriptFault, ThatEndsARunEarlyLeavesTheRestOfThePageWhite)
{
    const FakeGhostscript ghostscript({Answer::real(),
                                       Answer::bytes(bytesPerPage / 2, '\xff'),
                                       {{3, Answer::bytes(bytesPerPage, '\xff')}}});
    ASSERT_EQ(convert(3).exitStatus, 0);

    const QImage halfPage = Conversion::blackLetterPage(539);
    const QImage blackPage = Conversion::blackLetterPage(1078);
    const std::vector<TiffPage> pages = readTiff(m_output);
    ASSERT_EQ(pages.size(), 3U);
    EXPECT_TRUE(isSamePicture(pages[0].pixels, halfPage));
    EXPECT_TRUE(isSamePicture(pages[1].pixels, halfPage));
    EXPECT_TRUE(isSamePicture(pages[2].pixels, blackPage));
}

} // namespace
