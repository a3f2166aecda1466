#include "fax/FaxOutputWriter.h"

#include "RecordingWriter.h"
#include "support/ReferencePage.h"
#include "support/SampleImages.h"
#include "support/TemporaryFolder.h"
#include "support/TiffFile.h"

#include <QFile>

#include <cstdint>
#include <string>

// Orientation metadata of the input.
namespace {

using ReferencePage::bilevelPage;
using ReferencePage::decoded;

constexpr QRgb white = 0xFFFFFFFF;
constexpr QRgb black = 0xFF000000;

const FaxConfiguration standardA4 = {
    FaxPaperSize::A4, FaxResolution::Standard, FaxRotation::Rotate0, {}, {}, FaxCompression::G4};

// An area of 260 x 170 pixels that is not in the middle of its page.
FaxSizeDetails smallPage()
{
    return {{200, 200}, {300, 200}, QRect(20, 10, 260, 170)};
}

struct OrientationRow
{
    const char* name;
    int orientation;
    bool fitToPaper;
    QSize renderSize;
};

// Stored as 120 x 80. A page that its metadata turns has its sides exchanged in
// the natural size but not when it is decoded, so that the fit flag finds it
// smaller than the area and enlarges it.
const OrientationRow orientationRows[] = {
    {"TopLeft", 1, false, {120, 80}},           {"TopRight", 2, false, {120, 80}},
    {"BottomRight", 3, false, {120, 80}},       {"BottomLeft", 4, false, {120, 80}},
    {"LeftTop", 5, false, {80, 120}},           {"RightTop", 6, false, {80, 120}},
    {"RightBottom", 7, false, {80, 120}},       {"LeftBottom", 8, false, {80, 120}},
    {"TopLeftFitted", 1, true, {255, 170}},     {"TopRightFitted", 2, true, {255, 170}},
    {"BottomRightFitted", 3, true, {255, 170}}, {"BottomLeftFitted", 4, true, {255, 170}},
    {"LeftTopFitted", 5, true, {113, 170}},     {"RightTopFitted", 6, true, {113, 170}},
    {"RightBottomFitted", 7, true, {113, 170}}, {"LeftBottomFitted", 8, true, {113, 170}},
};

void PrintTo(const OrientationRow& row, std::ostream* stream)
{
    *stream << row.name;
}

class FaxPageOrientation : public testing::TestWithParam<OrientationRow>
{
protected:
    static void expectPage(const std::string& name, FileFormat format, const char* qtFormat)
    {
        const OrientationRow& row = GetParam();
        QFile device(QString::fromStdString(name));
        ASSERT_TRUE(device.open(QIODevice::ReadOnly));
        RecordingWriter output;
        FaxOutputWriter writer(&output, standardA4);
        ASSERT_TRUE(writer.writePage(format, &device, row.fitToPaper, 0, smallPage()));
        ASSERT_EQ(output.pages().size(), 1U);
        const QImage picture = decoded(name, qtFormat, 0, row.renderSize);
        const bool isTurned = row.orientation > 4;
        ASSERT_EQ(picture.size(), isTurned ? row.renderSize.transposed() : row.renderSize);
        EXPECT_TRUE(ReferencePage::isIdenticalImage(
            output.pages()[0].image,
            ReferencePage::composed(picture, 0, row.fitToPaper, smallPage())));
    }
};

TEST_P(FaxPageOrientation, OfAJpegIsApplied)
{
    const TemporaryFolder folder;
    expectPage(folder.write("photo.jpg", SampleImages::jpegFile(SampleImages::quarters({120, 80}),
                                                                GetParam().orientation)),
               FileFormat::Jpeg, "jpeg");
}

TEST_P(FaxPageOrientation, OfATiffIsApplied)
{
    const TemporaryFolder folder;
    const auto orientation = static_cast<std::uint16_t>(GetParam().orientation);
    expectPage(folder.write("photo.tif", SampleImages::tiffFile(
                                             {{SampleImages::quarters({120, 80}), orientation}})),
               FileFormat::Tiff, "tiff");
}

INSTANTIATE_TEST_SUITE_P(Rows, FaxPageOrientation, testing::ValuesIn(orientationRows),
                         [](const auto& test) { return std::string{test.param.name}; });

// The same on a square page, where the sides play no part, against TIFF 6.0: the
// pixel of each row and column as it is seen.
using Turn = QPoint (*)(int row, int column);

constexpr int side = 64;
constexpr int last = side - 1;

const Turn seenAt[] = {
    [](int row, int column) { return QPoint(column, row); },
    [](int row, int column) { return QPoint(last - column, row); },
    [](int row, int column) { return QPoint(last - column, last - row); },
    [](int row, int column) { return QPoint(column, last - row); },
    [](int row, int column) { return QPoint(row, column); },
    [](int row, int column) { return QPoint(last - row, column); },
    [](int row, int column) { return QPoint(last - row, last - column); },
    [](int row, int column) { return QPoint(row, last - column); },
};

class FaxBilevelOrientation : public testing::TestWithParam<int>
{
};

TEST_P(FaxBilevelOrientation, SaysWhereRowsAndColumnsAreSeen)
{
    const QImage stored = SampleImages::bilevel({side, side});
    QImage seen(stored.size(), QImage::Format_Mono);
    seen.setColorTable({white, black});
    for (int row = 0; row < side; ++row) {
        for (int column = 0; column < side; ++column) {
            seen.setPixel(seenAt[GetParam() - 1](row, column),
                          static_cast<uint>(stored.pixelIndex(column, row)));
        }
    }
    const TemporaryFolder folder;
    RecordingWriter output;
    FaxOutputWriter writer(&output, standardA4);
    const auto orientation = static_cast<std::uint16_t>(GetParam());
    ASSERT_TRUE(writer.writePage(
        folder.write("scan.tif", SampleImages::tiffFile({{stored, orientation}}))));
    ASSERT_EQ(output.pages().size(), 1U);
    EXPECT_TRUE(
        isSamePicture(output.pages()[0].image, bilevelPage(seen, {1728, 1146}, {832, 541})));
}

INSTANTIATE_TEST_SUITE_P(Orientation, FaxBilevelOrientation, testing::Range(1, 9));

} // namespace
