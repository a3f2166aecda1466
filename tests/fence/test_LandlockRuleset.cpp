#include "fence/LandlockRuleset.h"

#include "fence/Attempts.h"
#include "fence/FileAccessRules.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>

namespace {

TEST(LandlockRuleset, ThatCannotBeMadeIsNotPutInForce)
{
    EXPECT_EQ(Attempts::statusOf([] {
                  const rlimit noFiles = {0, 0};
                  setrlimit(RLIMIT_NOFILE, &noFiles);
                  const LandlockRuleset ruleset{FileAccessRules()};
                  return ruleset.restrictSelf() ? 1 : 0;
              }),
              0);
}

TEST(LandlockRuleset, ThatCanBeMadeIsPutInForce)
{
    const bool isKnown = LandlockRuleset::kernelAbi() > 0;
    EXPECT_EQ(Attempts::statusOf([] {
                  prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
                  return LandlockRuleset(FileAccessRules()).restrictSelf() ? 1 : 0;
              }),
              isKnown ? 1 : 0);
}

TEST(LandlockRuleset, LetsAFileBeReadThatIsNamedByItself)
{
    const TemporaryFolder folder;
    const std::string file = folder.write("file", "content");
    EXPECT_EQ(Attempts::statusOf([&file] {
                  prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
                  FileAccessRules rules;
                  rules.allowReading({file});
                  LandlockRuleset(rules).restrictSelf();
                  return open(file.c_str(), O_RDONLY | O_CLOEXEC) >= 0 ? 1 : 0;
              }),
              1);
}

} // namespace
