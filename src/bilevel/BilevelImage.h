#pragma once

#include <QImage>

class QPoint;
class QRect;
class QSize;

/// Operations on QImage::Format_Mono pictures that only move whole pixels.
///
/// Each gives bit for bit what the call of Qt does that it is named with, many
/// times faster, because it moves the bits of whole bytes or rows. Rows run top
/// to bottom, the most significant bit leftmost; bits beyond the width are 0 in
/// every result. Where Qt runs out of memory the result is null.
class BilevelImage
{
public:
    /// True if `image` is a Format_Mono picture of opaque black and opaque
    /// white, in either order, without a pixel ratio: then placed() can do
    /// for it what painting and dithering do.
    static bool isBlackAndWhite(const QImage& image);

    /// True for pages of which QPainter leaves a part blank, since it paints in
    /// 16-bit coordinates: they are left to it.
    static bool isTooLargeToPaint(const QSize& size);

    /// A white picture with the colour table {opaque white, opaque black}; null
    /// if there is no memory for it.
    static QImage whitePage(const QSize& size);

    /// `image` with rows and columns left out, as
    /// QImage::scaled(size, Qt::IgnoreAspectRatio, Qt::FastTransformation)
    /// leaves them out. No side of `size` may be larger than that of the image
    /// or below 1.
    static QImage squeezed(const QImage& image, const QSize& size);

    /// A quarter turn clockwise, as QImage::transformed() with 90 degrees.
    static QImage turnedClockwise(const QImage& image);

    /// A quarter turn counterclockwise, as QImage::transformed() with 270 degrees.
    static QImage turnedCounterclockwise(const QImage& image);

    /// A whitePage() on which the part `source` of `image` lies at `position`,
    /// as painting it there and converting to Format_Mono gives it; null if there
    /// is no memory for it, or if it isTooLargeToPaint().
    ///
    /// `image` is a picture for which isBlackAndWhite() is true; `source` lies
    /// within it, and at `position` within the new picture.
    static QImage placed(const QImage& image, const QRect& source, const QSize& size,
                         const QPoint& position);
};
