// The parts of a conversion that no program of this kind can do without, as
// processes of their own, for scripts/bench to compare with:
//
//   baseline application
//       creates an offscreen application object, nothing more;
//   baseline version
//       prints the version of Qt;
//   baseline raster INPUT WIDTH HEIGHT PAGES OUTPUT
//       decodes every page of INPUT at that size with Qt, and encodes the
//       bilevel pages of the uncompressed file PAGES in group 4 with libtiff.

#include <QGuiApplication>
#include <QImage>
#include <QImageReader>

#include <tiffio.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <vector>

namespace {

bool decode(const QString& fileName, const QSize& size)
{
    QImageReader reader(fileName);
    reader.setAutoTransform(true);
    const int count = reader.imageCount();
    for (int page = 0; page < count; ++page) {
        reader.jumpToImage(page);
        reader.setScaledSize(size);
        if (reader.read().isNull()) {
            return false;
        }
    }
    return count > 0;
}

bool encodePage(TIFF* source, TIFF* target)
{
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    TIFFGetField(source, TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(source, TIFFTAG_IMAGELENGTH, &height);
    TIFFSetField(target, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX4);
    TIFFSetField(target, TIFFTAG_BITSPERSAMPLE, 1);
    TIFFSetField(target, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(target, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(target, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
    TIFFSetField(target, TIFFTAG_IMAGEWIDTH, width);
    TIFFSetField(target, TIFFTAG_IMAGELENGTH, height);
    std::vector<unsigned char> row(static_cast<std::size_t>(TIFFScanlineSize(source)));
    for (std::uint32_t y = 0; y < height; ++y) {
        if (TIFFReadScanline(source, row.data(), y, 0) != 1 ||
            TIFFWriteScanline(target, row.data(), y, 0) != 1) {
            return false;
        }
    }
    return TIFFWriteDirectory(target) == 1;
}

bool encode(const char* pages, const char* output)
{
    TIFF* source = TIFFOpen(pages, "r");
    TIFF* target = TIFFOpen(output, "w");
    bool ok = source != nullptr && target != nullptr;
    while (ok) {
        ok = encodePage(source, target);
        if (TIFFReadDirectory(source) != 1) {
            break;
        }
    }
    for (TIFF* file : {source, target}) {
        if (file != nullptr) {
            TIFFClose(file);
        }
    }
    return ok;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 2 && std::strcmp(argv[1], "version") == 0) {
        std::cout << qVersion() << '\n';
        return 0;
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    if (argc == 2 && std::strcmp(argv[1], "application") == 0) {
        return 0;
    }
    if (argc == 7 && std::strcmp(argv[1], "raster") == 0) {
        const QSize size(std::atoi(argv[3]), std::atoi(argv[4]));
        return decode(QString::fromUtf8(argv[2]), size) && encode(argv[5], argv[6]) ? 0 : 1;
    }
    std::cerr << "usage: baseline application | version | raster INPUT WIDTH HEIGHT PAGES OUTPUT\n";
    return 1;
}
