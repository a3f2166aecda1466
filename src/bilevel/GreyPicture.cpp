#include "bilevel/GreyPicture.h"

#include <QImage>
#include <QRect>

#include <algorithm>

bool GreyPicture::isReadable(const QImage& image)
{
    return image.format() == QImage::Format_RGB32 || image.format() == QImage::Format_Grayscale8;
}

bool GreyPicture::copyRow(const QImage& image, const QRect& source, int y, std::uint8_t* levels)
{
    const uchar* row = image.constScanLine(source.y() + y);
    const int width = source.width();
    if (image.format() == QImage::Format_Grayscale8) {
        std::copy_n(row + source.x(), width, levels);
        return true;
    }
    const QRgb* pixels = reinterpret_cast<const QRgb*>(row) + source.x();
    QRgb common = 0xFFFFFFFF;
    for (int x = 0; x < width; ++x) {
        common &= pixels[x];
        levels[x] = static_cast<std::uint8_t>(qGray(pixels[x]));
    }
    return qAlpha(common) == 0xFF;
}
