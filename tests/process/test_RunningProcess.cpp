#include "process/RunningProcess.h"

#include "process/CollectingHandler.h"
#include "support/PrintQt.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <QFile>

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <functional>
#include <memory>

#include <fcntl.h>
#include <unistd.h>

namespace {

const QString shell = QStringLiteral("sh");

/// A child whose script finds a file of its own as "$0", where it can note what
/// it has done.
class RunningShell
{
public:
    explicit RunningShell(const char* commands)
        : m_process(std::make_unique<RunningProcess>(
              shell, QStringList{QStringLiteral("-c"), QString::fromUtf8(commands),
                                 m_folder.qPath(QStringLiteral("notes"))}))
    {
    }

    RunningProcess& process() { return *m_process; }
    void end() { m_process.reset(); }

    QByteArray notes() const
    {
        QFile file(m_folder.qPath(QStringLiteral("notes")));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    /// Calls `meanwhile` until the child has made so many notes.
    void waitForNotes(int count, const std::function<void()>& meanwhile = [] {}) const
    {
        const auto isNoted = [this, count, &meanwhile] {
            if (notes().count('\n') >= count) {
                return true;
            }
            meanwhile();
            return false;
        };
        ASSERT_TRUE(waitUntil(isNoted)) << notes().constData();
    }

private:
    TemporaryFolder m_folder;
    std::unique_ptr<RunningProcess> m_process;
};

// Writes ten blocks of 1 MiB and notes each.
const char* const tenBlocks =
    "for i in 1 2 3 4 5 6 7 8 9 10; do head -c 1048576 /dev/zero; echo $i >>$0; done";

// The system may keep users who have many pipes from large ones.
bool areLargePipesGranted()
{
    int ends[2] = {-1, -1};
    EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
    const bool isGranted = fcntl(ends[1], F_SETPIPE_SZ, 1048576) == 1048576;
    close(ends[0]);
    close(ends[1]);
    return isGranted;
}

TEST(RunningProcess, WorksBeforeItIsRead)
{
    RunningShell child("echo done >$0; printf text");
    child.waitForNotes(1);
    CollectingHandler handler;
    EXPECT_TRUE(child.process().read(&handler));
    EXPECT_EQ(handler.collected(), QByteArray("text"));
    EXPECT_TRUE(child.process().hasEnded());
}

TEST(RunningProcess, GetsAheadByOneMebibyteAndNoMore)
{
    if (!areLargePipesGranted()) {
        GTEST_SKIP() << "this user may not have a pipe of 1 MiB";
    }
    RunningShell child(tenBlocks);
    child.waitForNotes(1);
    EXPECT_EQ(child.notes(), QByteArray("1\n"));
    CollectingHandler handler;
    EXPECT_TRUE(child.process().read(&handler));
    EXPECT_EQ(handler.collected().size(), 10485760);
}

TEST(RunningProcess, GetsAheadByTheLimitBesidesWhenItIsReceived)
{
    RunningShell child(tenBlocks);
    child.waitForNotes(4, [&child] { child.process().receive(4194304); });
    EXPECT_LE(child.notes().count('\n'), 5);
    CollectingHandler handler;
    EXPECT_TRUE(child.process().read(&handler));
    EXPECT_EQ(handler.collected().size(), 10485760);
}

TEST(RunningProcess, ReceivesNothingIntoLessRoomThanAPipeHolds)
{
    RunningShell child("head -c 8388608 /dev/zero; echo end >$0");
    for (int i = 0; i < 100; ++i) {
        child.process().receive(1048575);
    }
    EXPECT_EQ(child.notes(), QByteArray());
    CollectingHandler handler;
    EXPECT_TRUE(child.process().read(&handler));
    EXPECT_EQ(handler.collected().size(), 8388608);
}

TEST(RunningProcess, KeepsEveryByteInOrder)
{
    RunningShell child("seq 1 300000; echo end >$0");
    child.waitForNotes(1, [&child] { child.process().receive(8388608); });
    CollectingHandler handler;
    EXPECT_TRUE(child.process().read(&handler));
    QByteArray expected;
    for (int i = 1; i <= 300000; ++i) {
        expected += QByteArray::number(i) + '\n';
    }
    EXPECT_TRUE(handler.collected() == expected) << handler.collected().size() << " bytes";
}

TEST(RunningProcess, OffersNothingMoreAfterARefusal)
{
    RunningShell child("head -c 200000 /dev/zero; echo end >$0");
    child.waitForNotes(1, [&child] { child.process().receive(8388608); });
    CollectingHandler handler(1);
    EXPECT_TRUE(child.process().read(&handler));
    EXPECT_EQ(handler.chunks(), 2);
}

struct Row
{
    const char* name;
    const char* commands;
    bool ok;
};

const Row rows[] = {
    {"WithExitCodeZero", "printf text", true},
    {"WithExitCodeOne", "printf text; exit 1", false},
    {"ByASignal", "printf text; kill -KILL $$", false},
};

class EndedChild : public testing::TestWithParam<Row>
{
};

TEST_P(EndedChild, IsJudgedWhenItIsRead)
{
    RunningShell child(GetParam().commands);
    CollectingHandler handler;
    EXPECT_EQ(child.process().read(&handler), GetParam().ok);
    EXPECT_EQ(handler.collected(), QByteArray("text"));
    EXPECT_TRUE(child.process().hasEnded());
}

TEST_P(EndedChild, IsJudgedWhenItIsReadAfterItsEndWasSeen)
{
    RunningShell child(GetParam().commands);
    ASSERT_TRUE(waitUntil([&child] {
        child.process().receive(8388608);
        return child.process().hasEnded();
    }));
    CollectingHandler handler;
    EXPECT_EQ(child.process().read(&handler), GetParam().ok);
    EXPECT_EQ(handler.collected(), QByteArray("text"));
}

INSTANTIATE_TEST_SUITE_P(RunningProcess, EndedChild, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(RunningProcess, FailsForAProgramThatDoesNotExist)
{
    RunningProcess process(QStringLiteral("no-such-program-anywhere"), {});
    process.receive(8388608);
    CollectingHandler handler;
    EXPECT_FALSE(process.read(&handler));
    EXPECT_EQ(handler.chunks(), 0);
}

TEST(RunningProcess, FailsForAnExecutableThatIsNoProgram)
{
    const TemporaryFolder folder;
    const QString program = QString::fromStdString(folder.write("data", "\177ELF nonsense"));
    QFile::setPermissions(program, QFile::ReadOwner | QFile::ExeOwner);
    RunningProcess process(program, {});
    ASSERT_TRUE(waitUntil([&process] {
        process.receive(8388608);
        return process.hasEnded();
    }));
    CollectingHandler handler;
    EXPECT_FALSE(process.read(&handler));
}

TEST(RunningProcess, IsKilledAtOnceWhenItIsNotWantedAnyMore)
{
    RunningShell child("echo $$ >>$0; exec sleep 1000");
    child.waitForNotes(1);
    const int pid = child.notes().trimmed().toInt();
    ASSERT_GT(pid, 0);
    child.end();
    EXPECT_EQ(kill(pid, 0), -1);
    EXPECT_EQ(errno, ESRCH);
}

TEST(RunningProcess, IsKilledWithAFullPipe)
{
    RunningShell child("echo $$ >>$0; exec cat /dev/zero");
    child.waitForNotes(1);
    const int pid = child.notes().trimmed().toInt();
    ASSERT_GT(pid, 0);
    child.process().receive(4194304);
    child.end();
    EXPECT_EQ(kill(pid, 0), -1);
    EXPECT_EQ(errno, ESRCH);
}

TEST(RunningProcess, ForwardsItsErrorsOnly)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    CollectingHandler handler;
    RunningProcess process(shell,
                           {QStringLiteral("-c"), QStringLiteral("printf out; printf error >&2")});
    EXPECT_TRUE(process.read(&handler));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "error");
    EXPECT_EQ(handler.collected(), QByteArray("out"));
}

} // namespace
