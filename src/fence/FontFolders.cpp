#include "fence/FontFolders.h"

#include <algorithm>
#include <cstdlib>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using Paths = std::vector<std::string>;

// Of files that name each other.
constexpr int deepestInclude = 5;

std::string valueOf(const char* name)
{
    const char* value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

std::string home()
{
    return valueOf("HOME");
}

// A name as it stands in an element, with the folder that the attribute
// "prefix" names in front.
std::string expanded(const std::string& name, const std::string& attributes,
                     const std::string& file, const char* xdgVariable, const char* xdgDefault)
{
    if (name.rfind('~', 0) == 0) {
        return home().empty() ? std::string() : home() + name.substr(1);
    }
    if (attributes.find("xdg") != std::string::npos) {
        const std::string folder = FontFolders::userFolder(xdgVariable, xdgDefault);
        return folder.empty() ? std::string() : folder + '/' + name;
    }
    const bool isBesideFile = attributes.find("relative") != std::string::npos ||
                              attributes.find("prefix") == std::string::npos;
    if (name.rfind('/', 0) != 0 && isBesideFile) {
        return file.substr(0, file.rfind('/') + 1) + name;
    }
    return name;
}

// There are dozens of files; streams would take most of the time.
std::string contentOf(const std::string& path)
{
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat info = {};
    std::string text;
    if (file >= 0 && fstat(file, &info) == 0 && S_ISREG(info.st_mode)) {
        text.resize(static_cast<std::size_t>(info.st_size));
        const ssize_t size = read(file, text.data(), text.size());
        text.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    }
    if (file >= 0) {
        close(file);
    }
    return text;
}

// Looks for the elements <dir>, <cachedir> and <include>. Those in comments are
// found as well, which does no harm.
class ConfigurationScan
{
public:
    void readFileOrFolder(const std::string& path, int depth)
    {
        struct stat info = {};
        if (depth > deepestInclude || path.empty() || stat(path.c_str(), &info) != 0) {
            return;
        }
        if (!S_ISDIR(info.st_mode)) {
            readFile(path, depth);
            return;
        }
        DIR* folder = opendir(path.c_str());
        while (const dirent* entry = folder == nullptr ? nullptr : readdir(folder)) {
            const std::string name = entry->d_name;
            if (name.size() > 5 && name.compare(name.size() - 5, 5, ".conf") == 0) {
                readFile(std::string(path).append("/").append(name), depth);
            }
        }
        if (folder != nullptr) {
            closedir(folder);
        }
    }

    const Paths& folders() const { return m_folders; }

private:
    void readFile(const std::string& path, int depth)
    {
        if (std::find(m_files.begin(), m_files.end(), path) != m_files.end()) {
            return;
        }
        m_files.push_back(path);
        const std::string text = contentOf(path);
        if (text.find("dir") == std::string::npos && text.find("include") == std::string::npos) {
            return;
        }
        for (const std::string& name :
             elements(text, "dir", path, "XDG_DATA_HOME", "/.local/share")) {
            m_folders.push_back(name);
        }
        for (const std::string& name :
             elements(text, "cachedir", path, "XDG_CACHE_HOME", "/.cache")) {
            m_folders.push_back(name);
        }
        for (const std::string& name :
             elements(text, "include", path, "XDG_CONFIG_HOME", "/.config")) {
            m_folders.push_back(name);
            readFileOrFolder(name, depth + 1);
        }
    }

    static Paths elements(const std::string& text, const std::string& tag, const std::string& file,
                          const char* xdgVariable, const char* xdgDefault)
    {
        Paths names;
        std::string::size_type start = 0;
        while ((start = text.find('<' + tag, start)) != std::string::npos) {
            start += tag.size() + 1;
            const std::string::size_type open = text.find('>', start);
            const std::string::size_type end = text.find('<', open);
            if (end == std::string::npos) {
                break;
            }
            if (text[start] == '>' || text[start] == ' ') {
                names.push_back(expanded(text.substr(open + 1, end - open - 1),
                                         text.substr(start, open - start), file, xdgVariable,
                                         xdgDefault));
            }
        }
        return names;
    }

    Paths m_folders;
    Paths m_files;
};

std::string configurationFile()
{
    std::string file = valueOf("FONTCONFIG_FILE");
    if (file.empty()) {
        file = "fonts.conf";
    }
    if (file.rfind('/', 0) == 0) {
        return file;
    }
    const std::string folder = valueOf("FONTCONFIG_PATH");
    return (folder.empty() ? "/etc/fonts" : folder) + '/' + file;
}

} // namespace

std::vector<std::string> FontFolders::readable()
{
    ConfigurationScan scan;
    scan.readFileOrFolder(configurationFile(), 0);
    Paths paths = scan.folders();
    paths.push_back(configurationFile());
    paths.push_back(userCache());
    if (!home().empty()) {
        // Known to every version, whatever the configuration says.
        paths.insert(paths.end(),
                     {home() + "/.fonts", home() + "/.fonts.conf", home() + "/.fontconfig",
                      home() + "/.local/share/fonts", home() + "/.config/fontconfig"});
    }
    paths.erase(std::remove(paths.begin(), paths.end(), std::string()), paths.end());
    return paths;
}

std::string FontFolders::userCache()
{
    const std::string folder = userFolder("XDG_CACHE_HOME", "/.cache");
    return folder.empty() ? std::string() : folder + "/fontconfig";
}

std::string FontFolders::userFolder(const char* variable, const std::string& defaultFolder)
{
    std::string value = valueOf(variable);
    if (!value.empty()) {
        return value;
    }
    return home().empty() ? std::string() : home() + defaultFolder;
}
