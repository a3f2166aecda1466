#pragma once

#include <cstdint>

/// A block of 8 x 8 pixels of one bit: row 0 in the most significant byte,
/// column 0 in the most significant bit of each.
using BitBlock = std::uint64_t;

/// The number of rows and columns of a BitBlock.
constexpr int bitBlockSize = 8;

/// Exchanges rows and columns by exchanging ever larger squares across the
/// diagonal: Warren, Hacker's Delight, section 7-3.
constexpr BitBlock transposed(BitBlock block)
{
    BitBlock difference = (block ^ (block >> 7)) & 0x00AA00AA00AA00AAU;
    block ^= difference ^ (difference << 7);
    difference = (block ^ (block >> 14)) & 0x0000CCCC0000CCCCU;
    block ^= difference ^ (difference << 14);
    difference = (block ^ (block >> 28)) & 0x00000000F0F0F0F0U;
    return block ^ difference ^ (difference << 28);
}

/// The eight pixels of a row, the leftmost in the most significant bit.
constexpr unsigned char rowOf(BitBlock block, int row)
{
    return static_cast<unsigned char>(block >> (bitBlockSize * (bitBlockSize - 1 - row)));
}
