#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// What a process may do with which files and folders, each with everything
/// below it; all else that the rules restrict is denied. A name that does not
/// exist is no fault: nothing is allowed for it.
class FileAccessRules
{
public:
    struct Rule
    {
        std::string path;
        std::uint64_t rights; ///< Of LandlockInterface.
    };

    /// Rules that restrict everything; `unrestricted` are rights that anybody
    /// keeps everywhere. Emptying files is left to the SystemCallFilter where
    /// there is one, which costs less whenever a file is opened.
    explicit FileAccessRules(std::uint64_t unrestricted = 0);

    void allowReading(const std::string& path);
    void allowReading(const std::vector<std::string>& paths);
    void allowExecuting(const std::string& path);

    /// Reading, writing, making and removing regular files.
    void allowChangingFiles(const std::string& folder);

    /// The same, and making and removing folders.
    void allowChangingFolders(const std::string& folder);

    /// Removing files.
    void allowRemovingFiles(const std::string& folder);

    /// Removing empty folders.
    void allowRemovingFolders(const std::string& folder);

    bool operator==(const FileAccessRules& other) const;

    const std::vector<Rule>& rules() const { return m_rules; }
    std::uint64_t restricted() const { return m_restricted; }

private:
    void allow(const std::string& path, std::uint64_t rights);

    std::uint64_t m_restricted;
    std::vector<Rule> m_rules;
};
