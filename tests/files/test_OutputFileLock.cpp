#include "files/OutputFileLock.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdio>

#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class OutputFileLockTest : public testing::Test
{
protected:
    std::string path(const std::string& fileName) const { return m_folder.path(fileName); }
    const TemporaryFolder& folder() const { return m_folder; }

private:
    TemporaryFolder m_folder;
};

TEST_F(OutputFileLockTest, MakesTheFileIfThereIsNone)
{
    OutputFileLock lock(path("out"));
    EXPECT_TRUE(lock.acquire());
    EXPECT_EQ(access(path("out").c_str(), F_OK), 0);
}

TEST_F(OutputFileLockTest, LeavesAFileAsItIs)
{
    folder().write("out", "old");
    OutputFileLock lock(path("out"));
    EXPECT_TRUE(lock.acquire());
    struct stat info = {};
    ASSERT_EQ(stat(path("out").c_str(), &info), 0);
    EXPECT_EQ(info.st_size, 3);
}

TEST_F(OutputFileLockTest, IsRefusedWhileAnotherHasIt)
{
    OutputFileLock first(path("out"));
    ASSERT_TRUE(first.acquire());
    EXPECT_FALSE(OutputFileLock(path("out")).acquire());
}

TEST_F(OutputFileLockTest, IsRefusedUnderAnotherNameOfTheFile)
{
    OutputFileLock first(path("out"));
    ASSERT_TRUE(first.acquire());
    ASSERT_EQ(link(path("out").c_str(), path("other").c_str()), 0);
    EXPECT_FALSE(OutputFileLock(path("other")).acquire());
}

TEST_F(OutputFileLockTest, IsReleasedAtTheEnd)
{
    {
        OutputFileLock first(path("out"));
        ASSERT_TRUE(first.acquire());
    }
    EXPECT_TRUE(OutputFileLock(path("out")).acquire());
}

TEST_F(OutputFileLockTest, IsNotReleasedByARefusedOne)
{
    OutputFileLock first(path("out"));
    ASSERT_TRUE(first.acquire());
    ASSERT_FALSE(OutputFileLock(path("out")).acquire());
    EXPECT_FALSE(OutputFileLock(path("out")).acquire());
}

TEST_F(OutputFileLockTest, BelongsToTheFileAndNotToItsName)
{
    OutputFileLock first(path("out"));
    ASSERT_TRUE(first.acquire());
    ASSERT_EQ(unlink(path("out").c_str()), 0);
    EXPECT_TRUE(OutputFileLock(path("out")).acquire());
}

TEST_F(OutputFileLockTest, DoesNotMeetThatOfAScript)
{
    folder().write("out", "");
    FILE* const file = std::fopen(path("out").c_str(), "r+");
    ASSERT_NE(file, nullptr);
    ASSERT_EQ(flock(fileno(file), LOCK_EX | LOCK_NB), 0);
    EXPECT_TRUE(OutputFileLock(path("out")).acquire());
    std::fclose(file);
}

TEST_F(OutputFileLockTest, IsNotWantedForADevice)
{
    OutputFileLock first("/dev/null");
    ASSERT_TRUE(first.acquire());
    EXPECT_TRUE(OutputFileLock("/dev/null").acquire());
}

TEST_F(OutputFileLockTest, DoesNotWaitForTheReaderOfAFifo)
{
    ASSERT_EQ(mkfifo(path("out").c_str(), 0600), 0);
    EXPECT_TRUE(OutputFileLock(path("out")).acquire());
}

TEST_F(OutputFileLockTest, LeavesAFileThatCannotBeOpenedToWhoOpensIt)
{
    EXPECT_TRUE(OutputFileLock(path("none/out")).acquire());
}

} // namespace
