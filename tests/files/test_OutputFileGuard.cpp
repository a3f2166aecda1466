#include "files/OutputFileGuard.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Calls itself until the stack is used up.
int fillStack(int depth) // NOLINT(misc-no-recursion)
{
    volatile char frame[1024];
    frame[0] = static_cast<char>(depth);
    return depth == 0 ? 0 : fillStack(depth + 1) + frame[0];
}

class OutputFileGuardTest : public testing::Test
{
protected:
    ~OutputFileGuardTest() override
    {
        if (m_descriptor >= 0) {
            close(m_descriptor);
        }
    }

    std::string path(const std::string& fileName) const { return m_folder.path(fileName); }

    const TemporaryFolder& folder() const { return m_folder; }

    // Opens a file as the TIFF writer does, and keeps it open until the end.
    int open(const std::string& fileName)
    {
        m_descriptor = ::open(path(fileName).c_str(), O_RDWR | O_CREAT | O_TRUNC, 0600);
        return m_descriptor;
    }

    bool exists(const std::string& fileName) const
    {
        struct stat info = {};
        return lstat(path(fileName).c_str(), &info) == 0;
    }

    void link(const std::string& target, const std::string& fileName) const
    {
        ASSERT_EQ(symlink(target.c_str(), path(fileName).c_str()), 0);
    }

    // Opens the file under the eyes of a guard that is given up at once.
    void openAndFail(const std::string& fileName)
    {
        OutputFileGuard guard(path(fileName));
        guard.opened(open(fileName));
    }

private:
    TemporaryFolder m_folder;
    int m_descriptor = -1;
};

class FailedOutput : public OutputFileGuardTest
{
};

TEST_F(FailedOutput, IsRemoved)
{
    openAndFail("out");
    EXPECT_FALSE(exists("out"));
}

TEST_F(FailedOutput, IsRemovedAlthoughItWasThereBefore)
{
    folder().write("out", "old");
    openAndFail("out");
    EXPECT_FALSE(exists("out"));
}

TEST_F(FailedOutput, IsRemovedWhenAnExceptionPasses)
{
    try {
        OutputFileGuard guard(path("out"));
        guard.opened(open("out"));
        throw std::runtime_error("out of luck");
    } catch (const std::runtime_error&) {
        EXPECT_FALSE(exists("out"));
    }
}

TEST_F(FailedOutput, IsRemovedTogetherWithTheLinkToIt)
{
    link("target", "out");
    openAndFail("out");
    EXPECT_FALSE(exists("out"));
    EXPECT_FALSE(exists("target"));
}

TEST_F(FailedOutput, IsRemovedAtTheEndOfAChainOfLinks)
{
    link("target", "middle");
    link("middle", "out");
    openAndFail("out");
    EXPECT_FALSE(exists("out"));
    EXPECT_FALSE(exists("target"));
}

TEST_F(FailedOutput, IsRemovedThoughItsNameIsNotUtf8)
{
    folder().write("out\xef\xbf\xbd", "other");
    openAndFail("out\xff");
    EXPECT_FALSE(exists("out\xff"));
    EXPECT_TRUE(exists("out\xef\xbf\xbd"));
}

TEST_F(FailedOutput, IsNotRemovedIfItIsAFifo)
{
    ASSERT_EQ(mkfifo(path("out").c_str(), 0600), 0);
    openAndFail("out");
    EXPECT_TRUE(exists("out"));
}

TEST_F(FailedOutput, IsNotRemovedIfItIsALinkToAFifo)
{
    ASSERT_EQ(mkfifo(path("target").c_str(), 0600), 0);
    link("target", "out");
    openAndFail("out");
    EXPECT_TRUE(exists("out"));
    EXPECT_TRUE(exists("target"));
}

TEST_F(FailedOutput, IsNotRemovedIfItIsALinkToADevice)
{
    link("/dev/null", "out");
    openAndFail("out");
    EXPECT_TRUE(exists("out"));
    EXPECT_EQ(access("/dev/null", F_OK), 0);
}

TEST_F(FailedOutput, LosesNeitherItsNameNorItsContentToAFileThatTookItsPlace)
{
    folder().write("new", "new");
    {
        OutputFileGuard guard(path("out"));
        guard.opened(open("out"));
        ASSERT_EQ(std::rename(path("new").c_str(), path("out").c_str()), 0);
    }
    EXPECT_TRUE(exists("out"));
}

