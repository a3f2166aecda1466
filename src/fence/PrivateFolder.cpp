#include "fence/PrivateFolder.h"

#include "fence/Environment.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include <dirent.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

// The folder that exists. A lock-free atomic may be read in a signal handler.
std::atomic<const PrivateFolder*> activeFolder{nullptr};
static_assert(std::atomic<const PrivateFolder*>::is_always_lock_free);

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

// Absolute, without links; empty if there is none. One that is set but empty
// would be the current folder, for which no document has a use.
std::string placeForFolders()
{
    std::string place = "/tmp";
    for (const char* variable : PrivateFolder::variables) {
        const std::string value = Environment::value(variable);
        if (!value.empty()) {
            place = value;
            break;
        }
    }
    std::error_code error;
    return std::filesystem::canonical(place, error).string();
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
    }
}

PrivateFolder::~PrivateFolder()
{
    if (!m_path.empty() && m_process == getpid()) {
        const HeldSignals held;
        remove();
        activeFolder = nullptr;
    }
}

void PrivateFolder::removeExisting()
{
    const PrivateFolder* folder = activeFolder.load();
    // A child between fork and exec has the same folder in mind.
    if (folder != nullptr && folder->m_process == getpid()) {
        folder->remove();
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
