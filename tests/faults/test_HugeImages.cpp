#include "faults/Conversion.h"
#include "support/PngFile.h"
#include "support/TemporaryFolder.h"
#include "support/TiffFile.h"

#include <QByteArray>

#include <gtest/gtest.h>

#include <zlib.h>

#include <string>
#include <vector>

namespace {

constexpr int side = 30000;

// `row` over and over, compressed row by row: the whole would be hundreds of
// megabytes.
QByteArray compressedRows(QByteArray row)
{
    z_stream stream = {};
    EXPECT_EQ(deflateInit(&stream, Z_BEST_SPEED), Z_OK);
    QByteArray result;
    constexpr int bufferSize = 1000000;
    QByteArray buffer(bufferSize, '\0');
    for (int i = 0; i < side; ++i) {
        stream.next_in = reinterpret_cast<Bytef*>(row.data());
        stream.avail_in = static_cast<uInt>(row.size());
        stream.next_out = reinterpret_cast<Bytef*>(buffer.data());
        stream.avail_out = static_cast<uInt>(buffer.size());
        EXPECT_GE(deflate(&stream, i == side - 1 ? Z_FINISH : Z_NO_FLUSH), Z_OK);
        EXPECT_EQ(stream.avail_in, 0U);
        result += buffer.left(buffer.size() - static_cast<int>(stream.avail_out));
    }
    deflateEnd(&stream);
    return result;
}

// A grey PNG file of 30000 x 30000 pixels, black on the left, white on the right.
QByteArray hugePng(int bitsPerPixel)
{
    const int rowSize = side * bitsPerPixel / 8;
    const QByteArray row =
        '\0' + QByteArray(rowSize / 2, '\0') + QByteArray(rowSize - rowSize / 2, '\xFF');
    const QByteArray header = PngFile::bigEndian(side) + PngFile::bigEndian(side) +
                              static_cast<char>(bitsPerPixel) + QByteArray(4, '\0');
    return PngFile::signature + PngFile::chunk("IHDR", header) +
           PngFile::chunk("IDAT", compressedRows(row)) + PngFile::chunk("IEND", QByteArray());
}

class HugeImage : public testing::TestWithParam<int>
{
};

TEST_P(HugeImage, IsAPageOrACleanFailureIn4GiB)
{
    const TemporaryFolder folder;
    const std::string output = folder.path("out.tif");
    const std::string picture = folder.write("huge.png", hugePng(GetParam()));
    ProgramStart start;
    start.program = "/usr/bin/prlimit";
    start.arguments = {"--as=4294967296", MORVALTIDE_PROGRAM, "-o", output, picture};
    const ProgramResult result = runProgram(start);
    if (result.exitStatus != 0) {
        EXPECT_TRUE(Conversion::hasFailedCleanly(result, output));
        return;
    }
    EXPECT_EQ(result.error, "");
    const std::vector<TiffPage> pages = readTiff(output);
    ASSERT_EQ(pages.size(), 1U);
    const QImage& page = pages[0].pixels;
    ASSERT_EQ(page.size(), QSize(1728, 2292));
    EXPECT_EQ(page.pixelIndex(400, 1146), 1) << "the left half is black";
    EXPECT_EQ(page.pixelIndex(1300, 1146), 0) << "the right half is white";
}

INSTANTIATE_TEST_SUITE_P(FaxWriter, HugeImage, testing::Values(1, 8), [](const auto& test) {
    return "Of" + std::to_string(test.param) + "BitsPerPixel";
});

} // namespace
