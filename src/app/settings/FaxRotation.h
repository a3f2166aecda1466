#pragma once

#include <cstdint>

/// The rotation of every input page; the value is the clockwise angle in
/// degrees and is used as such.
enum class FaxRotation : std::uint16_t
{
    Rotate0 = 0,
    Rotate90 = 90,
    Rotate180 = 180,
    Rotate270 = 270,
};
