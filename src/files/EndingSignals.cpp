#include "files/EndingSignals.h"

#include <atomic>
#include <cerrno>
#include <cstddef>

#include <sys/syscall.h>
#include <unistd.h>

namespace {

// A lock-free atomic may be read in a handler.
std::atomic<const EndingSignals*> activeObject{nullptr};
static_assert(std::atomic<const EndingSignals*>::is_always_lock_free);

// The stack of the handler. What the kernel puts there alone takes a dozen
// kilobytes on some processors.
constexpr std::size_t signalStackBytes = 65536;
alignas(std::max_align_t) unsigned char signalStack[signalStackBytes];

// True if the default action ends the program, and if it can be caught.
bool endsProgram(int number)
{
    switch (number) {
    case SIGCHLD:
    case SIGCONT:
    case SIGKILL:
    case SIGSTOP:
    case SIGTSTP:
    case SIGTTIN:
    case SIGTTOU:
    case SIGURG:
    case SIGWINCH:
        return false;
    default:
        return true;
    }
}

// Such a signal cannot wait: blocked, it would end the program on the spot.
bool isCrash(int number)
{
    switch (number) {
    case SIGABRT:
    case SIGBUS:
    case SIGFPE:
    case SIGILL:
    case SIGSEGV:
    case SIGSYS:
    case SIGTRAP:
        return true;
    default:
        return false;
    }
}

template <typename Function>
void forEachEndingSignal(Function function)
{
    for (int number = 1; number <= SIGRTMAX; ++number) {
        if (endsProgram(number)) {
            function(number);
        }
    }
}

void sendAgain(int number, siginfo_t* info)
{
    // With all that is known about it, for those who look at the core dump.
    if (info == nullptr || syscall(SYS_rt_tgsigqueueinfo, getpid(), gettid(), number, info) != 0) {
        raise(number);
    }
}

} // namespace

EndingSignals::EndingSignals(CleanUp first, CleanUp second) : m_cleanUps{first, second}
{
    sigset_t held;
    sigemptyset(&held);
    forEachEndingSignal([&held](int number) {
        if (!isCrash(number)) {
            sigaddset(&held, number);
        }
    });
    sigprocmask(SIG_BLOCK, &held, &m_maskBefore);

    stack_t stack = {};
    stack.ss_sp = signalStack;
    stack.ss_size = sizeof signalStack;
    sigaltstack(&stack, &m_stackBefore);

    activeObject = this;
    struct sigaction action = {};
    action.sa_sigaction = handle;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigfillset(&action.sa_mask); // the first signal is the one that ends the program
    sigemptyset(&m_caught);
    forEachEndingSignal([&](int number) {
        struct sigaction& before = m_actionsBefore[static_cast<std::size_t>(number)];
        // Fails for the two that the C library keeps for itself.
        if (sigaction(number, nullptr, &before) == 0 && before.sa_handler == SIG_DFL &&
            sigaction(number, &action, nullptr) == 0) {
            sigaddset(&m_caught, number);
        }
    });
}

EndingSignals::~EndingSignals()
{
    forEachEndingSignal([this](int number) {
        if (sigismember(&m_caught, number) == 1) {
            sigaction(number, &m_actionsBefore[static_cast<std::size_t>(number)], nullptr);
        }
    });
    activeObject = nullptr;
    sigaltstack(&m_stackBefore, nullptr);
    release();
}

void EndingSignals::release()
{
    if (m_isHolding) {
        m_isHolding = false;
        sigprocmask(SIG_SETMASK, &m_maskBefore, nullptr);
    }
}

void EndingSignals::handle(int number, siginfo_t* info, void* /*context*/)
{
    const int errnoBefore = errno;
    const EndingSignals* object = activeObject.load();
    if (object != nullptr) {
        object->cleanUpAndEnd(number, info);
    }
    errno = errnoBefore;
}

void EndingSignals::cleanUpAndEnd(int number, siginfo_t* info) const
{
    for (const CleanUp cleanUp : m_cleanUps) {
        if (cleanUp != nullptr) {
            cleanUp();
        }
    }
    sigaction(number, &m_actionsBefore[static_cast<std::size_t>(number)], nullptr);
    sendAgain(number, info); // delivered when the handler returns
}
