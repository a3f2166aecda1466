#include "fence/ChildFence.h"

#include "fence/Environment.h"
#include "fence/FencePermission.h"
#include "fence/FileAccessRules.h"
#include "fence/RulesetCache.h"
#include "fence/SystemFiles.h"

#include <algorithm>

#include <sys/prctl.h>
#include <unistd.h>

namespace {

bool isFor(const std::string& entry, const char* variable)
{
    return entry.compare(0, entry.find('='), variable) == 0;
}

// Ghostscript has threads only if it is told to, which it can be here.
SystemCallFilter::Threads threads()
{
    const std::string options = Environment::value("GS_OPTIONS");
    const bool mayAsk = options.find("Threads") != std::string::npos ||
                        options.find("BGPrint") != std::string::npos ||
                        options.find('@') != std::string::npos;
    return mayAsk ? SystemCallFilter::Threads::Allowed : SystemCallFilter::Threads::Denied;
}

// Those that use the temporary folder.
int runCount = 0;

} // namespace

ChildFence::ChildFence(const InterpreterLocation& program,
                       const std::vector<std::string>& documents, int newestAbi)
    : m_isGranted(FencePermission::isGranted()),
      m_filter(program.isWrapper() ? SystemCallFilter::forWrapper()
                                   : SystemCallFilter::forInterpreter(threads()))
{
    if (!program.isWrapper()) {
        m_temporaryFolder = PrivateFolder::shared();
        ++runCount;
        if (m_isGranted) {
            prepareRules(program, documents, newestAbi);
        }
        prepareEnvironment();
    }
}

ChildFence::~ChildFence()
{
    if (m_temporaryFolder && --runCount == 0) {
        m_temporaryFolder->clear();
    }
}

void ChildFence::enter()
{
    m_limits.enter();
    if (!m_environment.empty()) {
        environ = m_environment.data();
    }
    if (!m_isGranted) {
        return;
    }
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    if (m_ruleset) {
        m_ruleset->restrictSelf();
    }
    m_filter.allowSignalsTo(getpid());
    m_filter.install();
}

void ChildFence::prepareRules(const InterpreterLocation& program,
                              const std::vector<std::string>& documents, int newestAbi)
{
    FileAccessRules rules;
    rules.allowReading(SystemFiles::readable());
    rules.allowReading(documents);
    rules.allowExecuting(program.path());
    rules.allowExecuting(program.loader());
    rules.allowChangingFiles(m_temporaryFolder->path());
    m_ruleset = RulesetCache::rulesetFor(rules, documents, newestAbi);
}

// All variables as they are but for the temporary folder.
void ChildFence::prepareEnvironment()
{
    if (m_temporaryFolder->path().empty()) {
        return;
    }
    for (char** entry = environ; *entry != nullptr; ++entry) {
        m_variables.emplace_back(*entry);
    }
    for (const char* variable : PrivateFolder::variables) {
        m_variables.erase(
            std::remove_if(m_variables.begin(), m_variables.end(),
                           [variable](const std::string& entry) { return isFor(entry, variable); }),
            m_variables.end());
        m_variables.push_back(std::string(variable) + '=' + m_temporaryFolder->path());
    }
    for (std::string& entry : m_variables) {
        m_environment.push_back(entry.data());
    }
    m_environment.push_back(nullptr);
}
