#include "fence/Descriptors.h"

#include "fence/Attempts.h"

#include <gtest/gtest.h>

#include <cerrno>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

// Whether a descriptor of that number would be closed in another program.
bool isClosed(int descriptor, const Attempts::Surroundings& surroundings)
{
    constexpr int outOfReach = 2;
    const int status = Attempts::statusOf([&] {
        rlimit limit = {};
        getrlimit(RLIMIT_NOFILE, &limit);
        limit.rlim_cur = limit.rlim_max;
        setrlimit(RLIMIT_NOFILE, &limit);
        Attempts::prepare(surroundings);
        if (dup2(STDERR_FILENO, descriptor) != descriptor) {
            return outOfReach;
        }
        Descriptors::closeOthersOnExec();
        return fcntl(descriptor, F_GETFD) == FD_CLOEXEC ? 0 : 1;
    });
    EXPECT_NE(status, outOfReach);
    return status == 0;
}

TEST(Descriptors, BehindTheStandardStreamsAreClosed)
{
    EXPECT_FALSE(isClosed(STDOUT_FILENO, {}));
    EXPECT_TRUE(isClosed(STDERR_FILENO + 1, {}));
    EXPECT_TRUE(isClosed(50, {}));
}

TEST(Descriptors, BeyondTheUsualLimitAreClosed)
{
    EXPECT_TRUE(isClosed(1500, {}));
}

TEST(Descriptors, AreClosedOneByOneByAnOldKernel)
{
    Attempts::Surroundings surroundings;
    surroundings.closeRangeError = ENOSYS;
    EXPECT_FALSE(isClosed(STDERR_FILENO, surroundings));
    EXPECT_TRUE(isClosed(STDERR_FILENO + 1, surroundings));
    EXPECT_TRUE(isClosed(1023, surroundings));
}

} // namespace
