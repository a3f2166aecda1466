#pragma once

#include <QImage>

/// Scales pictures smoothly, with the same pixels whatever the version of Qt.
///
/// Qt 5 converts every picture to 32 or 64 bits for each pixel first. Qt 6 scales
/// most of them in the format that they have, by painting, or converts the result
/// back, which dithers it if it was black and white.
class SmoothScaling
{
public:
    /// What QImage::scaled() of Qt 5 gives with Qt::SmoothTransformation: the image
    /// itself if it has this size already, null if `size` is empty.
    static QImage scaled(const QImage& image, const QSize& size,
                         Qt::AspectRatioMode mode = Qt::IgnoreAspectRatio);
};
