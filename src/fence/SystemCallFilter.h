#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include <linux/filter.h>
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
    ///
    /// With `landlockAbi`, the version in force, below 3, files that are opened
    /// for reading cannot be emptied by that either; later ones see to it
    /// themselves, and the filter need not look at each file that is opened.
    static SystemCallFilter forConverter(int landlockAbi);

    /// For an interpreter of documents: the same, and no processes, no signals
    /// to others, no change of user, limits, or what happens when the parent ends.
    static SystemCallFilter forInterpreter(int landlockAbi);

    /// The process that signals may go to under forInterpreter(). Async-signal-safe.
    void allowSignalsTo(pid_t process);

    /// Puts the filter in force for the calling thread and its future children,
    /// for good. Async-signal-safe. Needs "no new privileges". False if that failed.
    bool install() const;

private:
    using Instructions = std::vector<sock_filter>;

    SystemCallFilter();

    void deny(const std::vector<long>& calls, int error);
    void denyKernelDoors();
    void denyChangesOutsideFiles(int landlockAbi);
    void denyNewProcesses();
    void denyForeignSignals();
    void denyGroupSignals();

    void assemble();
    Instructions decisionBetween(std::size_t first, std::size_t end) const;

    std::map<std::uint32_t, Instructions> m_decisions; // for each call that is not simply allowed
    Instructions m_program;
};
