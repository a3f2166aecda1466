#include "render/pdf/PdfDocument.h"

#include "app/settings/RenderSize.h"
#include "render/pdf/PdfPageRenderer.h"
#include "support/FakeGhostscript.h"
#include "support/PrintQt.h"
#include "support/SamplePdf.h"
#include "support/SearchPath.h"
#include "support/TemporaryFolder.h"

#include <QImage>
#include <QProcess>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Sizes = std::vector<QSizeF>;

const QSizeF letter(612, 792);
const QSizeF a4(595.276, 841.89);
const QSizeF unreadable(-1, -1);

const RenderSize small{QSize(40, 50), LogicalDpi{0, 0}};

QByteArray withDamagedTable()
{
    QByteArray pdf = SamplePdf::equalPages(3);
    return pdf.replace(" 00000 n \n0", " 00000 n \n7");
}

QByteArray withoutTable()
{
    const QByteArray pdf = SamplePdf::equalPages(3);
    return pdf.left(pdf.indexOf("xref"));
}

struct FileRow
{
    const char* name;
    QByteArray content;
    Sizes sizes;
};

const FileRow fileRows[] = {
    {"OnePage", SamplePdf::equalPages(1), {letter}},
    {"TwentyPages", SamplePdf::equalPages(20), Sizes(20, letter)},
    {"FortyPages", SamplePdf::equalPages(40), Sizes(40, letter)},
    {"AlternatingSizes",
     SamplePdf::file({{SamplePdf::a4}, {SamplePdf::letter}, {SamplePdf::a4}}),
     {a4, letter, a4}},
    {"AnOffsetMediaBox", SamplePdf::file({{"10 20 110 220"}}), {{100, 200}}},
    {"AnInheritedMediaBox", SamplePdf::file({{}, {}}, SamplePdf::a4), {a4, a4}},
    {"ExchangedCorners", SamplePdf::file({{"612 792 0 0"}}), {{-612, -792}}},
    {"ARotatedPage", SamplePdf::file({{SamplePdf::letter, 90}}), {letter}},
    {"ADamagedCrossReferenceTable", withDamagedTable(), Sizes(3, letter)},
    {"ATruncatedFileWithAllItsPages", withoutTable(), Sizes(3, letter)},
    // Ghostscript says so in two lines on its standard output and exits with 0.
    {"AFileCutBehindItsHeader", "%PDF-1.4\n", {unreadable, unreadable}},
    {"AnEmptyFile", "", {}},
    {"Text", "Just a letter.\n", {}},
    {"PostScript", "%!PS\nshowpage\n", {}},
};

class PdfDocumentOfAFile : public testing::TestWithParam<FileRow>
{
};

TEST_P(PdfDocumentOfAFile, HasTheSizesOfItsPages)
{
    const TemporaryFolder folder;
    PdfDocument document;
    document.setFileName(QString::fromStdString(folder.write("a.pdf", GetParam().content)));
    EXPECT_EQ(document.pageSizes(), GetParam().sizes);
}

INSTANTIATE_TEST_SUITE_P(PdfDocument, PdfDocumentOfAFile, testing::ValuesIn(fileRows),
                         [](const auto& test) { return std::string{test.param.name}; });

class PdfDocumentTest : public testing::Test
{
protected:
    QString write(const char* name, const QByteArray& content) const
    {
        return QString::fromStdString(m_folder.write(name, content));
    }

    /// A copy of a file of three pages, encrypted by Ghostscript.
    QString encrypted(const QString& userPassword) const
    {
        QString output = m_folder.qPath(QStringLiteral("encrypted.pdf"));
        EXPECT_EQ(QProcess::execute(
                      QStringLiteral("gs"),
                      {QStringLiteral("-q"), QStringLiteral("-sDEVICE=pdfwrite"),
                       QStringLiteral("-o"), output, QStringLiteral("-sOwnerPassword=owner"),
                       QStringLiteral("-sUserPassword=") + userPassword,
                       QStringLiteral("-dEncryptionR=3"), QStringLiteral("-dKeyLength=128"),
                       write("plain.pdf", SamplePdf::equalPages(3))}),
                  0);
        return output;
    }

    bool renders(unsigned long index)
    {
        QImage image;
        return m_document.renderPage(index, small, image);
    }

    TemporaryFolder m_folder;
    PdfDocument m_document;
};

