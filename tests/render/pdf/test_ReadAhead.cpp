#include "render/pdf/ReadAhead.h"

#include "render/pdf/PdfDocument.h"
#include "render/pdf/PdfPageRenderer.h"
#include "support/FakeGhostscript.h"
#include "support/PrintQt.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <QFile>
#include <QImage>

#include <gtest/gtest.h>

#include <csignal>
#include <map>
#include <memory>
#include <vector>

#include <sys/wait.h>

namespace {

using Answer = GhostscriptAnswer;

// True if this process has a child, be it one that has ended and was not waited
// for. There is none but Ghostscript.
bool hasChild()
{
    siginfo_t info = {};
    return waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT | __WALL) == 0;
}

constexpr std::size_t eightMebibytes = 8388608;

// A page takes 80 bytes, so that a cache of 160 bytes makes runs of three pages.
const RenderSize small{QSize(64, 10), {}};
constexpr std::size_t twoSmallPages = 160;

/// The pages of a document that a stand-in pretends to read. `runsFrom` are those
/// of its runs that do something else, by their first pages.
class ReadAheadRun : public testing::Test
{
protected:
    void open(const Answer& sizes, const std::map<int, Answer>& runsFrom = {})
    {
        m_ghostscript = std::make_unique<FakeGhostscript>(
            FakeGhostscript::Answers{sizes, Answer::numberedPages(), runsFrom});
        m_document = std::make_unique<PdfDocument>();
        m_document->setFileName(
            QString::fromStdString(m_folder.write("document.pdf", "%PDF-1.4\n")));
        renderer().setForwardCacheLimit(twoSmallPages);
    }

    void TearDown() override
    {
        m_document.reset();
        EXPECT_FALSE(hasChild());
        EXPECT_EQ(m_ghostscript->overlaps(), 0);
    }

    PdfPageRenderer& renderer() { return m_document->pageRenderer(); }

    /// The number that a page is filled with, counted from 1; 0 if it fails.
    int request(unsigned long index, const RenderSize& size = small)
    {
        QImage image;
        return renderer().getRenderedPage(index, size, image) ? image.constBits()[0] : 0;
    }

    std::vector<int> requestUpTo(unsigned long end)
    {
        std::vector<int> numbers;
        for (unsigned long index = 0; index < end; ++index) {
            numbers.push_back(request(index));
        }
        return numbers;
    }

    QStringList ranges() const { return m_ghostscript->renderedRanges(); }

    const TemporaryFolder& folder() const { return m_folder; }
    void close() { m_document.reset(); }
    PdfDocument& document() { return *m_document; }

private:
    TemporaryFolder m_folder;
    std::unique_ptr<FakeGhostscript> m_ghostscript;
    std::unique_ptr<PdfDocument> m_document;
};

TEST_F(ReadAheadRun, StartsBeforeItsPagesAreAskedFor)
{
    open(Answer::pageSizes(7));
    EXPECT_EQ(request(0), 1);
    EXPECT_TRUE(hasChild());
    ASSERT_TRUE(waitUntil([this] { return ranges().size() == 2; }));
    EXPECT_EQ(ranges()[1], QStringLiteral("-dFirstPage=4 -dLastPage=6 -g64x10"));
}

TEST_F(ReadAheadRun, IsThatOfASinglePageWhereOneIsLeft)
{
    open(Answer::pageSizes(4));
    EXPECT_EQ(request(0), 1);
    ASSERT_TRUE(waitUntil([this] { return ranges().size() == 2; }));
    EXPECT_EQ(ranges()[1], QStringLiteral("-dFirstPage=4 -dLastPage=4 -g64x10"));
    EXPECT_EQ(request(1), 2);
    EXPECT_EQ(request(2), 3);
    EXPECT_EQ(request(3), 4);
    EXPECT_FALSE(hasChild());
    EXPECT_EQ(ranges().size(), 2);
}

TEST_F(ReadAheadRun, IsAlwaysTheOneThatIsAskedForNext)
{
    open(Answer::pageSizes(11));
    EXPECT_EQ(requestUpTo(11), (std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}));
    EXPECT_EQ(ranges(), (QStringList{QStringLiteral("-dFirstPage=1 -dLastPage=3 -g64x10"),
                                     QStringLiteral("-dFirstPage=4 -dLastPage=6 -g64x10"),
                                     QStringLiteral("-dFirstPage=7 -dLastPage=9 -g64x10"),
                                     QStringLiteral("-dFirstPage=10 -dLastPage=11 -g64x10")}));
    EXPECT_FALSE(hasChild());
}

