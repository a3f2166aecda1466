#include "fence/ConfigurationFiles.h"

#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr std::size_t largestBytes = 1048576;

struct Closer
{
    void operator()(DIR* folder) const { closedir(folder); }
};

bool endsWith(const std::string& name, const std::string& suffix)
{
    return name.size() > suffix.size() &&
           name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0;
}

} // namespace

std::vector<std::string> ConfigurationFiles::in(const std::string& folder,
                                                const std::string& suffix)
{
    std::vector<std::string> files;
    const std::unique_ptr<DIR, Closer> entries(opendir(folder.c_str()));
    while (const dirent* entry = entries ? readdir(entries.get()) : nullptr) {
        const std::string name = entry->d_name;
        if (endsWith(name, suffix)) {
            files.push_back(std::string(folder).append("/").append(name));
        }
    }
    return files;
}

// Fontconfig has dozens of files: streams would take most of the time, and so
// would asking each for its size.
std::string ConfigurationFiles::content(const std::string& path)
{
    constexpr std::size_t pieceBytes = 8192;
    char piece[pieceBytes];
    std::string text;
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (file < 0) {
        return text;
    }
    ssize_t size = 0;
    do {
        size = read(file, piece, pieceBytes);
        text.append(piece, size > 0 ? static_cast<std::size_t>(size) : 0);
    } while (size == pieceBytes && text.size() < largestBytes);
    close(file);
    return text;
}
