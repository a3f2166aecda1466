#include "app/settings/FaxSizeDetails.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

QRect rectFromCorners(int left, int top, int right, int bottom)
{
    return {QPoint(left, top), QPoint(right, bottom)};
}

// The far sides subtract a margin from a page dimension of a few thousand
// pixels, so a quarter of the integer range keeps every result in range.
constexpr double marginPixelLimit = std::numeric_limits<int>::max() / 4.0;

int marginPixels(double inches, int dpi)
{
    return static_cast<int>(
        std::clamp(std::floor(inches * dpi), -marginPixelLimit, marginPixelLimit));
}

bool isAnyNotANumber(const QMarginsF& margins)
{
    return std::isnan(margins.left()) || std::isnan(margins.top()) || std::isnan(margins.right()) ||
           std::isnan(margins.bottom());
}

} // namespace

bool areMarginsAbsent(const QMarginsF& margins)
{
    return std::abs(margins.left()) <= marginEpsilon && std::abs(margins.top()) <= marginEpsilon &&
           std::abs(margins.right()) <= marginEpsilon &&
           std::abs(margins.bottom()) <= marginEpsilon;
}

FaxSizeDetails faxSizeDetailsFor(const FaxConfiguration& configuration)
{
    const LogicalDpi dpi = logicalDpiFor(configuration.resolution);
    const int width = pageWidthPixels(configuration.resolution);
    const int height =
        static_cast<int>(std::ceil(paperHeightInches(configuration.paperSize) * dpi.vertical));
    const FaxSizeDetails wholePage{dpi, QSize(width, height),
                                   rectFromCorners(0, 0, width - 1, height - 1)};

    const QMarginsF& margins = configuration.margins;
    if (areMarginsAbsent(margins)) {
        return wholePage;
    }
    if (isAnyNotANumber(margins)) {
        // No integer stands for such a margin. Nothing is printable, and the
        // page writer refuses the page.
        return {dpi, wholePage.pageSize, QRect()};
    }
    return {dpi, wholePage.pageSize,
            rectFromCorners(marginPixels(margins.left(), dpi.horizontal),
                            marginPixels(margins.top(), dpi.vertical),
                            width - 1 - marginPixels(margins.right(), dpi.horizontal),
                            height - 1 - marginPixels(margins.bottom(), dpi.vertical))};
}

FaxSizeDetails wholePageDetails(const FaxSizeDetails& details)
{
    return {details.dpi, details.pageSize, QRect(QPoint(0, 0), details.pageSize)};
}
