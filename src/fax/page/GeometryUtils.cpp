#include "fax/page/GeometryUtils.h"

Qt::Alignment GeometryUtils::visualAlignment(Qt::LayoutDirection direction, Qt::Alignment alignment)
{
    constexpr Qt::Alignment leftAndRight = Qt::AlignLeft | Qt::AlignRight;

    const bool isAbsolute = alignment.testFlag(Qt::AlignAbsolute);
    if (!(alignment & Qt::AlignHorizontal_Mask)) {
        alignment |= Qt::AlignLeft;
    }
    if (isAbsolute || !(alignment & leftAndRight)) {
        return alignment;
    }
    if (direction == Qt::RightToLeft) {
        alignment ^= leftAndRight;
    }
    return alignment | Qt::AlignAbsolute;
}
