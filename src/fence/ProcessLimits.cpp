#include "fence/ProcessLimits.h"

#include <algorithm>
#include <csignal>

#include <sys/stat.h>
#include <sys/sysinfo.h>
#include <unistd.h>

namespace {

// RLIM_INFINITY is the largest number.
rlimit lowered(__rlimit_resource resource, rlim_t soft, rlim_t hard)
{
    rlimit present = {RLIM_INFINITY, RLIM_INFINITY};
    getrlimit(resource, &present);
    return {std::min(soft, present.rlim_cur), std::min(hard, present.rlim_max)};
}

rlim_t standardErrorBytes()
{
    struct stat info = {};
    const bool isFile = fstat(STDERR_FILENO, &info) == 0 && S_ISREG(info.st_mode);
    return isFile ? static_cast<rlim_t>(info.st_size) : 0;
}

} // namespace

ProcessLimits::ProcessLimits() : m_limits{}
{
    const rlim_t memory = addressSpaceBytes();
    const rlim_t file = fileBytes + standardErrorBytes();
    // Who takes no notice of the signal of the first limit is killed by the second.
    constexpr rlim_t grace = 5;
    m_limits = {{{RLIMIT_CORE, lowered(RLIMIT_CORE, 0, 0)},
                 {RLIMIT_AS, lowered(RLIMIT_AS, memory, memory)},
                 {RLIMIT_FSIZE, lowered(RLIMIT_FSIZE, file, file)},
                 {RLIMIT_CPU, lowered(RLIMIT_CPU, processorSeconds, processorSeconds + grace)}}};
}

void ProcessLimits::enter() const
{
    for (const Limit& limit : m_limits) {
        setrlimit(limit.resource, &limit.value);
    }
    // Ignored, they would let a run go on with what is missing.
    signal(SIGXCPU, SIG_DFL);
    signal(SIGXFSZ, SIG_DFL);
}

rlim_t ProcessLimits::addressSpaceBytes()
{
    struct sysinfo info = {};
    if (sysinfo(&info) != 0) {
        return RLIM_INFINITY;
    }
    const rlim_t machine = (static_cast<rlim_t>(info.totalram) + info.totalswap) * info.mem_unit;
    return std::max(machine, leastAddressSpaceBytes);
}
