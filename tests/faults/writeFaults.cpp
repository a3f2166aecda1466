// Preloaded into the program: makes chosen write() or close() calls on one file
// fail, or write less than they were asked for.
//
// FAULT_FILE    the file
// FAULT_CALL    "write" or "close"
// FAULT_KIND    "ENOSPC", "EIO", "EINTR" or "short"
// FAULT_NUMBER  the call on that file that is hit, counted from 1
// FAULT_LASTS   "1" if all later calls are hit as well
// FAULT_REPORT  a file that is empty until the fault strikes

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

// These take the place of libc's functions of the names behind asm().
extern "C" ssize_t faultyWrite(int descriptor, const void* bytes, size_t size) asm("write");
extern "C" int faultyClose(int descriptor) asm("close");

namespace {

std::string setting(const char* name)
{
    const char* value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

struct Fault
{
    std::string file = setting("FAULT_FILE");
    std::string call = setting("FAULT_CALL");
    std::string kind = setting("FAULT_KIND");
    long number = std::atol(setting("FAULT_NUMBER").c_str());
    bool lasts = setting("FAULT_LASTS") == "1";
    // Later the program has put up its fence, and no file can be made.
    int report = open(setting("FAULT_REPORT").c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
    bool isFileKnown = false;
    struct stat info = {};
    long count = 0;

    Fault()
    {
        // The programs that are run meanwhile are none of its business.
        unsetenv("LD_PRELOAD");
    }

    // The file keeps its identity after its name is gone.
    bool isTarget(int descriptor)
    {
        struct stat other = {};
        if (!isFileKnown) {
            isFileKnown = stat(file.c_str(), &info) == 0;
        }
        return isFileKnown && fstat(descriptor, &other) == 0 && other.st_dev == info.st_dev &&
               other.st_ino == info.st_ino;
    }

    bool strikes(const char* name, int descriptor)
    {
        if (call != name || !isTarget(descriptor)) {
            return false;
        }
        ++count;
        if (count < number || (count > number && !lasts)) {
            return false;
        }
        syscall(SYS_write, report, "\n", 1);
        return true;
    }

    int errorNumber() const
    {
        if (kind == "EINTR") {
            return EINTR;
        }
        return kind == "EIO" ? EIO : ENOSPC;
    }
};

Fault& fault()
{
    static Fault instance;
    return instance;
}

// Reads the settings before main().
[[maybe_unused]] const Fault& readAtStart = fault();

} // namespace

ssize_t faultyWrite(int descriptor, const void* bytes, size_t size)
{
    if (fault().strikes("write", descriptor)) {
        if (fault().kind != "short") {
            errno = fault().errorNumber();
            return -1;
        }
        size = std::max<size_t>(size / 2, 1);
    }
    return syscall(SYS_write, descriptor, bytes, size);
}

// As on a real file system, the descriptor is closed although the call fails.
int faultyClose(int descriptor)
{
    const bool fails = fault().strikes("close", descriptor);
    const auto result = static_cast<int>(syscall(SYS_close, descriptor));
    if (fails) {
        errno = fault().errorNumber();
        return -1;
    }
    return result;
}
