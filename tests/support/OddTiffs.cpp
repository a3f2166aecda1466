#include "support/OddPictures.h"
#include "support/TemporaryFolder.h"

#include <QFile>

#include <gtest/gtest.h>
#include <tiffio.h>

#include <memory>

namespace {

constexpr int tileSide = 32;

struct Layout
{
    const char* name;
    int bits;
    int samples;
    int photometric;
    int planar = PLANARCONFIG_CONTIG;
    int compression = COMPRESSION_NONE;
    bool isTiled = false;
    int alpha = -1; // what the last sample is, as EXTRASAMPLE_...
};

const Layout layouts[] = {
    {"planar-16-rgb", 16, 3, PHOTOMETRIC_RGB, PLANARCONFIG_SEPARATE},
    {"planar-16-rgba", 16, 4, PHOTOMETRIC_RGB, PLANARCONFIG_SEPARATE, COMPRESSION_NONE, false,
     EXTRASAMPLE_UNASSALPHA},
    {"planar-16-associated-alpha", 16, 4, PHOTOMETRIC_RGB, PLANARCONFIG_SEPARATE, COMPRESSION_LZW,
     false, EXTRASAMPLE_ASSOCALPHA},
    {"planar-16-tiled", 16, 3, PHOTOMETRIC_RGB, PLANARCONFIG_SEPARATE, COMPRESSION_NONE, true},
    {"planar-8-rgb", 8, 3, PHOTOMETRIC_RGB, PLANARCONFIG_SEPARATE},
    {"planar-8-rgba", 8, 4, PHOTOMETRIC_RGB, PLANARCONFIG_SEPARATE, COMPRESSION_NONE, false,
     EXTRASAMPLE_UNASSALPHA},
    {"planar-8-tiled", 8, 3, PHOTOMETRIC_RGB, PLANARCONFIG_SEPARATE, COMPRESSION_LZW, true},
    {"planar-8-grey-alpha", 8, 2, PHOTOMETRIC_MINISBLACK, PLANARCONFIG_SEPARATE, COMPRESSION_NONE,
     false, EXTRASAMPLE_UNASSALPHA},
    {"16-rgb", 16, 3, PHOTOMETRIC_RGB},
    {"16-rgba", 16, 4, PHOTOMETRIC_RGB, PLANARCONFIG_CONTIG, COMPRESSION_NONE, false,
     EXTRASAMPLE_UNASSALPHA},
    {"16-five-samples", 16, 5, PHOTOMETRIC_RGB},
    {"16-tiled", 16, 3, PHOTOMETRIC_RGB, PLANARCONFIG_CONTIG, COMPRESSION_ADOBE_DEFLATE, true},
    {"16-one-sample-of-rgb", 16, 1, PHOTOMETRIC_RGB},
    {"16-grey", 16, 1, PHOTOMETRIC_MINISBLACK},
    {"16-grey-alpha", 16, 2, PHOTOMETRIC_MINISBLACK, PLANARCONFIG_CONTIG, COMPRESSION_NONE, false,
     EXTRASAMPLE_UNASSALPHA},
    {"16-cmyk", 16, 4, PHOTOMETRIC_SEPARATED},
    {"8-rgb-tiled", 8, 3, PHOTOMETRIC_RGB, PLANARCONFIG_CONTIG, COMPRESSION_NONE, true},
    {"8-rgb-packbits", 8, 3, PHOTOMETRIC_RGB, PLANARCONFIG_CONTIG, COMPRESSION_PACKBITS},
    {"8-grey", 8, 1, PHOTOMETRIC_MINISWHITE},
    {"8-grey-tiled", 8, 1, PHOTOMETRIC_MINISBLACK, PLANARCONFIG_CONTIG, COMPRESSION_LZW, true},
    {"8-cmyk", 8, 4, PHOTOMETRIC_SEPARATED, PLANARCONFIG_CONTIG, COMPRESSION_ADOBE_DEFLATE},
    {"8-lab", 8, 3, PHOTOMETRIC_CIELAB},
    {"8-palette", 8, 1, PHOTOMETRIC_PALETTE},
    {"8-palette-tiled", 8, 1, PHOTOMETRIC_PALETTE, PLANARCONFIG_CONTIG, COMPRESSION_NONE, true},
    {"4-palette", 4, 1, PHOTOMETRIC_PALETTE},
    {"4-grey", 4, 1, PHOTOMETRIC_MINISBLACK},
    {"2-grey", 2, 1, PHOTOMETRIC_MINISWHITE},
    {"1-palette", 1, 1, PHOTOMETRIC_PALETTE},
    {"1-tiled", 1, 1, PHOTOMETRIC_MINISWHITE, PLANARCONFIG_CONTIG, COMPRESSION_NONE, true},
    {"g3", 1, 1, PHOTOMETRIC_MINISWHITE, PLANARCONFIG_CONTIG, COMPRESSION_CCITTFAX3},
    {"g4-tiled", 1, 1, PHOTOMETRIC_MINISWHITE, PLANARCONFIG_CONTIG, COMPRESSION_CCITTFAX4, true},
    {"jpeg-rgb", 8, 3, PHOTOMETRIC_RGB, PLANARCONFIG_CONTIG, COMPRESSION_JPEG},
    {"jpeg-ycbcr", 8, 3, PHOTOMETRIC_YCBCR, PLANARCONFIG_CONTIG, COMPRESSION_JPEG},
    {"jpeg-ycbcr-tiled", 8, 3, PHOTOMETRIC_YCBCR, PLANARCONFIG_CONTIG, COMPRESSION_JPEG, true},
    {"jpeg-grey", 8, 1, PHOTOMETRIC_MINISBLACK, PLANARCONFIG_CONTIG, COMPRESSION_JPEG},
    {"jpeg-cmyk", 8, 4, PHOTOMETRIC_SEPARATED, PLANARCONFIG_CONTIG, COMPRESSION_JPEG},
};

void setTags(TIFF* tiff, const Layout& layout, const QSize& size)
{
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, size.width());
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, size.height());
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, layout.bits);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, layout.samples);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, layout.photometric);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, layout.planar);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, layout.compression);
    if (layout.alpha >= 0) {
        const auto alpha = static_cast<std::uint16_t>(layout.alpha);
        TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &alpha);
    }
    if (layout.photometric == PHOTOMETRIC_PALETTE) {
        std::vector<std::uint16_t> red(1U << layout.bits);
        std::vector<std::uint16_t> other(red.size());
        for (std::size_t i = 0; i < red.size(); ++i) {
            red[i] = static_cast<std::uint16_t>(i * 40503);
            other[i] = static_cast<std::uint16_t>(i * 255);
        }
        TIFFSetField(tiff, TIFFTAG_COLORMAP, red.data(), other.data(), other.data());
    }
    if (layout.compression == COMPRESSION_JPEG && layout.photometric == PHOTOMETRIC_YCBCR) {
        TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    }
    int stripLength = tileSide;
    if (layout.compression == COMPRESSION_JPEG && layout.photometric == PHOTOMETRIC_SEPARATED) {
        TIFFSetField(tiff, TIFFTAG_JPEGTABLESMODE, 0); // each strip is a whole JPEG file
        stripLength = size.height();
    }
    if (layout.isTiled) {
        TIFFSetField(tiff, TIFFTAG_TILEWIDTH, tileSide);
        TIFFSetField(tiff, TIFFTAG_TILELENGTH, tileSide);
    } else {
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, stripLength);
    }
}

