#include "process/ProcessWrapper.h"

#include "process/CollectingHandler.h"
#include "qt/PreparedProcess.h"
#include "support/PrintQt.h"
#include "support/SearchPath.h"
#include "support/TemporaryFolder.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>

#include <gtest/gtest.h>

#include <csignal>
#include <ostream>
#include <string>

#include <sys/types.h>
#include <unistd.h>

namespace {

const QString shell = QStringLiteral("sh");

QStringList script(const char* commands)
{
    return {QStringLiteral("-c"), QString::fromUtf8(commands)};
}

enum class Overload
{
    ignoresOutput,
    collectsOutput,
    streamsOutput,
    streamsToNobody
};

/// Runs a program by one of the overloads; the output, where it is asked for,
/// is what the overload hands out.
class ChildRun
{
public:
    explicit ChildRun(Overload overload, int timeoutMs = ProcessWrapper::defaultTimeoutMs)
        : m_overload(overload),
          m_wrapper(m_process, timeoutMs)
    {
    }

    bool execute(const QString& program, const QStringList& arguments)
    {
        switch (m_overload) {
        case Overload::ignoresOutput:
            return m_wrapper.execute(program, arguments);
        case Overload::collectsOutput:
            return m_wrapper.execute(program, arguments, &m_output);
        case Overload::streamsOutput:
            return m_wrapper.execute(program, arguments, &m_handler);
        case Overload::streamsToNobody:
            break;
        }
        return m_wrapper.execute(program, arguments, static_cast<ProcessOutputHandler*>(nullptr));
    }

    bool execute(const char* commands) { return execute(shell, script(commands)); }

