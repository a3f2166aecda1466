#include "fence/SystemCallFilter.h"

#include "fence/SystemCallNumbers.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>

#include <fcntl.h>
#include <linux/fs.h>
#include <linux/fsverity.h>
#include <linux/seccomp.h>
#include <linux/sockios.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace {

constexpr std::uint16_t load = FilterProgram::load;
constexpr std::uint16_t isEqual = FilterProgram::isEqual;
constexpr std::uint16_t isAtLeast = FilterProgram::isAtLeast;
constexpr std::uint16_t hasBit = BPF_JMP | BPF_JSET | BPF_K;
constexpr std::uint16_t mask = BPF_ALU | BPF_AND | BPF_K;

constexpr sock_filter fails(int error)
{
    return FilterProgram::failure(error);
}

constexpr sock_filter isAllowed = FilterProgram::permission();

// The lower half of an argument on these little-endian machines.
constexpr sock_filter loadArgument(unsigned index)
{
    return {
        load, 0, 0,
        static_cast<std::uint32_t>(offsetof(seccomp_data, args) + index * sizeof(std::uint64_t))};
}

constexpr sock_filter loadUpperHalf(unsigned index)
{
    sock_filter instruction = loadArgument(index);
    instruction.k += static_cast<std::uint32_t>(sizeof(std::uint32_t));
    return instruction;
}

// Stands for the number of the process until that is known.
constexpr std::uint32_t ownProcess = 0xFFFFFFFF;

// Each decision ends with a result. The numbers behind an operand say how many
// instructions to skip if the comparison is true, and if it is false.

std::vector<sock_filter> failsIfArgumentIs(unsigned index, const std::vector<std::uint32_t>& values)
{
    std::vector<sock_filter> result = {loadArgument(index)};
    // To the last instruction, over the comparisons that are left and the one result.
    for (std::size_t left = values.size(); left > 0; --left) {
        result.push_back(
            {isEqual, static_cast<std::uint8_t>(left), 0, values[values.size() - left]});
    }
    result.push_back(isAllowed);
    result.push_back(fails(EPERM));
    return result;
}

// The flags of a call that opens a file. Whoever empties it has to ask for
// writing, for which Landlock has a right; the fourth way of access, for device
// calls only, would be none that it knows.
std::vector<sock_filter> failsIfNotReadingOrWriting(unsigned flagsIndex)
{
    return {loadArgument(flagsIndex),
            {mask, 0, 0, O_ACCMODE | O_TRUNC},
            {isEqual, 3, 0, O_RDONLY | O_TRUNC},
            {mask, 0, 0, O_ACCMODE},
            {isEqual, 1, 0, O_ACCMODE},
            isAllowed,
            fails(EPERM)};
}

// Of the terminal: typing, two ways, and code of the kernel's for modems.
std::vector<std::uint32_t> terminalDoors()
{
    constexpr std::uint32_t consoleSelection = 0x541C; // TIOCLINUX
    return {TIOCSTI, consoleSelection, TIOCSETD};
}

// What a file is like, with it open for reading; and who gets the signals of an
// open file, which may be any process of the user.
std::vector<std::uint32_t> changesOfOpenFiles()
{
    return {FS_IOC_SETFLAGS,      FS_IOC_FSSETXATTR, FS_IOC_SETVERSION,
            FS_IOC_ENABLE_VERITY, FIOSETOWN,         SIOCSPGRP};
}

void denyKernelDoors(FilterProgram& calls)
{
    calls.fail(SystemCallNumbers::kernelDoors(), EPERM);
    calls.decide(SYS_ioctl, failsIfArgumentIs(1, terminalDoors()));
}

// Without CLONE_NEWTIME, whose bit means something else in this call.
constexpr std::uint32_t newNamespaces = CLONE_NEWNS | CLONE_NEWCGROUP | CLONE_NEWUTS |
                                        CLONE_NEWIPC | CLONE_NEWUSER | CLONE_NEWPID | CLONE_NEWNET;

