#pragma once

#include <Qt>

class QImage;
class QPainter;
class QRect;

/// Draws images into rectangles with an alignment.
class PainterWrapper
{
public:
    /// `painter` is not owned and must be active while it is drawn with.
    explicit PainterWrapper(QPainter* painter) : m_painter(painter) {}

    /// Draws `image` unscaled (its device pixel ratio decides its size in
    /// painter units), aligned in `rect` and clipped to it.
    ///
    /// Vertically the flags are exchanged: Qt::AlignTop places the image at the
    /// bottom of `rect`, Qt::AlignBottom or no flag at the top.
    void drawImage(const QRect& rect, Qt::LayoutDirection direction, Qt::Alignment alignment,
                   const QImage& image) const;

    /// The same with the application's layout direction.
    void drawImage(const QRect& rect, Qt::Alignment alignment, const QImage& image) const;

private:
    QPainter* m_painter;
};
