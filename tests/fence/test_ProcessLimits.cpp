#include "fence/ProcessLimits.h"

#include "fence/Attempts.h"

#include <gtest/gtest.h>

#include <csignal>

namespace {

constexpr int firstSignalStatus = 128;

class EndingLimit : public testing::TestWithParam<int>
{
};

TEST_P(EndingLimit, EndsAChildOfAProgramThatIgnoresItsSignal)
{
    EXPECT_EQ(Attempts::statusOf([] {
                  signal(GetParam(), SIG_IGN);
                  ProcessLimits().enter();
                  raise(GetParam());
                  return 0;
              }),
              firstSignalStatus + GetParam());
}

INSTANTIATE_TEST_SUITE_P(ProcessLimits, EndingLimit, testing::Values(SIGXCPU, SIGXFSZ),
                         [](const auto& test) {
                             return test.param == SIGXCPU ? "ProcessorTime" : "FileSize";
                         });

TEST(ProcessLimits, LeaveLowerOnesAsTheyAre)
{
    EXPECT_EQ(Attempts::statusOf([] {
                  const rlimit lower = {1000, 2000};
                  setrlimit(RLIMIT_CPU, &lower);
                  ProcessLimits().enter();
                  rlimit limit = {};
                  getrlimit(RLIMIT_CPU, &limit);
                  return limit.rlim_cur == 1000 && limit.rlim_max == 2000 ? 1 : 0;
              }),
              1);
}

TEST(ProcessLimits, EndWhoIgnoresTheFirstOneFiveSecondsLater)
{
    EXPECT_EQ(Attempts::statusOf([] {
                  ProcessLimits().enter();
                  rlimit limit = {};
                  getrlimit(RLIMIT_CPU, &limit);
                  return limit.rlim_cur == 3600 && limit.rlim_max == 3605 ? 1 : 0;
              }),
              1);
}

} // namespace
