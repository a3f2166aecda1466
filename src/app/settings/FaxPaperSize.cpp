#include "app/settings/FaxPaperSize.h"

namespace {

// ISO 216: A4 is 210 mm x 297 mm. Both values are cut to 14 decimals, one unit
// in the last place below the quotients by 25.4, and page heights depend on it.
constexpr double a4WidthInches = 8.26771653543307;
constexpr double a4HeightInches = 11.69291338582677;

} // namespace

double paperWidthInches(FaxPaperSize paperSize)
{
    switch (paperSize) {
    case FaxPaperSize::A4:
        return a4WidthInches;
    case FaxPaperSize::Letter:
    case FaxPaperSize::Legal:
        return 8.5;
    }
    return -1.0;
}

double paperHeightInches(FaxPaperSize paperSize)
{
    switch (paperSize) {
    case FaxPaperSize::A4:
        return a4HeightInches;
    case FaxPaperSize::Letter:
        return 11.0;
    case FaxPaperSize::Legal:
        return 14.0;
    }
    return -1.0;
}
