#include "fax/PainterWrapper.h"

#include "fax/GeometryUtils.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QRect>

namespace {

int horizontalOffset(int freeSpace, Qt::Alignment alignment)
{
    if (alignment.testFlag(Qt::AlignHCenter)) {
        return freeSpace / 2;
    }
    return alignment.testFlag(Qt::AlignRight) ? freeSpace : 0;
}

int verticalOffset(int freeSpace, Qt::Alignment alignment)
{
    if (alignment.testFlag(Qt::AlignVCenter)) {
        return freeSpace / 2;
    }
    // Top and bottom are exchanged on purpose: pages have always been placed so.
    return alignment.testFlag(Qt::AlignTop) ? freeSpace : 0;
}

} // namespace

void PainterWrapper::drawImage(const QRect& rect, Qt::LayoutDirection direction,
                               Qt::Alignment alignment, const QImage& image) const
{
    const double ratio = image.devicePixelRatio();
    const QSize size(qRound(image.width() / ratio), qRound(image.height() / ratio));
    const Qt::Alignment visual = GeometryUtils::visualAlignment(direction, alignment);

    const QPoint offset(horizontalOffset(rect.width() - size.width(), visual),
                        verticalOffset(rect.height() - size.height(), visual));
    const QRect placed(rect.topLeft() + offset, size);
    const QRect clipped = placed & rect;

    // The origin is not multiplied by the pixel ratio on purpose.
    const QRect source(clipped.left() - placed.left(), clipped.top() - placed.top(),
                       qRound(clipped.width() * ratio), qRound(clipped.height() * ratio));
    m_painter->drawImage(clipped.topLeft(), image, source);
}

void PainterWrapper::drawImage(const QRect& rect, Qt::Alignment alignment,
                               const QImage& image) const
{
    drawImage(rect, QGuiApplication::layoutDirection(), alignment, image);
}
