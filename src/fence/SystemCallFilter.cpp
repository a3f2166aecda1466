#include "fence/SystemCallFilter.h"

#include "fence/SystemCallNumbers.h"

#include <cerrno>
#include <cstddef>
#include <iterator>

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
constexpr std::uint16_t skip = BPF_JMP | BPF_JA;
constexpr std::uint16_t mask = BPF_ALU | BPF_AND | BPF_K;
constexpr std::uint16_t finish = BPF_RET | BPF_K;

constexpr std::uint32_t failWith(int error)
{
    return SECCOMP_RET_ERRNO | static_cast<std::uint32_t>(error);
}

constexpr sock_filter fails(int error)
{
    return {finish, 0, 0, failWith(error)};
}

constexpr sock_filter isAllowed = {finish, 0, 0, SECCOMP_RET_ALLOW};

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

// The flags of a call that opens a file.
std::vector<sock_filter> failsIfTruncatingWithoutWriting(unsigned flagsIndex)
{
    return {loadArgument(flagsIndex),
            {mask, 0, 0, O_ACCMODE | O_TRUNC},
            {isEqual, 0, 1, O_RDONLY | O_TRUNC},
            fails(EPERM),
            isAllowed};
}

} // namespace

SystemCallFilter::SystemCallFilter()
{
    denyKernelDoors();
}

SystemCallFilter SystemCallFilter::forWrapper()
{
    SystemCallFilter filter;
    filter.assemble();
    return filter;
}

SystemCallFilter SystemCallFilter::forConverter(int landlockAbi)
{
    SystemCallFilter filter;
    filter.denyChangesOutsideFiles(landlockAbi);
    filter.denyGroupSignals();
    filter.assemble();
    return filter;
}

SystemCallFilter SystemCallFilter::forInterpreter(int landlockAbi)
{
    SystemCallFilter filter;
    filter.denyChangesOutsideFiles(landlockAbi);
    filter.denyNewProcesses();
    filter.denyForeignSignals();
    filter.assemble();
    return filter;
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

void SystemCallFilter::deny(const std::vector<long>& calls, int error)
{
    for (const long call : calls) {
        m_decisions[static_cast<std::uint32_t>(call)] = {fails(error)};
    }
}

void SystemCallFilter::denyKernelDoors()
{
    deny(SystemCallNumbers::kernelDoors(), EPERM);
    constexpr std::uint32_t consoleSelection = 0x541C; // TIOCLINUX
    m_decisions[SYS_ioctl] = failsIfArgumentIs(1, {TIOCSTI, consoleSelection});
}

void SystemCallFilter::denyChangesOutsideFiles(int landlockAbi)
{
    deny(SystemCallNumbers::namespacesAndMounts(), EPERM);
    deny(SystemCallNumbers::otherProcesses(), EPERM);
    deny(SystemCallNumbers::sockets(), EPERM);
    deny(SystemCallNumbers::fileAttributes(), EPERM);
    constexpr int firstAbiWithTruncation = 3;
    if (landlockAbi < firstAbiWithTruncation) {
#ifdef SYS_open
        m_decisions[SYS_open] = failsIfTruncatingWithoutWriting(1);
#endif
        m_decisions[SYS_openat] = failsIfTruncatingWithoutWriting(2);
        // Its flags lie in memory, where no filter looks.
        deny({SystemCallNumbers::openat2}, ENOSYS);
    }
}

void SystemCallFilter::denyNewProcesses()
{
    deny(SystemCallNumbers::newProcesses(), EPERM);
    m_decisions[SYS_clone] = {
        loadArgument(0), {hasBit, 1, 0, CLONE_THREAD}, fails(EPERM), isAllowed};
    // After which glibc tries clone.
    deny({SystemCallNumbers::clone3}, ENOSYS);
    // A child is killed when its parent ends, and stays within its limits.
    deny(SystemCallNumbers::identityAndLimits(), EPERM);
    m_decisions[SYS_prctl] = failsIfArgumentIs(0, {PR_SET_PDEATHSIG});
    // Asking for limits is allowed: the pointer to new ones is null.
    m_decisions[SYS_prlimit64] = {loadArgument(2),    {isEqual, 0, 2, 0}, loadUpperHalf(2),
                                  {isEqual, 1, 0, 0}, fails(EPERM),       isAllowed};
}

void SystemCallFilter::denyForeignSignals()
{
    deny(SystemCallNumbers::signals(), EPERM);
    for (const std::uint32_t call : {std::uint32_t{SYS_kill}, std::uint32_t{SYS_tgkill}}) {
        m_decisions[call] = {loadArgument(0), {isEqual, 1, 0, ownProcess}, fails(EPERM), isAllowed};
    }
}

// Numbers below 1 stand for groups, or for all processes of the user.
void SystemCallFilter::denyGroupSignals()
{
    constexpr std::uint32_t firstNegative = 0x80000000;
    m_decisions[SYS_kill] = {loadArgument(0),
                             {isEqual, 1, 0, 0},
                             {isAtLeast, 0, 1, firstNegative},
                             fails(EPERM),
                             isAllowed};
}

void SystemCallFilter::assemble()
{
    m_program = {{load, 0, 0, offsetof(seccomp_data, arch)},
                 {isEqual, 1, 0, architecture},
                 fails(ENOSYS),
                 {load, 0, 0, offsetof(seccomp_data, nr)}};
#if defined(__x86_64__)
    m_program.push_back({isAtLeast, 0, 1, firstX32Call});
    m_program.push_back(fails(ENOSYS));
#endif
    const Instructions decision = decisionBetween(0, m_decisions.size());
    m_program.insert(m_program.end(), decision.begin(), decision.end());
}

// Halves the calls until few are left: the kernel tries each of its calls once
// when the filter is put in force, so a long row of comparisons takes time.
SystemCallFilter::Instructions SystemCallFilter::decisionBetween(std::size_t first,
                                                                 std::size_t end) const
{
    constexpr std::size_t few = 4;
    Instructions result;
    if (end - first > few) {
        const std::size_t middle = first + (end - first) / 2;
        const Instructions lower = decisionBetween(first, middle);
        const Instructions upper = decisionBetween(middle, end);
        result = {
            {isAtLeast, 0, 1, std::next(m_decisions.begin(), static_cast<long>(middle))->first},
            {skip, 0, 0, static_cast<std::uint32_t>(lower.size())}};
        result.insert(result.end(), lower.begin(), lower.end());
        result.insert(result.end(), upper.begin(), upper.end());
        return result;
    }
    for (std::size_t i = first; i < end; ++i) {
        const auto& [call, decision] = *std::next(m_decisions.begin(), static_cast<long>(i));
        result.push_back({isEqual, 0, static_cast<std::uint8_t>(decision.size()), call});
        result.insert(result.end(), decision.begin(), decision.end());
    }
    result.push_back(isAllowed);
    return result;
}
