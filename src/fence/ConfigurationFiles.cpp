#include "fence/ConfigurationFiles.h"

#include <memory>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr std::size_t largestBytes = 1048576;

struct Closer
{
    void operator()(DIR* folder) const { closedir(folder); }
};

bool endsWith(std::string_view name, std::string_view suffix)
{
    return name.size() > suffix.size() && name.substr(name.size() - suffix.size()) == suffix;
}

// Fontconfig has dozens of files: streams would take most of the time, and so
// would asking each for its size. `name` is relative to `folder`.
void appendContent(int folder, const char* name, std::string& text)
{
    constexpr std::size_t pieceBytes = 8192;
    char piece[pieceBytes];
    const int file = openat(folder, name, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (file < 0) {
        return;
    }
    ssize_t size = 0;
    do {
        size = read(file, piece, pieceBytes);
        text.append(piece, size > 0 ? static_cast<std::size_t>(size) : 0);
    } while (size == pieceBytes && text.size() < largestBytes);
    close(file);
}

} // namespace

void ConfigurationFiles::readAll(const std::string& folder, const std::string& suffix,
                                 const Reader& reader)
{
    std::string text; // one for all files, whose memory stays
    const std::unique_ptr<DIR, Closer> entries(opendir(folder.c_str()));
    while (const dirent* entry = entries ? readdir(entries.get()) : nullptr) {
        if (endsWith(entry->d_name, suffix)) {
            text.clear();
            appendContent(dirfd(entries.get()), entry->d_name, text);
            reader(std::string(folder).append("/").append(entry->d_name), text);
        }
    }
}

std::string ConfigurationFiles::content(const std::string& path)
{
    std::string text;
    appendContent(AT_FDCWD, path.c_str(), text);
    return text;
}
