#pragma once

#include <array>

#include <sys/resource.h>

/// What a child may use up of the machine. A limit that is lower already stays.
///
/// Time and file size end the child by a signal. Memory does not: where a
/// request fails, a program may go on and leave something out. So the limit is
/// as much as the machine has, where a program without it would fail as well.
class ProcessLimits
{
public:
    static constexpr rlim_t leastAddressSpaceBytes = 4294967296;
    static constexpr rlim_t fileBytes = 4294967296;
    static constexpr rlim_t processorSeconds = 3600;

    /// Works out the limits for a child that shares standard error with this
    /// process: should that be a file, its present size is added.
    ProcessLimits();

    /// Sets them for the calling process. Async-signal-safe.
    void enter() const;

    /// Memory and swap space of the machine, but not below the least.
    static rlim_t addressSpaceBytes();

private:
    struct Limit
    {
        __rlimit_resource resource;
        rlimit value;
    };

    std::array<Limit, 4> m_limits;
};