// No run ahead.

struct NoneRow
{
    const char* name;
    Answer sizes;
    std::map<int, Answer> runsFrom;
    std::vector<unsigned long> requests;
};

const Answer smallBox = Answer::print("0 0 1 2\n");

const NoneRow noneRows[] = {
    {"BehindTheLastPage", Answer::pageSizes(3), {}, {0}},
    {"BehindTheLastPageAfterARunAhead", Answer::pageSizes(5), {}, {0, 1, 2, 3}},
    {"BeforeAPageOfAnotherSize", Answer::pageSizes(3) + smallBox + smallBox, {}, {0}},
    {"BetweenSizesThatAlternate",
     Answer::pageSizes(1) + smallBox + Answer::pageSizes(2),
     {},
     {0, 1}},
    {"AfterARunThatFailed",
     Answer::pageSizes(6),
     {{1, Answer::numberedPages() + Answer::exit(1)}},
     {0}},
    {"AfterARunThatASignalEnded",
     Answer::pageSizes(6),
     {{1, Answer::numberedPages() + Answer::crash(SIGKILL)}},
     {0}},
    {"AfterARunThatCameShort", Answer::pageSizes(6), {{1, Answer::bytes(239)}}, {0}},
    {"AfterARunOfTooFewPages", Answer::pageSizes(6), {{1, Answer::bytes(160)}}, {0}},
    {"AfterARequestOutOfOrder", Answer::pageSizes(9), {}, {0, 4}},
    {"AfterAFirstRequestThatIsNotTheFirstPage", Answer::pageSizes(9), {}, {2}},
};

class NoRunAhead : public ReadAheadRun, public testing::WithParamInterface<NoneRow>
{
};

TEST_P(NoRunAhead, IsStarted)
{
    open(GetParam().sizes, GetParam().runsFrom);
    for (const unsigned long index : GetParam().requests) {
        request(index);
    }
    EXPECT_FALSE(hasChild());
}

