#include "process/BytesMultiCopy.h"

#include "support/PrintQt.h"

#include <QByteArray>

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <vector>

namespace {

/// Destinations of one length, handed out one after another.
class Records
{
public:
    Records(int length, int available)
        : m_length(length),
          m_records(static_cast<std::size_t>(available), QByteArray(length, '-'))
    {
    }

    BytesMultiCopy::Producer producer()
    {
        return [this] { return next(); };
    }

    int calls() const { return m_calls; }
    const std::vector<QByteArray>& all() const { return m_records; }

private:
    BytesCopy next()
    {
        const auto index = static_cast<std::size_t>(m_calls++);
        if (index >= m_records.size()) {
            return {};
        }
        // A pointer from data() stays valid: nothing shares the array.
        void* const bytes = m_records[index].data();
        return {static_cast<unsigned char*>(bytes), static_cast<std::size_t>(m_length)};
    }

    int m_length;
    int m_calls = 0;
    std::vector<QByteArray> m_records;
};

QByteArray numberedBytes(int count)
{
    QByteArray bytes;
    for (int i = 0; i < count; ++i) {
        // A prime period, so that no two records are equal.
        bytes += static_cast<char>(i % 251);
    }
    return bytes;
}

TEST(BytesMultiCopy, FillsTwoRecordsAndTheStartOfTheThirdFromOneChunk)
{
    Records records(10, 3);
    BytesMultiCopy multiCopy(3, records.producer());
    EXPECT_EQ(multiCopy.copy("abcdefghijABCDEFGHIJ01234"), 25U);
    EXPECT_EQ(multiCopy.destinationsLeft(), 1U);
    EXPECT_EQ(records.all(), (std::vector<QByteArray>{"abcdefghij", "ABCDEFGHIJ", "01234-----"}));
}

TEST(BytesMultiCopy, TakesOnlyWhatTheLastRecordHasRoomFor)
{
    Records records(10, 3);
    BytesMultiCopy multiCopy(3, records.producer());
    multiCopy.copy(QByteArray(25, 'x'));
    EXPECT_EQ(multiCopy.copy("0123456789"), 5U);
    EXPECT_EQ(multiCopy.destinationsLeft(), 0U);
    EXPECT_EQ(records.all().back(), QByteArray("xxxxx01234"));
    EXPECT_EQ(multiCopy.copy("z"), 0U);
    EXPECT_EQ(records.calls(), 3);
}

TEST(BytesMultiCopy, ClosesAtOnceWhenTheLastRecordIsExactlyFull)
{
    Records records(10, 3);
    BytesMultiCopy multiCopy(3, records.producer());
    EXPECT_EQ(multiCopy.copy(QByteArray(30, 'x')), 30U);
    EXPECT_EQ(multiCopy.destinationsLeft(), 0U);
    EXPECT_EQ(records.calls(), 3);
}

TEST(BytesMultiCopy, AsksForNoRecordBeforeBytesNeedIt)
{
    Records records(10, 3);
    BytesMultiCopy multiCopy(3, records.producer());
    EXPECT_EQ(records.calls(), 0);
    multiCopy.copy(QByteArray(10, 'x'));
    EXPECT_EQ(records.calls(), 1);
    multiCopy.copy("y");
    EXPECT_EQ(records.calls(), 2);
}

TEST(BytesMultiCopy, CountsARecordAsDoneWhenItIsLeftBehind)
{
    Records records(10, 3);
    BytesMultiCopy multiCopy(3, records.producer());
    multiCopy.copy(QByteArray(10, 'x'));
    EXPECT_EQ(multiCopy.destinationsLeft(), 3U);
    multiCopy.copy("y");
    EXPECT_EQ(multiCopy.destinationsLeft(), 2U);
}

TEST(BytesMultiCopy, RefusesEverythingWithoutDestinations)
{
    Records records(10, 3);
    BytesMultiCopy multiCopy(0, records.producer());
    EXPECT_EQ(multiCopy.copy("abc"), 0U);
    EXPECT_EQ(records.calls(), 0);
}

TEST(BytesMultiCopy, AsksAgainAfterANullDestination)
{
    Records records(10, 0);
    BytesMultiCopy multiCopy(2, records.producer());
    EXPECT_EQ(multiCopy.copy("abc"), 0U);
    EXPECT_EQ(multiCopy.copy("abc"), 0U);
    EXPECT_EQ(multiCopy.destinationsLeft(), 2U);
    EXPECT_EQ(records.calls(), 2);
}

TEST(BytesMultiCopy, ReturnsWhatWasTakenBeforeANullDestination)
{
    Records records(4, 1);
    BytesMultiCopy multiCopy(3, records.producer());
    EXPECT_EQ(multiCopy.copy("abcdefg"), 4U);
    EXPECT_EQ(records.all().front(), QByteArray("abcd"));
    EXPECT_EQ(multiCopy.destinationsLeft(), 2U);
}

TEST(BytesMultiCopy, PassesOverADestinationWithoutRoom)
{
    unsigned char memory[3] = {};
    int calls = 0;
    BytesMultiCopy multiCopy(2, [&] { return BytesCopy{memory, ++calls == 1 ? 0U : 3U}; });
    EXPECT_EQ(multiCopy.copy("abcd"), 3U);
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(multiCopy.destinationsLeft(), 0U);
}

TEST(BytesMultiCopy, ThrowsWhenItNeedsAnEmptyProducer)
{
    BytesMultiCopy multiCopy(1, BytesMultiCopy::Producer());
    EXPECT_THROW(multiCopy.copy("a"), std::bad_function_call);
}

TEST(BytesMultiCopy, DoesNotNeedAProducerForNothing)
{
    BytesMultiCopy multiCopy(0, BytesMultiCopy::Producer());
    EXPECT_EQ(multiCopy.copy("a"), 0U);
}

struct Chunking
{
    int recordLength;
    int chunkLength;
};

void PrintTo(const Chunking& chunking, std::ostream* stream)
{
    *stream << "records of " << chunking.recordLength << ", chunks of " << chunking.chunkLength;
}

std::vector<Chunking> allChunkings()
{
    std::vector<Chunking> all;
    for (const int recordLength : {1, 3, 7, 1000, 4096, 5000}) {
        for (const int chunkLength : {1, 2, 7, 4096}) {
            all.push_back({recordLength, chunkLength});
        }
    }
    return all;
}

class EveryChunking : public testing::TestWithParam<Chunking>
{
protected:
    static constexpr int recordCount = 5;
};

TEST_P(EveryChunking, FillsTheSameRecords)
{
    const auto [recordLength, chunkLength] = GetParam();
    const QByteArray stream = numberedBytes(recordCount * recordLength);
    Records records(recordLength, recordCount);
    BytesMultiCopy multiCopy(recordCount, records.producer());
    for (int start = 0; start < stream.size(); start += chunkLength) {
        const QByteArray chunk = stream.mid(start, chunkLength);
        ASSERT_EQ(multiCopy.copy(chunk), static_cast<std::size_t>(chunk.size())) << start;
    }
    for (int i = 0; i < recordCount; ++i) {
        EXPECT_EQ(records.all()[static_cast<std::size_t>(i)],
                  stream.mid(i * recordLength, recordLength))
            << "record " << i;
    }
    EXPECT_EQ(multiCopy.destinationsLeft(), 0U);
    EXPECT_EQ(records.calls(), recordCount);
}

TEST_P(EveryChunking, TakesNoByteBeyondTheLastRecord)
{
    const auto [recordLength, chunkLength] = GetParam();
    const QByteArray stream = numberedBytes(recordCount * recordLength + 3 * chunkLength);
    Records records(recordLength, recordCount);
    BytesMultiCopy multiCopy(recordCount, records.producer());
    std::size_t taken = 0;
    for (int start = 0; start < stream.size(); start += chunkLength) {
        taken += multiCopy.copy(stream.mid(start, chunkLength));
    }
    EXPECT_EQ(taken, static_cast<std::size_t>(recordCount * recordLength));
    EXPECT_EQ(records.all().back(), stream.mid((recordCount - 1) * recordLength, recordLength));
    EXPECT_EQ(records.calls(), recordCount);
}

INSTANTIATE_TEST_SUITE_P(BytesMultiCopy, EveryChunking, testing::ValuesIn(allChunkings()),
                         [](const auto& test) {
                             return "RecordsOf" + std::to_string(test.param.recordLength) +
                                    "InChunksOf" + std::to_string(test.param.chunkLength);
                         });

} // namespace
