#pragma once

#include <cstddef>

/// A destination for bytes that somebody else owns: a plain value, to be valid
/// for as long as it is written to.
struct BytesCopy
{
    /// Copies as many of the `size` bytes at `bytes` as there is room for, and
    /// moves on by that number, which is the result.
    std::size_t copy(const char* bytes, std::size_t size);

    unsigned char* data = nullptr; ///< Where the next byte goes; null for no destination.
    std::size_t remaining = 0;     ///< Room at `data` in bytes.
};
