#include "bilevel/BitBlock.h"

#include <gtest/gtest.h>

namespace {

TEST(BitBlock, TransposingMovesEverySinglePixelAcrossTheDiagonal)
{
    for (int row = 0; row < 8; ++row) {
        for (int column = 0; column < 8; ++column) {
            const BitBlock pixel = BitBlock{1} << (63 - (8 * row + column));
            const BitBlock mirrored = BitBlock{1} << (63 - (8 * column + row));
            EXPECT_EQ(transposed(pixel), mirrored) << "row " << row << ", column " << column;
        }
    }
}

TEST(BitBlock, TransposingTwiceChangesNothing)
{
    EXPECT_EQ(transposed(transposed(0x0123456789ABCDEFU)), 0x0123456789ABCDEFU);
}

TEST(BitBlock, TheFirstRowIsTheMostSignificantByte)
{
    EXPECT_EQ(rowOf(0x8102030405060708U, 0), 0x81);
    EXPECT_EQ(rowOf(0x8102030405060708U, 7), 0x08);
}

} // namespace
