#include "fence/Environment.h"

#include <algorithm>
#include <cstdlib>

std::string Environment::value(const char* name)
{
    const char* value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

std::vector<std::string> Environment::parts(const char* name, const char* separators)
{
    const std::string text = value(name);
    std::vector<std::string> parts;
    std::string::size_type start = 0;
    while (start < text.size()) {
        const std::string::size_type end =
            std::min(text.find_first_of(separators, start), text.size());
        if (end > start) {
            parts.push_back(text.substr(start, end - start));
        }
        start = end + 1;
    }
    return parts;
}
