#include "process/OutputPipe.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

class FilledPipe : public testing::Test
{
protected:
    void write(const std::string& text) const
    {
        EXPECT_EQ(::write(m_pipe.writingEnd(), text.data(), text.size()),
                  static_cast<ssize_t>(text.size()));
    }

    // What is there; "nothing" or "end" if that is so.
    std::string read(std::size_t size = 100)
    {
        char bytes[100];
        const ssize_t count = m_pipe.read(bytes, size);
        if (count < 0) {
            EXPECT_EQ(errno, EAGAIN);
            return "nothing";
        }
        return count == 0 ? "end" : std::string(bytes, static_cast<std::size_t>(count));
    }

    OutputPipe m_pipe;
};

TEST_F(FilledPipe, HasNothingAtFirst)
{
    ASSERT_TRUE(m_pipe.isOpen());
    EXPECT_FALSE(m_pipe.waitForBytes(0));
    EXPECT_EQ(read(), "nothing");
}

TEST_F(FilledPipe, GivesWhatWasWrittenInOrder)
{
    write("first, ");
    write("second");
    EXPECT_TRUE(m_pipe.waitForBytes(0));
    EXPECT_EQ(read(3), "fir");
    EXPECT_EQ(read(), "st, second");
    EXPECT_EQ(read(), "nothing");
}

TEST_F(FilledPipe, EndsWhenNobodyHoldsTheWritingEnd)
{
    const int other = dup(m_pipe.writingEnd());
    write("text");
    m_pipe.closeWritingEnd();
    EXPECT_LT(m_pipe.writingEnd(), 0);
    EXPECT_EQ(read(), "text");
    EXPECT_EQ(read(), "nothing");
    close(other);
    EXPECT_TRUE(m_pipe.waitForBytes(0));
    EXPECT_EQ(read(), "end");
    m_pipe.letGather();
}

TEST_F(FilledPipe, LosesNothingWhileItGathers)
{
    write("text");
    m_pipe.letGather();
    EXPECT_EQ(read(), "text");
}

TEST_F(FilledPipe, LetsTheWriterWait)
{
    EXPECT_EQ(fcntl(m_pipe.writingEnd(), F_GETFL) & O_NONBLOCK, 0);
}

TEST_F(FilledPipe, IsClosedInOtherPrograms)
{
    EXPECT_EQ(fcntl(m_pipe.writingEnd(), F_GETFD), FD_CLOEXEC);
}

TEST(OutputPipe, IsNotOpenWithoutDescriptors)
{
    struct rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    rlimit none = before;
    none.rlim_cur = 0;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    const OutputPipe pipe;
    EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_FALSE(pipe.isOpen());
    EXPECT_LT(pipe.writingEnd(), 0);
}

} // namespace
