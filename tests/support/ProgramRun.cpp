#include "support/ProgramRun.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <system_error>

#include <fcntl.h>
#include <linux/capability.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

// Longer than any program of a test takes, even under the sanitizers or where the
// processors have ten times as much to do; shorter than CTest waits for a case.
constexpr std::chrono::seconds patience(270);

// Pointers to the texts, with a null pointer behind them, as execve() wants.
std::vector<char*> pointers(std::vector<std::string>& texts)
{
    std::vector<char*> result;
    result.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        result.push_back(text.data());
    }
    result.push_back(nullptr);
    return result;
}

std::vector<std::string>
changedEnvironment(const std::map<std::string, std::optional<std::string>>& changes)
{
    std::vector<std::string> result;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        if (changes.count(text.substr(0, text.find('='))) == 0) {
            result.push_back(text);
        }
    }
    for (const auto& [name, value] : changes) {
        if (value) {
            result.push_back(name + '=' + *value);
        }
    }
    return result;
}

// What the child needs between fork and exec, made ready before: from there on
// only async-signal-safe calls are allowed.
struct ChildPlan
{
    ChildPlan(const ProgramStart& programStart, const std::array<int, 3>& standardStreams)
        : start(programStart),
          streams(standardStreams),
          argumentTexts{programStart.program},
          environmentTexts(changedEnvironment(programStart.environment))
    {
        argumentTexts.insert(argumentTexts.end(), start.arguments.begin(), start.arguments.end());
        arguments = pointers(argumentTexts);
        environment = pointers(environmentTexts);
    }

    const ProgramStart& start;
    std::array<int, 3> streams;
    std::vector<std::string> argumentTexts;
    std::vector<std::string> environmentTexts;
    std::vector<char*> arguments;
    std::vector<char*> environment;
};

void setSignals(const std::set<int>& ignored)
{
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    for (int number = 1; number <= SIGRTMAX; ++number) {
        signal(number, ignored.count(number) == 0 ? SIG_DFL : SIG_IGN);
    }
}

void setStreams(const ChildPlan& plan)
{
    int descriptor = 0;
    for (const int stream : plan.streams) {
        dup2(stream, descriptor++);
    }
    for (const int closed : plan.start.closedDescriptors) {
        close(closed);
    }
    close_range(static_cast<unsigned>(descriptor), ~0U, 0);
}

void setLimits(const ProgramStart& start)
{
    if (start.openFilesLimit) {
        const rlimit limit = {*start.openFilesLimit, *start.openFilesLimit};
        setrlimit(RLIMIT_NOFILE, &limit);
    }
    if (start.stackLimitBytes) {
        const rlimit limit = {*start.stackLimitBytes, *start.stackLimitBytes};
        setrlimit(RLIMIT_STACK, &limit);
    }
    if (start.obeysPermissions) {
        // Fails for all but root, who alone needs it.
        prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE);
        prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH);
    }
}

[[noreturn]] void runChild(const ChildPlan& plan)
{
    constexpr int cannotRun = 127;
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    setSignals(plan.start.ignoredSignals);
    setStreams(plan);
    setLimits(plan.start);
    if (plan.start.folder.empty() || chdir(plan.start.folder.c_str()) == 0) {
        execve(plan.start.program.c_str(), plan.arguments.data(), plan.environment.data());
    }
    _exit(cannotRun);
}

struct Pipe
{
    int readingEnd = -1;
    int writingEnd = -1;
};

Pipe makePipe()
{
    int ends[2] = {-1, -1};
    EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
    return {ends[0], ends[1]};
}

// The descriptor for one of the program's streams: that of the file, if there is
// one, in place of the pipe's.
int openStream(const std::string& fileName, const Pipe& pipe)
{
    if (fileName.empty()) {
        return pipe.writingEnd;
    }
    close(pipe.writingEnd);
    return open(fileName.c_str(), O_WRONLY | O_CLOEXEC);
}

// Appends what is there; false at the end of the stream.
bool readSome(int descriptor, std::string& text)
{
    constexpr std::size_t bufferSize = 65536;
    std::string buffer(bufferSize, '\0');
    const ssize_t size = read(descriptor, buffer.data(), buffer.size());
    if (size <= 0) {
        return false;
    }
    text.append(buffer, 0, static_cast<std::size_t>(size));
    return true;
}

// Reads both streams to their ends; false if that takes too long. poll() passes
// over descriptors that are -1.
bool readStreams(const std::array<int, 2>& descriptors, ProgramResult& result)
{
    const Clock::time_point deadline = Clock::now() + patience;
    std::array<pollfd, 2> polled = {{{descriptors[0], POLLIN, 0}, {descriptors[1], POLLIN, 0}}};
    while (polled[0].fd >= 0 || polled[1].fd >= 0) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() <= 0) {
            return false;
        }
        poll(polled.data(), polled.size(), static_cast<int>(left.count()));
        if (polled[0].revents != 0 && !readSome(polled[0].fd, result.output)) {
            polled[0].fd = -1;
        }
        if (polled[1].revents != 0 && !readSome(polled[1].fd, result.error)) {
            polled[1].fd = -1;
        }
    }
    return true;
}

} // namespace

std::string testedProgram(const char* built)
{
    const char* chosen = std::getenv("MORVALTIDE_PROGRAM");
    return chosen == nullptr ? built : chosen;
}

ProgramRun::ProgramRun(const ProgramStart& start)
{
    const int input = open("/dev/null", O_RDONLY | O_CLOEXEC);
    const Pipe output = makePipe();
    Pipe error = makePipe();
    if (start.hasBrokenErrorPipe) {
        close(error.readingEnd);
        error.readingEnd = -1;
    }
    const int outputDescriptor = openStream(start.outputFile, output);
    const int errorDescriptor = openStream(start.errorFile, error);
    const ChildPlan plan(start, {input, outputDescriptor, errorDescriptor});
    m_pid = fork();
    if (m_pid == 0) {
        runChild(plan);
    }
    if (m_pid < 0) {
        throw std::system_error(errno, std::generic_category(), "fork");
    }
    close(input);
    close(outputDescriptor);
    close(errorDescriptor);
    m_streams = {output.readingEnd, error.readingEnd};
}

ProgramRun::~ProgramRun()
{
    if (m_pid > 0) {
        kill();
        waitpid(m_pid, nullptr, 0);
    }
    for (const int descriptor : m_streams) {
        if (descriptor >= 0) {
            close(descriptor);
        }
    }
}

void ProgramRun::sendSignal(int number) const
{
    EXPECT_EQ(::kill(m_pid, number), 0);
}

ProgramResult ProgramRun::finish()
{
    ProgramResult result;
    if (!readStreams(m_streams, result)) {
        ADD_FAILURE() << "the program, or a child of it, still runs";
        kill();
    }
    int status = 0;
    EXPECT_EQ(waitpid(m_pid, &status, 0), m_pid);
    m_pid = -1;
    if (WIFEXITED(status)) {
        result.exitStatus = WEXITSTATUS(status);
    } else {
        result.signal = WTERMSIG(status);
    }
    return result;
}

// The program leads a process group of its own, to which its children belong.
void ProgramRun::kill() const
{
    ::kill(-m_pid, SIGKILL);
    ::kill(m_pid, SIGKILL); // should it not have come as far as that
}

ProgramResult runProgram(const ProgramStart& start)
{
    return ProgramRun(start).finish();
}
