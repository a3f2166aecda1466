#include "faults/Conversion.h"
#include "support/FakeGhostscript.h"
#include "support/SamplePdf.h"
#include "support/TemporaryFolder.h"
#include "support/TiffFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

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

    // `commands` for the runs that render; the query has its real answer.
    static QByteArray whenRendering(const QByteArray& commands)
    {
        return "case \"$*\" in *' -c '*) " + FakeGhostscript::realGhostscript() + ";; esac\n" +
               commands + '\n';
    }

    // Commands that pass on `bytes` bytes of what the real one draws.
    static QByteArray cutOff(int bytes)
    {
        return "( " + FakeGhostscript::realGhostscript() + " ) 2>&- | head -c " +
               QByteArray::number(bytes) + '\n';
    }

    // Commands that draw `bytes` bytes of black.
    static QByteArray black(int bytes)
    {
        return "head -c " + QByteArray::number(bytes) + " /dev/zero | tr '\\000' '\\377'";
    }

    TemporaryFolder m_folder;
    std::string m_output = m_folder.path("out.tif");
};

TEST_F(GhostscriptFault, FloodingStandardErrorChangesNoPage)
{
    ASSERT_EQ(convert(3).exitStatus, 0);
    const std::string content = Conversion::contentOf(m_output);
    const FakeGhostscript ghostscript("head -c 20000000 /dev/zero | tr '\\000' x >&2\n" +
                                      FakeGhostscript::realGhostscript());
    const ProgramResult result = convert(3);
    EXPECT_TRUE(result.exitStatus == 0 && result.output.empty());
    EXPECT_TRUE(Conversion::contentOf(m_output) == content);
    EXPECT_EQ(result.error.size(), 40000000U) << "one query and one run";
}

TEST_F(GhostscriptFault, KilledInTheMiddleOfARunIsAFailure)
{
    const FakeGhostscript ghostscript(
        whenRendering(cutOff(bytesPerPage * 3 / 2) + "kill -KILL $$"));
    expectFailure(convert(3), "invalid data");
}

TEST_F(GhostscriptFault, KilledInTheMiddleOfASinglePageIsAFailure)
{
    const FakeGhostscript ghostscript(whenRendering(cutOff(bytesPerPage / 2) + "kill -KILL $$"));
    expectFailure(convert(1), "invalid data");
}

TEST_F(GhostscriptFault, KilledAfterTheWholePageIsAFailure)
{
    const FakeGhostscript ghostscript(whenRendering(cutOff(bytesPerPage) + "kill -KILL $$"));
    expectFailure(convert(1), "invalid data");
}

TEST_F(GhostscriptFault, ThatEndsTheQueryWithASignalIsAFailure)
{
    const FakeGhostscript ghostscript("kill -SEGV $$");
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
    const FakeGhostscript ghostscript(whenRendering("case \"$*\" in *-dFirstPage=3*) " +
                                                    black(bytesPerPage) + ";; *) " +
                                                    black(bytesPerPage / 2) + ";; esac"));
    ASSERT_EQ(convert(3).exitStatus, 0);

    QImage blackPage(1728, 1078, QImage::Format_Mono);
    blackPage.setColorTable({0xFFFFFFFF, 0xFF000000});
    blackPage.fill(1);
    QImage halfPage = blackPage;
    constexpr int firstWhiteRow = 539;
    std::fill(halfPage.scanLine(firstWhiteRow), halfPage.bits() + halfPage.sizeInBytes(), uchar{0});

    const std::vector<TiffPage> pages = readTiff(m_output);
    ASSERT_EQ(pages.size(), 3U);
    EXPECT_TRUE(isSamePicture(pages[0].pixels, halfPage));
    EXPECT_TRUE(isSamePicture(pages[1].pixels, halfPage));
    EXPECT_TRUE(isSamePicture(pages[2].pixels, blackPage));
}

} // namespace