INSTANTIATE_TEST_SUITE_P(ReadAhead, NoRunAhead, testing::ValuesIn(noneRows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST_F(ReadAheadRun, IsNotStartedWithoutACache)
{
    open(Answer::pageSizes(9));
    renderer().setForwardCacheLimit(0);
    EXPECT_EQ(request(0), 1);
    EXPECT_FALSE(hasChild());
}

TEST_F(ReadAheadRun, IsNotStartedWhereTheCacheHasNoRoom)
{
    open(Answer::pageSizes(9));
    renderer().setForwardCacheLimit(79);
    EXPECT_EQ(request(0), 1);
    EXPECT_FALSE(hasChild());
}

// Killed and forgotten. The run ahead never ends by itself.

class HangingRunAhead : public ReadAheadRun
{
protected:
    void SetUp() override
    {
        open(Answer::pageSizes(9), {{4, Answer::hang()}});
        ASSERT_EQ(request(0), 1);
        ASSERT_TRUE(hasChild());
    }
};

TEST_F(HangingRunAhead, DoesNotKeepThePagesBeforeItWaiting)
{
    EXPECT_EQ(request(1), 2);
    EXPECT_EQ(request(2), 3);
    EXPECT_TRUE(hasChild());
}

TEST_F(HangingRunAhead, EndsWithTheDocument)
{
    close();
    EXPECT_FALSE(hasChild());
}

TEST_F(HangingRunAhead, EndsWhenAPageOutOfOrderIsAskedFor)
{
    EXPECT_EQ(request(7), 8);
    EXPECT_FALSE(hasChild());
    EXPECT_EQ(request(8), 9);
}

TEST_F(HangingRunAhead, EndsWhenAnotherSizeIsAskedFor)
{
    EXPECT_EQ(request(1, {QSize(64, 9), {}}), 2);
    EXPECT_EQ(request(2, {QSize(64, 9), {}}), 3);
    EXPECT_TRUE(ranges().contains(QStringLiteral("-dFirstPage=2 -dLastPage=4 -g64x9")));
}

TEST_F(HangingRunAhead, EndsWithANewLimit)
{
    renderer().setForwardCacheLimit(eightMebibytes);
    EXPECT_FALSE(hasChild());
    EXPECT_EQ(request(0), 1);
    EXPECT_FALSE(hasChild());
    EXPECT_EQ(ranges().last(), QStringLiteral("-dFirstPage=1 -dLastPage=9 -g64x10"));
}

TEST_F(HangingRunAhead, EndsWhenTheCacheIsSwitchedOff)
{
    renderer().setForwardCacheLimit(0);
    EXPECT_FALSE(hasChild());
}

TEST_F(HangingRunAhead, StaysWithTheSameLimit)
{
    renderer().setForwardCacheLimit(twoSmallPages);
    EXPECT_TRUE(hasChild());
}

TEST_F(HangingRunAhead, EndsBeforeAnotherFileIsLookedAt)
{
    document().setFileName(QString::fromStdString(folder().write("other.pdf", "%PDF-1.4\n")));
    EXPECT_FALSE(hasChild());
    EXPECT_EQ(request(1), 2) << "the pages of the cache stay where they are";
}

TEST_F(HangingRunAhead, StaysWithTheSameFile)
{
    document().setFileName(folder().qPath(QStringLiteral("document.pdf")));
    EXPECT_TRUE(hasChild());
}

// Failures ahead of their time.

struct FailureRow
{
    const char* name;
    Answer secondRun;
};

const FailureRow failureRows[] = {
    {"BeforeAnyOutput", Answer::exit(1)},
    {"AfterItsOutput", Answer::bytes(240) + Answer::exit(1)},
    {"ByASignal", Answer::bytes(240) + Answer::crash(SIGKILL)},
    {"WithoutAnyOutput", {}},
};

class FailedRunAhead : public ReadAheadRun, public testing::WithParamInterface<FailureRow>
{
};

TEST_P(FailedRunAhead, ShowsWhenItsFirstPageIsAskedFor)
{
    open(Answer::pageSizes(9), {{4, GetParam().secondRun}});
    EXPECT_EQ(requestUpTo(4), (std::vector<int>{1, 2, 3, 0}));
    EXPECT_FALSE(hasChild());
    EXPECT_EQ(request(4), 5) << "in order, so with a run of its own";
    EXPECT_EQ(ranges()[2], QStringLiteral("-dFirstPage=5 -dLastPage=7 -g64x10"));
}

INSTANTIATE_TEST_SUITE_P(ReadAhead, FailedRunAhead, testing::ValuesIn(failureRows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST_F(ReadAheadRun, ThatCannotBeStartedShowsWhenItsFirstPageIsAskedFor)
{
    // In the first run the stand-in makes way for a file that is no program.
    open(Answer::pageSizes(6), {{1, Answer::becomeNoProgram() + Answer::numberedPages()}});
    EXPECT_EQ(requestUpTo(4), (std::vector<int>{1, 2, 3, 0}));
}

TEST_F(ReadAheadRun, OfASinglePageHasToBeComplete)
{
    open(Answer::pageSizes(4), {{4, Answer::bytes(79)}});
    EXPECT_EQ(requestUpTo(4), (std::vector<int>{1, 2, 3, 0}));
}

TEST_F(ReadAheadRun, ThatComesShortLeavesTheRestOfItsPageWhite)
{
    open(Answer::pageSizes(6), {{4, Answer::print("x")}});
    EXPECT_EQ(requestUpTo(3), (std::vector<int>{1, 2, 3}));
    QImage image;
    ASSERT_TRUE(renderer().getRenderedPage(3, small, image));
    EXPECT_EQ(image.constBits()[0], 'x');
    EXPECT_EQ(image.constBits()[1], 0);
}

// Memory: a page of 2048 x 2048 takes 512 KiB, so that sixteen are kept ahead.

TEST_F(ReadAheadRun, FillsNoMoreThanAPipeAndTheRoomThatIsFree)
{
    const RenderSize large{QSize(2048, 2048), {}};
    const QString drawn = folder().qPath(QStringLiteral("drawn"));
    open(Answer::pageSizes(34), {{18, (Answer::bytes(524288) + Answer::note(drawn)).repeated(17)}});
    const auto pagesDrawn = [&drawn] {
        QFile file(drawn);
        return file.open(QIODevice::ReadOnly) ? file.readAll().count('\n') : 0;
    };
    renderer().setForwardCacheLimit(eightMebibytes);
    ASSERT_EQ(request(0, large), 1);
    EXPECT_LE(pagesDrawn(), 2);
    for (int index = 1; index <= 16; ++index) {
        ASSERT_EQ(request(static_cast<unsigned long>(index), large), index + 1);
        EXPECT_LE(pagesDrawn(), 2 + index);
    }
    QImage image;
    EXPECT_TRUE(renderer().getRenderedPage(17, large, image));
}

// The class itself.

class ReadAheadOfRanges : public testing::Test
{
protected:
    PageRun run(unsigned long index, unsigned long end, const RenderSize& size = small) const
    {
        return {m_folder.qPath(QStringLiteral("document.pdf")), index, end, size};
    }

    /// The numbers that the pages of a run are filled with, counted from 1.
    static std::vector<int> pagesOf(DrawingRun& run)
    {
        std::vector<int> numbers;
        EXPECT_TRUE(run.read());
        EXPECT_TRUE(run.isComplete() && run.hasEnded());
        for (const QImage& page : run.pages()) {
            numbers.push_back(page.constBits()[0]);
        }
        return numbers;
    }

    void SetUp() override { m_folder.write("document.pdf", "%PDF-1.4\n"); }

    TemporaryFolder m_folder;
    FakeGhostscript m_ghostscript{Answer::numberedPages()};
    ReadAhead m_readAhead;
};

TEST_F(ReadAheadOfRanges, HandsOverTheRunThatWasStarted)
{
    m_readAhead.start(run(1, 3));
    EXPECT_TRUE(hasChild());
    EXPECT_EQ(pagesOf(*m_readAhead.take(run(1, 3))), (std::vector<int>{2, 3}));
    EXPECT_EQ(m_ghostscript.runs().size(), 1U);
}

TEST_F(ReadAheadOfRanges, StartsTheRunIfThereIsNone)
{
    EXPECT_EQ(pagesOf(*m_readAhead.take(run(4, 5))), (std::vector<int>{5}));
}

TEST_F(ReadAheadOfRanges, HandsARunOverOnce)
{
    m_readAhead.start(run(1, 2));
    EXPECT_EQ(pagesOf(*m_readAhead.take(run(1, 2))), (std::vector<int>{2}));
    EXPECT_EQ(pagesOf(*m_readAhead.take(run(1, 2))), (std::vector<int>{2}));
    EXPECT_EQ(m_ghostscript.runs().size(), 2U);
}

TEST_F(ReadAheadOfRanges, ReceivesAsManyPagesAsItIsTold)
{
    m_readAhead.start(run(0, 3));
    const auto drawn = waitUntil([this] {
        m_readAhead.receive(2);
        return m_ghostscript.runs().size() == 1U;
    });
    ASSERT_TRUE(drawn);
    const auto taken = m_readAhead.take(run(0, 3));
    ASSERT_TRUE(waitUntil([&taken] {
        taken->receive(2);
        return taken->pages().size() == 2U;
    }));
    taken->receive(2);
    EXPECT_EQ(taken->pages().size(), 2U);
    EXPECT_EQ(pagesOf(*taken), (std::vector<int>{1, 2, 3}));
}

TEST_F(ReadAheadOfRanges, TakesOnlyTheVeryRunForTheOneAskedFor)
{
    m_folder.write("other.pdf", "%PDF-1.4\n");
    PageRun otherFile = run(1, 3);
    otherFile.fileName = m_folder.qPath(QStringLiteral("other.pdf"));
    EXPECT_TRUE(run(1, 3) == run(1, 3));
    EXPECT_FALSE(run(1, 3) == otherFile);
    EXPECT_FALSE(run(1, 3) == run(2, 3));
    EXPECT_FALSE(run(1, 3) == run(1, 4));
    EXPECT_FALSE(run(1, 3) == run(1, 3, {QSize(65, 10), {}}));
    EXPECT_FALSE(run(1, 3) == run(1, 3, {QSize(64, 10), {72, 72}}));
}

TEST_F(ReadAheadOfRanges, KillsARunThatIsNotTheOneAskedFor)
{
    m_readAhead.start(run(1, 3));
    EXPECT_EQ(pagesOf(*m_readAhead.take(run(6, 7))), (std::vector<int>{7}));
    EXPECT_EQ(m_ghostscript.overlaps(), 0);
    EXPECT_FALSE(hasChild());
}

TEST_F(ReadAheadOfRanges, ForgetsItsRun)
{
    m_readAhead.start(run(1, 3));
    m_readAhead.forget();
    EXPECT_FALSE(hasChild());
    m_readAhead.receive(2);
    m_readAhead.forget();
}

TEST_F(ReadAheadOfRanges, HasNothingForAFileThatIsNoPdf)
{
    m_folder.write("document.pdf", "%!PS\n");
    m_readAhead.start(run(1, 3));
    EXPECT_FALSE(hasChild());
    const auto nothing = m_readAhead.take(run(1, 3));
    EXPECT_FALSE(nothing->read());
    EXPECT_TRUE(nothing->pages().empty());
}

} // namespace
