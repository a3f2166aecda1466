#pragma once

#include <cstdint>

class QImage;
class QRect;

/// Reads the grey levels of pictures that lie on a page as they are.
class GreyPicture
{
public:
    /// True for QImage::Format_RGB32 and QImage::Format_Grayscale8.
    static bool isReadable(const QImage& image);

    /// Copies the grey levels, 0 to 255, of row `y` of the part `source` of such a
    /// picture. False if a pixel is not opaque: although the fourth byte of
    /// QImage::Format_RGB32 is to be 0xFF, some TIFF files leave transparency
    /// there, which shows once the picture is painted on a page.
    static bool copyRow(const QImage& image, const QRect& source, int y, std::uint8_t* levels);
};