// Bytes that fade with some noise on top.
void setBytes(std::vector<unsigned char>& bytes, unsigned seed)
{
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<unsigned char>(seed * 2 + i / 2 + (i * seed * 7) % 16);
    }
}

void writeRows(TIFF* tiff, const Layout& layout, int height)
{
    const int planes = layout.planar == PLANARCONFIG_SEPARATE ? layout.samples : 1;
    std::vector<unsigned char> row(static_cast<std::size_t>(TIFFScanlineSize(tiff)));
    for (int plane = 0; plane < planes; ++plane) {
        for (int y = 0; y < height; ++y) {
            setBytes(row, static_cast<unsigned>(y + 20 * plane));
            EXPECT_EQ(TIFFWriteScanline(tiff, row.data(), static_cast<std::uint32_t>(y),
                                        static_cast<std::uint16_t>(plane)),
                      1)
                << layout.name;
        }
    }
}

void writeTiles(TIFF* tiff, const Layout& layout)
{
    std::vector<unsigned char> tile(static_cast<std::size_t>(TIFFTileSize(tiff)));
    for (std::uint32_t i = 0; i < TIFFNumberOfTiles(tiff); ++i) {
        setBytes(tile, i);
        const auto size = static_cast<tmsize_t>(tile.size());
        EXPECT_GT(TIFFWriteEncodedTile(tiff, i, tile.data(), size), 0) << layout.name;
    }
}

} // namespace

std::vector<OddPictures::File> OddPictures::tiffFiles(const QSize& size)
{
    const TemporaryFolder folder;
    std::vector<File> files;
    for (const Layout& layout : layouts) {
        const std::string name = std::string(layout.name) + ".tif";
        TIFF* tiff = TIFFOpen(folder.path(name).c_str(), "w");
        if (tiff == nullptr) {
            ADD_FAILURE() << name;
            continue;
        }
        setTags(tiff, layout, size);
        if (layout.isTiled) {
            writeTiles(tiff, layout);
        } else {
            writeRows(tiff, layout, size.height());
        }
        TIFFClose(tiff);
        QFile file(QString::fromStdString(folder.path(name)));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        files.push_back({name, file.readAll()});
    }
    return files;
}
