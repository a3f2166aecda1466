#include "render/pdf/PdfPageRenderer.h"

#include "app/settings/RenderSize.h"
#include "render/pdf/PdfDocument.h"
#include "support/FakeGhostscript.h"
#include "support/PrintQt.h"
#include "support/SamplePdf.h"
#include "support/SearchPath.h"
#include "support/TemporaryFolder.h"
#include "support/TiffFile.h"

#include <QProcess>

#include <gtest/gtest.h>

#include <csignal>
#include <cstring>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

namespace {

using Answer = GhostscriptAnswer;

constexpr std::size_t eightMebibytes = 8388608;

const RenderSize standardA4{QSize(1728, 1146), LogicalDpi{204, 98}};
const RenderSize standardA4Rotated{QSize(1146, 1728), LogicalDpi{98, 204}};
const RenderSize ultrafineA4{QSize(3456, 4572), LogicalDpi{408, 391}};

RenderSize pixels(int width, int height)
{
    return {QSize(width, height), LogicalDpi{0, 0}};
}

/// A document in a file of its own.
class Document
{
public:
    explicit Document(const QByteArray& content)
    {
        m_folder.write("document.pdf", content);
        m_document.setFileName(fileName());
    }

    QString fileName() const { return m_folder.qPath(QStringLiteral("document.pdf")); }
    PdfDocument& document() { return m_document; }
    PdfPageRenderer& renderer() { return m_document.pageRenderer(); }

    /// The page; null if it cannot be rendered.
    QImage page(unsigned long index, const RenderSize& size)
    {
        QImage image;
        return renderer().renderPage(index, size, image) ? image : QImage();
    }

    /// All pages as Ghostscript itself writes them into files, by another device.
    std::vector<QImage> references(unsigned long pageCount, const QSize& size) const
    {
        EXPECT_EQ(QProcess::execute(
                      QStringLiteral("gs"),
                      {QStringLiteral("-q"), QStringLiteral("-dBATCH"), QStringLiteral("-dSAFER"),
                       QStringLiteral("-dNOPAUSE"), QStringLiteral("-dFIXEDMEDIA"),
                       QStringLiteral("-dPDFFitPage"), QStringLiteral("-sDEVICE=pbmraw"),
                       QStringLiteral("-g%1x%2").arg(size.width()).arg(size.height()),
                       QStringLiteral("-sOutputFile=") + m_folder.qPath(QStringLiteral("%d.pbm")),
                       fileName()}),
                  0);
        std::vector<QImage> pages;
        for (unsigned long number = 1; number <= pageCount; ++number) {
            pages.emplace_back(m_folder.qPath(QStringLiteral("%1.pbm").arg(number)));
            EXPECT_EQ(pages.back().size(), size);
        }
        return pages;
    }

private:
    TemporaryFolder m_folder;
    PdfDocument m_document;
};

// Real Ghostscript.

struct PageRow
{
    const char* name;
    QByteArray content;
    unsigned long pageCount;
    RenderSize requested;
    QSize rendered;
};

const PageRow pageRows[] = {
    {"A4AtStandardResolution", SamplePdf::equalPages(3, SamplePdf::a4), 3, standardA4,
     QSize(1728, 2386)},
    {"A4RotatedAtStandardResolution", SamplePdf::equalPages(2, SamplePdf::a4), 2, standardA4Rotated,
     QSize(2386, 1728)},
    {"A4AtUltrafineResolution", SamplePdf::equalPages(2, SamplePdf::a4), 2, ultrafineA4,
     QSize(3456, 4771)},
    {"EqualResolutions",
     SamplePdf::equalPages(3),
     3,
     {QSize(200, 260), LogicalDpi{200, 200}},
     QSize(200, 260)},
    {"NoResolution", SamplePdf::equalPages(3), 3, pixels(200, 260), QSize(200, 260)},
    {"NoHorizontalResolution",
     SamplePdf::equalPages(2),
     2,
     {QSize(200, 260), LogicalDpi{0, 98}},
     QSize(200, 260)},
    {"NoVerticalResolution",
     SamplePdf::equalPages(2),
     2,
     {QSize(200, 260), LogicalDpi{204, 0}},
     QSize(200, 260)},
    {"OneColumn", SamplePdf::equalPages(2), 2, pixels(1, 50), QSize(1, 50)},
    {"ARowOfOneByte", SamplePdf::equalPages(2), 2, pixels(8, 50), QSize(8, 50)},
    {"ARowOfThreeBytesAndABit", SamplePdf::equalPages(2), 2, pixels(25, 50), QSize(25, 50)},
    {"ARowThatQtWouldPad", SamplePdf::equalPages(3), 3, pixels(161, 207), QSize(161, 207)},
    {"TheSizeOfThePage", SamplePdf::equalPages(2), 2, pixels(0, 0), QSize(612, 792)},
    {"TheSizeOfThePageWithoutAVerticalResolution",
     SamplePdf::equalPages(2, "0 0 100.5 99.4"),
     2,
     {QSize(-1, -1), LogicalDpi{204, 0}},
     QSize(101, 99)},
    {"TheSizeOfThePageWithoutAHorizontalResolution",
     SamplePdf::equalPages(2, "0 0 100.5 99.4"),
     2,
     {QSize(-1, -1), LogicalDpi{0, 98}},
     QSize(101, 99)},
    {"TheSizeOfThePageAtAResolution",
     SamplePdf::equalPages(2),
     2,
     {QSize(0, 0), LogicalDpi{204, 98}},
     QSize(1734, 1078)},
    {"TheSizeOfAnOffsetPage",
     SamplePdf::file({{"10 20 110 220"}, {"10 20 110 220"}}),
     2,
     {QSize(0, 5), LogicalDpi{72, 36}},
     QSize(100, 100)},
    {"TwentyPages", SamplePdf::equalPages(20), 20, pixels(300, 390), QSize(300, 390)},
    {"AlternatingSizes",
     SamplePdf::file({{SamplePdf::a4}, {SamplePdf::letter}, {SamplePdf::a4}, {SamplePdf::letter}}),
     4, pixels(201, 260), QSize(201, 260)},
    {"InheritedMediaBox", SamplePdf::file({{}, {}}, "0 0 300 400"), 2, pixels(150, 200),
     QSize(150, 200)},
    {"ExchangedCorners", SamplePdf::file({{"612 792 0 0"}, {"612 792 0 0"}}), 2, pixels(150, 200),
     QSize(150, 200)},
    {"RotatedPages", SamplePdf::file({{SamplePdf::letter, 90}, {SamplePdf::letter, 180}}), 2,
     pixels(150, 200), QSize(150, 200)},
    {"OnePage", SamplePdf::equalPages(1), 1, pixels(150, 200), QSize(150, 200)},
};

class RealPages : public testing::TestWithParam<PageRow>
{
protected:
    void expectPages(std::size_t cacheLimit, const std::vector<QImage>& expected)
    {
        m_document.renderer().setForwardCacheLimit(cacheLimit);
        for (unsigned long index = 0; index < GetParam().pageCount; ++index) {
            EXPECT_TRUE(
                isSamePicture(m_document.page(index, GetParam().requested), expected[index]))
                << "page " << index << ", cache of " << cacheLimit << " bytes";
        }
    }

