#include "files/OutputFileGuard.h"

#include <unistd.h>

namespace {

// The guard that a signal makes clean up. A lock-free atomic may be read in a
// handler.
std::atomic<const OutputFileGuard*> activeGuard{nullptr};
static_assert(std::atomic<const OutputFileGuard*>::is_always_lock_free);

// What a failed attempt to create the file can have written: a TIFF header.
constexpr off_t longestAttempt = 8;

} // namespace

OutputFileGuard::OutputFileGuard(const std::string& fileName, EndingSignals::CleanUp alsoCleanUp)
    : m_name(fileName),
      m_process(getpid()),
      m_existedBefore(m_name.find(m_before)),
      m_signals(cleanUp, alsoCleanUp)
{
    activeGuard = this;
}

OutputFileGuard::~OutputFileGuard()
{
    removeFile();
    activeGuard = nullptr;
}

void OutputFileGuard::opened(int descriptor)
{
    if (fstat(descriptor, &m_file) == 0 && S_ISREG(m_file.st_mode)) {
        m_state = State::Guarding;
    } else {
        keep();
    }
    m_signals.release();
}

void OutputFileGuard::failedToOpen()
{
    removeFile();
    notOpened();
}

void OutputFileGuard::notOpened()
{
    keep();
    m_signals.release();
}

bool OutputFileGuard::isInPlace() const
{
    return m_state != State::Guarding || m_name.leadsTo(m_file);
}

void OutputFileGuard::keep()
{
    m_state = State::Done;
}

void OutputFileGuard::cleanUp()
{
    const OutputFileGuard* guard = activeGuard.load();
    // A child between fork and exec still has the handlers.
    if (guard != nullptr && guard->m_process == getpid()) {
        guard->removeFile();
    }
}

// Async-signal-safe, like all that it calls.
void OutputFileGuard::removeFile() const
{
    if (m_state == State::Guarding) {
        m_name.remove(m_file);
    } else if (m_state == State::Opening) {
        removeAttempt();
    }
}

void OutputFileGuard::removeAttempt() const
{
    struct stat now = {};
    if (!m_name.find(now) || !S_ISREG(now.st_mode) || now.st_size > longestAttempt) {
        return;
    }
    const bool isChanged =
        OutputFileName::isSameFile(now, m_before) && now.st_size != m_before.st_size;
    if (!m_existedBefore || isChanged) {
        m_name.remove(now);
    }
}
