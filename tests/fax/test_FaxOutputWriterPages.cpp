#include "fax/FaxOutputWriter.h"

#include "RecordingWriter.h"
#include "fax/output/FaxTiffWriter.h"
#include "support/PrintQt.h"
#include "support/ReferencePage.h"
#include "support/SampleImages.h"
#include "support/TemporaryFolder.h"
#include "support/TiffFile.h"

#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <vector>

// Pages that are known to the pixel, from the input to the finished file.
namespace {

using ReferencePage::bilevelPage;
using Tags = std::map<std::uint16_t, std::vector<double>>;

constexpr QRgb white = 0xFFFFFFFF;
constexpr QRgb black = 0xFF000000;

constexpr FaxTransformationFlags noFit;

const FaxConfiguration standardA4 = {
    FaxPaperSize::A4, FaxResolution::Standard, FaxRotation::Rotate0, {}, {}, FaxCompression::G4};

// What libtiff adds without being told to.
Tags withoutStrips(Tags tags)
{
    tags.erase(273);
    tags.erase(279);
    return tags;
}

// --- Every paper at every resolution in both codings

struct GeometryRow
{
    const char* name;
    FaxPaperSize paper;
    FaxResolution resolution;
    LogicalDpi dpi;
    QSize pageSize;
    QPoint position; // of a picture of 101 x 67 pixels in the middle
};

const GeometryRow geometryRows[] = {
    {"A4Standard", FaxPaperSize::A4, FaxResolution::Standard, {204, 98}, {1728, 1146}, {813, 539}},
    {"A4Fine", FaxPaperSize::A4, FaxResolution::Fine, {204, 196}, {1728, 2292}, {813, 1112}},
    {"A4Superfine",
     FaxPaperSize::A4,
     FaxResolution::Superfine,
     {204, 391},
     {1728, 4572},
     {813, 2252}},
    {"A4Ultrafine",
     FaxPaperSize::A4,
     FaxResolution::Ultrafine,
     {408, 391},
     {3456, 4572},
     {1677, 2252}},
    {"LetterStandard",
     FaxPaperSize::Letter,
     FaxResolution::Standard,
     {204, 98},
     {1728, 1078},
     {813, 505}},
    {"LetterFine",
     FaxPaperSize::Letter,
     FaxResolution::Fine,
     {204, 196},
     {1728, 2156},
     {813, 1044}},
    {"LetterSuperfine",
     FaxPaperSize::Letter,
     FaxResolution::Superfine,
     {204, 391},
     {1728, 4301},
     {813, 2117}},
    {"LetterUltrafine",
     FaxPaperSize::Letter,
     FaxResolution::Ultrafine,
     {408, 391},
     {3456, 4301},
     {1677, 2117}},
    {"LegalStandard",
     FaxPaperSize::Legal,
     FaxResolution::Standard,
     {204, 98},
     {1728, 1372},
     {813, 652}},
    {"LegalFine", FaxPaperSize::Legal, FaxResolution::Fine, {204, 196}, {1728, 2744}, {813, 1338}},
    {"LegalSuperfine",
     FaxPaperSize::Legal,
     FaxResolution::Superfine,
     {204, 391},
     {1728, 5474},
     {813, 2703}},
    {"LegalUltrafine",
     FaxPaperSize::Legal,
     FaxResolution::Ultrafine,
     {408, 391},
     {3456, 5474},
     {1677, 2703}},
};

void PrintTo(const GeometryRow& row, std::ostream* stream)
{
    *stream << row.name;
}

class FaxPageGeometry : public testing::TestWithParam<std::tuple<GeometryRow, FaxCompression>>
{
};

TEST_P(FaxPageGeometry, IsThatOfThePaperAndTheResolution)
{
    const auto& [row, compression] = GetParam();
    const QImage picture = SampleImages::bilevel({101, 67});
    const TemporaryFolder folder;
    const std::string input = folder.write("scan.png", SampleImages::pngFile(picture));
    FaxTiffWriter output(folder.path("out.tif"));
    FaxOutputWriter writer(
        &output, {row.paper, row.resolution, FaxRotation::Rotate0, noFit, {}, compression});
    ASSERT_TRUE(writer.writePage(input)) << writer.lastError().message;
    output.close();

    const std::vector<TiffPage> pages = readTiff(folder.path("out.tif"));
    ASSERT_EQ(pages.size(), 1U);
    EXPECT_TRUE(isSamePicture(pages[0].pixels, bilevelPage(picture, row.pageSize, row.position)));
    const double coding = compression == FaxCompression::G4 ? 4 : 3;
    EXPECT_EQ(withoutStrips(pages[0].tags), (Tags{{256, {double(row.pageSize.width())}},
                                                  {257, {double(row.pageSize.height())}},
                                                  {258, {1}},
                                                  {259, {coding}},
                                                  {262, {0}},
                                                  {266, {1}},
                                                  {274, {1}},
                                                  {277, {1}},
                                                  {282, {double(row.dpi.horizontal)}},
                                                  {283, {double(row.dpi.vertical)}},
                                                  {284, {1}},
                                                  {296, {2}}}));
}

INSTANTIATE_TEST_SUITE_P(Rows, FaxPageGeometry,
                         testing::Combine(testing::ValuesIn(geometryRows),
                                          testing::Values(FaxCompression::G3, FaxCompression::G4)),
                         [](const auto& test) {
                             const bool isG4 = std::get<1>(test.param) == FaxCompression::G4;
                             return std::string{std::get<0>(test.param).name} +
                                    (isG4 ? "InGroup4" : "InGroup3");
                         });

// --- Pages that are known without Qt

QImage pageOf(const std::string& fileName, const QByteArray& content)
{
    const TemporaryFolder folder;
    RecordingWriter output;
    FaxOutputWriter writer(&output, standardA4);
    EXPECT_TRUE(writer.writePage(folder.write(fileName, content))) << writer.lastError().message;
    return output.pages().size() == 1 ? output.pages()[0].image : QImage();
}

TEST(FaxPage, IsTheSameForBothPhotometricInterpretations)
{
    const QImage picture = SampleImages::bilevel({301, 201});
    const QImage page = bilevelPage(picture, {1728, 1146}, {713, 472});
    EXPECT_TRUE(isSamePicture(pageOf("white0.tif", SampleImages::tiffFile({{picture}})), page));
    EXPECT_TRUE(isSamePicture(
        pageOf("black0.tif",
               SampleImages::tiffFile({{SampleImages::withColoursExchanged(picture)}})),
        page));
}

TEST(FaxPage, OfThePageSizeIsTheSameForBothPhotometricInterpretations)
{
    const QImage picture = SampleImages::bilevel({1728, 1146});
    EXPECT_TRUE(isSamePicture(pageOf("white0.tif", SampleImages::tiffFile({{picture}})), picture));
    EXPECT_TRUE(isSamePicture(
        pageOf("black0.tif",
               SampleImages::tiffFile({{SampleImages::withColoursExchanged(picture)}})),
        picture));
}

TEST(FaxPage, HasWhiteAtIndexZero)
{
    const QImage picture = SampleImages::bilevel({1728, 1146});
    const QImage page = pageOf(
        "black0.tif", SampleImages::tiffFile({{SampleImages::withColoursExchanged(picture)}}));
    EXPECT_EQ(page.colorTable(), QVector<QRgb>({white, black}));
}

TEST(FaxPage, OfATransparentPictureIsWhite)
{
    QImage picture(300, 200, QImage::Format_ARGB32);
    picture.fill(Qt::transparent);
    EXPECT_TRUE(isSamePicture(pageOf("chart.png", SampleImages::pngFile(picture)),
                              bilevelPage(QImage(), {1728, 1146}, {0, 0})));
}

TEST(FaxPage, OfAFileNamedAt2xLiesOffTheMiddle)
{
    // 100 x 60 pixels are 50 x 30 units, centred in an area of 1728 x 1146 units
    // at 839, 558, which is the pixel 1678, 1116: half of the picture is beyond
    // the page.
    const QImage picture = SampleImages::bilevel({100, 60});
    EXPECT_TRUE(isSamePicture(pageOf("photo@2x.png", SampleImages::pngFile(picture)),
                              bilevelPage(picture.copy(0, 0, 50, 30), {1728, 1146}, {1678, 1116})));
}

TEST(FaxPage, OfAFileNamedAt3xIsWhiteBecauseThePictureLiesBesideIt)
{
    const QImage picture = SampleImages::bilevel({100, 60});
    EXPECT_TRUE(isSamePicture(pageOf("photo@3x.png", SampleImages::pngFile(picture)),
                              bilevelPage(QImage(), {1728, 1146}, {0, 0})));
}

TEST(FaxPage, OfSeveralFilesFollowOneAnotherInOneOutput)
{
    const QImage first = SampleImages::bilevel({101, 67});
    const QImage second = SampleImages::bilevel({300, 200});
    const TemporaryFolder folder;
    FaxTiffWriter output(folder.path("out.tif"));
    FaxOutputWriter writer(&output, standardA4);
    ASSERT_TRUE(writer.writePage(folder.write("a.png", SampleImages::pngFile(first))));
    ASSERT_TRUE(
        writer.writePage(folder.write("b.tif", SampleImages::tiffFile({{second}, {first}}))));
    output.close();
    const std::vector<TiffPage> pages = readTiff(folder.path("out.tif"));
    ASSERT_EQ(pages.size(), 3U);
    EXPECT_TRUE(isSamePicture(pages[0].pixels, bilevelPage(first, {1728, 1146}, {813, 539})));
    EXPECT_TRUE(isSamePicture(pages[1].pixels, bilevelPage(second, {1728, 1146}, {714, 473})));
    EXPECT_TRUE(isSamePicture(pages[2].pixels, bilevelPage(first, {1728, 1146}, {813, 539})));
}

} // namespace
