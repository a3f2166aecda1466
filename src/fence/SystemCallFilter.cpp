#include "fence/SystemCallFilter.h"

#include "fence/SystemCallNumbers.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>

#include <fcntl.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace {

constexpr std::uint16_t load = BPF_LD | BPF_W | BPF_ABS;
constexpr std::uint16_t isEqual = BPF_JMP | BPF_JEQ | BPF_K;
constexpr std::uint16_t isAtLeast = BPF_JMP | BPF_JGE | BPF_K;
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
    for (const std::uint32_t value : values) {
        result.push_back({isEqual, 0, 1, value});
        result.push_back(fails(EPERM));
    }
    result.push_back(isAllowed);
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

void denyKernelDoors(FilterProgram& calls)
{
    calls.fail(SystemCallNumbers::kernelDoors(), EPERM);
    constexpr std::uint32_t consoleSelection = 0x541C; // TIOCLINUX
    calls.decide(SYS_ioctl, failsIfArgumentIs(1, {TIOCSTI, consoleSelection}));
}

void denyChangesOutsideFiles(FilterProgram& calls)
{
    calls.fail(SystemCallNumbers::namespacesAndMounts(), EPERM);
    calls.fail(SystemCallNumbers::otherProcesses(), EPERM);
    calls.fail(SystemCallNumbers::sockets(), EPERM);
    calls.fail(SystemCallNumbers::fileAttributes(), EPERM);
#ifdef SYS_open
    calls.decide(SYS_open, failsIfNotReadingOrWriting(1));
#endif
    calls.decide(SYS_openat, failsIfNotReadingOrWriting(2));
    // Its flags lie in memory, where no filter looks.
    calls.fail({SystemCallNumbers::openat2}, ENOSYS);
}

void denyNewProcesses(FilterProgram& calls)
{
    calls.fail(SystemCallNumbers::newProcesses(), EPERM);
    calls.decide(SYS_clone,
                 {loadArgument(0), {hasBit, 1, 0, CLONE_THREAD}, fails(EPERM), isAllowed});
    // After which glibc tries clone.
    calls.fail({SystemCallNumbers::clone3}, ENOSYS);
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

SystemCallFilter SystemCallFilter::forInterpreter()
{
    FilterProgram calls;
    denyKernelDoors(calls);
    denyChangesOutsideFiles(calls);
    denyNewProcesses(calls);
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