TEST_F(FailedOutput, IsRemovedThoughTheLinkLeadsElsewhereByNow)
{
    folder().write("other", "other");
    link("target", "out");
    {
        OutputFileGuard guard(path("out"));
        guard.opened(open("out"));
        ASSERT_EQ(unlink(path("out").c_str()), 0);
        link("other", "out");
    }
    EXPECT_TRUE(exists("other"));
    EXPECT_TRUE(exists("out"));
    EXPECT_FALSE(exists("target"));
}

TEST_F(FailedOutput, ThatIsGoneAlreadyIsNoTrouble)
{
    OutputFileGuard guard(path("out"));
    guard.opened(open("out"));
    ASSERT_EQ(unlink(path("out").c_str()), 0);
}

class CompleteOutput : public OutputFileGuardTest
{
};

TEST_F(CompleteOutput, IsKept)
{
    {
        OutputFileGuard guard(path("out"));
        guard.opened(open("out"));
        guard.keep();
    }
    EXPECT_TRUE(exists("out"));
}

TEST_F(CompleteOutput, IsKeptWhenASignalComesLater)
{
    const auto completeAndTerminate = [this] {
        OutputFileGuard guard(path("out"));
        guard.opened(open("out"));
        guard.keep();
        raise(SIGTERM);
    };
    EXPECT_EXIT(completeAndTerminate(), testing::KilledBySignal(SIGTERM), "");
    EXPECT_TRUE(exists("out"));
}

class OutputThatCannotBeOpened : public OutputFileGuardTest
{
protected:
    void failToOpen(const std::string& fileName) const
    {
        OutputFileGuard(path(fileName)).failedToOpen();
    }
};

TEST_F(OutputThatCannotBeOpened, IsLeftAsItIs)
{
    folder().write("out", "old");
    failToOpen("out");
    EXPECT_TRUE(exists("out"));
}

TEST_F(OutputThatCannotBeOpened, IsLeftIfItWasEmptyBefore)
{
    folder().write("out", "");
    failToOpen("out");
    EXPECT_TRUE(exists("out"));
}

TEST_F(OutputThatCannotBeOpened, IsLeftIfItIsAFolder)
{
    ASSERT_EQ(mkdir(path("out").c_str(), 0700), 0);
    failToOpen("out");
    EXPECT_TRUE(exists("out"));
}

TEST_F(OutputThatCannotBeOpened, IsLeftIfItIsADanglingLink)
{
    link("target", "out");
    failToOpen("out");
    EXPECT_TRUE(exists("out"));
}

TEST_F(OutputThatCannotBeOpened, NeedNotExist)
{
    failToOpen("out");
    EXPECT_FALSE(exists("out"));
}

TEST_F(OutputThatCannotBeOpened, IsRemovedIfTheAttemptCreatedIt)
{
    OutputFileGuard guard(path("out"));
    open("out");
    guard.failedToOpen();
    EXPECT_FALSE(exists("out"));
}

TEST_F(OutputThatCannotBeOpened, IsRemovedIfTheAttemptEmptiedIt)
{
    folder().write("out", "old");
    OutputFileGuard guard(path("out"));
    open("out");
    guard.failedToOpen();
    EXPECT_FALSE(exists("out"));
}

TEST_F(OutputThatCannotBeOpened, IsRemovedWithTheLinkIfTheAttemptCreatedTheTarget)
{
    link("target", "out");
    OutputFileGuard guard(path("out"));
    open("out");
    guard.failedToOpen();
    EXPECT_FALSE(exists("out"));
    EXPECT_FALSE(exists("target"));
}

class OutputInPlace : public OutputFileGuardTest
{
};

TEST_F(OutputInPlace, IsTheVeryFileThatWasOpened)
{
    OutputFileGuard guard(path("out"));
    guard.opened(open("out"));
    EXPECT_TRUE(guard.isInPlace());
}

TEST_F(OutputInPlace, MayBeReachedThroughALink)
{
    link("target", "out");
    OutputFileGuard guard(path("out"));
    guard.opened(open("out"));
    EXPECT_TRUE(guard.isInPlace());
}

TEST_F(OutputInPlace, MayBeAFifo)
{
    ASSERT_EQ(mkfifo(path("out").c_str(), 0600), 0);
    OutputFileGuard guard(path("out"));
    guard.opened(open("out"));
    EXPECT_TRUE(guard.isInPlace());
}

TEST_F(OutputInPlace, IsNotAFileThatWasRemoved)
{
    OutputFileGuard guard(path("out"));
    guard.opened(open("out"));
    ASSERT_EQ(unlink(path("out").c_str()), 0);
    EXPECT_FALSE(guard.isInPlace());
}

TEST_F(OutputInPlace, IsNotAFileThatTookItsPlace)
{
    folder().write("new", "new");
    OutputFileGuard guard(path("out"));
    guard.opened(open("out"));
    ASSERT_EQ(std::rename(path("new").c_str(), path("out").c_str()), 0);
    EXPECT_FALSE(guard.isInPlace());
}

