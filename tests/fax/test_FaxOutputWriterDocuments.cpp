#include "fax/FaxOutputWriter.h"

#include "RecordingWriter.h"
#include "app/settings/RenderSize.h"
#include "fax/output/FaxTiffWriter.h"
#include "render/ImageComplexRenderer.h"
#include "support/ReferencePage.h"
#include "support/SampleImages.h"
#include "support/SamplePdf.h"
#include "support/TemporaryFolder.h"
#include "support/TiffFile.h"

#include <QFile>

#include <string>
#include <vector>

// PDF files and cover pages, which have no size of their own.
namespace {

constexpr QRgb white = 0xFFFFFFFF;
constexpr QRgb black = 0xFF000000;

constexpr QMarginsF noMargins;
constexpr QMarginsF halfInch(0.5, 0.5, 0.5, 0.5);
constexpr FaxTransformationFlags noFit;

const FaxSizeDetails standardA4 = {{204, 98}, {1728, 1146}, QRect(0, 0, 1728, 1146)};
const FaxSizeDetails fineA4 = {{204, 196}, {1728, 2292}, QRect(0, 0, 1728, 2292)};
const FaxSizeDetails standardA4WithMargins = {
    {204, 98}, {1728, 1146}, QRect(QPoint(102, 49), QPoint(1625, 1096))};

FaxConfiguration a4(FaxResolution resolution, FaxRotation rotation, const QMarginsF& margins,
                    FaxCompression compression = FaxCompression::G4)
{
    return {FaxPaperSize::A4, resolution, rotation, noFit, margins, compression};
}

// Every page of the file, rendered as `renderSize` says.
std::vector<QImage> rendered(const std::string& fileName, FileFormat format,
                             const RenderSize& renderSize)
{
    QFile file(QString::fromStdString(fileName));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    ImageComplexRenderer renderer;
    renderer.setFormat(format);
    renderer.setDevice(&file);
    std::vector<QImage> images(renderer.count());
    for (std::size_t i = 0; i < images.size(); ++i) {
        EXPECT_TRUE(renderer.render(i, renderSize, images[i]));
    }
    return images;
}

void expectPages(const std::vector<RecordingWriter::Page>& pages,
                 const std::vector<QImage>& pictures, int angle, const FaxSizeDetails& details)
{
    ASSERT_EQ(pages.size(), pictures.size());
    for (std::size_t i = 0; i < pages.size(); ++i) {
        EXPECT_TRUE(ReferencePage::isIdenticalImage(
            pages[i].image, ReferencePage::composed(pictures[i], angle, true, details)))
            << "page " << i;
    }
}

// --- PDF

struct DocumentRow
{
    const char* name;
    FaxConfiguration configuration;
    FaxSizeDetails details;
    RenderSize renderSize;
};

const DocumentRow pdfRows[] = {
    {"Upright",
     a4(FaxResolution::Standard, FaxRotation::Rotate0, noMargins),
     standardA4,
     {{1728, 1146}, {204, 98}}},
    {"AtFineResolution",
     a4(FaxResolution::Fine, FaxRotation::Rotate0, noMargins),
     fineA4,
     {{1728, 2292}, {204, 196}}},
    {"WithMargins",
     a4(FaxResolution::Standard, FaxRotation::Rotate0, halfInch),
     standardA4WithMargins,
     {{1524, 1048}, {204, 98}}},
    {"WithAQuarterTurn",
     a4(FaxResolution::Standard, FaxRotation::Rotate90, noMargins),
     standardA4,
     {{1146, 1728}, {98, 204}}},
    {"WithHalfATurn",
     a4(FaxResolution::Standard, FaxRotation::Rotate180, noMargins),
     standardA4,
     {{1728, 1146}, {204, 98}}},
    {"WithThreeQuarterTurnsAndMargins",
     a4(FaxResolution::Standard, FaxRotation::Rotate270, halfInch),
     standardA4WithMargins,
     {{1048, 1524}, {98, 204}}},
};

void PrintTo(const DocumentRow& row, std::ostream* stream)
{
    *stream << row.name;
}

class FaxPdf : public testing::TestWithParam<DocumentRow>
{
};

TEST_P(FaxPdf, IsRenderedIntoTheWholePrintableArea)
{
    const DocumentRow& row = GetParam();
    const TemporaryFolder folder;
    const std::string name = folder.write(
        "document.pdf", SamplePdf::file({{SamplePdf::a4}, {SamplePdf::a4}, {"0 0 300 72"}}));
    RecordingWriter output;
    FaxOutputWriter writer(&output, row.configuration);
    ASSERT_TRUE(writer.writePage(name)) << writer.lastError().message;
    ASSERT_EQ(output.pages().size(), 3U);
    expectPages(output.pages(), rendered(name, FileFormat::Pdf, row.renderSize),
                static_cast<int>(row.configuration.rotation), row.details);
}

INSTANTIATE_TEST_SUITE_P(Rows, FaxPdf, testing::ValuesIn(pdfRows),
                         [](const auto& test) { return std::string{test.param.name}; });

// One page of 72 x 72 points that is black all over.
const char blackInch[] = "%PDF-1.4\n"
                         "1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj\n"
                         "2 0 obj<</Type/Pages/Count 1/Kids[3 0 R]>>endobj\n"
                         "3 0 obj<</Type/Page/Parent 2 0 R/MediaBox[0 0 72 72]/Contents 4 0 R>>"
                         "endobj\n"
                         "4 0 obj<</Length 14>>stream\n"
                         "0 0 72 72 re f"
                         "\nendstream endobj\n"
                         "trailer<</Root 1 0 R>>\n";

TEST(FaxPdfPage, IsEnlargedWithoutTheFitFlag)
{
    const TemporaryFolder folder;
    QFile file(QString::fromStdString(folder.write("black.pdf", blackInch)));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    RecordingWriter output;
    FaxOutputWriter writer(&output, a4(FaxResolution::Standard, FaxRotation::Rotate0, noMargins));
    ASSERT_TRUE(writer.writePage(FileFormat::Pdf, &file, false, 0,
                                 {{200, 200}, {320, 240}, QRect(10, 20, 300, 200)}));
    // The square fills the height of the area and lies in the middle of it.
    QImage page(320, 240, QImage::Format_Mono);
    page.setColorTable({white, black});
    page.fill(0);
    for (int y = 20; y < 220; ++y) {
        for (int x = 60; x < 260; ++x) {
            page.setPixel(x, y, 1);
        }
    }
    ASSERT_EQ(output.pages().size(), 1U);
    EXPECT_TRUE(isSamePicture(output.pages()[0].image, page));
}

// --- Cover pages

const char coverPage[] = "<html><body>"
                         "<table width='100%' height='100%' bgcolor='black'><tr><td height='300'>"
                         "<hr></td></tr></table>"
                         "<table width='40%' bgcolor='#808080'><tr><td height='90'></td></tr>"
                         "</table></body></html>";

class FaxCoverPage : public testing::TestWithParam<DocumentRow>
{
};

const DocumentRow coverRows[] = {
    {"Upright",
     a4(FaxResolution::Standard, FaxRotation::Rotate0, noMargins),
     standardA4,
     {{1728, 1146}, {204, 98}}},
    {"AtFineResolution",
     a4(FaxResolution::Fine, FaxRotation::Rotate0, noMargins),
     fineA4,
     {{1728, 2292}, {204, 196}}},
    {"WithMarginsThatDoNotApply",
     a4(FaxResolution::Standard, FaxRotation::Rotate0, halfInch),
     standardA4,
     {{1728, 1146}, {204, 98}}},
    {"WithMarginsThatLeaveNothing",
     a4(FaxResolution::Standard, FaxRotation::Rotate0, {9, 9, 9, 9}),
     standardA4,
     {{1728, 1146}, {204, 98}}},
    {"WithARotationThatDoesNotApply",
     a4(FaxResolution::Standard, FaxRotation::Rotate90, halfInch),
     standardA4,
     {{1728, 1146}, {204, 98}}},
};

TEST_P(FaxCoverPage, UsesTheWholePageAsItLies)
{
    const DocumentRow& row = GetParam();
    const TemporaryFolder folder;
    const std::string name = folder.write("cover.html", coverPage);
    RecordingWriter output;
    FaxOutputWriter writer(&output, row.configuration);
    ASSERT_TRUE(writer.writeCoverPage(name)) << writer.lastError().message;
    expectPages(output.pages(), rendered(name, FileFormat::Html, row.renderSize), 0, row.details);
    // The black table of the cover page starts in the corner.
    EXPECT_EQ(output.pages().at(0).image.pixel(0, 0), black);
}

INSTANTIATE_TEST_SUITE_P(Rows, FaxCoverPage, testing::ValuesIn(coverRows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(FaxCoverPageFile, IsRecognisedByItsContent)
{
    const TemporaryFolder folder;
    const std::string name = folder.write("cover.htm", coverPage);
    RecordingWriter output;
    FaxOutputWriter writer(&output, a4(FaxResolution::Standard, FaxRotation::Rotate0, noMargins));
    EXPECT_TRUE(writer.writeCoverPage(name)) << writer.lastError().message;
    EXPECT_EQ(output.pages().size(), 1U);
}

TEST(FaxCoverPageFile, IsFollowedByPagesOfAllKindsInOneOutput)
{
    const TemporaryFolder folder;
    const std::string cover = folder.write("cover.html", coverPage);
    const std::string document = folder.write("document.pdf", SamplePdf::equalPages(2));
    const std::string scan =
        folder.write("scan.tif", SampleImages::tiffFile({{SampleImages::bilevel({301, 201})}}));
    const FaxConfiguration configuration =
        a4(FaxResolution::Standard, FaxRotation::Rotate180, halfInch, FaxCompression::G3);
    RecordingWriter recorded;
    FaxOutputWriter recorder(&recorded, configuration);
    FaxTiffWriter output(folder.path("out.tif"));
    FaxOutputWriter writer(&output, configuration);
    for (FaxOutputWriter* each : {&recorder, &writer}) {
        ASSERT_TRUE(each->writeCoverPage(cover)) << each->lastError().message;
        ASSERT_TRUE(each->writePage(document)) << each->lastError().message;
        ASSERT_TRUE(each->writePage(scan)) << each->lastError().message;
    }
    output.close();

    const std::vector<TiffPage> pages = readTiff(folder.path("out.tif"));
    ASSERT_EQ(pages.size(), 4U);
    ASSERT_EQ(recorded.pages().size(), 4U);
    for (std::size_t i = 0; i < pages.size(); ++i) {
        EXPECT_TRUE(isSamePicture(pages[i].pixels, recorded.pages()[i].image)) << "page " << i;
        EXPECT_EQ(pages[i].tags.at(259), std::vector<double>{3}) << "page " << i;
        EXPECT_EQ(pages[i].tags.at(262), std::vector<double>{0}) << "page " << i;
        EXPECT_EQ(pages[i].tags.at(282), std::vector<double>{204}) << "page " << i;
        EXPECT_EQ(pages[i].tags.at(283), std::vector<double>{98}) << "page " << i;
    }
}

} // namespace
