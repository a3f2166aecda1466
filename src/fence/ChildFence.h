#pragma once

#include "fence/InterpreterLocation.h"
#include "fence/LandlockRuleset.h"
#include "fence/PrivateFolder.h"
#include "fence/ProcessLimits.h"
#include "fence/SystemCallFilter.h"

#include <memory>
#include <string>
#include <vector>

/// The fence around one run of a program that interprets a stranger's document:
/// it may read the document and what it needs of the system, write into a
/// temporary folder of its own, and speak with nobody.
///
/// What the kernel, or whoever confines this program, does not grant of that is
/// left out in silence. A wrapper (see InterpreterLocation) has no rules for
/// files, programs and sockets.
class ChildFence
{
public:
    /// Makes everything ready, the temporary folder included. `documents` may be
    /// read. `newestAbi` as for LandlockRuleset.
    ChildFence(const InterpreterLocation& program, const std::vector<std::string>& documents,
               int newestAbi = LandlockInterface::latestAbi);

    /// Removes the temporary files if no other run has any.
    ~ChildFence();

    ChildFence(const ChildFence&) = delete;
    ChildFence& operator=(const ChildFence&) = delete;

    /// Puts the fence around the calling process: for the child between fork and
    /// exec. Async-signal-safe.
    void enter();

private:
    void prepareRules(const InterpreterLocation& program, const std::vector<std::string>& documents,
                      int newestAbi);
    void prepareEnvironment();

    bool m_isGranted;
    ProcessLimits m_limits;
    std::shared_ptr<PrivateFolder> m_temporaryFolder; // null for a wrapper
    std::shared_ptr<const LandlockRuleset> m_ruleset; // null for a wrapper
    SystemCallFilter m_filter;
    std::vector<std::string> m_variables; // owns what m_environment points to
    std::vector<char*> m_environment;     // empty if that of this process stays
};
