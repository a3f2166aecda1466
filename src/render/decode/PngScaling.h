#pragma once

#include <QImage>

class QImageReader;

/// The way in which the PNG plug-in of Qt 5 makes pictures smaller while it
/// decodes them. That of Qt 6 does so no more in later versions.
class PngScaling
{
public:
    /// True if the picture becomes smaller in this way at the scaled size of
    /// `reader`: a PNG file with 8 bits for each colour, without a palette,
    /// interlacing and enlargement.
    static bool isAveraged(const QImageReader& reader);

    /// `image`, which has 32 bits for each pixel, at a `size` of which no side is
    /// larger: each pixel is the average of the area that it covers, in whole
    /// numbers, of the rows first.
    static QImage averaged(const QImage& image, const QSize& size);
};