    std::vector<QImage> expectedPages() const
    {
        const PageRow& row = GetParam();
        std::vector<QImage> pages = m_document.references(row.pageCount, row.rendered);
        const QSize size = row.requested.size.isEmpty() ? row.rendered : row.requested.size;
        for (QImage& page : pages) {
            if (size != row.rendered) {
                page = page.scaled(size, Qt::IgnoreAspectRatio, Qt::FastTransformation);
            }
        }
        return pages;
    }

    Document m_document{GetParam().content};
};

TEST_P(RealPages, AreThoseOfGhostscriptAloneAndInARun)
{
    const std::vector<QImage> expected = expectedPages();
    expectPages(0, expected);
    expectPages(eightMebibytes, expected);
}

INSTANTIATE_TEST_SUITE_P(PdfPageRenderer, RealPages, testing::ValuesIn(pageRows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(PdfPageRenderer, DrawsEveryPageDifferently)
{
    Document document(SamplePdf::equalPages(3));
    const RenderSize size = pixels(200, 260);
    EXPECT_NE(document.page(0, size), document.page(1, size));
    EXPECT_NE(document.page(1, size), document.page(2, size));
}

// The rows of Ghostscript's bit device and how they lie in an image.

struct LayoutRow
{
    const char* name;
    int width;
    int bytesPerLine;
};

const LayoutRow layoutRows[] = {
    {"AStandardFaxLine", 1728, 216},
    {"AStretchedLine", 2386, 299},
    {"OnePixel", 1, 1},
    {"OneByte", 8, 1},
    {"OneByteAndOnePixel", 9, 2},
    {"ThreeBytes", 24, 3},
    {"ALittleLessThanFourBytes", 25, 4},
    {"FourBytes", 32, 4},
    {"FourBytesAndOnePixel", 33, 5},
};

class PageLayout : public testing::TestWithParam<LayoutRow>
{
protected:
    QImage render(std::size_t cacheLimit) const
    {
        const FakeGhostscript ghostscript({Answer::pageSizes(3), Answer::numberedPages()});
        Document document("%PDF-1.4\n");
        document.renderer().setForwardCacheLimit(cacheLimit);
        QImage image;
        EXPECT_TRUE(document.renderer().getRenderedPage(0, pixels(GetParam().width, 11), image));
        return image;
    }
};

TEST_P(PageLayout, IsPackedToWholeBytesAlone)
{
    const QImage image = render(0);
    EXPECT_EQ(image.size(), QSize(GetParam().width, 11));
    EXPECT_EQ(image.format(), QImage::Format_Mono);
    EXPECT_EQ(image.colorTable(), (QVector<QRgb>{0xFFFFFFFF, 0xFF000000}));
    EXPECT_EQ(image.bytesPerLine(), GetParam().bytesPerLine);
}

TEST_P(PageLayout, IsPackedToWholeBytesInARun)
{
    const QImage image = render(eightMebibytes);
    EXPECT_EQ(image.size(), QSize(GetParam().width, 11));
    EXPECT_EQ(image.format(), QImage::Format_Mono);
    EXPECT_EQ(image.colorTable(), (QVector<QRgb>{0xFFFFFFFF, 0xFF000000}));
    EXPECT_EQ(image.bytesPerLine(), GetParam().bytesPerLine);
}

INSTANTIATE_TEST_SUITE_P(PdfPageRenderer, PageLayout, testing::ValuesIn(layoutRows),
                         [](const auto& test) { return std::string{test.param.name}; });

// The forward cache, counted by the runs of a stand-in.

/// A document that a stand-in pretends to read: every byte of a page is its
/// number, counted from 1.
class PretendedDocument
{
public:
    explicit PretendedDocument(const Answer& sizes, std::size_t cacheLimit = eightMebibytes)
        : m_ghostscript({sizes, Answer::numberedPages()}),
          m_document("%PDF-1.4\n")
    {
        m_document.renderer().setForwardCacheLimit(cacheLimit);
    }

    ~PretendedDocument() { EXPECT_EQ(m_ghostscript.overlaps(), 0); }

    PretendedDocument(const PretendedDocument&) = delete;
    PretendedDocument& operator=(const PretendedDocument&) = delete;

    PdfPageRenderer& renderer() { return m_document.renderer(); }
    PdfDocument& document() { return m_document.document(); }

    /// Renders a page whole; the result is its number counted from 1, or 0 if
    /// that failed.
    int request(unsigned long index, const RenderSize& size)
    {
        QImage image;
        if (!renderer().getRenderedPage(index, size, image)) {
            return 0;
        }
        const int number = image.constBits()[0];
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < (image.width() + 7) / 8; ++x) {
                if (image.constScanLine(y)[x] != number) {
                    return -1;
                }
            }
        }
        return number;
    }

    std::vector<int> requestAll(const std::vector<unsigned long>& indices, const RenderSize& size)
    {
        std::vector<int> numbers;
        for (const unsigned long index : indices) {
            numbers.push_back(request(index, size));
        }
        return numbers;
    }

    /// "1-17 18-20" for two runs of Ghostscript.
    QString runs() const
    {
        QStringList words;
        for (QString run : m_ghostscript.renderedRanges()) {
            run = run.section(QStringLiteral(" -g"), 0, 0);
            run.remove(QStringLiteral("-dFirstPage="));
            words << run.replace(QStringLiteral(" -dLastPage="), QStringLiteral("-"));
        }
        return words.join(QLatin1Char(' '));
    }

    const FakeGhostscript& ghostscript() const { return m_ghostscript; }

private:
    FakeGhostscript m_ghostscript;
    Document m_document;
};

std::vector<unsigned long> upTo(unsigned long end)
{
    std::vector<unsigned long> indices;
    for (unsigned long index = 0; index < end; ++index) {
        indices.push_back(index);
    }
    return indices;
}

std::vector<int> numbersUpTo(int last)
{
    std::vector<int> numbers;
    for (int number = 1; number <= last; ++number) {
        numbers.push_back(number);
    }
    return numbers;
}

TEST(ForwardCache, RendersTwentyStandardPagesInTwoRuns)
{
    PretendedDocument document(Answer::pageSizes(20));
    QImage image;
    for (unsigned long index = 0; index < 20; ++index) {
        ASSERT_TRUE(document.renderer().renderPage(index, standardA4, image));
    }
    EXPECT_EQ(document.ghostscript().renderedRanges(),
              (QStringList{QStringLiteral("-dFirstPage=1 -dLastPage=17 -g1728x2386"),
                           QStringLiteral("-dFirstPage=18 -dLastPage=20 -g1728x2386")}));
}

TEST(ForwardCache, KeepsFourUltrafinePagesAhead)
{
    PretendedDocument document(Answer::pageSizes(11));
    QImage image;
    for (unsigned long index = 0; index < 11; ++index) {
        ASSERT_TRUE(document.renderer().renderPage(index, ultrafineA4, image));
    }
    EXPECT_EQ(document.ghostscript().renderedRanges(),
              (QStringList{QStringLiteral("-dFirstPage=1 -dLastPage=5 -g3456x4771"),
                           QStringLiteral("-dFirstPage=6 -dLastPage=10 -g3456x4771"),
                           QStringLiteral("-dFirstPage=11 -dLastPage=11 -g3456x4771")}));
}

struct CacheRow
{
    const char* name;
    Answer sizes;
    std::size_t limit;
    RenderSize size;
    std::vector<unsigned long> requests;
    QString runs;
};

// At 64 x 10 pixels a page takes 80 bytes. Where the order is not kept, nothing
// is left that could be read ahead: whether such a run still records itself
// before it is killed is a matter of luck.
const CacheRow cacheRows[] = {
    {"PagesComeFromOneRun", Answer::pageSizes(5), eightMebibytes, pixels(64, 10), upTo(5),
     QStringLiteral("1-5")},
    {"PackedPagesComeFromOneRun", Answer::pageSizes(5), eightMebibytes, pixels(37, 10), upTo(5),
     QStringLiteral("1-5")},
    {"TheBudgetCountsOnlyThePagesAhead", Answer::pageSizes(7), 160, pixels(64, 10), upTo(7),
     QStringLiteral("1-3 4-6 7-7")},
    {"ABudgetOfAByteLessKeepsOnePageLess", Answer::pageSizes(5), 159, pixels(64, 10), upTo(5),
     QStringLiteral("1-2 3-4 5-5")},
    {"APageLargerThanTheBudgetIsRenderedAlone", Answer::pageSizes(3), 79, pixels(64, 10), upTo(3),
     QStringLiteral("1-1 2-2 3-3")},
    {"ALimitOfZeroRendersEveryPageAlone", Answer::pageSizes(3), 0, pixels(64, 10), upTo(3),
     QStringLiteral("1-1 2-2 3-3")},
    {"TheLastPageIsRenderedAlone", Answer::pageSizes(4), 160, pixels(64, 10), upTo(4),
     QStringLiteral("1-3 4-4")},
    {"AnOnlyPageIsRenderedAlone", Answer::pageSizes(1), eightMebibytes, pixels(64, 10), upTo(1),
     QStringLiteral("1-1")},
    {"ARequestOutOfOrderIsRenderedAlone",
     Answer::pageSizes(6),
     400,
     pixels(64, 10),
     {0, 1, 5},
     QStringLiteral("1-6 6-6")},
    {"ARequestOutOfOrderEmptiesTheCache",
     Answer::pageSizes(6),
     400,
     pixels(64, 10),
     {0, 5, 1},
     QStringLiteral("1-6 6-6 2-2")},
    {"TheRequestAfterOneOutOfOrderStartsARun",
     Answer::pageSizes(6) + Answer::print("0 0 1 2\n").repeated(8),
     400,
     pixels(64, 10),
     {0, 7, 8, 9},
     QStringLiteral("1-6 8-8 9-14")},
    {"AFirstRequestThatIsNotTheFirstPageIsRenderedAlone",
     Answer::pageSizes(10),
     400,
     pixels(64, 10),
     {3, 4, 5},
     QStringLiteral("4-4 5-10")},
    {"ARepeatedRequestIsRenderedAgain",
     Answer::pageSizes(6),
     400,
     pixels(64, 10),
     {0, 0, 1},
     QStringLiteral("1-6 1-1 2-6")},
    {"RequestsFromBackToFrontAreRenderedAlone",
     Answer::pageSizes(4),
     400,
     pixels(64, 10),
     {3, 2, 1},
     QStringLiteral("4-4 3-3 2-2")},
    {"ARequestOfTheFirstPageOutOfOrderIsRenderedAlone",
     Answer::pageSizes(4),
     400,
     pixels(64, 10),
     {2, 0, 1},
     QStringLiteral("3-3 1-1 2-4")},
    {"AlternatingSizesNeverShareARun",
     Answer::print("0 0 595.276 841.89\n0 0 612 792\n0 0 595.276 841.89\n"), eightMebibytes,
     pixels(64, 10), upTo(3), QStringLiteral("1-1 2-2 3-3")},
    {"ARunEndsWhereTheSizeChanges",
     Answer::pageSizes(3) + Answer::print("0 0 1 2\n0 0 1 2\n0 0 5 6\n") + Answer::pageSizes(1),
     eightMebibytes, pixels(64, 10), upTo(7), QStringLiteral("1-3 4-5 6-6 7-7")},
    {"AWidthOfItsOwnEndsARun", Answer::print("0 0 10 20\n0 0 11 20\n"), eightMebibytes,
     pixels(64, 10), upTo(2), QStringLiteral("1-1 2-2")},
    {"AHeightOfItsOwnEndsARun", Answer::print("0 0 10 20\n0 0 10 21\n"), eightMebibytes,
     pixels(64, 10), upTo(2), QStringLiteral("1-1 2-2")},
    {"SizesThatDifferByRoundingShareARun", Answer::print("0 0 612 792\n0 0 612.0000000001 792\n"),
     eightMebibytes, pixels(64, 10), upTo(2), QStringLiteral("1-2")},
    {"SizesThatDifferByLittleDoNotShareARun", Answer::print("0 0 612 792\n0 0 612.00000001 792\n"),
     eightMebibytes, pixels(64, 10), upTo(2), QStringLiteral("1-1 2-2")},
    {"BoxesAtOtherPlacesShareARun", Answer::print("0 0 100 200\n10 20 110 220\n"), eightMebibytes,
     pixels(64, 10), upTo(2), QStringLiteral("1-2")},
    {"UnreadablePagesShareARun", Answer::print("hm\nhm\n0 0 612 792\n"), eightMebibytes,
     pixels(64, 10), upTo(3), QStringLiteral("1-2 3-3")},
};

class ForwardCacheRuns : public testing::TestWithParam<CacheRow>
{
};

TEST_P(ForwardCacheRuns, AreAsFewAsTheRequestsAllow)
{
    const CacheRow& row = GetParam();
    PretendedDocument document(row.sizes, row.limit);
    std::vector<int> numbers;
    for (const unsigned long index : row.requests) {
        numbers.push_back(static_cast<int>(index) + 1);
    }
    EXPECT_EQ(document.requestAll(row.requests, row.size), numbers);
    EXPECT_EQ(document.runs(), row.runs);
}

INSTANTIATE_TEST_SUITE_P(PdfPageRenderer, ForwardCacheRuns, testing::ValuesIn(cacheRows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(ForwardCache, HoldsExactlyOnePageOfEightMebibytes)
{
    PretendedDocument document(Answer::pageSizes(3));
    EXPECT_EQ(document.requestAll(upTo(3), pixels(8192, 8192)), numbersUpTo(3));
    EXPECT_EQ(document.runs(), QStringLiteral("1-2 3-3"));
}

TEST(ForwardCache, HoldsNoPageOfMoreThanEightMebibytes)
{
    PretendedDocument document(Answer::pageSizes(2));
    EXPECT_EQ(document.requestAll(upTo(2), pixels(8192, 8193)), numbersUpTo(2));
    EXPECT_EQ(document.runs(), QStringLiteral("1-1 2-2"));
}

TEST(ForwardCache, LeavesAPageBeyondTheLastOneToGhostscript)
{
    PretendedDocument document(Answer::pageSizes(1));
    EXPECT_EQ(document.request(0, pixels(64, 10)), 1);
    EXPECT_EQ(document.request(1, pixels(64, 10)), 2);
    EXPECT_EQ(document.runs(), QStringLiteral("1-1 2-2"));
}

TEST(ForwardCache, IsOffAtFirst)
{
    const FakeGhostscript ghostscript({Answer::pageSizes(3), Answer::numberedPages()});
    Document document("%PDF-1.4\n");
    document.page(0, pixels(64, 10));
    document.page(1, pixels(64, 10));
    EXPECT_EQ(ghostscript.renderedRanges().size(), 2);
}

TEST(ForwardCache, StartsANewRunWhenTheRequestedSizeChanges)
{
    PretendedDocument document(Answer::pageSizes(5));
    EXPECT_EQ(document.request(0, pixels(64, 10)), 1);
    EXPECT_EQ(document.request(1, pixels(64, 11)), 2);
    EXPECT_EQ(document.request(2, pixels(64, 11)), 3);
    EXPECT_EQ(document.ghostscript().renderedRanges(),
              (QStringList{QStringLiteral("-dFirstPage=1 -dLastPage=5 -g64x10"),
                           QStringLiteral("-dFirstPage=2 -dLastPage=5 -g64x11")}));
}

TEST(ForwardCache, DropsThePagesOfTheOldSizeForGood)
{
    PretendedDocument document(Answer::pageSizes(3));
    EXPECT_EQ(document.request(0, pixels(64, 10)), 1);
    EXPECT_EQ(document.request(1, pixels(64, 11)), 2);
    EXPECT_EQ(document.request(2, pixels(64, 10)), 3);
    EXPECT_EQ(document.runs(), QStringLiteral("1-3 2-3 3-3"));
}

TEST(ForwardCache, ForgetsItsPagesAndItsPlaceWithANewLimit)
{
    PretendedDocument document(Answer::pageSizes(5));
    EXPECT_EQ(document.request(0, pixels(64, 10)), 1);
    document.renderer().setForwardCacheLimit(eightMebibytes - 1);
    EXPECT_EQ(document.request(1, pixels(64, 10)), 2);
    EXPECT_EQ(document.runs(), QStringLiteral("1-5 2-2"));
}

TEST(ForwardCache, ExpectsTheFirstPageAfterANewLimit)
{
    PretendedDocument document(Answer::pageSizes(2) + Answer::print("0 0 1 2\n0 0 1 2\n"));
    document.request(3, pixels(64, 10));
    document.renderer().setForwardCacheLimit(80);
    EXPECT_EQ(document.requestAll({0, 1}, pixels(64, 10)), numbersUpTo(2));
    EXPECT_EQ(document.runs(), QStringLiteral("4-4 1-2"));
}

TEST(ForwardCache, KeepsItsPagesWhenTheSameLimitIsSet)
{
    PretendedDocument document(Answer::pageSizes(5));
    EXPECT_EQ(document.request(0, pixels(64, 10)), 1);
    document.renderer().setForwardCacheLimit(eightMebibytes);
    EXPECT_EQ(document.request(1, pixels(64, 10)), 2);
    EXPECT_EQ(document.runs(), QStringLiteral("1-5"));
}

TEST(ForwardCache, ForgetsItsPagesWhenItIsSwitchedOff)
{
    PretendedDocument document(Answer::pageSizes(4));
    EXPECT_EQ(document.request(0, pixels(64, 10)), 1);
    document.renderer().setForwardCacheLimit(0);
    EXPECT_EQ(document.requestAll({1, 2}, pixels(64, 10)), (std::vector<int>{2, 3}));
    EXPECT_EQ(document.runs(), QStringLiteral("1-4 2-2 3-3"));
}

TEST(ForwardCache, RunsFromTheFirstPageAfterItWasOff)
{
    PretendedDocument document(Answer::pageSizes(4), 0);
    document.requestAll(upTo(3), pixels(64, 10));
    document.renderer().setForwardCacheLimit(eightMebibytes);
    EXPECT_EQ(document.requestAll(upTo(4), pixels(64, 10)), numbersUpTo(4));
    EXPECT_EQ(document.runs(), QStringLiteral("1-1 2-2 3-3 1-4"));
}

TEST(ForwardCache, ServesTheNextRequestEvenAfterAnotherFile)
{
    PretendedDocument document(Answer::pageSizes(4));
    const TemporaryFolder folder;
    EXPECT_EQ(document.request(0, pixels(64, 10)), 1);
    document.document().setFileName(
        QString::fromStdString(folder.write("second.pdf", "%PDF-1.4\n")));
    EXPECT_EQ(document.request(1, pixels(64, 10)), 2);
    EXPECT_EQ(document.runs(), QStringLiteral("1-4"));
}

TEST(ForwardCache, IsDroppedByTheFirstRequestOutOfOrderAfterAnotherFile)
{
    PretendedDocument document(Answer::pageSizes(4));
    const TemporaryFolder folder;
    const QString second = QString::fromStdString(folder.write("second.pdf", "%PDF-1.4\n"));
    EXPECT_EQ(document.request(0, pixels(64, 10)), 1);
    document.document().setFileName(second);
    EXPECT_EQ(document.requestAll({0, 1}, pixels(64, 10)), numbersUpTo(2));
    EXPECT_EQ(document.runs(), QStringLiteral("1-4 1-1 2-4"));
    EXPECT_EQ(document.ghostscript().runs().back().last(), second);
}

// What comes of output that is not what it should be. A page of 64 x 10 pixels
// takes 80 bytes in the rows of QImage, one of 37 x 16 pixels in packed rows.

struct OutputRow
{
    const char* name;
    Answer run;
    bool ok;
    int blackBytes; ///< from the start of the first page; the rest is white
};

const Answer threePages = Answer::print("0 0 1 2\n").repeated(3);

Answer fill(int count)
{
    return Answer::bytes(count, '\xff');
}

const OutputRow singlePageRows[] = {
    {"AWholePage", fill(80), true, 80},
    {"OneByteTooFew", fill(79), false, 0},
    {"HalfAPage", fill(40), false, 0},
    {"NoByteAtAll", {}, false, 0},
    {"OneByteTooMany", fill(81), true, 80},
    {"AnotherPageTooMany", fill(160), true, 80},
    {"MoreThanAPipeHolds", fill(1000000), true, 80},
    {"ExitCodeOneAfterGoodOutput", fill(80) + Answer::exit(1), false, 0},
    {"ASignalAfterGoodOutput", fill(80) + Answer::crash(SIGKILL), false, 0},
    {"ASignalInTheMiddle", fill(40) + Answer::crash(SIGTERM), false, 0},
    {"TinyChunks", (fill(10) + Answer::pause()).repeated(8), true, 80},
    {"AnErrorMessage", fill(80) + Answer::remark("problem\n"), true, 80},
};

const OutputRow runRows[] = {
    {"ThreeWholePages", fill(240), true, 80},
    {"OneByteTooFewInTheFirstPage", fill(79), true, 79},
    {"OneByteOfTheFirstPage", fill(1), true, 1},
    {"HalfAPage", fill(40), true, 40},
    {"NoByteAtAll", {}, false, 0},
    {"OneByteTooMany", fill(241), true, 80},
    {"MoreThanAPipeHolds", fill(1000000), true, 80},
    {"ExitCodeOneAfterGoodOutput", fill(240) + Answer::exit(1), false, 0},
    {"ASignalAfterGoodOutput", fill(240) + Answer::crash(SIGKILL), false, 0},
    {"TinyChunks", (fill(30) + Answer::pause()).repeated(8), true, 80},
};

/// Leaves used memory behind, so that a page image that is not cleared shows.
void soilTheHeap()
{
    std::vector<std::unique_ptr<unsigned char[]>> blocks;
    for (int i = 0; i < 64; ++i) {
        for (const std::size_t size : {72U, 80U, 88U, 96U, 120U}) {
            blocks.push_back(std::make_unique<unsigned char[]>(size));
            std::memset(blocks.back().get(), 0xFF, size);
        }
    }
}

/// A stand-in that has three pages of one size and plays a script to render.
class OddOutput : public testing::TestWithParam<std::tuple<OutputRow, QSize>>
{
protected:
    const OutputRow& row() const { return std::get<0>(GetParam()); }
    RenderSize size() const { return {std::get<1>(GetParam()), LogicalDpi{0, 0}}; }

    void expectPage(std::size_t cacheLimit)
    {
        m_document.renderer().setForwardCacheLimit(cacheLimit);
        QImage untouched(3, 3, QImage::Format_RGB32);
        untouched.fill(Qt::blue);
        QImage image = untouched;
        soilTheHeap();
        ASSERT_EQ(m_document.renderer().getRenderedPage(0, size(), image), row().ok);
        if (!row().ok) {
            EXPECT_TRUE(image == untouched);
            return;
        }
        const QByteArray expected =
            QByteArray(row().blackBytes, '\xff') + QByteArray(80 - row().blackBytes, '\0');
        const void* const bits = image.constBits();
        EXPECT_EQ(QByteArray(static_cast<const char*>(bits), 80), expected);
    }

    FakeGhostscript m_ghostscript{FakeGhostscript::Answers{threePages, row().run}};
    Document m_document{"%PDF-1.4\n"};
};

class SinglePageOutput : public OddOutput
{
};

TEST_P(SinglePageOutput, IsAPageOnlyIfItIsComplete)
{
    expectPage(0);
}

class RunOutput : public OddOutput
{
};

TEST_P(RunOutput, IsAWhitePageBehindItsEnd)
{
    expectPage(eightMebibytes);
}

const auto outputName = [](const auto& test) {
    return std::string{std::get<0>(test.param).name} +
           (std::get<1>(test.param).width() == 64 ? "InRowsOfQt" : "InPackedRows");
};

INSTANTIATE_TEST_SUITE_P(PdfPageRenderer, SinglePageOutput,
                         testing::Combine(testing::ValuesIn(singlePageRows),
                                          testing::Values(QSize(64, 10), QSize(37, 16))),
                         outputName);

INSTANTIATE_TEST_SUITE_P(PdfPageRenderer, RunOutput,
                         testing::Combine(testing::ValuesIn(runRows),
                                          testing::Values(QSize(64, 10), QSize(37, 16))),
                         outputName);

// Behind the first page of a run.

class ShortRun : public testing::Test
{
protected:
    std::vector<int> blackBytesOfThreePages(const Answer& run,
                                            const std::map<int, Answer>& runsFrom = {})
    {
        const FakeGhostscript ghostscript({threePages, run, runsFrom});
        Document document("%PDF-1.4\n");
        document.renderer().setForwardCacheLimit(eightMebibytes);
        std::vector<int> counts;
        for (unsigned long index = 0; index < 3; ++index) {
            soilTheHeap();
            QImage image;
            int count = -1;
            if (document.renderer().getRenderedPage(index, pixels(64, 10), image)) {
                const void* const bits = image.constBits();
                const QByteArray bytes(static_cast<const char*>(bits), 80);
                count = static_cast<int>(bytes.count('\xff'));
            }
            counts.push_back(count);
        }
        m_ranges = ghostscript.renderedRanges();
        return counts;
    }

    QStringList m_ranges;
};

TEST_F(ShortRun, LeavesTheLastPageWhiteWhereItsOutputEnds)
{
    EXPECT_EQ(blackBytesOfThreePages(fill(239)), (std::vector<int>{80, 80, 79}));
    EXPECT_EQ(m_ranges.size(), 1);
}

TEST_F(ShortRun, RendersThePagesAloneThatItDidNotReach)
{
    EXPECT_EQ(blackBytesOfThreePages(fill(100), {{3, fill(80)}}), (std::vector<int>{80, 20, 80}));
    ASSERT_EQ(m_ranges.size(), 2);
    EXPECT_EQ(m_ranges[1], QStringLiteral("-dFirstPage=3 -dLastPage=3 -g64x10"));
}

TEST_F(ShortRun, FailsForThePageThatIsShortAlone)
{
    EXPECT_EQ(blackBytesOfThreePages(fill(60)), (std::vector<int>{60, 60, -1}));
}

TEST_F(ShortRun, DiscardsThePagesOfAFailedRun)
{
    EXPECT_EQ(blackBytesOfThreePages(fill(240) + Answer::exit(1), {{2, fill(240)}}),
              (std::vector<int>{-1, 80, 80}));
    EXPECT_EQ(m_ranges, (QStringList{QStringLiteral("-dFirstPage=1 -dLastPage=3 -g64x10"),
                                     QStringLiteral("-dFirstPage=2 -dLastPage=3 -g64x10")}));
}

// Requests that cannot be met.

struct ImpossibleRow
{
    const char* name;
    unsigned long index;
    RenderSize size;
};

constexpr int hugeSide = 2000000000;

const ImpossibleRow impossibleRows[] = {
    {"APageBehindTheLast", 3, pixels(64, 10)},
    {"APageFarBehindTheLast", 4294967295, pixels(64, 10)},
    {"AnUnreadablePageWithoutASize", 2, pixels(0, 0)},
    {"AnUnreadablePageWithoutASizeAtAResolution", 2, {QSize(), LogicalDpi{204, 98}}},
};

class ImpossiblePage : public testing::TestWithParam<ImpossibleRow>
{
};

TEST_P(ImpossiblePage, FailsWithoutGhostscript)
{
    PretendedDocument document(Answer::pageSizes(2) + Answer::print("hm\n"));
    QImage image;
    EXPECT_FALSE(document.renderer().renderPage(GetParam().index, GetParam().size, image));
    EXPECT_TRUE(image.isNull());
    EXPECT_EQ(document.runs(), QString());
}

INSTANTIATE_TEST_SUITE_P(PdfPageRenderer, ImpossiblePage, testing::ValuesIn(impossibleRows),
                         [](const auto& test) { return std::string{test.param.name}; });

struct SizeRow
{
    const char* name;
    QSize size;
};

const SizeRow unusableSizes[] = {
    {"WithoutWidth", {0, 10}},
    {"WithoutHeight", {10, 0}},
    {"OfNegativeWidth", {-1, 10}},
    {"OfNegativeHeight", {10, -1}},
};

class UnusableSize : public testing::TestWithParam<SizeRow>
{
};

TEST_P(UnusableSize, FailsAndLeavesTheCacheAlone)
{
    PretendedDocument document(Answer::pageSizes(3));
    QImage image;
    EXPECT_EQ(document.request(0, pixels(64, 10)), 1);
    EXPECT_FALSE(
        document.renderer().getRenderedPage(1, {GetParam().size, LogicalDpi{0, 0}}, image));
    EXPECT_EQ(document.request(1, pixels(64, 10)), 2);
    EXPECT_EQ(document.runs(), QStringLiteral("1-3"));
}

INSTANTIATE_TEST_SUITE_P(PdfPageRenderer, UnusableSize, testing::ValuesIn(unusableSizes),
                         [](const auto& test) { return std::string{test.param.name}; });

const SizeRow hugeSizes[] = {
    {"InRowsOfQt", {hugeSide, hugeSide}},
    {"InPackedRows", {hugeSide + 1, hugeSide}},
};

class HugePage : public testing::TestWithParam<SizeRow>
{
};

TEST_P(HugePage, FailsAloneBeforeGhostscriptStarts)
{
    PretendedDocument document(Answer::pageSizes(3), 0);
    QImage image;
    EXPECT_FALSE(
        document.renderer().getRenderedPage(0, {GetParam().size, LogicalDpi{0, 0}}, image));
    EXPECT_EQ(document.runs(), QString());
}

TEST_P(HugePage, FailsInARun)
{
    const FakeGhostscript ghostscript({threePages, Answer::print("x")});
    Document document("%PDF-1.4\n");
    document.renderer().setForwardCacheLimit(std::numeric_limits<std::size_t>::max());
    QImage image;
    EXPECT_FALSE(
        document.renderer().getRenderedPage(0, {GetParam().size, LogicalDpi{0, 0}}, image));
    EXPECT_EQ(ghostscript.renderedRanges().size(), 1);
}

INSTANTIATE_TEST_SUITE_P(PdfPageRenderer, HugePage, testing::ValuesIn(hugeSizes),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(PdfPageRenderer, FailsWithoutGhostscriptOnTheSearchPath)
{
    Document document(SamplePdf::equalPages(3));
    const SearchPath nowhere("/nonexistent");
    EXPECT_TRUE(document.page(0, pixels(64, 10)).isNull());
    document.renderer().setForwardCacheLimit(eightMebibytes);
    EXPECT_TRUE(document.page(0, pixels(64, 10)).isNull());
}

TEST(PdfPageRenderer, LeavesTheImageAsItWasWhenTheSqueezedPageFails)
{
    const FakeGhostscript ghostscript({threePages, Answer::exit(1)});
    Document document("%PDF-1.4\n");
    QImage image(3, 3, QImage::Format_RGB32);
    image.fill(Qt::blue);
    const QImage before = image.copy();
    EXPECT_FALSE(document.renderer().renderPage(0, standardA4, image));
    EXPECT_TRUE(image == before);
}

TEST(PdfPageRenderer, ReplacesTheImage)
{
    PretendedDocument document(Answer::pageSizes(1));
    QImage image(3, 3, QImage::Format_RGB32);
    EXPECT_TRUE(document.renderer().renderPage(0, standardA4, image));
    EXPECT_EQ(image.size(), QSize(1728, 1146));
    EXPECT_EQ(image.format(), QImage::Format_Mono);
}

TEST(PdfPageRenderer, HandsOutPagesThatOutliveIt)
{
    QImage image;
    {
        PretendedDocument document(Answer::pageSizes(2));
        EXPECT_TRUE(document.renderer().getRenderedPage(0, pixels(37, 16), image));
    }
    EXPECT_EQ(image.constScanLine(15)[4], 1);
}

} // namespace
