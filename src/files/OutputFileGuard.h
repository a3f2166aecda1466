#pragma once

#include <array>
#include <csignal>
#include <string>

#include <sys/stat.h>
#include <sys/types.h>

/// Sees to it that no partly written output file is left behind, whether the
/// conversion fails, throws, or is ended by a signal: SIGHUP, SIGINT, SIGPIPE,
/// SIGTERM, a limit (SIGXCPU, SIGXFSZ), or a crash in a library (SIGABRT, SIGBUS,
/// SIGSEGV). At most one guard exists at a time.
///
/// Only the very file that was opened is removed, and only if it is a regular
/// one: a device or a fifo stays. Where the name is a symbolic link, the link
/// goes together with the file it leads to, unless it is one of the system's
/// own, such as /dev/stdout. A signal that was ignored at start stays ignored;
/// any other ends the program as it would without the guard.
class OutputFileGuard
{
public:
    /// Construct it before the file is opened; the signals wait until
    /// opened() or failedToOpen().
    explicit OutputFileGuard(const std::string& fileName);

    /// Removes the file unless it was kept.
    ~OutputFileGuard();

    OutputFileGuard(const OutputFileGuard&) = delete;
    OutputFileGuard& operator=(const OutputFileGuard&) = delete;

    /// The file is open under this descriptor: from now on it is guarded.
    void opened(int descriptor);

    /// The file could not be opened. What the attempt left behind is removed:
    /// a new empty file, or one that it emptied.
    void failedToOpen();

    /// The file is complete.
    void keep();

private:
    static constexpr std::array<int, 9> signalNumbers = {SIGABRT, SIGBUS,  SIGHUP,  SIGINT, SIGPIPE,
                                                         SIGSEGV, SIGTERM, SIGXCPU, SIGXFSZ};

    static void handleSignal(int number);

    void installHandlers();
    void restoreHandlers();
    void releaseSignals();
    void findRemovableNames();
    void removeFile() const;

    std::string m_fileName;
    std::string m_removedName;   // m_fileName, or empty if that name has to stay
    std::string m_removedTarget; // where a symbolic link leads, else empty
    pid_t m_process;
    struct stat m_before = {}; // filled in before m_existedBefore is set
    bool m_existedBefore;
    bool m_isHoldingSignals = true;
    bool m_isGuarding = false;
    struct stat m_file = {}; // identifies the file that was opened
    sigset_t m_maskBefore = {};
    std::array<struct sigaction, signalNumbers.size()> m_actionsBefore = {};
};
