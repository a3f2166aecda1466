#include "render/pdf/GhostScriptCommand.h"

#include "app/settings/RenderSize.h"
#include "process/CollectingHandler.h"
#include "support/FakeGhostscript.h"
#include "support/PrintQt.h"
#include "support/SamplePdf.h"
#include "support/SearchPath.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <ostream>
#include <string>

namespace {

using Answer = GhostscriptAnswer;
using Sizes = std::vector<QSizeF>;

const QString bitDevice = QStringLiteral("bit");
const RenderSize small{QSize(80, 100), LogicalDpi{0, 0}};

// 10 bytes a row.
constexpr int smallPageBytes = 1000;

class GhostScriptCommandTest : public testing::Test
{
protected:
    QString write(const QByteArray& content) const
    {
        return QString::fromStdString(m_folder.write("document.pdf", content));
    }

    Sizes sizesOf(const QByteArray& content) const
    {
        return GhostScriptCommand(write(content)).getPageSizes();
    }

private:
    TemporaryFolder m_folder;
};

class CommandLine : public GhostScriptCommandTest
{
protected:
    QStringList renderArguments(unsigned long first, unsigned long last, const RenderSize& size,
                                const QString& device = bitDevice)
    {
        CollectingHandler handler;
        EXPECT_TRUE(m_command.renderPages(first, last, size, device, &handler));
        return onlyRun();
    }

    QStringList onlyRun() const
    {
        const std::vector<QStringList> runs = m_ghostscript.runs();
        EXPECT_EQ(runs.size(), 1U);
        return runs.empty() ? QStringList() : runs.front();
    }

