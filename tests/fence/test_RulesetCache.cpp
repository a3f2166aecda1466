#include "fence/RulesetCache.h"

#include "fence/Attempts.h"
#include "fence/FileAccessRules.h"
#include "fence/LandlockInterface.h"
#include "fence/LandlockRuleset.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdio>

#include <fcntl.h>
#include <sys/prctl.h>

namespace {

class Ruleset : public testing::Test
{
protected:
    static std::shared_ptr<const LandlockRuleset>
    rulesetFor(const std::string& document, int newestAbi = LandlockInterface::latestAbi)
    {
        FileAccessRules rules;
        rules.allowReading(document);
        return RulesetCache::rulesetFor(rules, {document}, newestAbi);
    }

    TemporaryFolder m_folder;
    std::string m_document = m_folder.write("a", "");
};

TEST_F(Ruleset, StaysWithTheDocument)
{
    const auto ruleset = rulesetFor(m_document);
    m_folder.write("a", "other content");
    EXPECT_EQ(rulesetFor(m_document), ruleset);
}

TEST_F(Ruleset, IsAnotherForAnotherDocument)
{
    const auto ruleset = rulesetFor(m_document);
    EXPECT_NE(rulesetFor(m_folder.write("b", "")), ruleset);
}

TEST_F(Ruleset, IsAnotherForAFileThatHasReplacedTheDocument)
{
    const auto ruleset = rulesetFor(m_document);
    ASSERT_EQ(std::rename(m_folder.write("b", "").c_str(), m_document.c_str()), 0);
    EXPECT_NE(rulesetFor(m_document), ruleset);
}

TEST_F(Ruleset, IsAnotherForOtherRights)
{
    const auto ruleset = rulesetFor(m_document);
    FileAccessRules rules;
    rules.allowExecuting(m_document);
    EXPECT_NE(RulesetCache::rulesetFor(rules, {m_document}, LandlockInterface::latestAbi), ruleset);
}

TEST_F(Ruleset, IsAnotherForOtherRestrictions)
{
    const auto ruleset = rulesetFor(m_document);
    FileAccessRules rules(LandlockInterface::readFolder);
    rules.allowReading(m_document);
    EXPECT_NE(RulesetCache::rulesetFor(rules, {m_document}, LandlockInterface::latestAbi), ruleset);
}

TEST_F(Ruleset, IsAnotherForAnotherAbi)
{
    const auto ruleset = rulesetFor(m_document);
    EXPECT_NE(rulesetFor(m_document, 1), ruleset);
}

TEST_F(Ruleset, DoesNotAllowTheDocumentBefore)
{
    if (LandlockRuleset::kernelAbi() == 0) {
        GTEST_SKIP() << "no Landlock here";
    }
    const auto isReadable = [](const std::string& file) {
        return open(file.c_str(), O_RDONLY | O_CLOEXEC) >= 0;
    };
    constexpr int asExpected = 7;
    EXPECT_EQ(Attempts::statusOf([&] {
                  rulesetFor(m_document);
                  const std::string next = m_folder.write("b", "");
                  prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
                  rulesetFor(next)->restrictSelf();
                  return isReadable(next) && !isReadable(m_document) ? asExpected : 0;
              }),
              asExpected);
}

} // namespace
