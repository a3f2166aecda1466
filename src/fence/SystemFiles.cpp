#include "fence/SystemFiles.h"

#include "fence/ConfigurationFiles.h"
#include "fence/Environment.h"
#include "fence/FontFolders.h"

#include <algorithm>

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
    {"GS_LIB", ":"},           {"GS_FONTPATH", ":"},       {"GS_FONTMAP", ":"},
    {"LD_LIBRARY_PATH", ":;"}, {"LD_PRELOAD", ": "},       {"FONTCONFIG_PATH", ":"},
    {"FONTCONFIG_FILE", ""},   {"FONTCONFIG_SYSROOT", ""}, {"PAPERCONF", ""},
    {"XKEYSYMDB", ""},         {"LOCPATH", ":"},
};

void append(const Paths& added, Paths& paths)
{
    paths.insert(paths.end(), added.begin(), added.end());
}

// The lines that are absolute names.
void addNamedLines(const std::string& text, Paths& paths)
{
    std::string::size_type end = 0;
    for (std::string::size_type start = 0; start < text.size(); start = end + 1) {
        end = std::min(text.find('\n', start), text.size());
        if (text[start] == '/') {
            paths.push_back(text.substr(start, end - start));
        }
    }
}

// The folders in which the loader's cache may have found libraries.
void addLibraryFolders(Paths& paths)
{
    ConfigurationFiles::readAll("/etc/ld.so.conf.d", ".conf",
                                [&paths](const std::string& /*path*/, const std::string& text) {
                                    addNamedLines(text, paths);
                                });
    addNamedLines(ConfigurationFiles::content("/etc/ld.so.conf"), paths);
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

bool isBelow(const std::string& path, const std::string& folder)
{
    return path.size() > folder.size() && path[folder.size()] == '/' &&
           path.compare(0, folder.size(), folder) == 0;
}

Paths find()
{
    Paths paths(std::begin(always), std::end(always));
    for (const Variable& variable : variables) {
        append(Environment::parts(variable.name, variable.separators), paths);
    }
    addLibraryFolders(paths);
    addPaperOfUser(paths);
    append(FontFolders::readable(), paths);

    // Each rule costs a little whenever a file is opened.
    std::sort(paths.begin(), paths.end());
    Paths result;
    for (const std::string& path : paths) {
        const auto contains = [&path](const std::string& other) {
            return path == other || isBelow(path, other);
        };
        if (std::none_of(result.begin(), result.end(), contains)) {
            result.push_back(path);
        }
    }
    return result;
}

// All on which the answer depends but the files themselves.
std::string question()
{
    std::string text;
    for (const Variable& variable : variables) {
        text += Environment::value(variable.name) + '\0';
    }
    for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"}) {
        text += Environment::value(name) + '\0';
    }
    return text;
}

} // namespace

const std::vector<std::string>& SystemFiles::readable()
{
    static std::string answered;
    static Paths answer;
    if (answer.empty() || answered != question()) {
        answer = find();
        answered = question();
    }
    return answer;
}
