#include "faults/Conversion.h"
#include "support/FakeGhostscript.h"
#include "support/SamplePdf.h"
#include "support/TemporaryFolder.h"
#include "support/TiffFile.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <string>
#include <vector>

namespace {

using Answer = GhostscriptAnswer;
using Clock = std::chrono::steady_clock;

class HangingGhostscript : public testing::Test
{
protected:
    // Expects the failure after `seconds` at least, and nothing left running.
    void expectFailure(const FakeGhostscript& ghostscript, const std::string& reason,
                       std::chrono::seconds seconds) const
    {
        const Clock::time_point start = Clock::now();
        const ProgramResult result =
            runProgram(Conversion::with({"-o", m_output, m_folder.path("a.pdf")}));
        EXPECT_GE(Clock::now() - start, seconds);
        EXPECT_TRUE(Conversion::hasFailedCleanly(result, m_output));
        EXPECT_EQ(result.error,
                  "can't write page file '" + m_folder.path("a.pdf") + "', " + reason + '\n');
        const pid_t hanging = ghostscript.lastProcess();
        ASSERT_GT(hanging, 0);
        EXPECT_TRUE(kill(hanging, 0) == -1 && errno == ESRCH) << "Ghostscript still runs";
    }

    TemporaryFolder m_folder;
    std::string m_output = m_folder.path("out.tif");
};

TEST_F(HangingGhostscript, InTheQueryIsAFailureAfterHalfAMinute)
{
    m_folder.write("a.pdf", SamplePdf::equalPages(1));
    const FakeGhostscript ghostscript(Answer::hang());
    expectFailure(ghostscript, "invalid pdf format", std::chrono::seconds(30));
}

TEST_F(HangingGhostscript, InARunIsAFailureAfterAMinute)
{
    m_folder.write("a.pdf", SamplePdf::equalPages(3));
    const FakeGhostscript ghostscript({Answer::real(), Answer::hang()});
    expectFailure(ghostscript, "invalid data", std::chrono::seconds(60));
}

TEST_F(HangingGhostscript, InARunAheadIsAFailureAMinuteAfterItIsAskedFor)
{
    m_folder.write("a.pdf", SamplePdf::equalPages(20));
    const FakeGhostscript ghostscript({Answer::real(), Answer::real(), {{18, Answer::hang()}}});
    expectFailure(ghostscript, "invalid data", std::chrono::seconds(60));
}

TEST_F(HangingGhostscript, InTheMiddleOfARunLeavesTheRestOfThePageWhiteWithoutAWord)
{
    m_folder.write("a.pdf", SamplePdf::equalPages(3));
    const std::vector<std::string> arguments = {
        "-p", "letter", "-r", "standard", "-o", m_output, m_folder.path("a.pdf")};
    ASSERT_EQ(runProgram(Conversion::with(arguments)).exitStatus, 0);
    const std::vector<TiffPage> whole = readTiff(m_output);

    constexpr int bytesPerPage = 216 * 2244;
    const FakeGhostscript ghostscript(
        {Answer::real(),
         Answer::real(),
         {{1, Answer::bytes(bytesPerPage / 2, '\xff') + Answer::hang()}}});
    const ProgramResult result = runProgram(Conversion::with(arguments));
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.error, "");

    const std::vector<TiffPage> pages = readTiff(m_output);
    ASSERT_EQ(pages.size(), 3U);
    EXPECT_TRUE(isSamePicture(pages[0].pixels, Conversion::blackLetterPage(539)));
    EXPECT_TRUE(isSamePicture(pages[1].pixels, whole[1].pixels));
    EXPECT_TRUE(isSamePicture(pages[2].pixels, whole[2].pixels));
}

// The number that a page of SamplePdf shows as bars, modulo 256. They are looked
// at where no line crosses them.
unsigned pageNumber(const QImage& page)
{
    unsigned number = 0;
    for (unsigned bit = 0; bit < 8; ++bit) {
        const double barMiddle = 1.0 - (0.3 + bit * 0.06 + 0.015);
        const bool isBlack =
            page.pixelIndex(qRound(page.width() * 0.31), qRound(page.height() * barMiddle)) == 1;
        number |= isBlack ? 1U << bit : 0U;
    }
    return number;
}

TEST(LongDocument, Of300PagesKeepsAllPagesInOrder)
{
    const TemporaryFolder folder;
    const std::string output = folder.path("out.tif");
    const std::string document = folder.write("long.pdf", SamplePdf::equalPages(300));
    const ProgramResult result =
        runProgram(Conversion::with({"-p", "letter", "-r", "standard", "-o", output, document}));
    EXPECT_EQ(result.exitStatus, 0) << result.error;
    const std::vector<TiffPage> pages = readTiff(output);
    ASSERT_EQ(pages.size(), 300U);
    for (std::size_t index = 0; index < pages.size(); ++index) {
        EXPECT_EQ(pages[index].pixels.size(), QSize(1728, 1078));
        EXPECT_EQ(pageNumber(pages[index].pixels), (index + 1) % 256) << "page " << index;
    }
}

} // namespace
