#include "Attacks.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include <dirent.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <pthread.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysinfo.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

int resultOf(long value)
{
    return value < 0 ? errno : 0;
}

int opened(const char* file, int flags)
{
    const int descriptor = open(file, flags | O_CLOEXEC, 0600);
    const int result = resultOf(descriptor);
    close(descriptor);
    return result;
}

int readFile(const char* file)
{
    char byte = 0;
    const int descriptor = open(file, O_RDONLY | O_CLOEXEC);
    const int result = descriptor < 0 ? errno : resultOf(read(descriptor, &byte, 1));
    close(descriptor);
    return result;
}

int listFolder(const char* folder)
{
    DIR* handle = opendir(folder);
    const int result = handle == nullptr ? errno : 0;
    if (handle != nullptr) {
        closedir(handle);
    }
    return result;
}

int writeFile(const char* file)
{
    return opened(file, O_WRONLY | O_APPEND);
}

int createFile(const char* file)
{
    return opened(file, O_WRONLY | O_CREAT | O_EXCL);
}

int truncateByName(const char* file)
{
    return resultOf(truncate(file, 0));
}

int truncateByReading(const char* file)
{
    return opened(file, O_RDONLY | O_TRUNC);
}

int removeFile(const char* file)
{
    return resultOf(unlink(file));
}

int makeFolder(const char* folder)
{
    return resultOf(mkdir(folder, 0700));
}

int changeMode(const char* file)
{
    return resultOf(chmod(file, 0644));
}

int changeModeOfOpenFile(const char* file)
{
    const int descriptor = open(file, O_RDONLY | O_CLOEXEC);
    const int result = descriptor < 0 ? errno : resultOf(fchmod(descriptor, 0644));
    close(descriptor);
    return result;
}

int setAttribute(const char* file)
{
    return resultOf(setxattr(file, "user.attack", "x", 1, 0));
}

std::string inTemporaryFolder(const char* name)
{
    const char* folder = std::getenv("TMPDIR");
    return std::string(folder == nullptr ? "/tmp" : folder) + '/' + name;
}

int linkIntoFolder(const char* file)
{
    const std::string name = inTemporaryFolder("hard");
    const int result = resultOf(link(file, name.c_str()));
    unlink(name.c_str());
    return result;
}

int readThroughLink(const char* file)
{
    const std::string name = inTemporaryFolder("soft");
    const int result = symlink(file, name.c_str()) < 0 ? errno : readFile(name.c_str());
    unlink(name.c_str());
    return result;
}

int useTemporaryFolder(const char*)
{
    const std::string name = inTemporaryFolder("own");
    const int result = createFile(name.c_str());
    return result != 0 ? result : removeFile(name.c_str());
}

int leaveTemporaryFile(const char*)
{
    return createFile(inTemporaryFolder("left").c_str());
}

// A success is that of the shell.
int runShell(const char*)
{
    execl("/bin/sh", "sh", "-c", "exit 0", static_cast<char*>(nullptr));
    return errno;
}

int runByLoader(const char* loaderAndProgram)
{
    const std::string text = loaderAndProgram;
    const std::string loader = text.substr(0, text.find(' '));
    const std::string program = text.substr(text.find(' ') + 1);
    execl(loader.c_str(), loader.c_str(), program.c_str(), static_cast<char*>(nullptr));
    return errno;
}

int runFromMemory(const char*)
{
    const long descriptor = syscall(SYS_memfd_create, "x", 1U);
    return resultOf(descriptor);
}

int waitFor(pid_t child)
{
    return resultOf(waitpid(child, nullptr, 0));
}

int forkProcess(const char*)
{
    const pid_t child = fork();
    if (child == 0) {
        _exit(0);
    }
    return child < 0 ? errno : waitFor(child);
}

int forkByClone3(const char*)
{
    std::uint64_t arguments[11] = {};
    arguments[4] = SIGCHLD;
    const long child = syscall(435, arguments, sizeof arguments);
    if (child == 0) {
        _exit(0);
    }
    return child < 0 ? errno : waitFor(static_cast<pid_t>(child));
}

void* doNothing(void* nothing)
{
    return nothing;
}

int startThread(const char*)
{
    pthread_t thread = {};
    const int result = pthread_create(&thread, nullptr, doNothing, nullptr);
    return result != 0 ? result : pthread_join(thread, nullptr);
}

int connectTo(int descriptor, const void* address, std::size_t size)
{
    const int result = descriptor < 0
                           ? errno
                           : resultOf(connect(descriptor, static_cast<const sockaddr*>(address),
                                              static_cast<socklen_t>(size)));
    close(descriptor);
    return result;
}

int connectToPort(int type, const char* port)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(std::atoi(port)));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return connectTo(socket(AF_INET, type | SOCK_CLOEXEC, 0), &address, sizeof address);
}

int useTcp(const char* port)
{
    return connectToPort(SOCK_STREAM, port);
}

int useUdp(const char* port)
{
    return connectToPort(SOCK_DGRAM, port);
}

// A name that begins with '@' is abstract.
int useUnixSocket(const char* name)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const std::size_t length = std::min(std::strlen(name), sizeof address.sun_path - 1);
    std::memcpy(address.sun_path, name, length);
    if (name[0] == '@') {
        address.sun_path[0] = '\0';
    }
    return connectTo(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0), &address,
                     offsetof(sockaddr_un, sun_path) + length);
}

int makeSocketPair(const char*)
{
    int ends[2];
    return resultOf(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends));
}

int signalProcess(const char* process)
{
    return resultOf(kill(std::atoi(process), 0));
}

int signalParent(const char*)
{
    return resultOf(kill(getppid(), 0));
}

int signalThreadOfParent(const char*)
{
    return resultOf(syscall(SYS_tgkill, getppid(), getppid(), 0));
}

