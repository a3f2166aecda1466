#include "files/OutputFileGuard.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <memory>

#include <unistd.h>

namespace {

// The guard that the signal handler acts for. A lock-free atomic may be read
// in a handler.
std::atomic<const OutputFileGuard*> activeGuard{nullptr};
static_assert(std::atomic<const OutputFileGuard*>::is_always_lock_free);

bool isSameFile(const struct stat& one, const struct stat& other)
{
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

bool isSymbolicLink(const std::string& fileName)
{
    struct stat info = {};
    return lstat(fileName.c_str(), &info) == 0 && S_ISLNK(info.st_mode);
}

std::string resolved(const std::string& path)
{
    const std::unique_ptr<char, decltype(&std::free)> result(realpath(path.c_str(), nullptr),
                                                             &std::free);
    return result ? std::string(result.get()) : std::string();
}

// True for the system's own links to whatever a process has open, such as
// /dev/stdout.
bool isInSystemFolder(const std::string& fileName)
{
    const std::size_t slash = fileName.rfind('/');
    const std::string folder =
        resolved(slash == std::string::npos ? "." : fileName.substr(0, slash + 1)) + '/';
    return folder.rfind("/dev/", 0) == 0 || folder.rfind("/proc/", 0) == 0;
}

} // namespace

OutputFileGuard::OutputFileGuard(const std::string& fileName)
    : m_fileName(fileName),
      m_process(getpid()),
      m_existedBefore(stat(fileName.c_str(), &m_before) == 0)
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : signalNumbers) {
        sigaddset(&signals, number);
    }
    sigprocmask(SIG_BLOCK, &signals, &m_maskBefore);
}

OutputFileGuard::~OutputFileGuard()
{
    if (m_isGuarding) {
        removeFile();
        restoreHandlers();
    }
    releaseSignals();
}

void OutputFileGuard::opened(int descriptor)
{
    if (fstat(descriptor, &m_file) == 0 && S_ISREG(m_file.st_mode)) {
        findRemovableNames();
        installHandlers();
    }
    releaseSignals();
}

void OutputFileGuard::failedToOpen()
{
    struct stat now = {};
    if (stat(m_fileName.c_str(), &now) == 0 && S_ISREG(now.st_mode) && now.st_size == 0) {
        const bool isEmptied = isSameFile(now, m_before) && m_before.st_size > 0;
        if (!m_existedBefore || isEmptied) {
            m_file = now;
            findRemovableNames();
            removeFile();
        }
    }
    releaseSignals();
}

void OutputFileGuard::keep()
{
    if (m_isGuarding) {
        restoreHandlers();
    }
}

void OutputFileGuard::handleSignal(int number)
{
    const int errnoBefore = errno;
    const OutputFileGuard* guard = activeGuard.load();
    // A child between fork and exec still has this handler.
    if (guard != nullptr && guard->m_process == getpid()) {
        guard->removeFile();
    }
    signal(number, SIG_DFL);
    for (std::size_t i = 0; guard != nullptr && i < signalNumbers.size(); ++i) {
        if (signalNumbers[i] == number) {
            sigaction(number, &guard->m_actionsBefore[i], nullptr);
        }
    }
    raise(number); // delivered when the handler returns
    errno = errnoBefore;
}

void OutputFileGuard::installHandlers()
{
    activeGuard = this;
    m_isGuarding = true;
    struct sigaction action = {};
    action.sa_handler = handleSignal;
    sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < signalNumbers.size(); ++i) {
        sigaction(signalNumbers[i], nullptr, &m_actionsBefore[i]);
        if (m_actionsBefore[i].sa_handler != SIG_IGN) {
            sigaction(signalNumbers[i], &action, nullptr);
        }
    }
}

void OutputFileGuard::restoreHandlers()
{
    for (std::size_t i = 0; i < signalNumbers.size(); ++i) {
        sigaction(signalNumbers[i], &m_actionsBefore[i], nullptr);
    }
    activeGuard = nullptr;
    m_isGuarding = false;
}

void OutputFileGuard::releaseSignals()
{
    if (m_isHoldingSignals) {
        sigprocmask(SIG_SETMASK, &m_maskBefore, nullptr);
        m_isHoldingSignals = false;
    }
}

void OutputFileGuard::findRemovableNames()
{
    m_removedName = m_fileName;
    if (isSymbolicLink(m_fileName)) {
        m_removedTarget = resolved(m_fileName);
        if (isInSystemFolder(m_fileName)) {
            m_removedName.clear();
        }
    }
}

// Async-signal-safe: nothing but stat(), lstat() and unlink().
void OutputFileGuard::removeFile() const
{
    struct stat info = {};
    const bool isNameOurs = stat(m_fileName.c_str(), &info) == 0 && isSameFile(info, m_file);
    if (!m_removedTarget.empty() && lstat(m_removedTarget.c_str(), &info) == 0 &&
        isSameFile(info, m_file)) {
        unlink(m_removedTarget.c_str());
    }
    if (isNameOurs && !m_removedName.empty()) {
        unlink(m_removedName.c_str());
    }
}