TEST_F(OutputInPlace, IsNotAFileToWhichALinkLeadsByNow)
{
    folder().write("other", "other");
    link("target", "out");
    OutputFileGuard guard(path("out"));
    guard.opened(open("out"));
    ASSERT_EQ(unlink(path("out").c_str()), 0);
    link("other", "out");
    EXPECT_FALSE(guard.isInPlace());
}

struct SignalRow
{
    const char* name;
    int number;
};

class GuardedSignal : public OutputFileGuardTest, public testing::WithParamInterface<SignalRow>
{
protected:
    // A sanitizer has handlers of its own, which a program has not.
    GuardedSignal() { sigaction(GetParam().number, nullptr, &m_actionBefore); }
    ~GuardedSignal() override { sigaction(GetParam().number, &m_actionBefore, nullptr); }
    void SetUp() override { signal(GetParam().number, SIG_DFL); }

    // The status of a child that raises the signal, and may leave a core dump in
    // the folder.
    int statusOfRaising(bool isGuarded)
    {
        const pid_t child = fork();
        if (child == 0) {
            const rlimit unlimited = {RLIM_INFINITY, RLIM_INFINITY};
            setrlimit(RLIMIT_CORE, &unlimited);
            if (chdir(path("").c_str()) != 0) {
                _exit(EXIT_FAILURE);
            }
            if (!isGuarded) {
                raise(GetParam().number);
            }
            OutputFileGuard guard("out");
            guard.opened(open("out"));
            raise(GetParam().number);
            _exit(EXIT_FAILURE);
        }
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        return status;
    }

private:
    struct sigaction m_actionBefore = {};
};

TEST_P(GuardedSignal, EndsTheProgramAndRemovesTheFile)
{
    const auto openAndRaise = [this] {
        OutputFileGuard guard(path("out"));
        guard.opened(open("out"));
        raise(GetParam().number);
    };
    EXPECT_EXIT(openAndRaise(), testing::KilledBySignal(GetParam().number), "");
    EXPECT_FALSE(exists("out"));
}

TEST_P(GuardedSignal, WaitsUntilTheFileIsGuarded)
{
    const auto raiseAndOpen = [this] {
        OutputFileGuard guard(path("out"));
        raise(GetParam().number);
        guard.opened(open("out"));
    };
    EXPECT_EXIT(raiseAndOpen(), testing::KilledBySignal(GetParam().number), "");
    EXPECT_FALSE(exists("out"));
}

TEST_P(GuardedSignal, WaitsUntilTheFileCouldNotBeOpened)
{
    folder().write("out", "old");
    const auto raiseAndFail = [this] {
        OutputFileGuard guard(path("out"));
        raise(GetParam().number);
        guard.failedToOpen();
    };
    EXPECT_EXIT(raiseAndFail(), testing::KilledBySignal(GetParam().number), "");
    EXPECT_TRUE(exists("out"));
}

