#include "qt/PreparedProcess.h"

#include "support/PrintQt.h"

#include <gtest/gtest.h>

#include <csignal>
#include <functional>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

class PreparedBy final : public PreparedProcess
{
public:
    explicit PreparedBy(std::function<void()> work) : m_work(std::move(work)) {}

    QByteArray outputOf(const char* commands)
    {
        start(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), QString::fromLatin1(commands)});
        EXPECT_TRUE(waitForFinished());
        return readAllStandardOutput();
    }

protected:
    void prepareChild() override { m_work(); }

private:
    std::function<void()> m_work;
};

TEST(PreparedProcess, IsPreparedInTheChild)
{
    PreparedBy process([] { static_cast<void>(chdir("/usr")); });
    EXPECT_EQ(process.outputOf("pwd"), QByteArray("/usr\n"));
}

TEST(PreparedProcess, HasItsStandardStreamsByThen)
{
    PreparedBy process([] { static_cast<void>(write(STDOUT_FILENO, "first ", 6)); });
    EXPECT_EQ(process.outputOf("echo second"), QByteArray("first second\n"));
}

TEST(PreparedProcess, RunsWithTheEnvironmentOfItsPreparation)
{
    static char variable[] = "MORVALTIDE_TEST_CHILD=1";
    static char* environment[] = {variable, nullptr};
    char** const before = environ;
    PreparedBy process([] { environ = environment; });
    EXPECT_EQ(process.outputOf("echo $MORVALTIDE_TEST_CHILD"), QByteArray("1\n"));
    environ = before;
}

TEST(PreparedProcess, HasDescriptorsSignalsAndLimitsOfItsOwn)
{
    PreparedBy process([] {
        close(STDIN_FILENO);
        signal(SIGUSR1, SIG_IGN);
        sigset_t signals;
        sigemptyset(&signals);
        sigaddset(&signals, SIGUSR2);
        sigprocmask(SIG_BLOCK, &signals, nullptr);
        const rlimit limit{0, 0};
        setrlimit(RLIMIT_CORE, &limit);
        prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    });
    EXPECT_EQ(process.outputOf("grep NoNewPrivs /proc/self/status"),
              QByteArray("NoNewPrivs:\t1\n"));

    EXPECT_NE(fcntl(STDIN_FILENO, F_GETFD), -1);
    EXPECT_EQ(signal(SIGUSR1, SIG_DFL), SIG_DFL);
    sigset_t mask;
    sigprocmask(SIG_BLOCK, nullptr, &mask);
    EXPECT_EQ(sigismember(&mask, SIGUSR2), 0);
    rlimit limit{};
    getrlimit(RLIMIT_CORE, &limit);
    EXPECT_NE(limit.rlim_max, 0U);
    EXPECT_EQ(prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0), 0);
}

TEST(PreparedProcess, EndsWithWhatThePreparationSays)
{
    PreparedBy process([] { _exit(7); });
    EXPECT_EQ(process.outputOf("echo nothing"), QByteArray());
    EXPECT_EQ(process.exitCode(), 7);
}

} // namespace
