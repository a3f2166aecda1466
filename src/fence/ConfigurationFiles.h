#pragma once

#include <functional>
#include <string>

/// Text files in which the system's libraries are told where to look.
class ConfigurationFiles
{
public:
    /// Gets a file and what is in it.
    using Reader = std::function<void(const std::string& path, const std::string& content)>;

    /// Has the files of `folder` read whose names end with `suffix`, in no order;
    /// none if it cannot be read.
    static void readAll(const std::string& folder, const std::string& suffix, const Reader& reader);

    /// What is in a file, up to 1 MiB; empty if it cannot be read. Waits for
    /// nobody, should it be a fifo.
    static std::string content(const std::string& path);
};
