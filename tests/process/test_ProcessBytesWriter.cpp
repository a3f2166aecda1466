#include "process/ProcessBytesWriter.h"

#include "support/PrintQt.h"

#include <QByteArray>

#include <gtest/gtest.h>

namespace {

class ProcessBytesWriterTest : public testing::Test
{
protected:
    // One byte more than the writer may use.
    unsigned char m_memory[101] = {};
    ProcessBytesWriter m_writer{BytesCopy{m_memory, 100}};

    QByteArray written(int size) const
    {
        const void* const bytes = m_memory;
        return {static_cast<const char*>(bytes), size};
    }
};

TEST_F(ProcessBytesWriterTest, TakesAWholeChunkThatFits)
{
    EXPECT_TRUE(m_writer.processOutput(QByteArray(60, 'a')));
    EXPECT_EQ(written(61), QByteArray(60, 'a') + '\0');
    EXPECT_EQ(m_writer.target().remaining, 40U);
}

TEST_F(ProcessBytesWriterTest, DropsWhatDoesNotFitOfAChunk)
{
    m_writer.processOutput(QByteArray(60, 'a'));
    EXPECT_TRUE(m_writer.processOutput(QByteArray(40, 'b') + QByteArray(20, 'c')));
    EXPECT_EQ(written(101), QByteArray(60, 'a') + QByteArray(40, 'b') + '\0');
    EXPECT_EQ(m_writer.target().remaining, 0U);
}

TEST_F(ProcessBytesWriterTest, RefusesTheChunkAfterItIsFull)
{
    m_writer.processOutput(QByteArray(100, 'a'));
    EXPECT_FALSE(m_writer.processOutput("b"));
    EXPECT_EQ(written(101), QByteArray(100, 'a') + '\0');
}

TEST_F(ProcessBytesWriterTest, AcceptsAnEmptyChunkEvenWhenFull)
{
    m_writer.processOutput(QByteArray(100, 'a'));
    EXPECT_TRUE(m_writer.processOutput(QByteArray()));
}

TEST_F(ProcessBytesWriterTest, RefusesEverythingWithoutADestination)
{
    ProcessBytesWriter writer{BytesCopy()};
    EXPECT_TRUE(writer.processOutput(QByteArray()));
    EXPECT_FALSE(writer.processOutput("a"));
}

} // namespace
