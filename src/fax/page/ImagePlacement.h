#pragma once

#include <QRect>
#include <Qt>

class QImage;

/// Where an image comes to lie in an area, unscaled and clipped to it.
///
/// With a device pixel ratio other than 1 the image is smaller in painter units
/// than in pixels.
struct ImagePlacement
{
    /// Aligns the image in `rect`, whose unit is that of a painter.
    ///
    /// Vertically the flags are exchanged: Qt::AlignTop places the image at the
    /// bottom of `rect`, Qt::AlignBottom or no flag at the top.
    ImagePlacement(const QRect& rect, Qt::LayoutDirection direction, Qt::Alignment alignment,
                   const QImage& image);

    QRect target; ///< The visible part in painter units.
    QRect source; ///< The same part in pixels of the image.
};
