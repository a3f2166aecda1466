#pragma once

#include <cstddef>
#include <cstdint>

/// What the kernel's header <linux/landlock.h> says, with the kernel that brought
/// it: the headers of Debian 12 end with Linux 6.1.
namespace LandlockInterface {

// Linux 5.13, ABI 1. The numbers are the same on all architectures.
constexpr long createRulesetCall = 444;
constexpr long addRuleCall = 445;
constexpr long restrictSelfCall = 446;
constexpr std::uint32_t versionFlag = 1U << 0; // of createRulesetCall
constexpr int pathBeneathRule = 1;

constexpr std::uint64_t execute = 1ULL << 0;
constexpr std::uint64_t writeFile = 1ULL << 1;
constexpr std::uint64_t readFile = 1ULL << 2;
constexpr std::uint64_t readFolder = 1ULL << 3;
constexpr std::uint64_t removeFolder = 1ULL << 4;
constexpr std::uint64_t removeFile = 1ULL << 5;
constexpr std::uint64_t makeCharacterDevice = 1ULL << 6;
constexpr std::uint64_t makeFolder = 1ULL << 7;
constexpr std::uint64_t makeFile = 1ULL << 8;
constexpr std::uint64_t makeSocket = 1ULL << 9;
constexpr std::uint64_t makeFifo = 1ULL << 10;
constexpr std::uint64_t makeBlockDevice = 1ULL << 11;
constexpr std::uint64_t makeSymbolicLink = 1ULL << 12;
// Linux 5.19, ABI 2. Where it is not handled, moving between folders is denied.
constexpr std::uint64_t refer = 1ULL << 13;
// Linux 6.2, ABI 3.
constexpr std::uint64_t truncateFile = 1ULL << 14;
// Linux 6.7, ABI 4.
constexpr std::uint64_t bindTcp = 1ULL << 0;
constexpr std::uint64_t connectTcp = 1ULL << 1;
// Linux 6.10, ABI 5.
constexpr std::uint64_t ioctlDevice = 1ULL << 15;
// Linux 6.12, ABI 6.
constexpr std::uint64_t scopeAbstractSocket = 1ULL << 0;
constexpr std::uint64_t scopeSignal = 1ULL << 1;
// Linux 6.15, ABI 7: flags about logging, not used here.
constexpr int latestAbi = 7;

struct RulesetAttributes
{
    std::uint64_t handledFiles;
    std::uint64_t handledNetwork; // ABI 4
    std::uint64_t scoped;         // ABI 6
};

struct PathBeneathAttributes
{
    std::uint64_t allowed;
    std::int32_t parent;
} __attribute__((packed));

} // namespace LandlockInterface
