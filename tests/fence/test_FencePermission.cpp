#include "fence/FencePermission.h"

#include "fence/Attempts.h"

#include <gtest/gtest.h>

#include <cerrno>

#include <sys/wait.h>
#include <unistd.h>

namespace {

// What a process answers behind a filter, and what its probe leaves behind.
TEST(FencePermission, IsAskedForByAProcessThatEndsAtOnce)
{
    int ends[2] = {};
    ASSERT_EQ(pipe(ends), 0);
    const int status = Attempts::statusOf([&ends] {
        Attempts::Surroundings surroundings;
        surroundings.closeRangeError = ENOSYS; // any filter
        Attempts::prepare(surroundings);
        const bool isGranted = FencePermission::isGranted();
        return write(ends[1], "x", 1) == 1 && isGranted && wait(nullptr) < 0 ? 0 : 1;
    });
    EXPECT_EQ(status, 0);
    close(ends[1]);
    char answers[4] = {};
    EXPECT_EQ(read(ends[0], answers, sizeof answers), 1);
    close(ends[0]);
}

TEST(FencePermission, IsRefusedWhereAskingEndsTheProcess)
{
    EXPECT_EQ(Attempts::statusOf([] {
                  Attempts::Surroundings surroundings;
                  surroundings.seccompError = Attempts::killed;
                  Attempts::prepare(surroundings);
                  return FencePermission::isGranted() ? 1 : 0;
              }),
              0);
}

} // namespace
