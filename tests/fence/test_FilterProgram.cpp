#include "fence/FilterProgram.h"

#include "fence/FilterRun.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <numeric>

using FilterRun::allowed;
using FilterRun::failsWith;
using FilterRun::resultOf;

namespace {

TEST(FilterProgram, AllowsWhatNothingIsSaidOf)
{
    const auto program = FilterProgram().assembled();
    EXPECT_EQ(resultOf(program, 0), allowed);
    EXPECT_EQ(resultOf(program, 1000), allowed);
}

TEST(FilterProgram, FailsTheCallsThatAreNamedAndNoOthers)
{
    FilterProgram calls;
    calls.fail({0, 7, 5, 6, 9, 300}, EPERM);
    calls.fail({8}, ENOSYS);
    const auto program = calls.assembled();
    for (const long call : {0, 5, 6, 7, 9, 300}) {
        EXPECT_EQ(resultOf(program, call), failsWith(EPERM)) << call;
    }
    EXPECT_EQ(resultOf(program, 8), failsWith(ENOSYS));
    for (const long call : {1, 4, 10, 299, 301}) {
        EXPECT_EQ(resultOf(program, call), allowed) << call;
    }
}

TEST(FilterProgram, HoldsToWhatWasSaidLast)
{
    FilterProgram calls;
    calls.fail({4, 5, 6}, EPERM);
    calls.fail({5}, ENOSYS);
    calls.decide(6, {FilterProgram::permission()});
    const auto program = calls.assembled();
    EXPECT_EQ(resultOf(program, 4), failsWith(EPERM));
    EXPECT_EQ(resultOf(program, 5), failsWith(ENOSYS));
    EXPECT_EQ(resultOf(program, 6), allowed);
    EXPECT_EQ(resultOf(program, 7), allowed);
}

TEST(FilterProgram, IsNoLongerForWhatHoldsNoMore)
{
    FilterProgram calls;
    calls.fail({4}, EPERM);
    FilterProgram changed;
    changed.decide(4, {FilterProgram::failure(ENOSYS)});
    changed.fail({4}, EPERM);
    EXPECT_EQ(changed.assembled().size(), calls.assembled().size());

    changed.decide(4, {FilterProgram::failure(EACCES)});
    changed.fail({4}, EPERM);
    EXPECT_EQ(changed.assembled().size(), calls.assembled().size());
}

// A comparison reaches 255 instructions.
TEST(FilterProgram, MayBeLongerThanAComparisonReaches)
{
    FilterProgram calls;
    std::vector<long> even(500);
    std::iota(even.begin(), even.end(), 0);
    for (long& call : even) {
        call *= 2;
    }
    calls.fail(even, EPERM);
    const auto program = calls.assembled();
    for (const long call : even) {
        EXPECT_EQ(resultOf(program, call), failsWith(EPERM)) << call;
        EXPECT_EQ(resultOf(program, call + 1), allowed) << call + 1;
    }
}

TEST(FilterProgram, FailsCallsOfForeignArchitectures)
{
    seccomp_data call = {};
    call.arch = FilterRun::architecture + 1;
    EXPECT_EQ(resultOf(FilterProgram().assembled(), call), failsWith(ENOSYS));
}

#if defined(__x86_64__)
TEST(FilterProgram, FailsCallsOfX32)
{
    EXPECT_EQ(resultOf(FilterProgram().assembled(), 0x40000000), failsWith(ENOSYS));
    EXPECT_EQ(resultOf(FilterProgram().assembled(), 0x40000027), failsWith(ENOSYS));
}
#endif

} // namespace
