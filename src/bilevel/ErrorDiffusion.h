#pragma once

#include <QImage>

class QPoint;
class QRect;
class QSize;

/// Places a picture on a white page and dithers it to black and white, without
/// painting the page first.
///
/// The result is bit for bit that of painting the picture on a white
/// QImage::Format_ARGB32_Premultiplied page and converting that to
/// QImage::Format_Mono with Qt::MonoOnly: the error diffusion of Floyd and
/// Steinberg in whole numbers.
class ErrorDiffusion
{
public:
    /// True for pictures without alpha and pixel ratio: QImage::Format_RGB32 and
    /// QImage::Format_Grayscale8.
    static bool isSupported(const QImage& image);

    /// A page of `size`, QImage::Format_Mono with the colour table {opaque
    /// white, opaque black}, on which the part `source` of `image` lies at
    /// `position`; null if there is no memory for it, if it is too large to be
    /// painted, or if the picture is not opaque after all (see
    /// GreyPicture::copyRow). `source` lies within the image, and at `position`
    /// within the page.
    static QImage dithered(const QImage& image, const QRect& source, const QSize& size,
                           const QPoint& position);
};
