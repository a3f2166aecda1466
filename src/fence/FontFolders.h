#pragma once

#include <string>
#include <vector>

/// Where fontconfig looks for fonts, and where it keeps what it knows of them,
/// as its configuration says.
class FontFolders
{
public:
    /// The folders of fonts, of the cache and of the user's configuration. They
    /// need not exist. Read from the files and the environment as they are now.
    static std::vector<std::string> readable();

    /// The user's own folder of the cache; empty without a home folder.
    static std::string userCache();

    /// The value of `variable` or, without one, `defaultFolder` below the home
    /// folder; empty without that either.
    static std::string userFolder(const char* variable, const std::string& defaultFolder);
};
