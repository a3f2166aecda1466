#include "fax/page/PainterWrapper.h"

#include "fax/page/ImagePlacement.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>

void PainterWrapper::drawImage(const QRect& rect, Qt::LayoutDirection direction,
                               Qt::Alignment alignment, const QImage& image) const
{
    const ImagePlacement placement(rect, direction, alignment, image);
    m_painter->drawImage(placement.target.topLeft(), image, placement.source);
}

void PainterWrapper::drawImage(const QRect& rect, Qt::Alignment alignment,
                               const QImage& image) const
{
    drawImage(rect, QGuiApplication::layoutDirection(), alignment, image);
}
