#include "fence/FileAccessRules.h"

#include "fence/LandlockInterface.h"
#include "fence/SystemCallFilter.h"

#include <algorithm>

using namespace LandlockInterface;

namespace {

constexpr std::uint64_t allRights = (ioctlDevice << 1) - 1;
constexpr std::uint64_t reading = readFile | readFolder;
constexpr std::uint64_t changingFiles = reading | writeFile | truncateFile | makeFile | removeFile;

} // namespace

FileAccessRules::FileAccessRules(std::uint64_t unrestricted)
    : m_restricted(allRights & ~unrestricted)
{
    if (SystemCallFilter::isAvailable()) {
        m_restricted &= ~truncateFile;
    }
}

void FileAccessRules::allowReading(const std::string& path)
{
    allow(path, reading);
}

void FileAccessRules::allowReading(const std::vector<std::string>& paths)
{
    for (const std::string& path : paths) {
        allowReading(path);
    }
}

void FileAccessRules::allowExecuting(const std::string& path)
{
    // The kernel opens for reading what it executes.
    allow(path, execute | readFile);
}

void FileAccessRules::allowChangingFiles(const std::string& folder)
{
    allow(folder, changingFiles);
}

void FileAccessRules::allowChangingFolders(const std::string& folder)
{
    allow(folder, changingFiles | makeFolder | removeFolder);
}

void FileAccessRules::allowRemovingFiles(const std::string& folder)
{
    allow(folder, removeFile);
}

void FileAccessRules::allowRemovingFolders(const std::string& folder)
{
    allow(folder, removeFolder);
}

bool FileAccessRules::operator==(const FileAccessRules& other) const
{
    const auto isSame = [](const Rule& one, const Rule& two) {
        return one.rights == two.rights && one.path == two.path;
    };
    return m_restricted == other.m_restricted &&
           std::equal(m_rules.begin(), m_rules.end(), other.m_rules.begin(), other.m_rules.end(),
                      isSame);
}

void FileAccessRules::allow(const std::string& path, std::uint64_t rights)
{
    if (!path.empty() && (rights & m_restricted) != 0) {
        m_rules.push_back({path, rights & m_restricted});
    }
}
