#include "fence/Attempts.h"

#include "fence/ChildFence.h"
#include "fence/Descriptors.h"

#include <QFileInfo>

#include <gtest/gtest.h>

#include <csignal>
#include <cstddef>
#include <memory>
#include <vector>

#include <fcntl.h>
#include <grp.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int unknownAttempt = 2; // as the conquered program says
constexpr int cannotRun = 99;
constexpr int firstSignalStatus = 128;

int statusOfChild(pid_t child)
{
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : firstSignalStatus + WTERMSIG(status);
}

// As the filter of a container that knows nothing of the calls.
void refuse(unsigned first, unsigned last, int error)
{
    const unsigned action = error == Attempts::killed
                                ? SECCOMP_RET_KILL_PROCESS
                                : SECCOMP_RET_ERRNO | static_cast<unsigned>(error);
    sock_filter program[] = {{BPF_LD | BPF_W | BPF_ABS, 0, 0, offsetof(seccomp_data, nr)},
                             {BPF_JMP | BPF_JGE | BPF_K, 0, 2, first},
                             {BPF_JMP | BPF_JGT | BPF_K, 1, 0, last},
                             {BPF_RET | BPF_K, 0, 0, action},
                             {BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ALLOW}};
    const sock_fprog filter = {5, program};
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter);
}

// The conquered program in place of the calling process.
[[noreturn]] void run(const Attempts::Attempt& attempt, ChildFence* fence)
{
    constexpr int leakedDescriptor = 50;
    dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);
    dup2(STDERR_FILENO, leakedDescriptor);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (fence != nullptr) {
        Descriptors::closeOthersOnExec(); // as ChildProcess does
        fence->enter();
    }
    execl(MORVALTIDE_CONQUERED_PROGRAM, "program", attempt.name.c_str(), attempt.argument.c_str(),
          static_cast<char*>(nullptr));
    _exit(cannotRun);
}

int statusOfAttempt(const Attempts::Attempt& attempt, const Attempts::Surroundings& surroundings)
{
    Attempts::prepare(surroundings);
    setpgid(0, 0);
    const QString program = QStringLiteral(MORVALTIDE_CONQUERED_PROGRAM);
    // Counts as installed.
    const InterpreterLocation location(program, {QFileInfo(program).canonicalPath()});
    std::unique_ptr<ChildFence> fence;
    if (surroundings.isFenced) {
        fence = std::make_unique<ChildFence>(location, std::vector<std::string>{attempt.document},
                                             surroundings.newestAbi);
    }
    const pid_t child = fork();
    if (child == 0) {
        run(attempt, fence.get());
    }
    return statusOfChild(child);
}

} // namespace

bool Attempts::succeeds(const Attempt& attempt, const Surroundings& surroundings)
{
    const int status = statusOf([&] { return statusOfAttempt(attempt, surroundings); });
    EXPECT_NE(status, cannotRun);
    EXPECT_NE(status, unknownAttempt) << attempt.name;
    return status == 0;
}

int Attempts::statusOf(const std::function<int()>& role)
{
    const pid_t child = fork();
    if (child == 0) {
        _exit(role());
    }
    return statusOfChild(child);
}

void Attempts::prepare(const Surroundings& surroundings)
{
    if (surroundings.isOrdinaryUser) {
        const bool hasChanged = setgroups(0, nullptr) == 0 &&
                                setresgid(ordinaryUser, ordinaryUser, ordinaryUser) == 0 &&
                                setresuid(ordinaryUser, ordinaryUser, ordinaryUser) == 0;
        EXPECT_TRUE(hasChanged);
        prctl(PR_SET_DUMPABLE, 1);
    }
    if (surroundings.landlockError != 0) {
        refuse(LandlockInterface::createRulesetCall, LandlockInterface::restrictSelfCall,
               surroundings.landlockError);
    }
    if (surroundings.seccompError != 0) {
        refuse(SYS_seccomp, SYS_seccomp, surroundings.seccompError);
    }
    if (surroundings.closeRangeError != 0) {
        refuse(SYS_close_range, SYS_close_range, surroundings.closeRangeError);
    }
}
