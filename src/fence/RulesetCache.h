#pragma once

#include <memory>
#include <string>
#include <vector>

class FileAccessRules;
class LandlockRuleset;

/// Keeps the ruleset for one run of a program, as the next run usually reads the
/// same document: to open all files of the rules takes time.
class RulesetCache
{
public:
    /// A ruleset as LandlockRuleset makes it. It is that of the last call if the
    /// rules and `newestAbi` are the same, and the names of `documents`, which are
    /// among the rules, still stand for the same files. The other files are taken
    /// to stay, as the rules of a ParentFence do.
    static std::shared_ptr<const LandlockRuleset>
    rulesetFor(const FileAccessRules& rules, const std::vector<std::string>& documents,
               int newestAbi);
};
