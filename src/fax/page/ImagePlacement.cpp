#include "fax/page/ImagePlacement.h"

#include "fax/page/GeometryUtils.h"

#include <QImage>

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

ImagePlacement::ImagePlacement(const QRect& rect, Qt::LayoutDirection direction,
                               Qt::Alignment alignment, const QImage& image)
{
    const double ratio = image.devicePixelRatio();
    const QSize size(qRound(image.width() / ratio), qRound(image.height() / ratio));
    const Qt::Alignment visual = GeometryUtils::visualAlignment(direction, alignment);

    const QPoint offset(horizontalOffset(rect.width() - size.width(), visual),
                        verticalOffset(rect.height() - size.height(), visual));
    const QRect placed(rect.topLeft() + offset, size);
    target = placed & rect;
    // The origin is not multiplied by the pixel ratio on purpose.
    source = QRect(target.left() - placed.left(), target.top() - placed.top(),
                   qRound(target.width() * ratio), qRound(target.height() * ratio));
}
