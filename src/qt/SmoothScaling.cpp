#include "qt/SmoothScaling.h"

#include <QRgba64>

#include <algorithm>
#include <iterator>

namespace {

// What Qt 5 scales as it is.
constexpr QImage::Format scalableFormats[] = {
    QImage::Format_RGB32,    QImage::Format_ARGB32_Premultiplied,
    QImage::Format_RGBX8888, QImage::Format_RGBA8888_Premultiplied,
    QImage::Format_RGBX64,   QImage::Format_RGBA64_Premultiplied,
};

// Qt 6.4 would multiply the colours by the alpha value twice.
QImage premultiplied(const QImage& image)
{
    QImage result(image.size(), QImage::Format_RGBA64_Premultiplied);
    if (result.isNull()) {
        return result;
    }
    result.setDevicePixelRatio(image.devicePixelRatio());
    for (int y = 0; y < image.height(); ++y) {
        const auto* pixels = reinterpret_cast<const QRgba64*>(image.constScanLine(y));
        std::transform(pixels, pixels + image.width(),
                       reinterpret_cast<QRgba64*>(result.scanLine(y)),
                       [](QRgba64 pixel) { return pixel.premultiplied(); });
    }
    return result;
}

// The picture in the format in which Qt 5 scales it.
QImage scalable(const QImage& image)
{
    const QImage::Format format = image.format();
    if (std::find(std::begin(scalableFormats), std::end(scalableFormats), format) !=
        std::end(scalableFormats)) {
        return image;
    }
    if (format == QImage::Format_RGBA64) {
        return premultiplied(image);
    }
    return image.convertToFormat(image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied
                                                         : QImage::Format_RGB32);
}

} // namespace

QImage SmoothScaling::scaled(const QImage& image, const QSize& size, Qt::AspectRatioMode mode)
{
    if (image.isNull() || size.isEmpty()) {
        return QImage();
    }
    if (image.size() == image.size().scaled(size, mode)) {
        return image;
    }
    return scalable(image).scaled(size, mode, Qt::SmoothTransformation);
}
