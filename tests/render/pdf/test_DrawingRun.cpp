#include "render/pdf/DrawingRun.h"

#include "support/FakeGhostscript.h"
#include "support/PrintQt.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <vector>

namespace {

using Answer = GhostscriptAnswer;

// A page takes 80 bytes.
const RenderSize small{QSize(64, 10), {}};

/// Two pages, the second and the third of a document.
class TwoPages : public testing::Test
{
protected:
    PageRun run(const RenderSize& size = small) const
    {
        return {QString::fromStdString(m_folder.write("document.pdf", "%PDF-1.4\n")), 1, 3, size};
    }

    TemporaryFolder m_folder;
};

// The first byte of each page.
std::vector<int> firstBytes(DrawingRun& run)
{
    std::vector<int> bytes;
    for (const QImage& page : run.pages()) {
        bytes.push_back(page.constBits()[0]);
    }
    return bytes;
}

struct Row
{
    const char* name;
    Answer answer;
    bool ok;
    bool isComplete;
    std::vector<int> firstBytes;
};

const Row rows[] = {
    {"OfAllPages", Answer::numberedPages(), true, true, {2, 3}},
    {"OfMoreThanAllPages", Answer::bytes(1000000, 'x'), true, true, {'x', 'x'}},
    {"OfAPageAndAByte", Answer::bytes(81, 'x'), true, false, {'x', 'x'}},
    {"OfOnePage", Answer::bytes(80, 'x'), true, false, {'x'}},
    {"OfNothing", {}, true, false, {}},
    {"ThatFailsBehindItsPages", Answer::numberedPages() + Answer::exit(1), false, true, {2, 3}},
    {"ThatASignalEnds", Answer::bytes(81, 'x') + Answer::crash(SIGKILL), false, false, {'x', 'x'}},
};

class EndedRun : public TwoPages, public testing::WithParamInterface<Row>
{
};

TEST_P(EndedRun, TellsWhatHasBecomeOfIt)
{
    const FakeGhostscript ghostscript(GetParam().answer);
    DrawingRun drawing(run());
    EXPECT_EQ(drawing.read(), GetParam().ok);
    EXPECT_EQ(drawing.isComplete(), GetParam().isComplete);
    EXPECT_TRUE(drawing.hasEnded());
    EXPECT_EQ(firstBytes(drawing), GetParam().firstBytes);
    EXPECT_EQ(ghostscript.renderedRanges(),
              (QStringList{QStringLiteral("-dFirstPage=2 -dLastPage=3 -g64x10")}));
}

INSTANTIATE_TEST_SUITE_P(DrawingRun, EndedRun, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST_F(TwoPages, AreReceivedWithoutWaitingUpToANumber)
{
    const FakeGhostscript ghostscript(Answer::numberedPages() + Answer::hang());
    DrawingRun drawing(run());
    drawing.receive(0);
    EXPECT_TRUE(drawing.pages().empty());
    EXPECT_TRUE(waitUntil([&drawing] {
        drawing.receive(1);
        return drawing.pages().size() == 1U && drawing.pages()[0].constBits()[79] == 2;
    }));
    drawing.receive(1);
    EXPECT_EQ(firstBytes(drawing), (std::vector<int>{2}));
    EXPECT_TRUE(waitUntil([&drawing] {
        drawing.receive(2);
        return drawing.pages().size() == 2U && drawing.pages()[1].constBits()[79] == 3;
    }));
    EXPECT_FALSE(drawing.isComplete() && drawing.hasEnded());
}

TEST_F(TwoPages, AreAFailureForWantOfMemory)
{
    const FakeGhostscript ghostscript(Answer::bytes(100));
    DrawingRun drawing(run({QSize(2147483616, 1048576), {}}));
    EXPECT_FALSE(drawing.read());
    EXPECT_TRUE(drawing.pages().empty());
}

} // namespace
