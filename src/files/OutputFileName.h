#pragma once

#include <string>

#include <sys/stat.h>

/// The names under which an output file may have to be removed.
///
/// They are worked out before the file is opened. What is asked afterwards
/// neither throws nor allocates, and may be asked in a signal handler.
class OutputFileName
{
public:
    explicit OutputFileName(const std::string& fileName);

    /// The name as it was given.
    const std::string& path() const { return m_fileName; }

    /// What the name leads to at the moment; false if that is nothing.
    bool find(struct stat& file) const;

    /// True if the name leads to this very file.
    bool leadsTo(const struct stat& file) const;

    /// Removes this very file and nothing else. Where the name is a symbolic
    /// link, the link goes together with the file it led to, unless it is one of
    /// the system's own, such as /dev/stdout.
    void remove(const struct stat& file) const;

    static bool isSameFile(const struct stat& one, const struct stat& other);

private:
    std::string m_fileName;
    std::string m_target; // where a symbolic link leads, else empty
    bool m_isSystemLink = false;
};
