#pragma once

#include <cstdint>

/// A resolution in dots per inch; not valid if either member is 0.
struct LogicalDpi
{
    std::uint16_t horizontal = 0; ///< Dots per inch along a scan line.
    std::uint16_t vertical = 0;   ///< Scan lines per inch.
};

inline bool operator==(const LogicalDpi& left, const LogicalDpi& right)
{
    return left.horizontal == right.horizontal && left.vertical == right.vertical;
}

inline bool operator!=(const LogicalDpi& left, const LogicalDpi& right)
{
    return !(left == right);
}
