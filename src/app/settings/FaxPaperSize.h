#pragma once

#include <cstdint>

/// The paper of a fax page; it selects the page height.
enum class FaxPaperSize : std::int32_t
{
    A4 = 0,
    Letter = 1,
    Legal = 2,
};

/// Width of the paper in inches; -1.0 for a value outside the enumeration.
double paperWidthInches(FaxPaperSize paperSize);

/// Height of the paper in inches; -1.0 for a value outside the enumeration.
double paperHeightInches(FaxPaperSize paperSize);
