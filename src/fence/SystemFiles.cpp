#include "fence/SystemFiles.h"

#include "fence/FontFolders.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

using Paths = std::vector<std::string>;

const char* const always[] = {
    "/usr/lib",
    "/usr/lib32",
    "/usr/lib64",
    "/usr/share",
    "/lib",
    "/lib32",
    "/lib64",
    "/usr/local/lib",
    "/usr/local/share",
    "/etc/ld.so.cache",
    "/etc/ld.so.preload",
    "/etc/localtime",
    "/etc/gnutls",
    "/etc/crypto-policies",
    "/etc/fonts",
    "/etc/ghostscript",
    "/etc/papersize",
    "/etc/paperspecs",
    "/var/lib/ghostscript",
    "/var/cache/fontconfig",
};

struct Variable
{
    const char* name;
    const char* separators;
};

const Variable variables[] = {
    {"GS_LIB", ":"},           {"GS_FONTPATH", ":"},     {"GS_FONTMAP", ":"},
    {"LD_LIBRARY_PATH", ":;"}, {"LD_PRELOAD", ": "},     {"FONTCONFIG_PATH", ""},
    {"FONTCONFIG_FILE", ""},   {"FONTCONFIG_SYSROOT", ""}, {"PAPERCONF", ""},
    {"XKEYSYMDB", ""},         {"LOCPATH", ":"},
};

std::string valueOf(const char* name)
{
    const char* value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

void addParts(const std::string& text, const std::string& separators, Paths& paths)
{
    std::string::size_type start = 0;
    while (start <= text.size()) {
        const std::string::size_type end = std::min(text.find_first_of(separators, start),
                                                    text.size());
        if (end > start) {
            paths.push_back(text.substr(start, end - start));
        }
        start = end + 1;
    }
}

// The folders in which the loader's cache may have found libraries.
void addLibraryFolders(Paths& paths)
{
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator("/etc/ld.so.conf.d", error)) {
        std::ifstream file(entry.path());
        for (std::string line; std::getline(file, line);) {
            if (line.rfind('/', 0) == 0) {
                paths.push_back(line);
            }
        }
    }
}

// libpaper 2 looks for what the user wants below this folder.
void addPaperOfUser(Paths& paths)
{
    const std::string folder = FontFolders::userFolder("XDG_CONFIG_HOME", "/.config");
    if (!folder.empty()) {
        paths.push_back(folder + "/papersize");
        paths.push_back(folder + "/paperspecs");
    }
}

} // namespace

std::vector<std::string> SystemFiles::readable()
{
    Paths paths(std::begin(always), std::end(always));
    for (const Variable& variable : variables) {
        addParts(valueOf(variable.name), variable.separators, paths);
    }
    addLibraryFolders(paths);
    addPaperOfUser(paths);
    const Paths fonts = FontFolders::readable();
    paths.insert(paths.end(), fonts.begin(), fonts.end());
    std::sort(paths.begin(), paths.end());
    paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
    return paths;
}
