#include "fence/Descriptors.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr unsigned closeOnExec = 1U << 2; // CLOSE_RANGE_CLOEXEC, Linux 5.11

// Without that call: as many as a program is usually allowed to open.
constexpr int usualLimit = 1024;

} // namespace

void Descriptors::closeOthersOnExec()
{
    constexpr int first = STDERR_FILENO + 1;
    if (syscall(SYS_close_range, first, ~0U, closeOnExec) == 0) {
        return;
    }
    for (int descriptor = first; descriptor < usualLimit; ++descriptor) {
        fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    }
}
