#include "process/BytesCopy.h"

#include <gtest/gtest.h>

#include <string>

namespace {

class BytesCopyTest : public testing::Test
{
protected:
    unsigned char m_memory[8] = {'-', '-', '-', '-', '-', '-', '-', '-'};
    BytesCopy m_destination{m_memory, 5};

    std::string memory() const { return {std::begin(m_memory), std::end(m_memory)}; }
};

TEST_F(BytesCopyTest, HasNoDestinationAtFirst)
{
    BytesCopy nothing;
    EXPECT_EQ(nothing.copy("abc", 3), 0U);
    EXPECT_EQ(nothing.data, nullptr);
    EXPECT_EQ(nothing.remaining, 0U);
}

TEST_F(BytesCopyTest, MovesOnByWhatItCopied)
{
    EXPECT_EQ(m_destination.copy("abc", 3), 3U);
    EXPECT_EQ(memory(), "abc-----");
    EXPECT_EQ(m_destination.data, m_memory + 3);
    EXPECT_EQ(m_destination.remaining, 2U);
}

TEST_F(BytesCopyTest, CopiesNoMoreThanThereIsRoomFor)
{
    EXPECT_EQ(m_destination.copy("abcdefgh", 8), 5U);
    EXPECT_EQ(memory(), "abcde---");
    EXPECT_EQ(m_destination.remaining, 0U);
}

TEST_F(BytesCopyTest, ContinuesWhereItStopped)
{
    m_destination.copy("ab", 2);
    EXPECT_EQ(m_destination.copy("cdef", 4), 3U);
    EXPECT_EQ(memory(), "abcde---");
}

TEST_F(BytesCopyTest, TakesNothingMoreWhenFull)
{
    m_destination.copy("abcde", 5);
    EXPECT_EQ(m_destination.copy("f", 1), 0U);
    EXPECT_EQ(memory(), "abcde---");
}

} // namespace
