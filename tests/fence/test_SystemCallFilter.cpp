#include "fence/SystemCallFilter.h"

#include "fence/FilterRun.h"
#include "fence/SystemCallNumbers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <ostream>

#include <fcntl.h>
#include <linux/fs.h>
#include <sched.h>
#include <sys/prctl.h>

using FilterRun::allowed;
using FilterRun::failsWith;
using FilterRun::resultOf;
using Threads = SystemCallFilter::Threads;

namespace {

struct Row
{
    const char* name;
    long call;
    std::initializer_list<std::uint64_t> arguments;
    std::uint32_t forWrapper;
    std::uint32_t forConverter;
    std::uint32_t forInterpreter;
};

void PrintTo(const Row& row, std::ostream* stream)
{
    *stream << row.name;
}

constexpr std::uint32_t denied = failsWith(EPERM);
constexpr std::uint32_t unknown = failsWith(ENOSYS);

#ifdef SYS_open
constexpr long oldOpen = SYS_open;
#else
constexpr long oldOpen = SYS_openat;
#endif

constexpr std::uint64_t ownProcess = 4711;
constexpr std::uint64_t minusOne = 0xFFFFFFFFFFFFFFFF;
constexpr std::uint64_t minusOneAsInt = 0xFFFFFFFF;

const Row rows[] = {
    {"Reading", SYS_read, {}, allowed, allowed, allowed},
    {"Writing", SYS_write, {}, allowed, allowed, allowed},
    {"Executing", SYS_execve, {}, allowed, allowed, allowed},
    {"OpeningToRead", SYS_openat, {0, 0, O_RDONLY}, allowed, allowed, allowed},
    {"OpeningToWrite", SYS_openat, {0, 0, O_WRONLY | O_CREAT | O_TRUNC}, allowed, allowed, allowed},
    {"OpeningForBoth", SYS_openat, {0, 0, O_RDWR | O_TRUNC}, allowed, allowed, allowed},
    {"OpeningToEmpty", SYS_openat, {0, 0, O_RDONLY | O_TRUNC}, allowed, denied, denied},
    {"OpeningForDeviceCalls", SYS_openat, {0, 0, O_ACCMODE}, allowed, denied, denied},
    {"OpeningToEmptyForDeviceCalls",
     SYS_openat,
     {0, 0, O_ACCMODE | O_TRUNC},
     allowed,
     denied,
     denied},
#ifdef SYS_open
    {"OpeningToReadByTheOldCall", SYS_open, {0, O_RDONLY, O_TRUNC}, allowed, allowed, allowed},
    {"OpeningToEmptyByTheOldCall", SYS_open, {0, O_RDONLY | O_TRUNC}, allowed, denied, denied},
#endif
    {"OpeningWithFlagsInMemory", SystemCallNumbers::openat2, {}, allowed, unknown, unknown},
    {"Threads", SYS_clone, {CLONE_THREAD | CLONE_VM}, allowed, allowed, denied},
    {"Processes", SYS_clone, {SIGCHLD}, allowed, allowed, denied},
    {"ProcessesInNamespaces", SYS_clone, {CLONE_NEWUSER | SIGCHLD}, allowed, denied, denied},
    {"ProcessesByTheNewCall", SystemCallNumbers::clone3, {}, allowed, unknown, unknown},
    {"SignalsToItself", SYS_kill, {ownProcess}, allowed, allowed, allowed},
    {"SignalsToOthers", SYS_kill, {1}, allowed, allowed, denied},
    {"SignalsToItsGroup", SYS_kill, {0}, allowed, denied, denied},
    {"SignalsToAll", SYS_kill, {minusOne}, allowed, denied, denied},
    {"SignalsToAllInFewBits", SYS_kill, {minusOneAsInt}, allowed, denied, denied},
    {"SignalsToItsThreads", SYS_tgkill, {ownProcess, 1}, allowed, allowed, allowed},
    {"SignalsToThreadsOfOthers", SYS_tgkill, {1, 1}, allowed, allowed, denied},
    {"OwnersOfFiles", SYS_fcntl, {0, F_SETOWN}, allowed, denied, denied},
    {"FlagsOfDescriptors", SYS_fcntl, {0, F_SETFD}, allowed, allowed, allowed},
    {"TypingIntoTheTerminal", SYS_ioctl, {0, 0x5412}, denied, denied, denied},
    {"TypingWithHighBits", SYS_ioctl, {0, 0x100005412}, denied, denied, denied},
    {"AttributesOfOpenFiles", SYS_ioctl, {0, FS_IOC_SETFLAGS}, allowed, denied, denied},
    {"SizeOfTheTerminal", SYS_ioctl, {0, 0x5413}, allowed, allowed, allowed},
    {"EndWithTheParent", SYS_prctl, {PR_SET_PDEATHSIG}, allowed, allowed, denied},
    {"NameOfTheProcess", SYS_prctl, {PR_SET_NAME}, allowed, allowed, allowed},
    {"AskingForLimits", SYS_prlimit64, {0, 0, 0}, allowed, allowed, allowed},
    {"SettingLimits", SYS_prlimit64, {0, 0, 8}, allowed, allowed, denied},
    {"SettingLimitsFromFarAway", SYS_prlimit64, {0, 0, 0x100000000}, allowed, allowed, denied},
    {"Sockets", SYS_socket, {}, allowed, denied, denied},
    {"Mounting", SYS_mount, {}, allowed, denied, denied},
    {"Bpf", SYS_bpf, {}, denied, denied, denied},
};

class Decision : public testing::TestWithParam<Row>
{
};

TEST_P(Decision, IsThisForEachKindOfProgram)
{
    const Row& row = GetParam();
    SystemCallFilter interpreter = SystemCallFilter::forInterpreter(Threads::Denied);
    interpreter.allowSignalsTo(ownProcess);
    EXPECT_EQ(resultOf(SystemCallFilter::forWrapper().program(), row.call, row.arguments),
              row.forWrapper);
    EXPECT_EQ(resultOf(SystemCallFilter::forConverter().program(), row.call, row.arguments),
              row.forConverter);
    EXPECT_EQ(resultOf(interpreter.program(), row.call, row.arguments), row.forInterpreter);
}

INSTANTIATE_TEST_SUITE_P(SystemCallFilter, Decision, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(SystemCallFilter, LetsAnInterpreterHaveThreadsButNoProcesses)
{
    const SystemCallFilter filter = SystemCallFilter::forInterpreter(Threads::Allowed);
    const auto cloned = [&filter](std::uint64_t flags) {
        return resultOf(filter.program(), SYS_clone, {flags});
    };
    EXPECT_EQ(cloned(CLONE_THREAD | CLONE_VM), allowed);
    EXPECT_EQ(cloned(CLONE_THREAD | CLONE_VM | CLONE_NEWNET), denied);
    EXPECT_EQ(cloned(SIGCHLD), denied);
}

// Every call of the lists, and of all others none without a row above.
TEST(SystemCallFilter, DeniesAnInterpreterWhatIsListed)
{
    std::vector<long> listed;
    for (const auto& calls :
         {SystemCallNumbers::kernelDoors(), SystemCallNumbers::namespacesAndMounts(),
          SystemCallNumbers::otherProcesses(), SystemCallNumbers::sharedObjects(),
          SystemCallNumbers::sockets(), SystemCallNumbers::fileAttributes(),
          SystemCallNumbers::newProcesses(), SystemCallNumbers::watches(),
          SystemCallNumbers::identityAndLimits(), SystemCallNumbers::signals()}) {
        listed.insert(listed.end(), calls.begin(), calls.end());
    }
    for (const Row& row : rows) {
        if (row.forInterpreter != allowed) {
            listed.push_back(row.call);
        }
    }
    const SystemCallFilter filter = SystemCallFilter::forInterpreter(Threads::Denied);
    constexpr long end = 1000;
    for (long call = 0; call < end; ++call) {
        const bool isListed = std::find(listed.begin(), listed.end(), call) != listed.end();
        const bool isDecidedByArguments = call == SYS_openat || call == oldOpen ||
                                          call == SYS_ioctl || call == SYS_fcntl ||
                                          call == SYS_prctl || call == SYS_prlimit64;
        EXPECT_EQ(resultOf(filter.program(), call) != allowed, isListed && !isDecidedByArguments)
            << call;
    }
}

// The kernel tries all its calls when it takes a filter, three times for a
// document.
TEST(SystemCallFilter, IsShort)
{
    constexpr std::size_t instructions = 255;
    EXPECT_LT(SystemCallFilter::forConverter().program().size(), instructions);
    EXPECT_LT(SystemCallFilter::forInterpreter(Threads::Denied).program().size(), instructions);
}

} // namespace
