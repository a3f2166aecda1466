#pragma once

#include "fence/LandlockInterface.h"

class FileAccessRules;

/// Rules for files made ready for the kernel, together with those that need no
/// list: no TCP, and no signals and abstract sockets to processes outside.
///
/// What the kernel does not know is left out, down to all of it.
class LandlockRuleset
{
public:
    /// Makes the ruleset. `newestAbi` leaves out what later versions of the
    /// interface brought, for the sake of tests.
    explicit LandlockRuleset(const FileAccessRules& rules,
                             int newestAbi = LandlockInterface::latestAbi);
    ~LandlockRuleset();

    LandlockRuleset(const LandlockRuleset&) = delete;
    LandlockRuleset& operator=(const LandlockRuleset&) = delete;

    /// The version of the interface that the kernel has; 0 for none.
    static int kernelAbi();

    /// Puts the rules in force for the calling thread and its future children,
    /// for good. Async-signal-safe. Needs "no new privileges". False if that
    /// failed, or if there is no ruleset.
    bool restrictSelf() const;

private:
    int m_descriptor = -1;
};
