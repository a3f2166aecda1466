#pragma once

#include "files/EndingSignals.h"
#include "files/OutputFileName.h"

#include <atomic>
#include <string>

#include <sys/stat.h>
#include <sys/types.h>

/// Sees to it that no partly written output file is left behind, whether the
/// conversion fails, throws, or is ended by a signal that can be caught: by a
/// user, by a limit, or by a crash in a library. At most one guard exists at a
/// time.
///
/// Only the very file that was opened is removed, and only if it is a regular
/// one: a device or a fifo stays. OutputFileName tells what becomes of symbolic
/// links, EndingSignals what becomes of the signals.
///
/// Once it is constructed, nothing here throws or allocates.
class OutputFileGuard
{
public:
    /// Construct it before the file is opened; all signals but crashes wait
    /// until opened(), failedToOpen() or notOpened(). Whenever a signal ends the
    /// program, until the guard is destroyed, `alsoCleanUp` runs too, if it is not
    /// null.
    explicit OutputFileGuard(const std::string& fileName,
                             EndingSignals::CleanUp alsoCleanUp = nullptr);

    /// Removes the file unless it was kept.
    ~OutputFileGuard();

    OutputFileGuard(const OutputFileGuard&) = delete;
    OutputFileGuard& operator=(const OutputFileGuard&) = delete;

    /// The file is open under this descriptor: from now on it is guarded.
    void opened(int descriptor);

    /// The file could not be opened. What the attempt left behind is removed:
    /// a new file, or one that it emptied, of a few bytes at most.
    void failedToOpen();

    /// No attempt was made to open the file: it belongs to somebody else.
    void notOpened();

    /// True if the name still leads to the very file that is guarded, or if none
    /// is. To be asked while the file is open: then no other can be mistaken for
    /// it.
    bool isInPlace() const;

    /// The file is complete.
    void keep();

private:
    enum class State
    {
        Opening, ///< The file may be open already.
        Guarding,
        Done,
    };

    static void cleanUp();
    void removeFile() const;
    void removeAttempt() const;

    OutputFileName m_name;
    pid_t m_process;
    struct stat m_before = {}; // filled in before m_existedBefore is set
    bool m_existedBefore;
    struct stat m_file = {}; // identifies the file that was opened
    std::atomic<State> m_state{State::Opening};
    EndingSignals m_signals;
};
