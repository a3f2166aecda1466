#pragma once

#include "app/settings/LogicalDpi.h"

#include <cstdint>

/// The resolution of a fax page (ITU-T T.30); it selects the dots per inch and
/// the length of a scan line.
enum class FaxResolution : std::int32_t
{
    Standard = 0,
    Fine = 1,
    Superfine = 2,
    Ultrafine = 3,
};

/// Dots per inch of the resolution; 0 x 0 for a value outside the enumeration.
LogicalDpi logicalDpiFor(FaxResolution resolution);

/// Length of a scan line in pixels, whatever the paper; -1 for a value outside
/// the enumeration.
int pageWidthPixels(FaxResolution resolution);
