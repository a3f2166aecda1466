// Preloaded into the program: lets chosen large allocations fail. With libc's
// own entry points, because looking up the hidden functions would allocate.
//
// FAULT_NUMBER  the allocation that fails, counted from 1: of those above 64 KiB,
//               or where there is a FAULT_FILE, of all
// FAULT_FILE    a file; allocations count from when the program first looks
//               whether it exists
// FAULT_LASTS   "1" if all later ones fail as well
// FAULT_REPORT  a file that is empty until the fault strikes: the call stack of
//               the allocation and, if the program crashes, a line "crash" with
//               the call stack of that

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include <execinfo.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

// The names behind asm() are those for the linker. These are exported by glibc,
// but declared nowhere,
extern "C" int libcSigaction(int number, const struct sigaction* action,
                             struct sigaction* before) asm("__sigaction");
extern "C" void* libcMalloc(size_t size) asm("__libc_malloc");
extern "C" void* libcCalloc(size_t count, size_t size) asm("__libc_calloc");
extern "C" void* libcRealloc(void* memory, size_t size) asm("__libc_realloc");
extern "C" void* libcMemalign(size_t alignment, size_t size) asm("__libc_memalign");

// and these take the place of the usual ones.
extern "C" int faultySigaction(int number, const struct sigaction* action,
                               struct sigaction* before) asm("sigaction");
extern "C" int watchedStat(const char* name, struct stat* info) asm("stat");
extern "C" void* faultyMalloc(size_t size) asm("malloc");
extern "C" void* faultyCalloc(size_t count, size_t size) asm("calloc");
extern "C" void* faultyRealloc(void* memory, size_t size) asm("realloc");
extern "C" void* faultyMemalign(size_t alignment, size_t size) asm("memalign");
extern "C" void* faultyAlignedAlloc(size_t alignment, size_t size) asm("aligned_alloc");
extern "C" int faultyPosixMemalign(void** memory, size_t alignment,
                                   size_t size) asm("posix_memalign");

namespace {

constexpr size_t largestSafeSize = 65536;
constexpr int stackDepth = 64;

// Zero until the settings are read: nothing fails before.
long faultNumber = 0;
bool faultLasts = false;
const char* faultFile = "";
int faultReport = -1;
bool isFileLookedFor = false;
std::atomic<long> allocations = 0;

void reportStack(const char* title)
{
    void* frames[stackDepth];
    const int depth = backtrace(frames, stackDepth);
    if (write(faultReport, title, std::strlen(title)) > 0) {
        backtrace_symbols_fd(frames, depth, faultReport);
    }
}

constexpr std::array<int, 3> crashSignals = {SIGABRT, SIGBUS, SIGSEGV};

// From the report of a crash on, the program decides what comes.
std::atomic<bool> isCrashReported = false;

// What the program itself wants to do about each of them.
std::array<struct sigaction, crashSignals.size()> programActions = {};

void reportCrash(int number)
{
    reportStack("crash\n");
    isCrashReported = true;
    const auto* const signal = std::find(crashSignals.begin(), crashSignals.end(), number);
    libcSigaction(number, &programActions[static_cast<std::size_t>(signal - crashSignals.begin())],
                  nullptr);
    raise(number); // delivered when this returns
}

const char* setting(const char* name)
{
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

// Runs before main().
__attribute__((constructor)) void readSettings()
{
    // The programs that are run meanwhile are none of its business.
    unsetenv("LD_PRELOAD");
    void* frame = nullptr;
    backtrace(&frame, 1); // loads what it needs now, not in a signal handler
    struct sigaction action = {};
    action.sa_handler = reportCrash;
    for (const int number : crashSignals) {
        libcSigaction(number, &action, nullptr);
    }
    faultFile = setting("FAULT_FILE");
    // Later the program has put up its fence, and no file can be made.
    faultReport = open(setting("FAULT_REPORT"), O_CREAT | O_WRONLY | O_APPEND | O_CLOEXEC, 0600);
    faultLasts = std::strcmp(setting("FAULT_LASTS"), "1") == 0;
    faultNumber = std::atol(setting("FAULT_NUMBER"));
}

bool strikes(size_t size)
{
    const bool counts = *faultFile == '\0' ? size > largestSafeSize : isFileLookedFor;
    if (!counts || faultNumber == 0) {
        return false;
    }
    const long current = ++allocations;
    if (current < faultNumber || (current > faultNumber && !faultLasts)) {
        return false;
    }
    reportStack("allocation\n");
    errno = ENOMEM;
    return true;
}

} // namespace

// The reporting of a crash stays in front of whatever the program does about it.
int faultySigaction(int number, const struct sigaction* action, struct sigaction* before)
{
    const auto* const signal = std::find(crashSignals.begin(), crashSignals.end(), number);
    if (signal == crashSignals.end() || isCrashReported) {
        return libcSigaction(number, action, before);
    }
    struct sigaction& programAction =
        programActions[static_cast<std::size_t>(signal - crashSignals.begin())];
    if (before != nullptr) {
        *before = programAction;
    }
    if (action != nullptr) {
        programAction = *action;
    }
    return 0;
}

int watchedStat(const char* name, struct stat* info)
{
    isFileLookedFor = isFileLookedFor || std::strcmp(name, faultFile) == 0;
    return fstatat(AT_FDCWD, name, info, 0);
}

void* faultyMalloc(size_t size)
{
    return strikes(size) ? nullptr : libcMalloc(size);
}

void* faultyCalloc(size_t count, size_t size)
{
    return strikes(count * size) ? nullptr : libcCalloc(count, size);
}

void* faultyRealloc(void* memory, size_t size)
{
    return strikes(size) ? nullptr : libcRealloc(memory, size);
}

void* faultyMemalign(size_t alignment, size_t size)
{
    return strikes(size) ? nullptr : libcMemalign(alignment, size);
}

void* faultyAlignedAlloc(size_t alignment, size_t size)
{
    return faultyMemalign(alignment, size);
}

int faultyPosixMemalign(void** memory, size_t alignment, size_t size)
{
    *memory = faultyMemalign(alignment, size);
    return *memory == nullptr ? ENOMEM : 0;
}
