#include "support/OddPictures.h"

#include "support/PngFile.h"
#include "support/SampleImages.h"

#include <QBuffer>
#include <QImageWriter>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace {

struct Colours
{
    const char* name;
    char type;
    int samples;
    std::vector<int> depths;
    QByteArray transparent; // the data of tRNS; null where there can be none
};

const Colours pngColours[] = {
    {"grey", 0, 1, {1, 2, 4, 8, 16}, QByteArray("\0\1", 2)},
    {"rgb", 2, 3, {8, 16}, QByteArray("\0\1\0\2\0\3", 6)},
    {"palette", 3, 1, {1, 2, 4, 8}, QByteArray("\0\x80", 2)},
    {"grey-alpha", 4, 2, {8, 16}, QByteArray()},
    {"rgb-alpha", 6, 4, {8, 16}, QByteArray()},
};

// The rows of one pass, each with the filter byte in front.
QByteArray rows(int columns, int count, int bitsPerPixel)
{
    QByteArray bytes;
    for (int y = 0; y < count && columns > 0; ++y) {
        bytes += '\0';
        for (int i = 0; i < (columns * bitsPerPixel + 7) / 8; ++i) {
            bytes += static_cast<char>(y * 3 + i * 2 + (i * y * 7) % 16);
        }
    }
    return bytes;
}

// The passes of an interlaced picture: where they begin, and their steps.
struct Pass
{
    int x, y, dx, dy;
};
constexpr Pass passes[] = {{0, 0, 8, 8}, {4, 0, 8, 8}, {0, 4, 4, 8}, {2, 0, 4, 4},
                           {0, 2, 2, 4}, {1, 0, 2, 2}, {0, 1, 1, 2}};

QByteArray pixels(const QSize& size, int bitsPerPixel, bool isInterlaced)
{
    if (!isInterlaced) {
        return rows(size.width(), size.height(), bitsPerPixel);
    }
    QByteArray bytes;
    for (const Pass& pass : passes) {
        bytes += rows((size.width() - pass.x + pass.dx - 1) / pass.dx,
                      (size.height() - pass.y + pass.dy - 1) / pass.dy, bitsPerPixel);
    }
    return bytes;
}

QByteArray png(const QSize& size, const Colours& colours, int depth, bool isTransparent,
               bool isInterlaced)
{
    QByteArray header = PngFile::bigEndian(static_cast<quint32>(size.width())) +
                        PngFile::bigEndian(static_cast<quint32>(size.height()));
    header += static_cast<char>(depth);
    header += colours.type;
    header += QByteArray(2, '\0');
    header += static_cast<char>(isInterlaced ? 1 : 0);
    QByteArray file = PngFile::signature + PngFile::chunk("IHDR", header);
    if (colours.type == 3) {
        QByteArray palette;
        for (int i = 0; i < 3 * (1 << depth); ++i) {
            palette += static_cast<char>(i * 37);
        }
        file += PngFile::chunk("PLTE", palette);
    }
    if (isTransparent) {
        file += PngFile::chunk("tRNS", colours.transparent);
    }
    // qCompress() puts the size in front.
    const QByteArray data = qCompress(pixels(size, depth * colours.samples, isInterlaced)).mid(4);
    return file + PngFile::chunk("IDAT", data) + PngFile::chunk("IEND", QByteArray());
}

QByteArray jpeg(const QImage& image, bool isProgressive)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "jpeg");
    writer.setProgressiveScanWrite(isProgressive);
    EXPECT_TRUE(writer.write(image));
    return buffer.data();
}

// TIFF files can hold CMYK in JPEG, which Qt does not write: a strip of one is
// such a file.
QByteArray cmykJpeg(const QSize& size)
{
    for (const OddPictures::File& file : OddPictures::tiffFiles(size)) {
        if (file.name == "jpeg-cmyk.tif") {
            const auto begin = file.content.indexOf(QByteArray::fromHex("ffd8ff"));
            const auto end = file.content.indexOf(QByteArray::fromHex("ffd9"), begin);
            EXPECT_GT(end, begin);
            return file.content.mid(begin, end + 2 - begin);
        }
    }
    ADD_FAILURE();
    return {};
}

} // namespace

std::vector<OddPictures::File> OddPictures::pngFiles(const QSize& size)
{
    std::vector<File> files;
    for (const Colours& colours : pngColours) {
        for (const int depth : colours.depths) {
            for (const bool isTransparent : {false, true}) {
                for (const bool isInterlaced : {false, true}) {
                    if (isTransparent && colours.transparent.isNull()) {
                        continue;
                    }
                    files.push_back({std::to_string(depth) + '-' + colours.name +
                                         (isTransparent ? "-transparent" : "") +
                                         (isInterlaced ? "-interlaced" : "") + ".png",
                                     png(size, colours, depth, isTransparent, isInterlaced)});
                }
            }
        }
    }
    return files;
}

std::vector<OddPictures::File> OddPictures::jpegFiles(const QSize& size)
{
    const QImage colour = SampleImages::transparent(size).convertToFormat(QImage::Format_RGB32);
    const QImage grey = colour.convertToFormat(QImage::Format_Grayscale8);
    return {{"colour.jpg", jpeg(colour, false)},
            {"colour-progressive.jpg", jpeg(colour, true)},
            {"grey.jpg", jpeg(grey, false)},
            {"grey-progressive.jpg", jpeg(grey, true)},
            {"cmyk.jpg", cmykJpeg(size)}};
}

std::vector<OddPictures::File> OddPictures::files(const QSize& size)
{
    std::vector<File> all = tiffFiles(size);
    for (const auto& some : {pngFiles(size), jpegFiles(size)}) {
        all.insert(all.end(), some.begin(), some.end());
    }
    return all;
}

std::vector<OddPictures::File> OddPictures::truncatedFiles()
{
    std::vector<File> all = files();
    for (File& file : all) {
        file.name.insert(0, "truncated-");
        file.content.truncate(file.content.size() * 3 / 5);
    }
    return all;
}
