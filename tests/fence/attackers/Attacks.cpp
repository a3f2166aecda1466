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
#include <linux/fs.h>
#include <netinet/in.h>
#include <pthread.h>
#include <sched.h>
#include <sys/auxv.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <sys/ipc.h>
#include <sys/mman.h>
#include <sys/msg.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/sem.h>
#include <sys/shm.h>
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

int askForSize(const char* file)
{
    struct stat info = {};
    return resultOf(stat(file, &info));
}

int speakOnStandardError(const char*)
{
    return resultOf(write(STDERR_FILENO, "\033[2J", 4));
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

// Neither for reading nor for writing, but for the calls of a device.
constexpr int deviceAccess = 3;

int openForDeviceCalls(const char* file)
{
    return opened(file, deviceAccess);
}

int truncateByDeviceAccess(const char* file)
{
    return opened(file, deviceAccess | O_TRUNC);
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

// To what they are already.
int setFlags(const char* file)
{
    int flags = 0;
    const int descriptor = open(file, O_RDONLY | O_CLOEXEC);
    const bool isKnown = ioctl(descriptor, FS_IOC_GETFLAGS, &flags) == 0;
    const int result = isKnown ? resultOf(ioctl(descriptor, FS_IOC_SETFLAGS, &flags)) : errno;
    close(descriptor);
    return result;
}

int watchFolder(const char* folder)
{
    const int watch = inotify_init1(IN_CLOEXEC);
    const int result = watch < 0 ? errno : resultOf(inotify_add_watch(watch, folder, IN_CREATE));
    close(watch);
    return result;
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

int cloneNamespace(const char*)
{
    const long child = syscall(SYS_clone, CLONE_NEWUSER | SIGCHLD, 0, 0, 0, 0);
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

int shareMemory(const char*)
{
    const int memory = shmget(IPC_PRIVATE, 4096, 0600);
    const int result = resultOf(memory);
    shmctl(memory, IPC_RMID, nullptr);
    return result;
}

int shareSemaphore(const char*)
{
    const int semaphore = semget(IPC_PRIVATE, 1, 0600);
    const int result = resultOf(semaphore);
    semctl(semaphore, 0, IPC_RMID);
    return result;
}

int sendMessages(const char*)
{
    const int queue = msgget(IPC_PRIVATE, 0600);
    const int result = resultOf(queue);
    msgctl(queue, IPC_RMID, nullptr);
    return result;
}

// Another than the one that runs this.
int findThread(const char*)
{
    DIR* threads = opendir("/proc/self/task");
    int count = 0;
    while (threads != nullptr && readdir(threads) != nullptr) {
        ++count;
    }
    if (threads != nullptr) {
        closedir(threads);
    }
    constexpr int withDots = 3;
    return count > withDots ? 0 : ESRCH;
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

// Who owns an open file gets its signals, whichever was chosen for it.
int signalParentByFile(const char*)
{
    return resultOf(fcntl(STDERR_FILENO, F_SETOWN, getppid()));
}

int signalGroupByFile(const char*)
{
    return resultOf(fcntl(STDERR_FILENO, F_SETOWN, -getpgrp()));
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

// Ends as a copy of this program that asks whether the end of the parent is its
// own end.
void* executeProgram(void*)
{
    const auto* file = reinterpret_cast<const char*>(getauxval(AT_EXECFN));
    execl(file, "program", "beLeftAlone", "", static_cast<char*>(nullptr));
    return nullptr;
}

int outliveByThread(const char*)
{
    pthread_t thread = {};
    const int result = pthread_create(&thread, nullptr, executeProgram, nullptr);
    if (result == 0) {
        pthread_join(thread, nullptr);
    }
    return result == 0 ? EPERM : result;
}

int beLeftAlone(const char*)
{
    int endSignal = SIGKILL;
    prctl(PR_GET_PDEATHSIG, &endSignal);
    return endSignal == 0 ? 0 : EPERM;
}

// To those that it runs on already.
int chooseProcessorsOfParent(const char*)
{
    cpu_set_t processors;
    return sched_getaffinity(getppid(), sizeof processors, &processors) < 0
               ? errno
               : resultOf(sched_setaffinity(getppid(), sizeof processors, &processors));
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

// Anything but the refusal comes from the device.
int callDevice(const char* call)
{
    const unsigned long number = std::strtoul(call, nullptr, 0);
    return ioctl(STDERR_FILENO, number, "x") < 0 && errno == EPERM ? EPERM : 0;
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
    {"askForSize", askForSize},
    {"speakOnStandardError", speakOnStandardError},
    {"listFolder", listFolder},
    {"writeFile", writeFile},
    {"createFile", createFile},
    {"truncateByName", truncateByName},
    {"truncateByReading", truncateByReading},
    {"truncateByDeviceAccess", truncateByDeviceAccess},
    {"openForDeviceCalls", openForDeviceCalls},
    {"removeFile", removeFile},
    {"makeFolder", makeFolder},
    {"changeMode", changeMode},
    {"changeModeOfOpenFile", changeModeOfOpenFile},
    {"setAttribute", setAttribute},
    {"setFlags", setFlags},
    {"watchFolder", watchFolder},
    {"linkIntoFolder", linkIntoFolder},
    {"readThroughLink", readThroughLink},
    {"useTemporaryFolder", useTemporaryFolder},
    {"leaveTemporaryFile", leaveTemporaryFile},
    {"runShell", runShell},
    {"runByLoader", runByLoader},
    {"runFromMemory", runFromMemory},
    {"forkProcess", forkProcess},
    {"forkByClone3", forkByClone3},
    {"cloneNamespace", cloneNamespace},
    {"startThread", startThread},
    {"findThread", findThread},
    {"useTcp", useTcp},
    {"useUdp", useUdp},
    {"useUnixSocket", useUnixSocket},
    {"makeSocketPair", makeSocketPair},
    {"shareMemory", shareMemory},
    {"shareSemaphore", shareSemaphore},
    {"sendMessages", sendMessages},
    {"signalProcess", signalProcess},
    {"signalParent", signalParent},
    {"signalThreadOfParent", signalThreadOfParent},
    {"signalGroup", signalGroup},
    {"signalParentByFile", signalParentByFile},
    {"signalGroupByFile", signalGroupByFile},
    {"signalItself", signalItself},
    {"traceParent", traceParent},
    {"readMemoryOfParent", readMemoryOfParent},
    {"outliveParent", outliveParent},
    {"outliveByThread", outliveByThread},
    {"beLeftAlone", beLeftAlone},
    {"chooseProcessorsOfParent", chooseProcessorsOfParent},
    {"eatMemory", eatMemory},
    {"fillDisk", fillDisk},
    {"fillDiskWithManyFiles", fillDiskWithManyFiles},
    {"dumpCore", dumpCore},
    {"raiseLimits", raiseLimits},
    {"callDevice", callDevice},
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