    QByteArray output() const
    {
        return m_overload == Overload::streamsOutput ? m_handler.collected() : m_output;
    }

private:
    Overload m_overload;
    QProcess m_process;
    ProcessWrapper m_wrapper;
    QByteArray m_output;
    CollectingHandler m_handler;
};

std::string nameOf(Overload overload)
{
    switch (overload) {
    case Overload::ignoresOutput:
        return "IgnoringOutput";
    case Overload::collectsOutput:
        return "CollectingOutput";
    case Overload::streamsOutput:
        return "StreamingOutput";
    case Overload::streamsToNobody:
        break;
    }
    return "StreamingToNobody";
}

void PrintTo(Overload overload, std::ostream* stream)
{
    *stream << nameOf(overload);
}

class EveryOverload : public testing::TestWithParam<Overload>
{
protected:
    ChildRun m_run{GetParam()};
};

TEST_P(EveryOverload, SucceedsWithExitCodeZero)
{
    EXPECT_TRUE(m_run.execute("exit 0"));
}

TEST_P(EveryOverload, FailsWithExitCodeOneAfterGoodOutput)
{
    EXPECT_FALSE(m_run.execute("echo good; exit 1"));
}

TEST_P(EveryOverload, FailsWithExitCode255)
{
    EXPECT_FALSE(m_run.execute("exit 255"));
}

TEST_P(EveryOverload, FailsWhenASignalKillsTheChild)
{
    EXPECT_FALSE(m_run.execute("echo good; kill -KILL $$"));
}

TEST_P(EveryOverload, FailsWhenTheChildCrashes)
{
    EXPECT_FALSE(m_run.execute("ulimit -c 0; kill -SEGV $$"));
}

TEST_P(EveryOverload, FailsForAProgramThatDoesNotExist)
{
    EXPECT_FALSE(m_run.execute(QStringLiteral("no-such-program-anywhere"), {}));
    EXPECT_EQ(m_run.output(), QByteArray());
}

TEST_P(EveryOverload, FailsForAnEmptySearchPath)
{
    const SearchPath nowhere("/nonexistent");
    EXPECT_FALSE(m_run.execute("exit 0"));
}

TEST_P(EveryOverload, FailsForAFileThatIsNotExecutable)
{
    const TemporaryFolder folder;
    folder.write("data", "#!/bin/sh\nexit 0\n");
    EXPECT_FALSE(m_run.execute(folder.qPath(QStringLiteral("data")), {}));
}

TEST_P(EveryOverload, FailsForAnExecutableThatIsNoProgram)
{
    const TemporaryFolder folder;
    const QString program = QString::fromStdString(folder.write("data", "\177ELF nonsense"));
    QFile::setPermissions(program, QFile::ReadOwner | QFile::ExeOwner);
    EXPECT_FALSE(m_run.execute(program, {}));
}

TEST_P(EveryOverload, CanBeUsedAgainAfterAFailure)
{
    EXPECT_FALSE(m_run.execute("kill -KILL $$"));
    EXPECT_FALSE(m_run.execute(QStringLiteral("no-such-program-anywhere"), {}));
    EXPECT_TRUE(m_run.execute("exit 0"));
}

TEST_P(EveryOverload, SurvivesMoreOutputThanAPipeHolds)
{
    EXPECT_TRUE(m_run.execute("head -c 1000000 /dev/zero"));
}

TEST_P(EveryOverload, SurvivesMoreErrorOutputThanAPipeHolds)
{
    EXPECT_TRUE(m_run.execute("head -c 1000000 /dev/zero >&2"));
}

INSTANTIATE_TEST_SUITE_P(ProcessWrapper, EveryOverload,
                         testing::Values(Overload::ignoresOutput, Overload::collectsOutput,
                                         Overload::streamsOutput, Overload::streamsToNobody),
                         [](const auto& test) { return nameOf(test.param); });

class EveryOverloadWithOutput : public EveryOverload
{
};

TEST_P(EveryOverloadWithOutput, ReceivesEveryByteInOrder)
{
    EXPECT_TRUE(m_run.execute("seq 1 50000"));
    QByteArray expected;
    for (int i = 1; i <= 50000; ++i) {
        expected += QByteArray::number(i) + '\n';
    }
    EXPECT_TRUE(m_run.output() == expected) << m_run.output().size() << " bytes";
}

TEST_P(EveryOverloadWithOutput, LosesNothingWhenTheChildEndsRightAfterItsOutput)
{
    for (int i = 0; i < 100; ++i) {
        ChildRun run(GetParam());
        ASSERT_TRUE(
            run.execute(QStringLiteral("head"), {QStringLiteral("-c"), QStringLiteral("70000"),
                                                 QStringLiteral("/dev/zero")}));
        ASSERT_EQ(run.output().size(), 70000) << "run " << i;
    }
}

TEST_P(EveryOverloadWithOutput, LosesNothingOfAnOutputOfOneByte)
{
    for (int i = 0; i < 100; ++i) {
        ChildRun run(GetParam());
        ASSERT_TRUE(run.execute(QStringLiteral("printf"), {QStringLiteral("x")}));
        ASSERT_EQ(run.output(), QByteArray("x")) << "run " << i;
    }
}

TEST_P(EveryOverloadWithOutput, LeavesErrorOutputOut)
{
    EXPECT_TRUE(m_run.execute("echo out; echo error >&2"));
    EXPECT_EQ(m_run.output(), QByteArray("out\n"));
}

TEST_P(EveryOverloadWithOutput, PassesArgumentsAsTheyAre)
{
    EXPECT_TRUE(m_run.execute(QStringLiteral("printf"),
                              {QStringLiteral("[%s]"), QStringLiteral("two words"), QString(),
                               QStringLiteral("$HOME `id` \"'"), QStringLiteral("*"),
                               QString::fromUtf8("\u00e9")}));
    EXPECT_EQ(m_run.output(), QByteArray("[two words][][$HOME `id` \"'][*][\xc3\xa9]"));
}

TEST_P(EveryOverloadWithOutput, InheritsEnvironmentAndWorkingFolder)
{
    qputenv("MORVALTIDE_TEST_VARIABLE", "inherited");
    EXPECT_TRUE(m_run.execute("printf '%s ' \"$MORVALTIDE_TEST_VARIABLE\"; pwd -P"));
    qunsetenv("MORVALTIDE_TEST_VARIABLE");
    EXPECT_EQ(m_run.output(), "inherited " + QFile::encodeName(QDir().canonicalPath()) + '\n');
}

INSTANTIATE_TEST_SUITE_P(ProcessWrapper, EveryOverloadWithOutput,
                         testing::Values(Overload::collectsOutput, Overload::streamsOutput),
                         [](const auto& test) { return nameOf(test.param); });

TEST(ProcessWrapper, GivesAChildTheSignalMaskOfTheProgram)
{
    const QString pattern = QStringLiteral("^SigBlk");
    const QString file = QStringLiteral("/proc/self/status");
    QByteArray output;
    ASSERT_TRUE(ProcessWrapper::executeProcess(QStringLiteral("grep"), {pattern, file}, &output));
    QFile status(file);
    ASSERT_TRUE(status.open(QIODevice::ReadOnly));
    EXPECT_TRUE(output.startsWith("SigBlk:\t"));
    EXPECT_TRUE(status.readAll().contains(output));
}

TEST(ProcessWrapper, LeavesTheSignalMaskOfTheProgramAsItWas)
{
    sigset_t before;
    sigprocmask(SIG_BLOCK, nullptr, &before);
    EXPECT_TRUE(ProcessWrapper::executeProcess(shell, script("exit 0")));
    sigset_t after;
    sigprocmask(SIG_BLOCK, nullptr, &after);
    for (int number = 1; number <= SIGRTMAX; ++number) {
        EXPECT_EQ(sigismember(&after, number), sigismember(&before, number)) << number;
    }
}

TEST(ProcessWrapper, ReplacesTheOutputOfAnEarlierRun)
{
    QProcess process;
    QByteArray output = "before";
    EXPECT_TRUE(ProcessWrapper(process).execute(shell, script("printf after"), &output));
    EXPECT_EQ(output, QByteArray("after"));
}

TEST(ProcessWrapper, EmptiesTheOutputOfASilentRun)
{
    QProcess process;
    QByteArray output = "before";
    EXPECT_TRUE(ProcessWrapper(process).execute(shell, script("exit 0"), &output));
    EXPECT_EQ(output, QByteArray());
}

TEST(ProcessWrapper, LeavesTheOutputUntouchedOnFailure)
{
    QProcess process;
    QByteArray output = "before";
    EXPECT_FALSE(ProcessWrapper(process).execute(shell, script("echo good; exit 1"), &output));
    EXPECT_EQ(output, QByteArray("before"));
}

TEST(ProcessWrapper, NeedsNoPlaceForTheCollectedOutput)
{
    QProcess process;
    EXPECT_TRUE(ProcessWrapper(process).execute(shell, script("echo good"),
                                                static_cast<QByteArray*>(nullptr)));
}

TEST(ProcessWrapper, StreamsTheOutputThatCameBeforeAFailure)
{
    QProcess process;
    CollectingHandler handler;
    EXPECT_FALSE(ProcessWrapper(process).execute(shell, script("printf good; exit 1"), &handler));
    EXPECT_EQ(handler.collected(), QByteArray("good"));
}

TEST(ProcessWrapper, GivesASilentChildNoChunk)
{
    QProcess process;
    CollectingHandler handler;
    EXPECT_TRUE(ProcessWrapper(process).execute(shell, script("exit 0"), &handler));
    EXPECT_EQ(handler.chunks(), 0);
}

TEST(ProcessWrapper, OffersNothingMoreAfterARefusal)
{
    QProcess process;
    CollectingHandler handler(1);
    const char* const commands = "echo 1; sleep 0.5; echo 2; sleep 0.2; echo 3";
    EXPECT_TRUE(ProcessWrapper(process).execute(shell, script(commands), &handler));
    EXPECT_EQ(handler.collected(), QByteArray("1\n"));
    EXPECT_EQ(handler.chunks(), 2);
}

TEST(ProcessWrapper, LetsTheChildRunOnAfterARefusal)
{
    QProcess process;
    CollectingHandler handler(0);
    const char* const commands = "printf x; sleep 0.2; exit 3";
    EXPECT_FALSE(ProcessWrapper(process).execute(shell, script(commands), &handler));
    EXPECT_EQ(process.exitCode(), 3);
}

TEST(ProcessWrapper, LetsTheChildWriteMoreThanAPipeHoldsAfterARefusal)
{
    QProcess process;
    CollectingHandler handler(0);
    const char* const commands = "printf x; sleep 0.1; head -c 1000000 /dev/zero";
    EXPECT_TRUE(ProcessWrapper(process).execute(shell, script(commands), &handler));
    EXPECT_EQ(process.state(), QProcess::NotRunning);
}

TEST(ProcessWrapper, WaitsForTheExitOfAChildThatClosedItsOutput)
{
    QProcess process;
    CollectingHandler handler;
    const char* const commands = "printf x; exec >&-; sleep 0.2; exit 1";
    EXPECT_FALSE(ProcessWrapper(process).execute(shell, script(commands), &handler));
    EXPECT_EQ(handler.collected(), QByteArray("x"));
}

TEST(ProcessWrapper, FailsWhenAnIgnoredChildIsStillRunning)
{
    QProcess process;
    EXPECT_FALSE(ProcessWrapper(process, 500).execute(shell, script("exec sleep 60")));
    EXPECT_EQ(process.state(), QProcess::Running);
}

TEST(ProcessWrapper, FailsWhenACollectedChildIsStillRunning)
{
    QProcess process;
    QByteArray output = "before";
    const char* const commands = "echo good; exec sleep 60";
    EXPECT_FALSE(ProcessWrapper(process, 500).execute(shell, script(commands), &output));
    EXPECT_EQ(output, QByteArray("before"));
}

TEST(ProcessWrapper, SucceedsWhenAStreamedChildIsStillRunning)
{
    QProcess process;
    CollectingHandler handler;
    const char* const commands = "printf part; exec sleep 60";
    EXPECT_TRUE(ProcessWrapper(process, 1000).execute(shell, script(commands), &handler));
    EXPECT_EQ(handler.collected(), QByteArray("part"));
    EXPECT_EQ(process.state(), QProcess::Running);
}

TEST(ProcessWrapper, SucceedsWhenAChildThatNobodyListensToIsStillRunning)
{
    QProcess process;
    EXPECT_TRUE(
        ProcessWrapper(process, 500)
            .execute(shell, script("exec sleep 60"), static_cast<ProcessOutputHandler*>(nullptr)));
}

TEST(ProcessWrapper, SucceedsWhenAChildThatWasRefusedIsStillRunning)
{
    QProcess process;
    CollectingHandler handler(0);
    const char* const commands = "printf x; exec sleep 60";
    EXPECT_TRUE(ProcessWrapper(process, 1000).execute(shell, script(commands), &handler));
    EXPECT_EQ(handler.collected(), QByteArray());
}

TEST(ProcessWrapper, FailsWhenAStreamedChildFailsDuringTheLastWait)
{
    QProcess process;
    CollectingHandler handler;
    const char* const commands = "printf part; sleep 2.2; exit 1";
    EXPECT_FALSE(ProcessWrapper(process, 1500).execute(shell, script(commands), &handler));
    EXPECT_EQ(handler.collected(), QByteArray("part"));
}

TEST(ProcessWrapper, GivesEveryChunkAWaitOfItsOwn)
{
    QProcess process;
    CollectingHandler handler;
    QElapsedTimer timer;
    timer.start();
    const char* const commands = "for i in 1 2 3 4 5 6 7 8; do printf $i; sleep 0.2; done";
    EXPECT_TRUE(ProcessWrapper(process, 1200).execute(shell, script(commands), &handler));
    EXPECT_EQ(handler.collected(), QByteArray("12345678"));
    EXPECT_GT(timer.elapsed(), 1200);
}

TEST(ProcessWrapper, WaitsThirtySecondsByDefault)
{
    EXPECT_EQ(ProcessWrapper::defaultTimeoutMs, 30000);
}

/// What a static form leaves on the two output streams of the program.
struct Streams
{
    bool ok;
    std::string out;
    std::string error;
};

template <typename... Place>
Streams executeProcess(const char* commands, Place... place)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const bool ok = ProcessWrapper::executeProcess(shell, script(commands), place...);
    return {ok, testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
}

TEST(ProcessWrapperStatic, ForwardsBothStreamsWithoutAPlaceForTheOutput)
{
    const Streams streams = executeProcess("printf out; printf error >&2");
    EXPECT_TRUE(streams.ok);
    EXPECT_EQ(streams.out, "out");
    EXPECT_EQ(streams.error, "error");
}

TEST(ProcessWrapperStatic, CollectsTheOutputAndForwardsTheErrors)
{
    QByteArray output;
    const Streams streams = executeProcess("printf out; printf error >&2", &output);
    EXPECT_TRUE(streams.ok);
    EXPECT_EQ(output, QByteArray("out"));
    EXPECT_EQ(streams.out, "");
    EXPECT_EQ(streams.error, "error");
}

TEST(ProcessWrapperStatic, StreamsTheOutputAndForwardsTheErrors)
{
    CollectingHandler handler;
    ProcessOutputHandler* const place = &handler;
    const Streams streams = executeProcess("printf out; printf error >&2", place);
    EXPECT_TRUE(streams.ok);
    EXPECT_EQ(handler.collected(), QByteArray("out"));
    EXPECT_EQ(streams.out, "");
    EXPECT_EQ(streams.error, "error");
}

TEST(ProcessWrapperStatic, PrintsNothingOfItsOwnOnFailure)
{
    QByteArray output = "before";
    const Streams streams = executeProcess("exit 1", &output);
    EXPECT_FALSE(streams.ok);
    EXPECT_EQ(output, QByteArray("before"));
    EXPECT_EQ(streams.out, "");
    EXPECT_EQ(streams.error, "");
}

TEST(ProcessWrapperStatic, FailsForAProgramThatDoesNotExist)
{
    const QString program = QStringLiteral("no-such-program-anywhere");
    QByteArray output;
    CollectingHandler handler;
    EXPECT_FALSE(ProcessWrapper::executeProcess(program, {}));
    EXPECT_FALSE(ProcessWrapper::executeProcess(program, {}, &output));
    EXPECT_FALSE(ProcessWrapper::executeProcess(program, {}, &handler));
}

TEST(ProcessWrapperStatic, FailsWhenASignalKillsTheChild)
{
    QByteArray output;
    CollectingHandler handler;
    const QStringList commands = script("printf x; kill -KILL $$");
    EXPECT_FALSE(ProcessWrapper::executeProcess(shell, commands, &output));
    EXPECT_FALSE(ProcessWrapper::executeProcess(shell, commands, &handler));
    EXPECT_EQ(output, QByteArray());
    EXPECT_EQ(handler.collected(), QByteArray("x"));
}

class ChildOfOtherEnvironment final : public PreparedProcess
{
protected:
    void prepareChild() override
    {
        static char variable[] = "MORVALTIDE_TEST_CHILD=1";
        static char* environment[] = {variable, nullptr};
        environ = environment;
    }
};

TEST(ProcessWrapper, KeepsTheEnvironmentThatAChildDoesNotGet)
{
    char** const before = environ;
    ChildOfOtherEnvironment process;
    QByteArray output;
    EXPECT_TRUE(ProcessWrapper(process).execute(QStringLiteral("/bin/sh"),
                                                script("echo $MORVALTIDE_TEST_CHILD"), &output));
    EXPECT_EQ(output, QByteArray("1\n"));
    EXPECT_EQ(environ, before);
    EXPECT_FALSE(qEnvironmentVariableIsSet("MORVALTIDE_TEST_CHILD"));
}

} // namespace
