#include "fence/PrivateFolder.h"

#include "fence/Attempts.h"
#include "files/OutputFileGuard.h"
#include "support/PrintQt.h"
#include "support/TemporaryFolder.h"

#include <QFile>

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <ostream>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class TemporaryPlace : public testing::Test
{
protected:
    TemporaryPlace() { qputenv("TMPDIR", QFile::encodeName(m_place.qPath(QString()))); }
    ~TemporaryPlace() override { qunsetenv("TMPDIR"); }

    TemporaryFolder m_place;
    TemporaryFolder m_other; // made before the variable is set
};

TEST_F(TemporaryPlace, GetsAFolderThatNobodyElseMayEnter)
{
    const auto folder = PrivateFolder::shared();
    struct stat info = {};
    ASSERT_EQ(stat(folder->path().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777U, 0700U);
    EXPECT_EQ(m_place.entries().size(), 1);
}

TEST_F(TemporaryPlace, GetsOneFolderForAll)
{
    const auto one = PrivateFolder::shared();
    const auto other = PrivateFolder::shared();
    EXPECT_EQ(one->path(), other->path());
    EXPECT_EQ(m_place.entries().size(), 1);
}

TEST_F(TemporaryPlace, IsEmptyAfterwards)
{
    {
        const auto folder = PrivateFolder::shared();
        std::ofstream(folder->path() + "/file") << "content";
        ASSERT_EQ(mkdir((folder->path() + "/folder").c_str(), 0700), 0);
        std::ofstream(folder->path() + "/folder/file") << "content";
    }
    EXPECT_EQ(m_place.entries(), QStringList());
}

TEST_F(TemporaryPlace, KeepsWhatALinkLeadsTo)
{
    m_other.write("file", "content");
    {
        const auto folder = PrivateFolder::shared();
        ASSERT_EQ(symlink(m_other.path("").c_str(), (folder->path() + "/link").c_str()), 0);
    }
    EXPECT_EQ(m_place.entries(), QStringList());
    EXPECT_EQ(m_other.entries(), QStringList(QStringLiteral("file")));
}

TEST_F(TemporaryPlace, IsNotClearedBehindALinkInItsPlace)
{
    m_other.write("file", "content");
    const auto folder = PrivateFolder::shared();
    ASSERT_EQ(rmdir(folder->path().c_str()), 0);
    ASSERT_EQ(symlink(m_other.path("").c_str(), folder->path().c_str()), 0);
    folder->clear();
    EXPECT_EQ(m_other.entries(), QStringList(QStringLiteral("file")));
    EXPECT_EQ(unlink(folder->path().c_str()), 0);
}

TEST_F(TemporaryPlace, ThatDoesNotExistGivesNoFolder)
{
    qputenv("TMPDIR", QFile::encodeName(m_place.qPath(QStringLiteral("none"))));
    EXPECT_EQ(PrivateFolder::shared()->path(), "");
}

TEST_F(TemporaryPlace, ThatIsEmptyCountsAsNotSet)
{
    qputenv("TEMP", QFile::encodeName(m_place.qPath(QString())));
    qputenv("TMPDIR", "");
    {
        const auto folder = PrivateFolder::shared();
        EXPECT_EQ(m_place.entries().size(), 1);
    }
    qunsetenv("TEMP");
}

struct Row
{
    const char* name;
    int signal;
};

void PrintTo(const Row& row, std::ostream* stream)
{
    *stream << row.name;
}

class EndingSignal : public TemporaryPlace, public testing::WithParamInterface<Row>
{
};

TEST_P(EndingSignal, LeavesNeitherFolderNorOutput)
{
    const std::string output = m_place.path("out.tif");
    const int status = Attempts::statusOf([&output] {
        const rlimit noCore = {0, 0};
        setrlimit(RLIMIT_CORE, &noCore);
        signal(GetParam().signal, SIG_DFL); // the sanitizers have handlers
        OutputFileGuard guard(output, PrivateFolder::removeExisting);
        guard.opened(open(output.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
        const auto folder = PrivateFolder::shared();
        std::ofstream(folder->path() + "/file") << "content";
        raise(GetParam().signal);
        return 0;
    });
    EXPECT_EQ(status, 128 + GetParam().signal);
    EXPECT_EQ(m_place.entries(), QStringList());
}

const Row rows[] = {
    {"Hangup", SIGHUP},         {"Interrupt", SIGINT},      {"Termination", SIGTERM},
    {"BrokenPipe", SIGPIPE},    {"Abort", SIGABRT},         {"BusError", SIGBUS},
    {"InvalidAccess", SIGSEGV}, {"ProcessorTime", SIGXCPU}, {"FileSize", SIGXFSZ},
};

INSTANTIATE_TEST_SUITE_P(PrivateFolder, EndingSignal, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST_F(TemporaryPlace, IsLeftAloneByASignalThatIsIgnored)
{
    const std::string output = m_place.path("out.tif");
    const int status = Attempts::statusOf([&output] {
        signal(SIGHUP, SIG_IGN);
        OutputFileGuard guard(output, PrivateFolder::removeExisting);
        guard.failedToOpen();
        const auto folder = PrivateFolder::shared();
        raise(SIGHUP);
        return access(folder->path().c_str(), F_OK);
    });
    EXPECT_EQ(status, 0);
}

TEST_F(TemporaryPlace, StaysWhereAnotherProcessLooksForItsOwn)
{
    const auto folder = PrivateFolder::shared();
    EXPECT_EQ(Attempts::statusOf([] {
                  PrivateFolder::removeExisting();
                  return 0;
              }),
              0);
    EXPECT_EQ(access(folder->path().c_str(), F_OK), 0);
    PrivateFolder::removeExisting();
    EXPECT_NE(access(folder->path().c_str(), F_OK), 0);
}

} // namespace
