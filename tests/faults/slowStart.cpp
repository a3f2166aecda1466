// Preloaded into the program: keeps it in the middle of starting its first child
// until it is let go. Qt has to start children the old way, with fork(), as on a
// kernel without descriptors for processes.
//
// START_REPORT  a file that is empty until there is a child
// START_GO      a file; the program goes on when it is there

#include <cerrno>
#include <cstdarg>
#include <cstdlib>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

// These take the place of libc's functions of the names behind asm().
extern "C" pid_t slowFork() asm("fork");
extern "C" long oldSyscall(long number, ...) asm("syscall");

namespace {

template <typename Function>
Function* original(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

const char* setting(const char* name)
{
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

int startReport = -1;

// Runs before main(): the programs that are run meanwhile are none of its business,
// and later this one has put up its fence, and no file can be made.
__attribute__((constructor)) void prepare()
{
    unsetenv("LD_PRELOAD");
    startReport = open(setting("START_REPORT"), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
}

void report()
{
    if (write(startReport, "\n", 1) != 1) {
        std::abort();
    }
}

void waitUntilLetGo()
{
    constexpr useconds_t pauseMicroseconds = 1000;
    constexpr int patience = 60000;
    for (int pause = 0; pause < patience && access(setting("START_GO"), F_OK) != 0; ++pause) {
        usleep(pauseMicroseconds);
    }
}

} // namespace

pid_t slowFork()
{
    const pid_t child = original<pid_t()>("fork")();
    if (child > 0) {
        report();
        waitUntilLetGo();
    }
    return child;
}

long oldSyscall(long number, ...)
{
    constexpr int argumentCount = 6;
    long arguments[argumentCount];
    va_list list;
    va_start(list, number);
    for (long& argument : arguments) {
        argument = va_arg(list, long);
    }
    va_end(list);
    if (number == SYS_clone || (number == SYS_waitid && arguments[0] == P_PIDFD)) {
        errno = EINVAL;
        return -1;
    }
    return original<long(long, ...)>("syscall")(number, arguments[0], arguments[1], arguments[2],
                                                arguments[3], arguments[4], arguments[5]);
}
