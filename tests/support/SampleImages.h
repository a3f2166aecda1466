#pragma once

#include <QByteArray>
#include <QImage>

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

/// Pictures and image files for tests, made on the spot.
namespace SampleImages {

/// Four flat quarters, red and green over blue and white: no turn and no mirror
/// image of it looks like another.
QImage quarters(const QSize& size);

/// Black quarter top left, black dots along the lower edge, the rest white.
QImage bilevel(const QSize& size);

/// Colours that fade along both sides and an alpha value that fades with them.
QImage transparent(const QSize& size);

QByteArray pngFile(const QImage& image);

/// Without metadata, at the best quality.
QByteArray jpegFile(const QImage& image);

/// The same with an EXIF segment that holds nothing but `orientation`, 1 to 8.
QByteArray jpegFile(const QImage& image, int orientation);

/// A page for tiffFile().
///
/// A QImage::Format_Mono image becomes a 1-bit page: min-is-white where its
/// colour 0 is white, else min-is-black, so both look like the image. Every
/// other image becomes an RGB page.
struct TiffSamplePage
{
    QImage image;
    std::uint16_t orientation = 1;
};

QByteArray tiffFile(const std::vector<TiffSamplePage>& pages);

/// The bilevel picture with its two indexes exchanged: it looks the same.
QImage withColoursExchanged(const QImage& bilevel);

/// Compares every pixel, alpha value included, whatever the image formats; the
/// message names the first row and column that differ.
testing::AssertionResult isSameImage(const QImage& actual, const QImage& expected);

} // namespace SampleImages
