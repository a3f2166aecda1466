#include "process/ProcessBytesMultiWriter.h"

#include <QByteArray>

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace {

class ProcessBytesMultiWriterTest : public testing::Test
{
protected:
    // Two records of three bytes, with a byte behind them.
    unsigned char m_memory[7] = {'-', '-', '-', '-', '-', '-', '-'};
    std::size_t m_calls = 0;
    ProcessBytesMultiWriter m_writer{2, [this] { return BytesCopy{m_memory + 3 * m_calls++, 3}; }};

    std::string memory() const { return {std::begin(m_memory), std::end(m_memory)}; }
};

TEST_F(ProcessBytesMultiWriterTest, CutsAChunkIntoRecords)
{
    EXPECT_TRUE(m_writer.processOutput("abcd"));
    EXPECT_EQ(memory(), "abcd---");
    EXPECT_EQ(m_calls, 2U);
}

TEST_F(ProcessBytesMultiWriterTest, AcceptsAChunkOfWhichOneByteFits)
{
    m_writer.processOutput("abcde");
    EXPECT_TRUE(m_writer.processOutput("fgh"));
    EXPECT_EQ(memory(), "abcdef-");
}

TEST_F(ProcessBytesMultiWriterTest, RefusesTheChunkAfterTheLastRecord)
{
    m_writer.processOutput("abcdef");
    EXPECT_FALSE(m_writer.processOutput("g"));
    EXPECT_EQ(memory(), "abcdef-");
}

TEST_F(ProcessBytesMultiWriterTest, AcceptsAnEmptyChunkEvenWhenFull)
{
    m_writer.processOutput("abcdef");
    EXPECT_TRUE(m_writer.processOutput(QByteArray()));
}

TEST_F(ProcessBytesMultiWriterTest, AcceptsAnEmptyChunkBeforeTheFirstRecord)
{
    EXPECT_TRUE(m_writer.processOutput(QByteArray()));
    EXPECT_EQ(m_calls, 0U);
}

TEST_F(ProcessBytesMultiWriterTest, IsCompleteWithTheLastByteOfTheLastRecord)
{
    m_writer.processOutput("abcde");
    EXPECT_FALSE(m_writer.isComplete());
    m_writer.processOutput("f");
    EXPECT_TRUE(m_writer.isComplete());
}

TEST(ProcessBytesMultiWriter, RefusesTheFirstChunkWhenThereIsNoRecord)
{
    ProcessBytesMultiWriter writer(2, [] { return BytesCopy(); });
    EXPECT_FALSE(writer.processOutput("a"));
}

TEST(ProcessBytesMultiWriter, KeepsAnEmptyChunkFromClosingTheLastRecord)
{
    unsigned char memory[3] = {};
    ProcessBytesMultiWriter writer(1, [&memory] { return BytesCopy{memory, 3}; });
    writer.processOutput(QByteArray());
    EXPECT_TRUE(writer.processOutput("abc"));
    EXPECT_EQ(memory[2], 'c');
}

TEST(ProcessBytesMultiWriter, ThrowsWithoutAProducer)
{
    ProcessBytesMultiWriter writer(1, BytesMultiCopy::Producer());
    EXPECT_THROW(writer.processOutput("a"), std::bad_function_call);
}

} // namespace
