#include "process/RunningProcess.h"

#include "process/CollectingHandler.h"
#include "support/PrintQt.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <QFile>

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <functional>
#include <memory>
#include <thread>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

const QString shell = QStringLiteral("sh");

/// A child whose script finds a file of its own as "$0", where it can note what
/// it has done.
class RunningShell
{
public:
    explicit RunningShell(const char* commands, int acceptedChunks = -1,
                          int timeoutMs = ProcessWrapper::defaultTimeoutMs)
        : m_handler(acceptedChunks),
          m_process(std::make_unique<RunningProcess>(
              shell,
              QStringList{QStringLiteral("-c"), QString::fromUtf8(commands),
                          m_folder.qPath(QStringLiteral("notes"))},
              &m_handler, timeoutMs))
    {
    }

    RunningProcess& process() { return *m_process; }
    const CollectingHandler& handler() const { return m_handler; }
    const QByteArray& collected() const { return m_handler.collected(); }
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
    CollectingHandler m_handler;
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

QByteArray numberedLines(int last)
{
    QByteArray lines;
    for (int i = 1; i <= last; ++i) {
        lines += QByteArray::number(i) + '\n';
    }
    return lines;
}

TEST(RunningProcess, WorksBeforeItIsRead)
{
    RunningShell child("echo done >$0; printf text");
    child.waitForNotes(1);
    EXPECT_EQ(child.handler().chunks(), 0);
    EXPECT_TRUE(child.process().read());
    EXPECT_EQ(child.collected(), QByteArray("text"));
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
    EXPECT_TRUE(child.process().read());
    EXPECT_EQ(child.collected().size(), 10485760);
}

TEST(RunningProcess, ReceivesUpToALimitOfItsWholeOutput)
{
    RunningShell child(tenBlocks);
    child.waitForNotes(4, [&child] { child.process().receive(4194304); });
    EXPECT_LE(child.notes().count('\n'), 5);
    EXPECT_TRUE(waitUntil([&child] {
        child.process().receive(4194304);
        return child.collected().size() >= 4194304;
    }));
    child.process().receive(4194304);
    EXPECT_EQ(child.collected().size(), 4194304);
    EXPECT_TRUE(child.process().read());
    EXPECT_EQ(child.collected().size(), 10485760);
}

TEST(RunningProcess, ReceivesALimitThatIsNoMultipleOfAnything)
{
    RunningShell child("head -c 100100 /dev/zero; echo end >$0; exec sleep 1000");
    child.waitForNotes(1, [&child] { child.process().receive(100001); });
    child.process().receive(100001);
    EXPECT_EQ(child.collected().size(), 100001);
    child.process().receive(100000);
    EXPECT_EQ(child.collected().size(), 100001);
}

TEST(RunningProcess, ReceivesWithoutWaiting)
{
    RunningShell child("exec sleep 1000");
    child.process().receive(8388608);
    EXPECT_EQ(child.handler().chunks(), 0);
    EXPECT_FALSE(child.process().hasEnded());
}

TEST(RunningProcess, KeepsEveryByteInOrder)
{
    RunningShell child("seq 1 300000; echo end >$0");
    child.waitForNotes(1, [&child] { child.process().receive(1000000); });
    EXPECT_TRUE(child.process().read());
    EXPECT_TRUE(child.collected() == numberedLines(300000)) << child.collected().size() << " bytes";
}

TEST(RunningProcess, LosesNothingWhenTheChildEndsRightAfterItsOutput)
{
    for (int i = 0; i < 100; ++i) {
        RunningShell child("exec head -c 70000 /dev/zero");
        ASSERT_TRUE(child.process().read());
        ASSERT_EQ(child.collected().size(), 70000) << "run " << i;
    }
}

TEST(RunningProcess, OffersNothingMoreAfterARefusal)
{
    RunningShell child("head -c 200000 /dev/zero; echo end >$0", 1);
    child.waitForNotes(1, [&child] { child.process().receive(8388608); });
    EXPECT_TRUE(child.process().read());
    EXPECT_EQ(child.handler().chunks(), 2);
}

TEST(RunningProcess, LetsTheChildWriteMoreThanAPipeHoldsAfterARefusal)
{
    RunningShell child("head -c 3000000 /dev/zero; echo end >$0; exit 3", 0);
    EXPECT_FALSE(child.process().read());
    EXPECT_TRUE(child.process().hasEnded());
    EXPECT_EQ(child.notes(), QByteArray("end\n"));
    EXPECT_EQ(child.handler().chunks(), 1);
}

TEST(RunningProcess, NeedsNoHandler)
{
    RunningProcess process(
        shell, {QStringLiteral("-c"), QStringLiteral("head -c 3000000 /dev/zero; exit 3")},
        nullptr);
    process.receive(8388608);
    EXPECT_FALSE(process.read());
    EXPECT_TRUE(process.hasEnded());
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
    {"AfterItsOutput", "printf text; exec >&-; sleep 0.2; exit 1", false},
};

class EndedChild : public testing::TestWithParam<Row>
{
};

TEST_P(EndedChild, IsJudgedWhenItIsRead)
{
    RunningShell child(GetParam().commands);
    EXPECT_EQ(child.process().read(), GetParam().ok);
    EXPECT_EQ(child.collected(), QByteArray("text"));
    EXPECT_TRUE(child.process().hasEnded());
}

TEST_P(EndedChild, IsJudgedWhenItIsReadAfterItsOutputWasReceived)
{
    RunningShell child(GetParam().commands);
    ASSERT_TRUE(waitUntil([&child] {
        child.process().receive(8388608);
        return child.collected().size() == 4;
    }));
    child.process().receive(8388608);
    EXPECT_EQ(child.process().read(), GetParam().ok);
    EXPECT_EQ(child.collected(), QByteArray("text"));
    EXPECT_TRUE(child.process().hasEnded());
}

INSTANTIATE_TEST_SUITE_P(RunningProcess, EndedChild, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

// The child of the child holds the pipe, and goes away when the test does.
TEST(RunningProcess, EndsWithTheChildAndNotWithAnotherThatHoldsItsOutput)
{
    RunningShell child("sleep 1000 & echo $! >$0; printf text");
    EXPECT_TRUE(child.process().read());
    EXPECT_TRUE(child.process().hasEnded());
    EXPECT_EQ(child.collected(), QByteArray("text"));
    const int pid = child.notes().trimmed().toInt();
    ASSERT_GT(pid, 0);
    EXPECT_EQ(kill(pid, SIGKILL), 0);
}

// The time that every wait may take.

TEST(RunningProcess, CountsTheWaitsFromTheRead)
{
    RunningShell child("head -c 3000000 /dev/zero; exit 3", -1, 1000);
    std::this_thread::sleep_for(std::chrono::milliseconds(1500));
    EXPECT_FALSE(child.process().read());
    EXPECT_TRUE(child.process().hasEnded());
    EXPECT_EQ(child.collected().size(), 3000000);
}

TEST(RunningProcess, GivesEveryPieceAWaitOfItsOwn)
{
    RunningShell child("for i in 1 2 3 4 5 6 7 8; do printf $i; sleep 0.2; done", -1, 1200);
    EXPECT_TRUE(child.process().read());
    EXPECT_EQ(child.collected(), QByteArray("12345678"));
}

TEST(RunningProcess, SucceedsWithWhatHasComeWhenTheChildIsStillRunning)
{
    RunningShell child("printf part; exec sleep 1000", -1, 500);
    EXPECT_TRUE(child.process().read());
    EXPECT_EQ(child.collected(), QByteArray("part"));
    EXPECT_FALSE(child.process().hasEnded());
}

TEST(RunningProcess, SucceedsWhenAChildThatClosedItsOutputIsStillRunning)
{
    RunningShell child("printf part; exec >&-; exec sleep 1000", -1, 500);
    EXPECT_TRUE(child.process().read());
    EXPECT_EQ(child.collected(), QByteArray("part"));
    EXPECT_FALSE(child.process().hasEnded());
}

TEST(RunningProcess, SucceedsWhenAChildThatWasRefusedWritesOnForEver)
{
    RunningShell child("exec cat /dev/zero", 0, 500);
    EXPECT_TRUE(child.process().read());
    EXPECT_EQ(child.collected(), QByteArray());
    EXPECT_FALSE(child.process().hasEnded());
}

// Its receiver has been told by then that this was all.
TEST(RunningProcess, DropsWhatComesDuringTheLastWaitButNotTheFailure)
{
    RunningShell child("printf part; sleep 4.5; printf late; exit 1", -1, 3000);
    EXPECT_FALSE(child.process().read());
    EXPECT_EQ(child.collected(), QByteArray("part"));
}

// No child.

TEST(RunningProcess, FailsForAProgramThatDoesNotExist)
{
    CollectingHandler handler;
    RunningProcess process(QStringLiteral("no-such-program-anywhere"), {}, &handler);
    process.receive(8388608);
    EXPECT_FALSE(process.read());
    EXPECT_EQ(handler.chunks(), 0);
}

TEST(RunningProcess, FailsForAnExecutableThatIsNoProgram)
{
    const TemporaryFolder folder;
    const QString program = QString::fromStdString(folder.write("data", "\177ELF nonsense"));
    QFile::setPermissions(program, QFile::ReadOwner | QFile::ExeOwner);
    CollectingHandler handler;
    RunningProcess process(program, {}, &handler);
    process.receive(8388608);
    EXPECT_FALSE(process.read());
    EXPECT_TRUE(process.hasEnded());
}

TEST(RunningProcess, FailsWithoutAPipe)
{
    struct rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    rlimit none = before;
    none.rlim_cur = 0;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    CollectingHandler handler;
    RunningProcess process(shell, {QStringLiteral("-c"), QStringLiteral("exit 0")}, &handler);
    EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    process.receive(8388608);
    EXPECT_FALSE(process.read());
    EXPECT_TRUE(process.hasEnded());
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
    RunningShell child("printf out; printf error >&2");
    EXPECT_TRUE(child.process().read());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "error");
    EXPECT_EQ(child.collected(), QByteArray("out"));
}

} // namespace
