#include "fax/FaxOutputWriter.h"

#include "RecordingWriter.h"
#include "support/ReferencePage.h"
#include "support/SampleImages.h"
#include "support/TemporaryFolder.h"
#include "support/TiffFile.h"

#include <QFile>

#include <string>
#include <tuple>

// Rotation, fitting and reducing at square and other resolutions.
namespace {

using ReferencePage::bilevelPage;
using ReferencePage::decoded;

constexpr QRgb white = 0xFFFFFFFF;
constexpr QRgb black = 0xFF000000;

const FaxConfiguration standardA4 = {
    FaxPaperSize::A4, FaxResolution::Standard, FaxRotation::Rotate0, {}, {}, FaxCompression::G4};

constexpr FaxTransformationFlags noFit;

// An area of 260 x 170 pixels that is not in the middle of its page.
FaxSizeDetails smallPage(const LogicalDpi& dpi)
{
    return {dpi, {300, 200}, QRect(20, 10, 260, 170)};
}

constexpr LogicalDpi square = {200, 200};
constexpr LogicalDpi standard = {204, 98};
constexpr LogicalDpi ultrafine = {408, 391};
constexpr QSize small(100, 60);
constexpr QSize wide(900, 410);
constexpr QSize tall(120, 400);

struct RotationRow
{
    const char* name;
    LogicalDpi dpi;
    int quarterTurns;
    QSize natural;
    bool fitToPaper;
    QSize renderSize;
};

const RotationRow rotationRows[] = {
    {"SmallUprightAtSquareDpi", square, 0, small, false, {100, 60}},
    {"SmallUprightFittedAtSquareDpi", square, 0, small, true, {260, 156}},
    {"WideUprightAtSquareDpi", square, 0, wide, false, {260, 118}},
    {"WideUprightFittedAtSquareDpi", square, 0, wide, true, {260, 118}},
    {"TallUprightAtSquareDpi", square, 0, tall, false, {51, 170}},
    {"SmallTurnedAtSquareDpi", square, 1, small, false, {100, 60}},
    {"SmallTurnedFittedAtSquareDpi", square, 1, small, true, {170, 102}},
    {"WideTurnedAtSquareDpi", square, 1, wide, false, {170, 77}},
    {"TallTurnedAtSquareDpi", square, 1, tall, false, {78, 260}},
    {"TallTurnedFittedAtSquareDpi", square, 1, tall, true, {78, 260}},
    {"SmallUprightAtStandardDpi", standard, 0, small, false, {100, 60}},
    {"SmallUprightFittedAtStandardDpi", standard, 0, small, true, {260, 75}},
    {"WideUprightAtStandardDpi", standard, 0, wide, false, {260, 57}},
    {"TallUprightAtStandardDpi", standard, 0, tall, false, {106, 170}},
    {"TallUprightFittedAtStandardDpi", standard, 0, tall, true, {106, 170}},
    {"SmallTurnedAtStandardDpi", standard, 1, small, false, {100, 60}},
    {"SmallTurnedFittedAtStandardDpi", standard, 1, small, true, {170, 212}},
    {"WideTurnedAtStandardDpi", standard, 1, wide, false, {170, 161}},
    {"WideTurnedFittedAtStandardDpi", standard, 1, wide, true, {170, 161}},
    {"TallTurnedAtStandardDpi", standard, 1, tall, false, {37, 260}},
    {"WideUprightAtUltrafineDpi", ultrafine, 0, wide, false, {260, 114}},
    {"SmallTurnedFittedAtUltrafineDpi", ultrafine, 1, small, true, {170, 106}},
};

void PrintTo(const RotationRow& row, std::ostream* stream)
{
    *stream << row.name;
}

class FaxPageRotation : public testing::TestWithParam<std::tuple<RotationRow, int>>
{
};

TEST_P(FaxPageRotation, RendersIntoTheAreaAsItLiesBeforeTheRotation)
{
    const auto& [row, halfTurns] = GetParam();
    const int angle = 90 * row.quarterTurns + 180 * halfTurns;
    const FaxSizeDetails details = smallPage(row.dpi);
    const TemporaryFolder folder;
    const std::string name =
        folder.write("picture.png", SampleImages::pngFile(SampleImages::quarters(row.natural)));
    QFile device(QString::fromStdString(name));
    ASSERT_TRUE(device.open(QIODevice::ReadOnly));
    RecordingWriter output;
    FaxOutputWriter writer(&output, standardA4);
    ASSERT_TRUE(writer.writePage(FileFormat::Png, &device, row.fitToPaper,
                                 static_cast<unsigned short>(angle), details));
    ASSERT_EQ(output.pages().size(), 1U);
    EXPECT_TRUE(ReferencePage::isIdenticalImage(
        output.pages()[0].image, ReferencePage::composed(decoded(name, "png", 0, row.renderSize),
                                                         angle, row.fitToPaper, details)));
}

INSTANTIATE_TEST_SUITE_P(Rows, FaxPageRotation,
                         testing::Combine(testing::ValuesIn(rotationRows), testing::Values(0, 1)),
                         [](const auto& test) {
                             return std::string{std::get<0>(test.param).name} +
                                    (std::get<1>(test.param) == 0 ? "" : "AndHalfATurnMore");
                         });

// A bilevel picture of 101 x 67 pixels that keeps its size: only moved pixels.
struct BilevelRotationRow
{
    const char* name;
    FaxRotation rotation;
    QSize turnedSize;
    QPoint position;
    QPoint (*turn)(int x, int y);
};

const BilevelRotationRow bilevelRotationRows[] = {
    {"By0", FaxRotation::Rotate0, {101, 67}, {813, 539}, [](int x, int y) { return QPoint(x, y); }},
    {"By90",
     FaxRotation::Rotate90,
     {67, 101},
     {830, 522},
     [](int x, int y) { return QPoint(66 - y, x); }},
    {"By180",
     FaxRotation::Rotate180,
     {101, 67},
     {813, 539},
     [](int x, int y) { return QPoint(100 - x, 66 - y); }},
    {"By270",
     FaxRotation::Rotate270,
     {67, 101},
     {830, 522},
     [](int x, int y) { return QPoint(y, 100 - x); }},
};

void PrintTo(const BilevelRotationRow& row, std::ostream* stream)
{
    *stream << row.name;
}

class FaxBilevelRotation : public testing::TestWithParam<BilevelRotationRow>
{
};

TEST_P(FaxBilevelRotation, IsClockwiseAndMovesPixelsOnly)
{
    const BilevelRotationRow& row = GetParam();
    const QImage picture = SampleImages::bilevel({101, 67});
    QImage turned(row.turnedSize, QImage::Format_Mono);
    turned.setColorTable({white, black});
    for (int y = 0; y < 67; ++y) {
        for (int x = 0; x < 101; ++x) {
            turned.setPixel(row.turn(x, y), static_cast<uint>(picture.pixelIndex(x, y)));
        }
    }
    const TemporaryFolder folder;
    RecordingWriter output;
    FaxOutputWriter writer(
        &output,
        {FaxPaperSize::A4, FaxResolution::Standard, row.rotation, noFit, {}, FaxCompression::G4});
    ASSERT_TRUE(writer.writePage(folder.write("scan.tif", SampleImages::tiffFile({{picture}}))));
    ASSERT_EQ(output.pages().size(), 1U);
    EXPECT_TRUE(
        isSamePicture(output.pages()[0].image, bilevelPage(turned, {1728, 1146}, row.position)));
}

INSTANTIATE_TEST_SUITE_P(Rows, FaxBilevelRotation, testing::ValuesIn(bilevelRotationRows),
                         [](const auto& test) { return std::string{test.param.name}; });

} // namespace