void denyChangesOutsideFiles(FilterProgram& calls)
{
    calls.fail(SystemCallNumbers::namespacesAndMounts(), EPERM);
    calls.decide(SYS_clone,
                 {loadArgument(0), {hasBit, 0, 1, newNamespaces}, fails(EPERM), isAllowed});
    // Its flags lie in memory. glibc tries clone next.
    calls.fail({SystemCallNumbers::clone3}, ENOSYS);
    calls.fail(SystemCallNumbers::otherProcesses(), EPERM);
    calls.fail(SystemCallNumbers::sharedObjects(), EPERM);
    calls.fail(SystemCallNumbers::sockets(), EPERM);
    calls.fail(SystemCallNumbers::fileAttributes(), EPERM);
    std::vector<std::uint32_t> deviceCalls = terminalDoors();
    for (const std::uint32_t change : changesOfOpenFiles()) {
        deviceCalls.push_back(change);
    }
    calls.decide(SYS_ioctl, failsIfArgumentIs(1, deviceCalls));
    calls.decide(SYS_fcntl, failsIfArgumentIs(1, {F_SETOWN, F_SETOWN_EX}));
#ifdef SYS_open
    calls.decide(SYS_open, failsIfNotReadingOrWriting(1));
#endif
    calls.decide(SYS_openat, failsIfNotReadingOrWriting(2));
    calls.fail({SystemCallNumbers::openat2}, ENOSYS);
}

void denyNewProcesses(FilterProgram& calls, SystemCallFilter::Threads threads)
{
    calls.fail(SystemCallNumbers::newProcesses(), EPERM);
    if (threads == SystemCallFilter::Threads::Allowed) {
        calls.decide(SYS_clone, {loadArgument(0),
                                 {hasBit, 1, 0, newNamespaces},
                                 {hasBit, 1, 0, CLONE_THREAD},
                                 fails(EPERM),
                                 isAllowed});
    } else {
        calls.fail({SYS_clone}, EPERM);
    }
    // A child is killed when its parent ends, and stays within its limits.
    calls.fail(SystemCallNumbers::identityAndLimits(), EPERM);
    calls.decide(SYS_prctl, failsIfArgumentIs(0, {PR_SET_PDEATHSIG}));
    // Asking for limits is allowed: the pointer to new ones is null.
    calls.decide(SYS_prlimit64, {loadArgument(2),
                                 {isEqual, 0, 2, 0},
                                 loadUpperHalf(2),
                                 {isEqual, 1, 0, 0},
                                 fails(EPERM),
                                 isAllowed});
}

void denyForeignSignals(FilterProgram& calls)
{
    calls.fail(SystemCallNumbers::signals(), EPERM);
    for (const long call : {SYS_kill, SYS_tgkill}) {
        calls.decide(call, {loadArgument(0), {isEqual, 1, 0, ownProcess}, fails(EPERM), isAllowed});
    }
}

// Numbers below 1 stand for groups, or for all processes of the user.
void denyGroupSignals(FilterProgram& calls)
{
    constexpr std::uint32_t firstNegative = 0x80000000;
    calls.decide(SYS_kill, {loadArgument(0),
                            {isEqual, 1, 0, 0},
                            {isAtLeast, 0, 1, firstNegative},
                            fails(EPERM),
                            isAllowed});
}

} // namespace

SystemCallFilter::SystemCallFilter(const FilterProgram& calls) : m_program(calls.assembled()) {}

bool SystemCallFilter::isAvailable()
{
    constexpr std::uint32_t action = SECCOMP_RET_ERRNO;
    return !FilterProgram().assembled().empty() &&
           syscall(SYS_seccomp, SECCOMP_GET_ACTION_AVAIL, 0, &action) == 0;
}

SystemCallFilter SystemCallFilter::forWrapper()
{
    FilterProgram calls;
    denyKernelDoors(calls);
    return SystemCallFilter(calls);
}

SystemCallFilter SystemCallFilter::forConverter()
{
    FilterProgram calls;
    denyKernelDoors(calls);
    denyChangesOutsideFiles(calls);
    denyGroupSignals(calls);
    return SystemCallFilter(calls);
}

SystemCallFilter SystemCallFilter::forInterpreter(Threads threads)
{
    FilterProgram calls;
    denyKernelDoors(calls);
    denyChangesOutsideFiles(calls);
    denyNewProcesses(calls, threads);
    calls.fail(SystemCallNumbers::watches(), EPERM);
    denyForeignSignals(calls);
    return SystemCallFilter(calls);
}

void SystemCallFilter::allowSignalsTo(pid_t process)
{
    for (sock_filter& instruction : m_program) {
        if (instruction.code == isEqual && instruction.k == ownProcess) {
            instruction.k = static_cast<std::uint32_t>(process);
        }
    }
}

bool SystemCallFilter::install() const
{
    if (m_program.empty()) {
        return false;
    }
    // The kernel only reads it.
    const sock_fprog program = {static_cast<unsigned short>(m_program.size()),
                                const_cast<sock_filter*>(m_program.data())};
    // Before Linux 5.16 every filter slowed the whole process down without this.
    return syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_SPEC_ALLOW,
                   &program) == 0 ||
           syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, 0, &program) == 0;
}
