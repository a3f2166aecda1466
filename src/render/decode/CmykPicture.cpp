#include "render/decode/CmykPicture.h"

#include <QImage>

#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)

void CmykPicture::convertToRgb(QImage& image)
{
    if (image.format() != QImage::Format_CMYK8888) {
        return;
    }
    QImage result(image.size(), QImage::Format_RGB32);
    if (!result.isNull()) {
        result.setDevicePixelRatio(image.devicePixelRatio());
        result.setDotsPerMeterX(image.dotsPerMeterX());
        result.setDotsPerMeterY(image.dotsPerMeterY());
    }
    for (int y = 0; y < result.height(); ++y) {
        const uchar* inks = image.constScanLine(y);
        auto* pixels = reinterpret_cast<QRgb*>(result.scanLine(y));
        for (int x = 0; x < result.width(); ++x, inks += 4) {
            const int light = 255 - inks[3];
            pixels[x] = qRgb(light * (255 - inks[0]) / 255, light * (255 - inks[1]) / 255,
                             light * (255 - inks[2]) / 255);
        }
    }
    image = result;
}

#else

void CmykPicture::convertToRgb(QImage& /*image*/) {}

#endif
