#include "process/ChildProcess.h"

#include "support/PrintQt.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <functional>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// A copy of the test program that plays a role and never returns from it.
class Helper
{
public:
    explicit Helper(const std::function<int()>& role) : m_pid(fork())
    {
        if (m_pid == 0) {
            _exit(role());
        }
    }

    ~Helper()
    {
        end();
        wait();
    }

    Helper(const Helper&) = delete;
    Helper& operator=(const Helper&) = delete;

    /// Kills the process unless it has been waited for already.
    void end() const
    {
        // Negative numbers and 0 would stand for many processes at once.
        if (m_pid > 0) {
            kill(m_pid, SIGKILL);
        }
    }

    /// The exit code of the role; -1 if a signal ended it.
    int wait()
    {
        int status = 0;
        if (m_pid > 0 && waitpid(m_pid, &status, 0) == m_pid) {
            m_pid = -1;
        }
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    pid_t m_pid;
};

/// A pipe of which every process started from here holds the writing end.
class LifeLine
{
public:
    LifeLine() { EXPECT_EQ(pipe(m_ends), 0); }

    ~LifeLine()
    {
        close(m_ends[0]);
        letGo();
    }

    LifeLine(const LifeLine&) = delete;
    LifeLine& operator=(const LifeLine&) = delete;

    /// Closes the writing end of this process.
    void letGo()
    {
        if (m_ends[1] >= 0) {
            close(m_ends[1]);
            m_ends[1] = -1;
        }
    }

    /// Sends the id of a process to the reading end.
    void report(pid_t pid) const
    {
        if (write(m_ends[1], &pid, sizeof pid) != sizeof pid) {
            _exit(EXIT_FAILURE);
        }
    }

    pid_t awaitReport() const
    {
        pid_t pid = -1;
        const ssize_t size = read(m_ends[0], &pid, sizeof pid);
        EXPECT_EQ(size, static_cast<ssize_t>(sizeof pid));
        return pid;
    }

    /// True if all other processes are gone within the time.
    bool breaksWithin(int milliseconds) const
    {
        pollfd end{m_ends[0], POLLIN, 0};
        return poll(&end, 1, milliseconds) == 1 && (end.revents & POLLHUP) != 0;
    }

private:
    int m_ends[2] = {-1, -1};
};

const QStringList sixtySeconds{QStringLiteral("60")};

TEST(ChildProcess, DiesWithItsParentHoweverThatDies)
{
    LifeLine lifeLine;
    Helper parent([&lifeLine] {
        ChildProcess child(QProcess::ForwardedErrorChannel);
        child.start(QStringLiteral("sleep"), sixtySeconds);
        child.waitForStarted();
        lifeLine.report(static_cast<pid_t>(child.processId()));
        pause();
        return EXIT_SUCCESS;
    });
    lifeLine.letGo();
    const pid_t child = lifeLine.awaitReport();
    ASSERT_GT(child, 0);
    EXPECT_FALSE(lifeLine.breaksWithin(100));

    parent.end();
    EXPECT_TRUE(lifeLine.breaksWithin(10000));
    if (HasFailure()) {
        kill(child, SIGKILL);
    }
}

TEST(ChildProcess, DoesNotStartWhenItsParentIsAlreadyGone)
{
    // Started from another process than the one that made it, the child finds
    // a parent that it does not know.
    ChildProcess child(QProcess::SeparateChannels);
    Helper stranger([&child] {
        child.start(QStringLiteral("sh"), {QStringLiteral("-c"), QStringLiteral("exit 7")});
        child.waitForFinished();
        return child.exitCode();
    });
    EXPECT_EQ(stranger.wait(), 1);
}

TEST(ChildProcess, RunsAProgramLikeAnyOther)
{
    ChildProcess child(QProcess::SeparateChannels);
    child.start(QStringLiteral("printf"), {QStringLiteral("text")});
    EXPECT_TRUE(child.waitForFinished());
    EXPECT_EQ(child.readAllStandardOutput(), QByteArray("text"));
}

TEST(ChildProcess, SendsItsOutputToTheDescriptorItWasGiven)
{
    int ends[2] = {-1, -1};
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    {
        ChildProcess child(ends[1]);
        child.start(QStringLiteral("printf"), {QStringLiteral("text")});
        EXPECT_TRUE(child.waitForFinished());
        EXPECT_EQ(child.readAllStandardOutput(), QByteArray());
    }
    close(ends[1]);
    char text[8] = {};
    EXPECT_EQ(read(ends[0], text, sizeof text), 4);
    EXPECT_STREQ(text, "text");
    close(ends[0]);
}

TEST(ChildProcess, DoesNotStartWithADescriptorThatIsClosed)
{
    constexpr int closed = 1000000;
    ChildProcess child(closed);
    child.start(QStringLiteral("sh"), {QStringLiteral("-c"), QStringLiteral("exit 7")});
    EXPECT_TRUE(child.waitForFinished());
    EXPECT_EQ(child.exitCode(), 1);
}

TEST(ChildProcess, HasTheChannelModeItWasGiven)
{
    EXPECT_EQ(ChildProcess(QProcess::ForwardedChannels).processChannelMode(),
              QProcess::ForwardedChannels);
    EXPECT_EQ(ChildProcess(QProcess::ForwardedErrorChannel).processChannelMode(),
              QProcess::ForwardedErrorChannel);
}

} // namespace
