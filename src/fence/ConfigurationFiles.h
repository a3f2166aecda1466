#pragma once

#include <string>
#include <vector>

/// Text files in which the system's libraries are told where to look.
class ConfigurationFiles
{
public:
    /// The files of `folder` whose names end with `suffix`, in no order; none if
    /// it cannot be read.
    static std::vector<std::string> in(const std::string& folder, const std::string& suffix);

    /// What is in a file, up to 1 MiB; empty if it cannot be read. Waits for
    /// nobody, should it be a fifo.
    static std::string content(const std::string& path);
};
