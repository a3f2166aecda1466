#pragma once

#include <string>
#include <vector>

/// The files and folders of the system that a program needs to run, to lay out
/// text and to know the paper, and those that the environment names for that.
class SystemFiles
{
public:
    /// They need not exist. Read from the environment as it is now.
    static std::vector<std::string> readable();
};