int signalGroup(const char*)
{
    return resultOf(kill(0, 0));
}

int signalItself(const char*)
{
    return resultOf(kill(getpid(), 0));
}

int traceParent(const char*)
{
    return resultOf(ptrace(PTRACE_SEIZE, getppid(), nullptr, nullptr));
}

int readMemoryOfParent(const char*)
{
    return opened(("/proc/" + std::to_string(getppid()) + "/mem").c_str(), O_RDONLY);
}

int outliveParent(const char*)
{
    return resultOf(prctl(PR_SET_PDEATHSIG, 0));
}

// More than the machine has, without touching it.
int eatMemory(const char*)
{
    struct sysinfo info = {};
    sysinfo(&info);
    constexpr std::uint64_t gibibyte = 1073741824;
    const std::uint64_t machine = (info.totalram + info.totalswap) * info.mem_unit;
    for (std::uint64_t size = 0; size < std::max(machine, 4 * gibibyte) + gibibyte;
         size += gibibyte) {
        if (mmap(nullptr, gibibyte, PROT_READ | PROT_WRITE,
                 MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0) == MAP_FAILED) {
            return errno;
        }
    }
    return 0;
}

// A file with a hole of 5 GiB in front.
int fillDisk(const char*)
{
    const std::string name = inTemporaryFolder("large");
    const int descriptor = open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    unlink(name.c_str());
    constexpr off_t size = 5368709120;
    return descriptor < 0 ? errno : resultOf(pwrite(descriptor, "x", 1, size));
}

// Each within its limit.
int fillDiskWithManyFiles(const char*)
{
    constexpr off_t size = 3221225472;
    for (const char* name : {"many1", "many2", "many3"}) {
        const int descriptor =
            open(inTemporaryFolder(name).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        const int result = descriptor < 0 ? errno : resultOf(pwrite(descriptor, "x", 1, size));
        unlink(inTemporaryFolder(name).c_str());
        close(descriptor);
        if (result != 0) {
            return result;
        }
    }
    return 0;
}

int dumpCore(const char*)
{
    rlimit limit = {1, 1};
    getrlimit(RLIMIT_CORE, &limit);
    return limit.rlim_max == 0 ? EPERM : 0;
}

int raiseLimits(const char*)
{
    rlimit limit = {};
    getrlimit(RLIMIT_CPU, &limit);
    return resultOf(setrlimit(RLIMIT_CPU, &limit));
}

int typeIntoTerminal(const char*)
{
    // Anything but the refusal comes from the device.
    return ioctl(STDERR_FILENO, TIOCSTI, "x") < 0 && errno == EPERM ? EPERM : 0;
}

// Whether a call gets as far as into the kernel's own code, with arguments at
// which that does nothing.
int reachKernel(const char* call)
{
    const long result = syscall(std::atol(call), -1L, -1L, -1L, -1L, -1L, -1L);
    return result < 0 && (errno == EPERM || errno == ENOSYS) ? errno : 0;
}

int callAsX32(const char*)
{
    return resultOf(syscall(0x40000000L + SYS_getpid));
}

int callAsForeignArchitecture(const char*)
{
#if defined(__x86_64__)
    long result = 20; // getpid of i386
    asm volatile("int $0x80" : "+a"(result) : : "memory");
    return result < 0 ? static_cast<int>(-result) : 0;
#else
    return ENOSYS;
#endif
}

int useDescriptor(const char* number)
{
    return resultOf(fcntl(std::atoi(number), F_GETFD));
}

struct Attack
{
    const char* name;
    int (*attempt)(const char*);
};

const Attack attacks[] = {
    {"readFile", readFile},
    {"listFolder", listFolder},
    {"writeFile", writeFile},
    {"createFile", createFile},
    {"truncateByName", truncateByName},
    {"truncateByReading", truncateByReading},
    {"removeFile", removeFile},
    {"makeFolder", makeFolder},
    {"changeMode", changeMode},
    {"changeModeOfOpenFile", changeModeOfOpenFile},
    {"setAttribute", setAttribute},
    {"linkIntoFolder", linkIntoFolder},
    {"readThroughLink", readThroughLink},
    {"useTemporaryFolder", useTemporaryFolder},
    {"leaveTemporaryFile", leaveTemporaryFile},
    {"runShell", runShell},
    {"runByLoader", runByLoader},
    {"runFromMemory", runFromMemory},
    {"forkProcess", forkProcess},
    {"forkByClone3", forkByClone3},
    {"startThread", startThread},
    {"useTcp", useTcp},
    {"useUdp", useUdp},
    {"useUnixSocket", useUnixSocket},
    {"makeSocketPair", makeSocketPair},
    {"signalProcess", signalProcess},
    {"signalParent", signalParent},
    {"signalThreadOfParent", signalThreadOfParent},
    {"signalGroup", signalGroup},
    {"signalItself", signalItself},
    {"traceParent", traceParent},
    {"readMemoryOfParent", readMemoryOfParent},
    {"outliveParent", outliveParent},
    {"eatMemory", eatMemory},
    {"fillDisk", fillDisk},
    {"fillDiskWithManyFiles", fillDiskWithManyFiles},
    {"dumpCore", dumpCore},
    {"raiseLimits", raiseLimits},
    {"typeIntoTerminal", typeIntoTerminal},
    {"reachKernel", reachKernel},
    {"callAsX32", callAsX32},
    {"callAsForeignArchitecture", callAsForeignArchitecture},
    {"useDescriptor", useDescriptor},
};

} // namespace

int attempt(const char* name, const char* argument)
{
    for (const Attack& attack : attacks) {
        if (std::strcmp(attack.name, name) == 0) {
            return attack.attempt(argument);
        }
    }
    return -1;
}
