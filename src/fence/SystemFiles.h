#pragma once

#include <string>
#include <vector>

/// The files and folders of the system that a program needs to run, to lay out
/// text and to know the paper, and those that the environment names for that.
class SystemFiles
{
public:
    /// Those that may exist, without those below others. The files that say so
    /// are read once, and anew when the environment has changed.
    static const std::vector<std::string>& readable();
};
