#include "files/OutputFileLock.h"

#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace {

// Enough for any number of conversions that fail one after the other meanwhile.
constexpr int mostAttempts = 1000;

// A lock of the open file description. One of flock() would meet those of scripts
// that run the conversion under flock(1).
bool lock(int descriptor)
{
    struct flock whole = {};
    whole.l_type = F_WRLCK;
    whole.l_whence = SEEK_SET;
    return fcntl(descriptor, F_OFD_SETLK, &whole) == 0 || (errno != EAGAIN && errno != EACCES);
}

} // namespace

OutputFileLock::OutputFileLock(const std::string& fileName) : m_name(fileName) {}

OutputFileLock::~OutputFileLock()
{
    release();
}

bool OutputFileLock::acquire()
{
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        release();
        struct stat info = {};
        if (m_name.find(info) && !S_ISREG(info.st_mode)) {
            return true;
        }
        m_descriptor = open(m_name.path().c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
        if (m_descriptor < 0) {
            // Whoever opens it to write says why that fails.
            return true;
        }
        if (!lock(m_descriptor)) {
            return false;
        }
        if (isInPlace()) {
            return true;
        }
        // The conversion that had the lock has removed the file before releasing it.
    }
    return false;
}

bool OutputFileLock::isInPlace() const
{
    struct stat info = {};
    return fstat(m_descriptor, &info) == 0 && m_name.leadsTo(info);
}

void OutputFileLock::release()
{
    if (m_descriptor >= 0) {
        close(m_descriptor);
        m_descriptor = -1;
    }
}
