#include "fence/SystemCallFilter.h"

#include "fence/SystemCallNumbers.h"

#include <cerrno>
#include <cstddef>

#include <fcntl.h>
#include <linux/audit.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace {

#if defined(__x86_64__)
constexpr std::uint32_t architecture = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr std::uint32_t architecture = AUDIT_ARCH_AARCH64;
#else
constexpr std::uint32_t architecture = 0; // none: no filter
#endif

// The calls of the x32 interface have numbers from here on.
constexpr std::uint32_t firstX32Call = 0x40000000;

constexpr std::uint16_t load = BPF_LD | BPF_W | BPF_ABS;
constexpr std::uint16_t isEqual = BPF_JMP | BPF_JEQ | BPF_K;
constexpr std::uint16_t isAtLeast = BPF_JMP | BPF_JGE | BPF_K;
constexpr std::uint16_t hasBit = BPF_JMP | BPF_JSET | BPF_K;
constexpr std::uint16_t mask = BPF_ALU | BPF_AND | BPF_K;
constexpr std::uint16_t finish = BPF_RET | BPF_K;

constexpr std::uint32_t failWith(int error)
{
    return SECCOMP_RET_ERRNO | static_cast<std::uint32_t>(error);
}

// The lower half of an argument on these little-endian machines.
constexpr std::uint32_t argumentOffset(unsigned index)
{
    return static_cast<std::uint32_t>(offsetof(seccomp_data, args) + index * sizeof(std::uint64_t));
}

constexpr std::uint32_t upperHalf = sizeof(std::uint32_t);

} // namespace

SystemCallFilter::SystemCallFilter()
{
    add(load, offsetof(seccomp_data, arch));
    add(isEqual, architecture, 1, 0);
    add(finish, failWith(ENOSYS));
    add(load, offsetof(seccomp_data, nr));
#if defined(__x86_64__)
    add(isAtLeast, firstX32Call, 0, 1);
    add(finish, failWith(ENOSYS));
#endif
    denyKernelDoors();
}

SystemCallFilter SystemCallFilter::forWrapper()
{
    SystemCallFilter filter;
    filter.allowRest();
    return filter;
}

SystemCallFilter SystemCallFilter::forConverter()
{
    SystemCallFilter filter;
    filter.denyChangesOutsideFiles();
    filter.denyGroupSignals();
    filter.allowRest();
    return filter;
}

SystemCallFilter SystemCallFilter::forInterpreter()
{
    SystemCallFilter filter;
    filter.denyChangesOutsideFiles();
    filter.denyNewProcesses();
    filter.denyForeignSignals();
    filter.allowRest();
    return filter;
}

void SystemCallFilter::allowSignalsTo(pid_t process)
{
    for (const std::size_t index : m_ownProcess) {
        m_program[index].k = static_cast<std::uint32_t>(process);
    }
}

bool SystemCallFilter::install() const
{
    if (architecture == 0) {
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

// A jump skips that many of the following instructions.
void SystemCallFilter::add(std::uint16_t code, std::uint32_t operand, std::uint8_t ifTrue,
                           std::uint8_t ifFalse)
{
    m_program.push_back({code, ifTrue, ifFalse, operand});
}

void SystemCallFilter::deny(long call, int error)
{
    add(isEqual, static_cast<std::uint32_t>(call), 0, 1);
    add(finish, failWith(error));
}

void SystemCallFilter::denyAll(const std::vector<long>& calls)
{
    for (const long call : calls) {
        deny(call, EPERM);
    }
}

void SystemCallFilter::denyArgument(long call, unsigned index, std::uint32_t value)
{
    add(isEqual, static_cast<std::uint32_t>(call), 0, 4);
    add(load, argumentOffset(index));
    add(isEqual, value, 0, 1);
    add(finish, failWith(EPERM));
    add(load, offsetof(seccomp_data, nr));
}

// Landlock asks for no right there before its ABI 3.
void SystemCallFilter::denyTruncatingWithoutWriting(long call, unsigned index)
{
    add(isEqual, static_cast<std::uint32_t>(call), 0, 5);
    add(load, argumentOffset(index));
    add(mask, O_ACCMODE | O_TRUNC);
    add(isEqual, O_RDONLY | O_TRUNC, 0, 1);
    add(finish, failWith(EPERM));
    add(load, offsetof(seccomp_data, nr));
}

void SystemCallFilter::denyKernelDoors()
{
    denyAll(SystemCallNumbers::kernelDoors());
    denyArgument(SYS_ioctl, 1, TIOCSTI);
    constexpr std::uint32_t consoleSelection = 0x541C; // TIOCLINUX
    denyArgument(SYS_ioctl, 1, consoleSelection);
}

void SystemCallFilter::denyChangesOutsideFiles()
{
    denyAll(SystemCallNumbers::namespacesAndMounts());
    denyAll(SystemCallNumbers::otherProcesses());
    denyAll(SystemCallNumbers::sockets());
    denyAll(SystemCallNumbers::fileAttributes());
#ifdef SYS_open
    denyTruncatingWithoutWriting(SYS_open, 1);
#endif
    denyTruncatingWithoutWriting(SYS_openat, 2);
    // Its flags lie in memory, where no filter looks.
    deny(SystemCallNumbers::openat2, ENOSYS);
}

void SystemCallFilter::denyNewProcesses()
{
    denyAll(SystemCallNumbers::newProcesses());
    // The same for clone3, after which glibc tries clone.
    deny(SystemCallNumbers::clone3, ENOSYS);
    add(isEqual, SYS_clone, 0, 4);
    add(load, argumentOffset(0));
    add(hasBit, CLONE_THREAD, 1, 0);
    add(finish, failWith(EPERM));
    add(load, offsetof(seccomp_data, nr));
    // A child is killed when its parent ends, and stays within its limits.
    denyAll(SystemCallNumbers::identityAndLimits());
    denyArgument(SYS_prctl, 0, PR_SET_PDEATHSIG);
    add(isEqual, SYS_prlimit64, 0, 6);
    add(load, argumentOffset(2));
    add(isEqual, 0, 0, 2);
    add(load, argumentOffset(2) + upperHalf);
    add(isEqual, 0, 1, 0);
    add(finish, failWith(EPERM));
    add(load, offsetof(seccomp_data, nr));
}

void SystemCallFilter::denyForeignSignals()
{
    denyAll(SystemCallNumbers::signals());
    for (const long call : {SYS_kill, SYS_tgkill}) {
        add(isEqual, static_cast<std::uint32_t>(call), 0, 4);
        add(load, argumentOffset(0));
        m_ownProcess.push_back(m_program.size());
        add(isEqual, 0, 1, 0);
        add(finish, failWith(EPERM));
        add(load, offsetof(seccomp_data, nr));
    }
}

// Numbers below 1 stand for groups, or for all processes of the user.
void SystemCallFilter::denyGroupSignals()
{
    constexpr std::uint32_t firstNegative = 0x80000000;
    add(isEqual, SYS_kill, 0, 5);
    add(load, argumentOffset(0));
    add(isEqual, 0, 1, 0);
    add(isAtLeast, firstNegative, 0, 1);
    add(finish, failWith(EPERM));
    add(load, offsetof(seccomp_data, nr));
}

void SystemCallFilter::allowRest()
{
    add(finish, SECCOMP_RET_ALLOW);
}
