#include "app/StandardStreams.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <set>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace {

constexpr int standardDescriptors[] = {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO};

bool isNullDevice(int descriptor)
{
    struct stat info = {};
    return fstat(descriptor, &info) == 0 && S_ISCHR(info.st_mode) && info.st_rdev == makedev(1, 3);
}

// True if the next file that is opened gets a number above the three.
bool areAllTaken()
{
    const int next = open("/", O_RDONLY);
    close(next);
    return next > STDERR_FILENO;
}

struct Row
{
    const char* name;
    std::set<int> closed;
};

const Row rows[] = {
    {"NoneIsClosed", {}},
    {"InputIsClosed", {0}},
    {"OutputIsClosed", {1}},
    {"ErrorIsClosed", {2}},
    {"InputAndOutputAreClosed", {0, 1}},
    {"InputAndErrorAreClosed", {0, 2}},
    {"OutputAndErrorAreClosed", {1, 2}},
    {"AllAreClosed", {0, 1, 2}},
};

// Each test plays in a process of its own, which tells by its exit status.
class EnsureOpen : public testing::TestWithParam<Row>
{
protected:
    // Makes the three descriptors a folder, which is no null device, closes
    // those of the row, and repairs that.
    static void prepare(const std::set<int>& closed)
    {
        const int folder = open("/", O_RDONLY);
        for (const int descriptor : standardDescriptors) {
            dup2(folder, descriptor);
        }
        close(folder);
        for (const int descriptor : closed) {
            close(descriptor);
        }
        StandardStreams::ensureOpen();
    }
};

TEST_P(EnsureOpen, GivesTheNullDeviceToTheClosedOnesOnly)
{
    const auto check = [] {
        prepare(GetParam().closed);
        for (const int descriptor : standardDescriptors) {
            if (isNullDevice(descriptor) != (GetParam().closed.count(descriptor) == 1)) {
                _exit(EXIT_FAILURE);
            }
        }
        _exit(EXIT_SUCCESS);
    };
    EXPECT_EXIT(check(), testing::ExitedWithCode(EXIT_SUCCESS), "");
}

TEST_P(EnsureOpen, LeavesNoneOfTheNumbersFree)
{
    const auto check = [] {
        prepare(GetParam().closed);
        _exit(areAllTaken() ? EXIT_SUCCESS : EXIT_FAILURE);
    };
    EXPECT_EXIT(check(), testing::ExitedWithCode(EXIT_SUCCESS), "");
}

TEST_P(EnsureOpen, OpensNothingBeyondTheThree)
{
    const auto check = [] {
        const int before = open("/", O_RDONLY);
        close(before);
        prepare(GetParam().closed);
        const int after = open("/", O_RDONLY);
        _exit(after == before ? EXIT_SUCCESS : EXIT_FAILURE);
    };
    EXPECT_EXIT(check(), testing::ExitedWithCode(EXIT_SUCCESS), "");
}

INSTANTIATE_TEST_SUITE_P(StandardStreams, EnsureOpen, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

} // namespace
