#include "fence/RulesetCache.h"

#include "fence/FileAccessRules.h"
#include "fence/LandlockRuleset.h"

#include <optional>
#include <utility>

#include <sys/stat.h>

namespace {

using Identity = std::pair<dev_t, ino_t>;

// A file that does not exist has the identity of none.
std::vector<Identity> identitiesOf(const std::vector<std::string>& files)
{
    std::vector<Identity> identities;
    for (const std::string& file : files) {
        struct stat info = {};
        const bool exists = stat(file.c_str(), &info) == 0;
        identities.push_back(exists ? Identity(info.st_dev, info.st_ino) : Identity());
    }
    return identities;
}

struct Entry
{
    FileAccessRules rules;
    std::vector<Identity> documents;
    int newestAbi;
    std::shared_ptr<const LandlockRuleset> ruleset;
};

} // namespace

std::shared_ptr<const LandlockRuleset>
RulesetCache::rulesetFor(const FileAccessRules& rules, const std::vector<std::string>& documents,
                         int newestAbi)
{
    static std::optional<Entry> last;
    const std::vector<Identity> identities = identitiesOf(documents);
    if (!last || last->newestAbi != newestAbi || last->documents != identities ||
        !(last->rules == rules)) {
        last = {rules, identities, newestAbi,
                std::make_shared<const LandlockRuleset>(rules, newestAbi)};
    }
    return last->ruleset;
}