    QString m_fileName = write("%PDF-1.4\n");
    FakeGhostscript m_ghostscript{Answer()};
    GhostScriptCommand m_command{m_fileName};
};

TEST_F(CommandLine, AsksForThePageSizes)
{
    m_command.getPageSizes();
    EXPECT_EQ(onlyRun().join(QLatin1Char('|')),
              QStringLiteral("-q|-dBATCH|-dNODISPLAY|-dNOPAUSE|-dNOSAFER|-c|(") + m_fileName +
                  QStringLiteral(") (r) file runpdfbegin 1 1 pdfpagecount {pdfgetpage /MediaBox "
                                 "get {=print ( ) print} forall (\n) print} for quit"));
}

TEST_F(CommandLine, AsksForThePageCount)
{
    m_command.getPageCount();
    EXPECT_EQ(onlyRun().join(QLatin1Char('|')),
              QStringLiteral("-q|-dBATCH|-dNODISPLAY|-dNOPAUSE|-dNOSAFER|-c|(") + m_fileName +
                  QStringLiteral(") (r) file runpdfbegin pdfpagecount = quit"));
}

TEST_F(CommandLine, RendersARunOfPagesAtASize)
{
    EXPECT_EQ(renderArguments(3, 7, {QSize(1728, 2386), LogicalDpi{0, 0}}).join(QLatin1Char('|')),
              QStringLiteral("-q|-dBATCH|-dSAFER|-dNOPAUSE|-dFIXEDMEDIA|-dPDFFitPage|-sDEVICE=bit|"
                             "-dFirstPage=3|-dLastPage=7|-g1728x2386|-sOutputFile=-|") +
                  m_fileName);
}

TEST_F(CommandLine, RendersASinglePageCountedFromOne)
{
    EXPECT_EQ(renderArguments(5, 5, {QSize(16, 8), LogicalDpi{0, 0}}).join(QLatin1Char('|')),
              QStringLiteral("-q|-dBATCH|-dSAFER|-dNOPAUSE|-dFIXEDMEDIA|-dPDFFitPage|-sDEVICE=bit|"
                             "-dFirstPage=5|-dLastPage=5|-g16x8|-sOutputFile=-|") +
                  m_fileName);
}

TEST_F(CommandLine, NamesTheResolutionBeforeTheSize)
{
    EXPECT_EQ(
        renderArguments(1, 1, {QSize(1728, 1146), LogicalDpi{204, 98}}).join(QLatin1Char('|')),
        QStringLiteral("-q|-dBATCH|-dSAFER|-dNOPAUSE|-dFIXEDMEDIA|-dPDFFitPage|-sDEVICE=bit|"
                       "-dFirstPage=1|-dLastPage=1|-r204x98|-g1728x1146|-sOutputFile=-|") +
            m_fileName);
}

TEST_F(CommandLine, LeavesSizeAndResolutionOutWhereThereAreNone)
{
    EXPECT_EQ(renderArguments(1, 2, {QSize(0, 0), LogicalDpi{0, 0}}).join(QLatin1Char('|')),
              QStringLiteral("-q|-dBATCH|-dSAFER|-dNOPAUSE|-dFIXEDMEDIA|-dPDFFitPage|-sDEVICE=bit|"
                             "-dFirstPage=1|-dLastPage=2|-sOutputFile=-|") +
                  m_fileName);
}

TEST_F(CommandLine, NamesAResolutionWithoutASize)
{
    EXPECT_EQ(renderArguments(1, 2, {QSize(), LogicalDpi{408, 391}}).join(QLatin1Char('|')),
              QStringLiteral("-q|-dBATCH|-dSAFER|-dNOPAUSE|-dFIXEDMEDIA|-dPDFFitPage|-sDEVICE=bit|"
                             "-dFirstPage=1|-dLastPage=2|-r408x391|-sOutputFile=-|") +
                  m_fileName);
}

TEST_F(CommandLine, NamesTheOutputDevice)
{
    EXPECT_EQ(renderArguments(1, 1, {QSize(), LogicalDpi{0, 0}}, QStringLiteral("pbmraw")).at(6),
              QStringLiteral("-sDEVICE=pbmraw"));
}

struct OptionRow
{
    const char* name;
    RenderSize size;
    QString options;
};

const OptionRow optionRows[] = {
    {"TheSmallestSize", {QSize(1, 1), LogicalDpi{0, 0}}, QStringLiteral("-g1x1")},
    {"NoSizeWithAWidthOfZero", {QSize(0, 5), LogicalDpi{0, 0}}, QString()},
    {"NoSizeWithAHeightOfZero", {QSize(5, 0), LogicalDpi{0, 0}}, QString()},
    {"NoSizeWithANegativeWidth", {QSize(-1, 5), LogicalDpi{0, 0}}, QString()},
    {"NoSizeWithANegativeHeight", {QSize(5, -1), LogicalDpi{0, 0}}, QString()},
    {"NoResolutionWithAHorizontalOneOfZero", {QSize(), LogicalDpi{0, 98}}, QString()},
    {"NoResolutionWithAVerticalOneOfZero", {QSize(), LogicalDpi{204, 0}}, QString()},
    {"NumbersWithoutGroupSigns",
     {QSize(60000, 123456), LogicalDpi{65535, 1000}},
     QStringLiteral("-r65535x1000 -g60000x123456")},
};

class SizeOptions : public CommandLine, public testing::WithParamInterface<OptionRow>
{
};

TEST_P(SizeOptions, StandBeforeTheOutputFile)
{
    const QStringList arguments = renderArguments(1, 1, GetParam().size);
    EXPECT_EQ(arguments.mid(9, arguments.size() - 11).join(QLatin1Char(' ')), GetParam().options);
}

INSTANTIATE_TEST_SUITE_P(GhostScriptCommand, SizeOptions, testing::ValuesIn(optionRows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(CommandLineOfAName, KeepsAPlaceholderInTheName)
{
    const TemporaryFolder folder;
    const QString fileName = QString::fromStdString(folder.write("a%1b%2.pdf", "%PDF-1.4\n"));
    const FakeGhostscript ghostscript{Answer()};
    GhostScriptCommand(fileName).getPageCount();
    ASSERT_EQ(ghostscript.runs().size(), 1U);
    EXPECT_EQ(ghostscript.runs()[0].last(),
              QLatin1Char('(') + fileName +
                  QStringLiteral(") (r) file runpdfbegin pdfpagecount = quit"));
}

struct AnswerRow
{
    const char* name;
    QByteArray answer;
    Sizes sizes;
};

const QSizeF unreadable(-1, -1);

const AnswerRow answerRows[] = {
    {"WholeNumbers", "0 0 612 792 \n", {{612, 792}}},
    {"RealNumbers", "0.0 0.0 595.276 841.89 \n", {{595.276, 841.89}}},
    {"AnOffsetBox", "10 20 110 220 \n", {{100, 200}}},
    {"ExchangedCorners", "612 792 0 0 \n", {{-612, -792}}},
    {"NegativeCorners", "-10 -20 90 180 \n", {{100, 200}}},
    {"AnExponent", "0 0 1e3 2.5e2 \n", {{1000, 250}}},
    {"AnEmptyBox", "5 5 5 5 \n", {{0, 0}}},
    {"SeveralPages", "0 0 1 2 \n0 0 3 4 \n0 0 5 6 \n", {{1, 2}, {3, 4}, {5, 6}}},
    {"NoLineFeedAtTheEnd", "0 0 1 2", {{1, 2}}},
    {"CarriageReturns", "0 0 1 2\r\n0 0 3 4\r\n", {{1, 2}, {3, 4}}},
    {"SpacesAround", "   0 0 1 2   \n", {{1, 2}}},
    {"SeveralSpacesBetween", "0  0   1    2\n", {{1, 2}}},
    {"BlankLinesCountAsNothing", "\n0 0 1 2 \n\n   \n\t\n0 0 3 4 \n\n", {{1, 2}, {3, 4}}},
    {"AStrayLineInFrontIsAPage", "Warning: hm\n0 0 1 2 \n", {unreadable, {1, 2}}},
    {"AStrayLineBetweenIsAPage", "0 0 1 2 \nhm\n0 0 3 4 \n", {{1, 2}, unreadable, {3, 4}}},
    {"AStrayLineAtTheEndIsAPage", "0 0 1 2 \nhm\n", {{1, 2}, unreadable}},
    {"ThreeNumbers", "0 0 612 \n", {unreadable}},
    {"FiveNumbers", "0 0 612 792 1 \n", {unreadable}},
    {"AWordInPlaceOfTheFirstNumber", "x 0 612 792 \n", {unreadable}},
    {"AWordInPlaceOfTheSecondNumber", "0 x 612 792 \n", {unreadable}},
    {"AWordInPlaceOfTheThirdNumber", "0 0 x 792 \n", {unreadable}},
    {"AWordInPlaceOfTheLastNumber", "0 0 612 x \n", {unreadable}},
    {"ANumberWithAUnit", "0 0 612pt 792 \n", {unreadable}},
    {"ADecimalComma", "0 0 612,5 792 \n", {unreadable}},
    {"TabsBetween", "0\t0\t612\t792\n", {unreadable}},
    {"NothingAtAll", "", {}},
    {"OnlyBlankLines", "\n\n \n", {}},
};

class PageSizeAnswer : public GhostScriptCommandTest, public testing::WithParamInterface<AnswerRow>
{
};

TEST_P(PageSizeAnswer, IsReadLineByLine)
{
    const QString fileName = write("%PDF-1.4\n");
    const FakeGhostscript ghostscript(Answer::print(GetParam().answer));
    EXPECT_EQ(GhostScriptCommand(fileName).getPageSizes(), GetParam().sizes);
}

TEST_P(PageSizeAnswer, CountsForNothingIfTheRunFails)
{
    const QString fileName = write("%PDF-1.4\n");
    const FakeGhostscript ghostscript(Answer::print(GetParam().answer) + Answer::exit(1));
    EXPECT_EQ(GhostScriptCommand(fileName).getPageSizes(), Sizes());
}

INSTANTIATE_TEST_SUITE_P(GhostScriptCommand, PageSizeAnswer, testing::ValuesIn(answerRows),
                         [](const auto& test) { return std::string{test.param.name}; });

struct CountRow
{
    const char* name;
    Answer answer;
    unsigned long count;
};

const CountRow countRows[] = {
    {"ANumber", Answer::print("12\n"), 12},
    {"ANumberBetweenBlanks", Answer::print(" \n 12 \r\n"), 12},
    {"Zero", Answer::print("0\n"), 0},
    {"ABigNumber", Answer::print("4294967296\n"), 4294967296},
    {"AWord", Answer::print("twelve\n"), 0},
    {"ANumberAndAWord", Answer::print("12 pages\n"), 0},
    {"ANegativeNumber", Answer::print("-1\n"), 0},
    {"AHexadecimalNumber", Answer::print("0x10\n"), 0},
    {"ARealNumber", Answer::print("1.5\n"), 0},
    {"TwoLines", Answer::print("1\n2\n"), 0},
    {"Nothing", {}, 0},
    {"ANumberOfAFailedRun", Answer::print("12\n") + Answer::exit(1), 0},
    {"ANumberOfAKilledRun", Answer::print("12\n") + Answer::crash(SIGKILL), 0},
};

class PageCountAnswer : public GhostScriptCommandTest, public testing::WithParamInterface<CountRow>
{
};

TEST_P(PageCountAnswer, IsADecimalNumber)
{
    const QString fileName = write("%PDF-1.4\n");
    const FakeGhostscript ghostscript(GetParam().answer);
    EXPECT_EQ(GhostScriptCommand(fileName).getPageCount(), GetParam().count);
}

INSTANTIATE_TEST_SUITE_P(GhostScriptCommand, PageCountAnswer, testing::ValuesIn(countRows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST_F(GhostScriptCommandTest, FindsNoPagesWithoutGhostscript)
{
    const GhostScriptCommand command(write(SamplePdf::equalPages(1)));
    const SearchPath nowhere("/nonexistent");
    EXPECT_EQ(command.getPageSizes(), Sizes());
    EXPECT_EQ(command.getPageCount(), 0U);
}

TEST_F(GhostScriptCommandTest, RendersNothingWithoutGhostscript)
{
    const GhostScriptCommand command(write(SamplePdf::equalPages(1)));
    const SearchPath nowhere("/nonexistent");
    CollectingHandler handler;
    EXPECT_FALSE(command.renderPages(1, 1, small, bitDevice, &handler));
    EXPECT_EQ(handler.chunks(), 0);
}

TEST_F(GhostScriptCommandTest, FindsNoPagesWhenASignalKillsGhostscript)
{
    const GhostScriptCommand command(write(SamplePdf::equalPages(1)));
    const FakeGhostscript ghostscript(Answer::pageSizes(1) + Answer::crash(SIGKILL));
    EXPECT_EQ(command.getPageSizes(), Sizes());
}

struct RenderOutcomeRow
{
    const char* name;
    Answer answer;
    bool ok;
    QByteArray output;
};

// Letter by letter.
Answer inChunks(const QByteArray& text)
{
    Answer answer;
    for (const char letter : text) {
        answer = answer + Answer::print(QByteArray(1, letter)) + Answer::pause();
    }
    return answer;
}

const RenderOutcomeRow renderOutcomeRows[] = {
    {"SucceedsWithExitCodeZero", Answer::print("page"), true, "page"},
    {"FailsWithExitCodeOneAfterGoodOutput", Answer::print("page") + Answer::exit(1), false, "page"},
    {"FailsWhenASignalKillsGhostscript", Answer::print("page") + Answer::crash(SIGTERM), false,
     "page"},
    {"SucceedsWithoutOutput", {}, true, ""},
    {"JoinsTinyChunks", inChunks("abcdef"), true, "abcdef"},
};

class RenderOutcome : public GhostScriptCommandTest,
                      public testing::WithParamInterface<RenderOutcomeRow>
{
};

TEST_P(RenderOutcome, IsThatOfTheRun)
{
    const GhostScriptCommand command(write("%PDF-1.4\n"));
    const FakeGhostscript ghostscript(GetParam().answer);
    CollectingHandler handler;
    EXPECT_EQ(command.renderPages(1, 1, small, bitDevice, &handler), GetParam().ok);
    EXPECT_EQ(handler.collected(), GetParam().output);
}

INSTANTIATE_TEST_SUITE_P(GhostScriptCommand, RenderOutcome, testing::ValuesIn(renderOutcomeRows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST_F(GhostScriptCommandTest, PassesErrorOutputOn)
{
    const GhostScriptCommand command(write("%PDF-1.4\n"));
    const FakeGhostscript ghostscript(Answer::remark("remark"));
    CollectingHandler handler;
    testing::internal::CaptureStderr();
    command.getPageSizes();
    command.getPageCount();
    command.renderPages(1, 1, small, bitDevice, &handler);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "remarkremarkremark");
    EXPECT_EQ(handler.chunks(), 0);
}

// Ghostscript says on standard error which options it was given by the environment.
class EnvironmentOfARun : public GhostScriptCommandTest
{
protected:
    ~EnvironmentOfARun() override { qunsetenv("GS_OPTIONS"); }

    std::string optionsOfTheQuery() const
    {
        testing::internal::CaptureStderr();
        m_command.getPageSizes();
        return testing::internal::GetCapturedStderr();
    }

    std::string optionsOfTheRun() const
    {
        CollectingHandler handler;
        testing::internal::CaptureStderr();
        m_command.renderPages(1, 1, small, bitDevice, &handler);
        return testing::internal::GetCapturedStderr();
    }

private:
    GhostScriptCommand m_command{write("%PDF-1.4\n")};
    FakeGhostscript m_ghostscript{Answer::remarkOnOptions()};
};

TEST_F(EnvironmentOfARun, SendsTheRemarksOfTheRunToStandardError)
{
    EXPECT_EQ(optionsOfTheRun(), "-sstdout=%stderr\n");
    EXPECT_FALSE(qEnvironmentVariableIsSet("GS_OPTIONS"));
}

TEST_F(EnvironmentOfARun, KeepsTheOptionsOfTheUserInFront)
{
    qputenv("GS_OPTIONS", "-dOne -dTwo=\xff");
    EXPECT_EQ(optionsOfTheRun(), "-dOne -dTwo=\xff \n-sstdout=%stderr\n");
    EXPECT_EQ(qgetenv("GS_OPTIONS"), QByteArray("-dOne -dTwo=\xff"));
}

TEST_F(EnvironmentOfARun, IsThatOfTheUserForTheQuery)
{
    EXPECT_EQ(optionsOfTheQuery(), "none");
    qputenv("GS_OPTIONS", "-dOne");
    EXPECT_EQ(optionsOfTheQuery(), "-dOne\n");
}

struct StrangerRow
{
    const char* name;
    QByteArray content;
};

const StrangerRow strangerRows[] = {
    {"Text", "Just a letter.\n"},
    {"AnEmptyFile", ""},
    {"PostScript", "%!PS\n(P) (w) file closefile showpage\n"},
    {"PostScriptInFrontOfAPdf", "%!PS\nshowpage\n" + SamplePdf::equalPages(1)},
    {"JunkOf1019BytesInFront", QByteArray(1019, 'x') + SamplePdf::equalPages(1)},
};

class FileThatIsNoPdf : public GhostScriptCommandTest,
                        public testing::WithParamInterface<StrangerRow>
{
protected:
    GhostScriptCommand m_command{write(GetParam().content)};
    FakeGhostscript m_ghostscript{Answer::pageSizes(1)};
};

TEST_P(FileThatIsNoPdf, HasNoPageSizesAndStartsNoGhostscript)
{
    EXPECT_EQ(m_command.getPageSizes(), Sizes());
    EXPECT_EQ(m_ghostscript.runs().size(), 0U);
}

TEST_P(FileThatIsNoPdf, HasNoPagesAndStartsNoGhostscript)
{
    EXPECT_EQ(m_command.getPageCount(), 0U);
    EXPECT_EQ(m_ghostscript.runs().size(), 0U);
}

TEST_P(FileThatIsNoPdf, IsNotExecutedByTheRenderRun)
{
    CollectingHandler handler;
    EXPECT_FALSE(m_command.renderPages(1, 1, small, bitDevice, &handler));
    EXPECT_EQ(m_ghostscript.runs().size(), 0U);
}

INSTANTIATE_TEST_SUITE_P(GhostScriptCommand, FileThatIsNoPdf, testing::ValuesIn(strangerRows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(GhostScriptCommand, StartsNoGhostscriptForAFileThatDoesNotExist)
{
    const TemporaryFolder folder;
    const FakeGhostscript ghostscript(Answer::pageSizes(1));
    const GhostScriptCommand command(folder.qPath(QStringLiteral("nothing.pdf")));
    EXPECT_EQ(command.getPageSizes(), Sizes());
    EXPECT_EQ(command.getPageCount(), 0U);
    EXPECT_EQ(ghostscript.runs().size(), 0U);
}

TEST(GhostScriptCommand, StartsNoGhostscriptForAnEmptyName)
{
    const FakeGhostscript ghostscript(Answer::pageSizes(1));
    EXPECT_EQ(GhostScriptCommand(QString()).getPageSizes(), Sizes());
    EXPECT_EQ(ghostscript.runs().size(), 0U);
}

TEST(GhostScriptCommand, StartsNoGhostscriptForANameItWouldMisread)
{
    const TemporaryFolder folder;
    const QString fileName = QString::fromStdString(folder.write("a(b.pdf", "%PDF-1.4\n"));
    const FakeGhostscript ghostscript(Answer::pageSizes(1));
    const GhostScriptCommand command(fileName);
    CollectingHandler handler;
    EXPECT_EQ(command.getPageSizes(), Sizes());
    EXPECT_EQ(command.getPageCount(), 0U);
    EXPECT_FALSE(command.renderPages(1, 1, small, bitDevice, &handler));
    EXPECT_EQ(ghostscript.runs().size(), 0U);
}

struct FileRow
{
    const char* name;
    QByteArray content;
    Sizes sizes;
};

const FileRow fileRows[] = {
    {"ALetterPage", SamplePdf::equalPages(1), {{612, 792}}},
    {"AnA4Page", SamplePdf::equalPages(1, SamplePdf::a4), {{595.276, 841.89}}},
    {"AnOffsetBox", SamplePdf::file({{"10 20 110 220"}}), {{100, 200}}},
    {"ExchangedCorners", SamplePdf::file({{"612 792 0 0"}}), {{-612, -792}}},
    {"AnInheritedBox", SamplePdf::file({{}, {}}, "0 0 300 400"), {{300, 400}, {300, 400}}},
    {"ARotatedPage", SamplePdf::file({{SamplePdf::letter, 90}}), {{612, 792}}},
    {"AlternatingSizes",
     SamplePdf::file({{SamplePdf::a4}, {SamplePdf::letter}, {SamplePdf::a4}}),
     {{595.276, 841.89}, {612, 792}, {595.276, 841.89}}},
    {"TwentyPages", SamplePdf::equalPages(20), Sizes(20, {612, 792})},
    {"FortyPages", SamplePdf::equalPages(40), Sizes(40, {612, 792})},
    {"JunkOf1018BytesInFront",
     QByteArray(1018, 'x') + SamplePdf::equalPages(2),
     {{612, 792}, {612, 792}}},
    {"SpacesInFront", QByteArray(20, ' ') + SamplePdf::equalPages(2), {{612, 792}, {612, 792}}},
};

class RealFile : public GhostScriptCommandTest, public testing::WithParamInterface<FileRow>
{
};

TEST_P(RealFile, HasThePageSizesOfItsMediaBoxes)
{
    EXPECT_EQ(sizesOf(GetParam().content), GetParam().sizes);
}

TEST_P(RealFile, HasAsManyPagesAsSizes)
{
    EXPECT_EQ(GhostScriptCommand(write(GetParam().content)).getPageCount(),
              GetParam().sizes.size());
}

INSTANTIATE_TEST_SUITE_P(GhostScriptCommand, RealFile, testing::ValuesIn(fileRows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST_F(GhostScriptCommandTest, StreamsEveryPageOfARunWithoutAnythingBetween)
{
    const GhostScriptCommand command(write(SamplePdf::equalPages(3)));
    CollectingHandler run;
    EXPECT_TRUE(command.renderPages(1, 3, small, bitDevice, &run));
    QByteArray single;
    for (const unsigned long page : {1UL, 2UL, 3UL}) {
        CollectingHandler handler;
        EXPECT_TRUE(command.renderPages(page, page, small, bitDevice, &handler));
        EXPECT_EQ(handler.collected().size(), smallPageBytes);
        single += handler.collected();
    }
    EXPECT_TRUE(run.collected() == single);
}

TEST_F(GhostScriptCommandTest, StreamsRowsPackedToWholeBytes)
{
    const GhostScriptCommand command(write(SamplePdf::equalPages(1)));
    CollectingHandler handler;
    EXPECT_TRUE(command.renderPages(1, 1, {QSize(81, 10), {}}, bitDevice, &handler));
    EXPECT_EQ(handler.collected().size(), 110);
}

} // namespace