TEST_P(GuardedSignal, DoesNotRemoveTheFileInAChildProcess)
{
    OutputFileGuard guard(path("out"));
    guard.opened(open("out"));
    const pid_t child = fork();
    if (child == 0) {
        raise(GetParam().number);
        _exit(EXIT_SUCCESS);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_TRUE(exists("out"));
}

// What becomes of a core dump is the system's choice: the same in both cases.
TEST_P(GuardedSignal, EndsTheProgramWithACoreDumpWhereItMakesOne)
{
    EXPECT_EQ(statusOfRaising(true), statusOfRaising(false));
    EXPECT_FALSE(exists("out"));
}

TEST_P(GuardedSignal, RemovesWhatAnAttemptToOpenLeftWhenItCannotWait)
{
    const auto openAndRaise = [this] {
        OutputFileGuard guard(path("out"));
        open("out");
        raise(GetParam().number);
        throw std::runtime_error("a signal that waits");
    };
    const auto openAndCatch = [&openAndRaise] {
        try {
            openAndRaise();
        } catch (const std::runtime_error&) {
        }
    };
    EXPECT_EXIT(openAndCatch(), testing::KilledBySignal(GetParam().number), "");
    EXPECT_FALSE(exists("out"));
}

TEST_P(GuardedSignal, StaysWithAHandlerThatItHas)
{
    const auto raiseHandled = [this] {
        signal(GetParam().number, [](int /*number*/) { _exit(EXIT_SUCCESS); });
        OutputFileGuard guard(path("out"));
        guard.opened(open("out"));
        raise(GetParam().number);
    };
    EXPECT_EXIT(raiseHandled(), testing::ExitedWithCode(EXIT_SUCCESS), "");
    EXPECT_TRUE(exists("out"));
}

TEST_P(GuardedSignal, StaysIgnoredIfItWas)
{
    const auto raiseIgnored = [this] {
        signal(GetParam().number, SIG_IGN);
        OutputFileGuard guard(path("out"));
        guard.opened(open("out"));
        raise(GetParam().number);
        _exit(exists("out") ? EXIT_SUCCESS : EXIT_FAILURE);
    };
    EXPECT_EXIT(raiseIgnored(), testing::ExitedWithCode(EXIT_SUCCESS), "");
}

TEST_P(GuardedSignal, HasItsOldActionAfterwards)
{
    struct sigaction before = {};
    sigaction(GetParam().number, nullptr, &before);
    openAndFail("out");
    struct sigaction after = {};
    sigaction(GetParam().number, nullptr, &after);
    EXPECT_EQ(after.sa_handler, before.sa_handler);
}

TEST_P(GuardedSignal, IsNotBlockedAfterwards)
{
    openAndFail("out");
    sigset_t mask;
    sigprocmask(SIG_BLOCK, nullptr, &mask);
    EXPECT_EQ(sigismember(&mask, GetParam().number), 0);
}

TEST_P(GuardedSignal, IsNotGuardedForAFifo)
{
    ASSERT_EQ(mkfifo(path("out").c_str(), 0600), 0);
    const auto openAndRaise = [this] {
        OutputFileGuard guard(path("out"));
        guard.opened(open("out"));
        raise(GetParam().number);
    };
    EXPECT_EXIT(openAndRaise(), testing::KilledBySignal(GetParam().number), "");
    EXPECT_TRUE(exists("out"));
}

const SignalRow signalRows[] = {
    {"Hangup", SIGHUP},
    {"Interrupt", SIGINT},
    {"Quit", SIGQUIT},
    {"IllegalInstruction", SIGILL},
    {"Trap", SIGTRAP},
    {"Abort", SIGABRT},
    {"BusError", SIGBUS},
    {"ArithmeticError", SIGFPE},
    {"FirstUserSignal", SIGUSR1},
    {"InvalidAccess", SIGSEGV},
    {"SecondUserSignal", SIGUSR2},
    {"BrokenPipe", SIGPIPE},
    {"Alarm", SIGALRM},
    {"Termination", SIGTERM},
    {"StackFault", SIGSTKFLT},
    {"CpuLimit", SIGXCPU},
    {"FileSizeLimit", SIGXFSZ},
    {"VirtualAlarm", SIGVTALRM},
    {"Profiling", SIGPROF},
    {"InputOutput", SIGIO},
    {"PowerFailure", SIGPWR},
    {"BadSystemCall", SIGSYS},
    {"FirstRealTime", SIGRTMIN},
    {"LastRealTime", SIGRTMAX},
};

INSTANTIATE_TEST_SUITE_P(OutputFileGuard, GuardedSignal, testing::ValuesIn(signalRows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST_F(OutputFileGuardTest, SurvivesAStackOverflow)
{
    const auto overflow = [this] {
        signal(SIGSEGV, SIG_DFL);
        const rlimit smallStack = {65536, 65536};
        setrlimit(RLIMIT_STACK, &smallStack);
        OutputFileGuard guard(path("out"));
        guard.opened(open("out"));
        fillStack(1);
    };
    EXPECT_EXIT(overflow(), testing::KilledBySignal(SIGSEGV), "");
    EXPECT_FALSE(exists("out"));
}

TEST_F(OutputFileGuardTest, RemovesTheFileWhenTwoSignalsWait)
{
    const auto raiseTwo = [this] {
        OutputFileGuard guard(path("out"));
        raise(SIGTERM);
        raise(SIGINT);
        guard.opened(open("out"));
    };
    const auto isEitherOfThem = [](int status) {
        return WIFSIGNALED(status) && (WTERMSIG(status) == SIGTERM || WTERMSIG(status) == SIGINT);
    };
    EXPECT_EXIT(raiseTwo(), isEitherOfThem, "");
    EXPECT_FALSE(exists("out"));
}

TEST_F(OutputFileGuardTest, LeavesTheSignalStackAsItWas)
{
    stack_t before = {};
    sigaltstack(nullptr, &before);
    openAndFail("out");
    stack_t after = {};
    sigaltstack(nullptr, &after);
    EXPECT_EQ(after.ss_sp, before.ss_sp);
    EXPECT_EQ(after.ss_flags, before.ss_flags);
}

} // namespace
