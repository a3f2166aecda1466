#include "fence/LandlockRuleset.h"

#include "fence/FileAccessRules.h"

#include <algorithm>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace LandlockInterface;

namespace {

// The kernel refuses all other rights on what is not a folder.
constexpr std::uint64_t rightsOnFiles = execute | writeFile | readFile | truncateFile | ioctlDevice;

std::uint64_t knownRights(int abi)
{
    std::uint64_t rights = refer - 1;
    rights |= abi >= 2 ? refer : 0;
    rights |= abi >= 3 ? truncateFile : 0;
    rights |= abi >= 5 ? ioctlDevice : 0;
    return rights;
}

RulesetAttributes attributesFor(const FileAccessRules& rules, int abi)
{
    RulesetAttributes attributes = {};
    attributes.handledFiles = rules.restricted() & knownRights(abi);
    attributes.handledNetwork = abi >= 4 ? bindTcp | connectTcp : 0;
    attributes.scoped = abi >= 6 ? scopeAbstractSocket | scopeSignal : 0;
    return attributes;
}

void addRule(int ruleset, const std::string& path, std::uint64_t rights)
{
    const int file = open(path.c_str(), O_PATH | O_CLOEXEC);
    struct stat info = {};
    if (file >= 0 && fstat(file, &info) == 0) {
        PathBeneathAttributes attributes = {};
        attributes.allowed = S_ISDIR(info.st_mode) ? rights : rights & rightsOnFiles;
        attributes.parent = file;
        syscall(addRuleCall, ruleset, pathBeneathRule, &attributes, 0);
    }
    if (file >= 0) {
        close(file);
    }
}

} // namespace

LandlockRuleset::LandlockRuleset(const FileAccessRules& rules, int newestAbi)
{
    const int abi = std::min(kernelAbi(), newestAbi);
    if (abi < 1) {
        return;
    }
    const RulesetAttributes attributes = attributesFor(rules, abi);
    m_descriptor = static_cast<int>(
        syscall(createRulesetCall, &attributes, sizeof attributes, 0)); // close-on-exec
    if (m_descriptor < 0) {
        return;
    }
    for (const FileAccessRules::Rule& rule : rules.rules()) {
        addRule(m_descriptor, rule.path, rule.rights & attributes.handledFiles);
    }
}

LandlockRuleset::~LandlockRuleset()
{
    if (m_descriptor >= 0) {
        close(m_descriptor);
    }
}

int LandlockRuleset::kernelAbi()
{
    return std::max(0, static_cast<int>(syscall(createRulesetCall, nullptr, 0, versionFlag)));
}

bool LandlockRuleset::restrictSelf() const
{
    return m_descriptor >= 0 && syscall(restrictSelfCall, m_descriptor, 0) == 0;
}
