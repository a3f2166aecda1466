#include "fence/PrivateFolder.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

// The folder that the signal handler acts for. A lock-free atomic may be read in
// a handler.
std::atomic<const PrivateFolder*> activeFolder{nullptr};
static_assert(std::atomic<const PrivateFolder*>::is_always_lock_free);

// Those that end a program and can be caught.
constexpr std::array<int, 22> signalNumbers = {
    SIGHUP,    SIGINT,  SIGQUIT, SIGILL,  SIGTRAP,   SIGABRT, SIGBUS,  SIGFPE,
    SIGUSR1,   SIGSEGV, SIGUSR2, SIGPIPE, SIGALRM,   SIGTERM, SIGXCPU, SIGXFSZ,
    SIGVTALRM, SIGPROF, SIGPOLL, SIGSYS,  SIGSTKFLT, SIGPWR};

std::array<struct sigaction, signalNumbers.size()> actionsBefore = {};

/// Holds signals back, so that no folder is missed by the handler.
class HeldSignals
{
public:
    HeldSignals()
    {
        sigset_t all;
        sigfillset(&all);
        sigprocmask(SIG_BLOCK, &all, &m_before);
    }
    ~HeldSignals() { sigprocmask(SIG_SETMASK, &m_before, nullptr); }
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;

private:
    sigset_t m_before = {};
};

std::string resolved(const std::string& path)
{
    const std::unique_ptr<char, decltype(&std::free)> result(realpath(path.c_str(), nullptr),
                                                             &std::free);
    return result ? std::string(result.get()) : std::string();
}

std::string placeForFolders()
{
    for (const char* variable : PrivateFolder::variables) {
        if (const char* place = std::getenv(variable)) {
            return resolved(place);
        }
    }
    return resolved("/tmp");
}

// What the system call fills in; glibc's own way to it allocates.
struct KernelEntry
{
    std::uint64_t inode;
    std::int64_t offset;
    std::uint16_t size;
    std::uint8_t type;
    char name[1];
};

// A program within the fence can make no folders in its own. Without the fence
// it could, but these stay if they are deeper than that.
constexpr int deepestFolder = 4;

void empty(int folder, int depth);

void removeEntry(int folder, const char* name, int depth)
{
    if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0 ||
        unlinkat(folder, name, 0) == 0) {
        return;
    }
    const int inner = openat(folder, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (inner >= 0) {
        if (depth > 0) {
            empty(inner, depth - 1);
        }
        close(inner);
        unlinkat(folder, name, AT_REMOVEDIR);
    }
}

// Async-signal-safe.
void empty(int folder, int depth)
{
    constexpr std::size_t bufferSize = 4096;
    alignas(KernelEntry) char buffer[bufferSize];
    for (;;) {
        const long size = syscall(SYS_getdents64, folder, buffer, bufferSize);
        if (size <= 0) {
            return;
        }
        for (long position = 0; position < size;) {
            std::uint16_t entrySize = 0;
            std::memcpy(&entrySize, buffer + position + offsetof(KernelEntry, size),
                        sizeof entrySize);
            removeEntry(folder, buffer + position + offsetof(KernelEntry, name), depth);
            position += entrySize;
        }
    }
}

} // namespace

std::shared_ptr<PrivateFolder> PrivateFolder::shared()
{
    static std::weak_ptr<PrivateFolder> existing;
    std::shared_ptr<PrivateFolder> folder = existing.lock();
    if (!folder) {
        folder.reset(new PrivateFolder);
        existing = folder;
    }
    return folder;
}

PrivateFolder::PrivateFolder() : m_process(getpid())
{
    const std::string place = placeForFolders();
    std::string path = place + "/morvaltide-XXXXXX";
    const HeldSignals held;
    if (!place.empty() && mkdtemp(path.data()) != nullptr) {
        m_path = path;
        activeFolder = this;
        installHandlers();
    }
}

PrivateFolder::~PrivateFolder()
{
    if (!m_path.empty() && m_process == getpid()) {
        const HeldSignals held;
        remove();
        restoreHandlers();
        activeFolder = nullptr;
    }
}

void PrivateFolder::handleSignal(int number)
{
    const int errnoBefore = errno;
    const PrivateFolder* folder = activeFolder.load();
    // A child between fork and exec still has this handler.
    if (folder != nullptr && folder->m_process == getpid()) {
        folder->remove();
    }
    for (std::size_t i = 0; i < signalNumbers.size(); ++i) {
        if (signalNumbers[i] == number) {
            sigaction(number, &actionsBefore[i], nullptr);
        }
    }
    raise(number); // delivered when the handler returns
    errno = errnoBefore;
}

void PrivateFolder::installHandlers()
{
    struct sigaction action = {};
    action.sa_handler = handleSignal;
    action.sa_flags = SA_ONSTACK; // where there is one
    sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < signalNumbers.size(); ++i) {
        sigaction(signalNumbers[i], nullptr, &actionsBefore[i]);
        if (actionsBefore[i].sa_handler != SIG_IGN) {
            sigaction(signalNumbers[i], &action, nullptr);
        }
    }
}

void PrivateFolder::restoreHandlers()
{
    for (std::size_t i = 0; i < signalNumbers.size(); ++i) {
        sigaction(signalNumbers[i], &actionsBefore[i], nullptr);
    }
}

void PrivateFolder::clear() const
{
    const int folder = open(m_path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (folder >= 0) {
        empty(folder, deepestFolder);
        close(folder);
    }
}

// Async-signal-safe. A child that still runs may make a file meanwhile.
void PrivateFolder::remove() const
{
    constexpr int attempts = 10;
    for (int i = 0; i < attempts && rmdir(m_path.c_str()) != 0 && errno == ENOTEMPTY; ++i) {
        clear();
    }
}
