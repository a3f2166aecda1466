#include "files/OutputFileName.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>

#include <unistd.h>

namespace {

bool isSymbolicLink(const std::string& fileName)
{
    struct stat info = {};
    return lstat(fileName.c_str(), &info) == 0 && S_ISLNK(info.st_mode);
}

// The path without symbolic links; of a file that does not exist yet, too.
std::string resolved(const std::string& path)
{
    std::array<char, PATH_MAX> buffer = {};
    const bool exists = realpath(path.c_str(), buffer.data()) != nullptr;
    // For a file that does not exist, glibc leaves the name that it looked for.
    return exists || errno == ENOENT ? buffer.data() : std::string();
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

OutputFileName::OutputFileName(const std::string& fileName) : m_fileName(fileName)
{
    if (isSymbolicLink(fileName)) {
        m_target = resolved(fileName);
        m_isSystemLink = isInSystemFolder(fileName);
    }
}

bool OutputFileName::find(struct stat& file) const
{
    return stat(m_fileName.c_str(), &file) == 0;
}

bool OutputFileName::leadsTo(const struct stat& file) const
{
    struct stat info = {};
    return find(info) && isSameFile(info, file);
}

void OutputFileName::remove(const struct stat& file) const
{
    struct stat info = {};
    const bool isOurs = leadsTo(file);
    if (!m_target.empty() && lstat(m_target.c_str(), &info) == 0 && isSameFile(info, file)) {
        unlink(m_target.c_str());
    }
    if (isOurs && !m_isSystemLink) {
        unlink(m_fileName.c_str());
    }
}

bool OutputFileName::isSameFile(const struct stat& one, const struct stat& other)
{
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}
