#pragma once

#include <string>
#include <vector>

/// The variables of this process.
class Environment
{
public:
    /// Empty for one that is not set.
    static std::string value(const char* name);

    /// What stands between the separators in the value, each of which is one
    /// character, without what is empty.
    static std::vector<std::string> parts(const char* name, const char* separators);
};
