#pragma once

#include <QByteArray>
#include <QSize>

#include <string>
#include <vector>

/// Picture files of the kinds that are rare, and that decoders get wrong: made
/// on the spot, the same each time.
namespace OddPictures {

struct File
{
    std::string name; ///< For example "planar-16-bit.tif".
    QByteArray content;
};

/// Large enough for allocations that MALLOC_PERTURB_ fills, and a multiple of
/// neither 8 nor the side of a tile.
inline constexpr QSize usualSize(131, 97);

/// TIFF with planar and interleaved samples of 1 to 16 bits, in strips and
/// tiles, with palettes, alpha, five samples, CMYK, JPEG and other codings.
std::vector<File> tiffFiles(const QSize& size = usualSize);

/// PNG of every kind of colour and depth, with and without a transparent
/// colour, interlaced or not.
std::vector<File> pngFiles(const QSize& size = usualSize);

/// JPEG in grey, colour and CMYK, progressive or not.
std::vector<File> jpegFiles(const QSize& size = usualSize);

/// All of these.
std::vector<File> files(const QSize& size = usualSize);

/// The first part of each of these, 60 percent of its bytes.
std::vector<File> truncatedFiles();

} // namespace OddPictures
