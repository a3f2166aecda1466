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
    /// ways than opening them, no memory or namespace but its own, and no signals
    /// to groups of processes.
    static SystemCallFilter forConverter();

    /// A thread that executes a program has it outlive the parent, whatever was
    /// asked for when the process was made.
    enum class Threads
    {
        Denied,
        Allowed
    };

    /// For an interpreter of documents: the same, and no processes, no signals
    /// to others, no watching of folders, no change of user, limits, or what
    /// happens when the parent ends.
    static SystemCallFilter forInterpreter(Threads threads);

    /// Whether filters can be put in force here. Only for whoever may ask: see
    /// FencePermission.
    static bool isAvailable();

    /// The process that signals may go to under forInterpreter(). Async-signal-safe.
    void allowSignalsTo(pid_t process);

    /// Puts the filter in force for the calling thread and its future children,
    /// for good. Async-signal-safe. Needs "no new privileges". False if that failed.
    bool install() const;

    /// The filter for the kernel; empty if there is none for this architecture.
    const FilterProgram::Instructions& program() const { return m_program; }

private:
    explicit SystemCallFilter(const FilterProgram& calls);

    FilterProgram::Instructions m_program;
};
