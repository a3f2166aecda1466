#pragma once

#include <string>

#include <sys/types.h>

/// A new folder for temporary files, which nobody else may enter.
///
/// It is removed with all that is in it when it is destroyed and when a signal
/// that can be caught ends the program; after that whatever else handled the
/// signal has its turn. After SIGKILL it stays.
class PrivateFolder
{
public:
    /// The variables that say where, the most important first; else it is /tmp.
    static constexpr const char* variables[] = {"TMPDIR", "TEMP"};

    /// `variables` tell where it is made.
    PrivateFolder();
    ~PrivateFolder();

    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;

    /// Absolute, without links; empty if it could not be made.
    const std::string& path() const { return m_path; }

private:
    static void handleSignal(int number);
    static void installHandlers();
    static void restoreHandlers();

    void remove() const;

    std::string m_path;
    pid_t m_process;
    PrivateFolder* m_older = nullptr; // the list of those that exist
};