TEST_F(PdfDocumentTest, IsEmptyAtFirst)
{
    EXPECT_EQ(m_document.fileName(), QString());
    EXPECT_EQ(m_document.pageSizes(), Sizes());
    EXPECT_FALSE(renders(0));
}

TEST_F(PdfDocumentTest, RendersThePagesOfItsFile)
{
    m_document.setFileName(write("a.pdf", SamplePdf::equalPages(2)));
    EXPECT_TRUE(renders(0));
    EXPECT_TRUE(renders(1));
    EXPECT_FALSE(renders(2));
}

TEST_F(PdfDocumentTest, RendersByWayOfItsPageRenderer)
{
    m_document.setFileName(write("a.pdf", SamplePdf::equalPages(1)));
    QImage own;
    QImage fromRenderer;
    EXPECT_TRUE(m_document.renderPage(0, small, own));
    EXPECT_TRUE(m_document.pageRenderer().renderPage(0, small, fromRenderer));
    EXPECT_TRUE(own == fromRenderer);
}

TEST_F(PdfDocumentTest, ReadsAnEncryptedFileWithAnEmptyUserPassword)
{
    m_document.setFileName(encrypted(QString()));
    EXPECT_EQ(m_document.pageSizes(), Sizes(3, letter));
    EXPECT_TRUE(renders(0));
}

TEST_F(PdfDocumentTest, CannotRenderAFileWithAPassword)
{
    m_document.setFileName(encrypted(QStringLiteral("secret")));
    EXPECT_EQ(m_document.pageSizes(), Sizes(2, unreadable));
    EXPECT_FALSE(renders(0));
}

TEST_F(PdfDocumentTest, FailsAtTheLastPageOfAFileWithAPassword)
{
    m_document.pageRenderer().setForwardCacheLimit(8388608);
    m_document.setFileName(encrypted(QStringLiteral("secret")));
    // The run of both takes Ghostscript's complaint for the start of a page.
    const RenderSize fax{QSize(1728, 1146), LogicalDpi{204, 98}};
    QImage image;
    m_document.renderPage(0, fax, image);
    EXPECT_FALSE(m_document.renderPage(1, fax, image));
}

TEST_F(PdfDocumentTest, DoesNotReadTheSameFileAgain)
{
    const QString fileName = write("a.pdf", SamplePdf::equalPages(1));
    const FakeGhostscript ghostscript(GhostscriptAnswer::print("0 0 1 2\n"));
    m_document.setFileName(fileName);
    m_document.setFileName(fileName);
    EXPECT_EQ(ghostscript.runs().size(), 1U);
}

TEST_F(PdfDocumentTest, ReadsAnotherFile)
{
    m_document.setFileName(write("a.pdf", SamplePdf::equalPages(1)));
    const QString second = write("b.pdf", SamplePdf::equalPages(2, SamplePdf::a4));
    m_document.setFileName(second);
    EXPECT_EQ(m_document.fileName(), second);
    EXPECT_EQ(m_document.pageSizes(), Sizes(2, a4));
}

TEST_F(PdfDocumentTest, ForgetsThePagesOfTheFileBeforeAFailure)
{
    m_document.setFileName(write("a.pdf", SamplePdf::equalPages(1)));
    m_document.setFileName(m_folder.qPath(QStringLiteral("nothing.pdf")));
    EXPECT_EQ(m_document.pageSizes(), Sizes());
    EXPECT_FALSE(renders(0));
}

TEST_F(PdfDocumentTest, HasNoPagesWithAnEmptyName)
{
    m_document.setFileName(write("a.pdf", SamplePdf::equalPages(1)));
    m_document.setFileName(QString());
    EXPECT_EQ(m_document.pageSizes(), Sizes());
}

TEST_F(PdfDocumentTest, HasNoPagesWithoutGhostscript)
{
    const QString fileName = write("a.pdf", SamplePdf::equalPages(1));
    const SearchPath nowhere("/nonexistent");
    m_document.setFileName(fileName);
    EXPECT_EQ(m_document.pageSizes(), Sizes());
}

TEST_F(PdfDocumentTest, HasNoPagesWhenGhostscriptFails)
{
    const QString fileName = write("a.pdf", SamplePdf::equalPages(1));
    const FakeGhostscript ghostscript(GhostscriptAnswer::print("0 0 1 2\n") +
                                      GhostscriptAnswer::exit(1));
    m_document.setFileName(fileName);
    EXPECT_EQ(m_document.pageSizes(), Sizes());
}

} // namespace
