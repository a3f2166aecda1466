#pragma once

#include "fence/FilterProgram.h"

#include <sys/types.h>

/// System calls that a process has to do without (seccomp). They fail with
/// EPERM, as if the system refused them; nothing is killed.
///
/// A list of what is denied, not of what is allowed: libraries change. All
/// filters deny the kernel's rarely used doors, those of foreign architectures
/// (ENOSYS), and typing into the terminal.
class SystemCallFilter
{
public:
    /// No more than that: for a program whose needs nobody knows.
    static SystemCallFilter forWrapper();

    /// For this program: also no sockets, nothing that changes files by other
    /// ways than opening them, no memory of other processes, and no signals to
    /// groups of processes.
    static SystemCallFilter forConverter();

    /// For an interpreter of documents: the same, and no processes, no signals
    /// to others, no change of user, limits, or what happens when the parent ends.
    static SystemCallFilter forInterpreter();

    /// Whether filters can be put in force here. Only for whoever may ask: see
    /// FencePermission.
    static bool isAvailable();

    /// The process that signals may go to under forInterpreter(). Async-signal-safe.
    void allowSignalsTo(pid_t process);

    /// Puts the filter in force for the calling thread and its future children,
    /// for good. Async-signal-safe. Needs "no new privileges". False if that failed.
    bool install() const;

private:
    explicit SystemCallFilter(const FilterProgram& calls);

    FilterProgram::Instructions m_program;
};
