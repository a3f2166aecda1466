#include "fence/FontFolders.h"

#include "fence/ConfigurationFiles.h"
#include "fence/Environment.h"

#include <algorithm>
#include <cctype>
#include <set>
#include <string_view>

#include <sys/stat.h>

namespace {

using Paths = std::vector<std::string>;

// Of files that name each other.
constexpr int deepestInclude = 5;

std::string home()
{
    return Environment::value("HOME");
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

// The elements that name files and folders, and what the attribute prefix="xdg"
// stands for in each.
struct Element
{
    std::string_view tag;
    const char* xdgVariable;
    const char* xdgDefault;
    bool isFile; // of configuration, or a folder of such files
};

constexpr Element elements[] = {
    {"dir", "XDG_DATA_HOME", "/.local/share", false},
    {"cachedir", "XDG_CACHE_HOME", "/.cache", false},
    {"remap-dir", "XDG_DATA_HOME", "/.local/share", false},
    {"include", "XDG_CONFIG_HOME", "/.config", true},
};

// Looks for these elements. Those in comments are found as well, which does no
// harm.
class ConfigurationScan
{
public:
    void readFileOrFolder(const std::string& path, int depth)
    {
        struct stat info = {};
        if (depth > deepestInclude || path.empty() || stat(path.c_str(), &info) != 0) {
            return;
        }
        if (S_ISDIR(info.st_mode)) {
            ConfigurationFiles::readAll(
                path, ".conf", [this, depth](const std::string& file, const std::string& text) {
                    scan(file, text, depth);
                });
        } else {
            scan(path, ConfigurationFiles::content(path), depth);
        }
    }

    const Paths& folders() const { return m_folders; }

private:
    void scan(const std::string& path, const std::string& text, int depth)
    {
        if (!m_files.insert(path).second) {
            return;
        }
        std::string::size_type start = 0;
        while ((start = text.find('<', start)) != std::string::npos) {
            ++start;
            for (const Element& element : elements) {
                if (text[start] == element.tag[0] && isAt(text, start, element.tag)) {
                    add(element, text, start + element.tag.size(), path, depth);
                }
            }
        }
    }

    static bool isAt(const std::string& text, std::string::size_type start, std::string_view tag)
    {
        if (text.compare(start, tag.size(), tag) != 0) {
            return false;
        }
        const char behind = text[start + tag.size()];
        return behind == '>' || std::isspace(static_cast<unsigned char>(behind)) != 0;
    }

    // The attributes of the element begin at `start`.
    void add(const Element& element, const std::string& text, std::string::size_type start,
             const std::string& file, int depth)
    {
        const std::string::size_type open = text.find('>', start);
        const std::string::size_type end = text.find('<', open);
        if (end == std::string::npos) {
            return;
        }
        m_folders.push_back(expanded(text.substr(open + 1, end - open - 1),
                                     text.substr(start, open - start), file, element.xdgVariable,
                                     element.xdgDefault));
        if (element.isFile) {
            readFileOrFolder(std::string(m_folders.back()), depth + 1);
        }
    }

    Paths m_folders;
    std::set<std::string> m_files;
};

// Where the main file may be: fontconfig takes the first that exists.
Paths configurationFiles()
{
    std::string name = Environment::value("FONTCONFIG_FILE");
    if (name.empty()) {
        name = "fonts.conf";
    }
    if (name.rfind('~', 0) == 0) {
        return {home() + name.substr(1)};
    }
    if (name.rfind('/', 0) == 0) {
        return {name};
    }
    Paths files;
    for (const std::string& folder : Environment::parts("FONTCONFIG_PATH", ":")) {
        files.push_back(std::string(folder).append("/").append(name));
    }
    files.push_back("/etc/fonts/" + name);
    return files;
}

} // namespace

std::vector<std::string> FontFolders::readable()
{
    ConfigurationScan scan;
    Paths paths = configurationFiles();
    for (const std::string& file : paths) {
        scan.readFileOrFolder(file, 0);
    }
    paths.insert(paths.end(), scan.folders().begin(), scan.folders().end());
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
    std::string value = Environment::value(variable);
    if (!value.empty()) {
        return value;
    }
    return home().empty() ? std::string() : home() + defaultFolder;
}
