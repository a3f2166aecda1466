#pragma once

#include <QByteArray>

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

/// TIFF with planar and interleaved samples of 1 to 16 bits, in strips and
/// tiles, with palettes, alpha, five samples, CMYK, JPEG and other codings.
std::vector<File> tiffFiles();

/// PNG of every kind of colour and depth, with and without a transparent
/// colour, interlaced or not.
std::vector<File> pngFiles();

/// JPEG in grey, colour and CMYK, progressive or not.
std::vector<File> jpegFiles();

/// All of these.
std::vector<File> files();

/// The first part of each of these, 60 percent of its bytes.
std::vector<File> truncatedFiles();

} // namespace OddPictures
