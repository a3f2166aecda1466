#include "fax/FaxOutputWriter.h"

#include "RecordingWriter.h"
#include "support/ReferencePage.h"
#include "support/SampleImages.h"
#include "support/TemporaryFolder.h"

#include <QFile>

#include <string>
#include <vector>

// Raster files of every kind, with the settings and the file names that matter.
namespace {

using ReferencePage::decoded;

constexpr FaxTransformationFlags noFit;
constexpr FaxTransformationFlags fit = FaxTransformationFlag::FitToPaper;

FaxConfiguration a4(FaxResolution resolution, FaxTransformationFlags flags,
                    FaxRotation rotation = FaxRotation::Rotate0, const QMarginsF& margins = {})
{
    return {FaxPaperSize::A4, resolution, rotation, flags, margins, FaxCompression::G4};
}

constexpr auto standardResolution = FaxResolution::Standard;
constexpr auto fineResolution = FaxResolution::Fine;

struct FileRow
{
    const char* name;
    const char* fileName;
    QByteArray (*content)();
    const char* qtFormat;
    FaxConfiguration configuration;
    FaxSizeDetails details;
    std::vector<QSize> renderSizes; // of each page
};

constexpr QMarginsF halfInch(0.5, 0.5, 0.5, 0.5);

const FaxSizeDetails standardA4 = {{204, 98}, {1728, 1146}, QRect(0, 0, 1728, 1146)};
const FaxSizeDetails fineA4 = {{204, 196}, {1728, 2292}, QRect(0, 0, 1728, 2292)};
const FaxSizeDetails standardA4WithMargins = {
    {204, 98}, {1728, 1146}, QRect(QPoint(102, 49), QPoint(1625, 1096))};
const FaxSizeDetails standardA4Overhanging = {
    {204, 98}, {1728, 1146}, QRect(QPoint(-102, -49), QPoint(1829, 1194))};

QByteArray squareJpeg()
{
    return SampleImages::jpegFile(SampleImages::quarters({1000, 1000}));
}

QByteArray largePng()
{
    return SampleImages::pngFile(SampleImages::bilevel({4000, 3000}));
}

QByteArray wideJpeg()
{
    return SampleImages::jpegFile(SampleImages::quarters({1600, 900}));
}

QByteArray smallJpeg()
{
    return SampleImages::jpegFile(SampleImages::quarters({700, 500}));
}

QByteArray pagesOfDifferentSizes()
{
    return SampleImages::tiffFile({{SampleImages::quarters({300, 200})},
                                   {SampleImages::quarters({2000, 500})},
                                   {SampleImages::bilevel({100, 2500})}});
}

QByteArray transparentPng()
{
    return SampleImages::pngFile(SampleImages::transparent({400, 300}));
}

QByteArray transparentPage()
{
    return SampleImages::pngFile(SampleImages::transparent({1728, 1146}));
}

QByteArray colourPage()
{
    return SampleImages::pngFile(SampleImages::quarters({1728, 1146}));
}

QByteArray tinyPng()
{
    return SampleImages::pngFile(SampleImages::bilevel({4, 4}));
}

const FileRow fileRows[] = {
    {"ASquareJpegKeepsItsSize",
     "photo.jpg",
     squareJpeg,
     "jpeg",
     a4(fineResolution, noFit),
     fineA4,
     {{1000, 1000}}},
    {"ASquareJpegIsFittedInInches",
     "photo.jpg",
     squareJpeg,
     "jpeg",
     a4(fineResolution, fit),
     fineA4,
     {{1728, 1660}}},
    {"ALargePngIsReducedWithoutTheFitFlag",
     "scan.png",
     largePng,
     "png",
     a4(fineResolution, noFit),
     fineA4,
     {{1728, 1245}}},
    {"AQuarterTurnRendersAtTheExchangedResolution",
     "photo.jpg",
     squareJpeg,
     "jpeg",
     a4(standardResolution, fit, FaxRotation::Rotate90),
     standardA4,
     {{830, 1728}}},
    {"AQuarterTurnReducesToTheExchangedArea",
     "photo.jpg",
     wideJpeg,
     "jpeg",
     a4(standardResolution, noFit, FaxRotation::Rotate270),
     standardA4,
     {{1146, 1342}}},
    {"AHalfTurnRendersAtTheSameResolution",
     "photo.jpg",
     squareJpeg,
     "jpeg",
     a4(standardResolution, fit, FaxRotation::Rotate180),
     standardA4,
     {{1728, 830}}},
    {"MarginsReduceTheArea",
     "photo.jpg",
     wideJpeg,
     "jpeg",
     a4(standardResolution, noFit, FaxRotation::Rotate0, halfInch),
     standardA4WithMargins,
     {{1524, 412}}},
    {"TheAreaWithinTheMarginsIsFilled",
     "photo.jpg",
     smallJpeg,
     "jpeg",
     a4(standardResolution, fit, FaxRotation::Rotate0, halfInch),
     standardA4WithMargins,
     {{1524, 523}}},
    {"NegativeMarginsReachBeyondThePage",
     "photo.jpg",
     smallJpeg,
     "jpeg",
     a4(standardResolution, fit, FaxRotation::Rotate0, halfInch * -1.0),
     standardA4Overhanging,
     {{1932, 663}}},
    {"PagesOfATiffHaveTheirOwnSizes",
     "scan.tiff",
     pagesOfDifferentSizes,
     "tiff",
     a4(fineResolution, noFit),
     fineA4,
     {{300, 200}, {1728, 415}, {95, 2292}}},
    {"PagesOfATiffAreFittedOneByOne",
     "scan.tif",
     pagesOfDifferentSizes,
     "tiff",
     a4(fineResolution, fit),
     fineA4,
     {{1728, 1107}, {1728, 415}, {95, 2292}}},
    {"ATransparentPngLiesOnWhite",
     "chart.png",
     transparentPng,
     "png",
     a4(standardResolution, noFit),
     standardA4,
     {{400, 300}}},
    {"ATransparentPngOfThePageSizeIsNotPainted",
     "chart.png",
     transparentPage,
     "png",
     a4(standardResolution, noFit),
     standardA4,
     {{1728, 1146}}},
    {"AColourPngOfThePageSizeIsNotPainted",
     "chart.png",
     colourPage,
     "png",
     a4(standardResolution, noFit),
     standardA4,
     {{1728, 1146}}},
    {"AFileNamedAt2xHasAPixelRatio",
     "photo@2x.png",
     transparentPng,
     "png",
     a4(standardResolution, noFit),
     standardA4,
     {{400, 300}}},
    {"ABilevelFileNamedAt2xHasAPixelRatio",
     "photo@2x.png",
     tinyPng,
     "png",
     a4(standardResolution, noFit),
     standardA4,
     {{4, 4}}},
    {"AFileNamedAt2xIsFittedWithItsPixelRatio",
     "photo@2x.jpg",
     smallJpeg,
     "jpeg",
     a4(standardResolution, fit),
     standardA4,
     {{1728, 593}}},
    {"AFileNamedAt2xIsTurnedWithItsPixelRatio",
     "photo@2x.png",
     transparentPng,
     "png",
     a4(standardResolution, noFit, FaxRotation::Rotate90),
     standardA4,
     {{400, 300}}},
    {"APageNamedAt2xOfThePageSizeIsNotPainted",
     "photo@2x.png",
     colourPage,
     "png",
     a4(standardResolution, noFit),
     standardA4,
     {{1728, 1146}}},
    {"APictureSmallerThanItsPixelRatioIsNoFailure",
     "dot@9x.png",
     tinyPng,
     "png",
     a4(standardResolution, noFit),
     standardA4,
     {{4, 4}}},
    {"AFileNameIsUtf8",
     "\xC3\x9C"
     "bersicht \xE2\x82\xAC.png",
     tinyPng,
     "png",
     a4(standardResolution, noFit),
     standardA4,
     {{4, 4}}},
    {"AByteOrderMarkBelongsToTheFileName",
     "\xEF\xBB\xBF"
     "scan.png",
     tinyPng,
     "png",
     a4(standardResolution, noFit),
     standardA4,
     {{4, 4}}},
    {"AFileWithoutASuffixIsRecognisedByItsContent",
     "scan",
     tinyPng,
     "png",
     a4(standardResolution, noFit),
     standardA4,
     {{4, 4}}},
};

void PrintTo(const FileRow& row, std::ostream* stream)
{
    *stream << row.name;
}

class FaxPageFile : public testing::TestWithParam<FileRow>
{
};

TEST_P(FaxPageFile, IsWrittenPixelForPixel)
{
    const FileRow& row = GetParam();
    const TemporaryFolder folder;
    const std::string name = folder.write(row.fileName, row.content());
    RecordingWriter output;
    FaxOutputWriter writer(&output, row.configuration);
    ASSERT_TRUE(writer.writePage(name)) << writer.lastError().message;
    ASSERT_EQ(output.pages().size(), row.renderSizes.size());
    for (std::size_t i = 0; i < row.renderSizes.size(); ++i) {
        const QImage picture = decoded(name, row.qtFormat, static_cast<int>(i), row.renderSizes[i]);
        const bool fitToPaper =
            row.configuration.transformationFlags.testFlag(FaxTransformationFlag::FitToPaper);
        EXPECT_TRUE(ReferencePage::isIdenticalImage(
            output.pages()[i].image,
            ReferencePage::composed(picture, static_cast<int>(row.configuration.rotation),
                                    fitToPaper, row.details)))
            << "page " << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, FaxPageFile, testing::ValuesIn(fileRows),
                         [](const auto& test) { return std::string{test.param.name}; });

} // namespace
