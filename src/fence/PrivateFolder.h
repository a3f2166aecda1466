#pragma once

#include <memory>
#include <string>

#include <sys/types.h>

/// A new folder for temporary files, which nobody else may enter. At most one
/// exists at a time.
///
/// It is removed with all that is in it when it is destroyed, or by
/// removeExisting(), which is for whoever deals with signals. After SIGKILL it
/// stays.
class PrivateFolder
{
public:
    /// The variables that say where, the most important first; else it is /tmp.
    static constexpr const char* variables[] = {"TMPDIR", "TEMP"};

    /// The one that exists, or a new one. `variables` tell where it is made.
    static std::shared_ptr<PrivateFolder> shared();

    ~PrivateFolder();

    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;

    /// Absolute, without links; empty if it could not be made.
    const std::string& path() const { return m_path; }

    /// Removes what is in it. Async-signal-safe.
    void clear() const;

    /// Removes the one that exists, if this process has made it.
    /// Async-signal-safe.
    static void removeExisting();

private:
    PrivateFolder();

    void remove() const;

    std::string m_path;
    pid_t m_process;
};
