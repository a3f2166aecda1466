#include "fence/LandlockRuleset.h"

#include "fence/Attempts.h"
#include "fence/FileAccessRules.h"

#include <gtest/gtest.h>

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

} // namespace
