#include "CliTest.h"

#include "support/FakeGhostscript.h"
#include "support/SamplePdf.h"
#include "support/WaitUntil.h"

#include <csignal>

#include <sys/stat.h>

namespace {

using Answer = GhostscriptAnswer;
using Answers = FakeGhostscript::Answers;

// Stand-ins for Ghostscript that say nothing and never end, the one when asked
// for the page sizes, the other when asked for pages.
const Answers silentQuery = {Answer::hang(), Answer::real()};
const Answers silentRun = {Answer::pageSizes(1), Answer::hang()};

// One that draws the first run of pages and hangs in the second, which is
// started while the pages of the first are written.
const Answers silentRunAhead = {
    Answer::pageSizes(20), Answer::numberedPages(), {{18, Answer::hang()}}};

const char* const sanitizerHandlesNothing =
    "handle_abort=0:handle_segv=0:handle_sigbus=0:handle_sigfpe=0:handle_sigill=0:handle_sigtrap=0";

class InterruptedConversion : public CliTest
{
protected:
    void SetUp() override
    {
        folder().write("in.png", blackPng({20, 20}));
        folder().write("in.pdf", SamplePdf::equalPages(1));
    }

    static void waitForRuns(const FakeGhostscript& ghostscript, std::size_t count)
    {
        ASSERT_TRUE(waitUntil([&] { return ghostscript.runs().size() >= count; }))
            << "Ghostscript was not started";
    }

    // Sends the signal when the stand-in has been started so many times. The
    // result comes only when the stand-in has ended as well.
    ProgramResult interrupt(ProgramStart conversion, const FakeGhostscript& ghostscript,
                            std::size_t runCount, int signal) const
    {
        // A sanitized program would report a crash and exit instead.
        conversion.environment["ASAN_OPTIONS"] = sanitizerHandlesNothing;
        ProgramRun run(conversion);
        waitForRuns(ghostscript, runCount);
        EXPECT_TRUE(exists("out.tif"));
        run.sendSignal(signal);
        return run.finish();
    }
};

struct Row
{
    const char* name;
    int signal;
    Answers answers;
    std::size_t runCount;
};

const Row rows[] = {
    {"InterruptInTheQuery", SIGINT, silentQuery, 1},
    {"TerminationInTheQuery", SIGTERM, silentQuery, 1},
    {"HangupInTheQuery", SIGHUP, silentQuery, 1},
    {"BrokenPipeInTheQuery", SIGPIPE, silentQuery, 1},
    {"CpuLimitInTheQuery", SIGXCPU, silentQuery, 1},
    {"FileSizeLimitInTheQuery", SIGXFSZ, silentQuery, 1},
    {"AbortInTheQuery", SIGABRT, silentQuery, 1},
    {"BusErrorInTheQuery", SIGBUS, silentQuery, 1},
    {"InvalidAccessInTheQuery", SIGSEGV, silentQuery, 1},
    {"QuitInTheQuery", SIGQUIT, silentQuery, 1},
    {"IllegalInstructionInTheQuery", SIGILL, silentQuery, 1},
    {"TrapInTheQuery", SIGTRAP, silentQuery, 1},
    {"ArithmeticErrorInTheQuery", SIGFPE, silentQuery, 1},
    {"FirstUserSignalInTheQuery", SIGUSR1, silentQuery, 1},
    {"SecondUserSignalInTheQuery", SIGUSR2, silentQuery, 1},
    {"AlarmInTheQuery", SIGALRM, silentQuery, 1},
    {"StackFaultInTheQuery", SIGSTKFLT, silentQuery, 1},
    {"VirtualAlarmInTheQuery", SIGVTALRM, silentQuery, 1},
    {"ProfilingInTheQuery", SIGPROF, silentQuery, 1},
    {"InputOutputInTheQuery", SIGIO, silentQuery, 1},
    {"PowerFailureInTheQuery", SIGPWR, silentQuery, 1},
    {"BadSystemCallInTheQuery", SIGSYS, silentQuery, 1},
    {"FirstRealTimeInTheQuery", SIGRTMIN, silentQuery, 1},
    {"LastRealTimeInTheQuery", SIGRTMAX, silentQuery, 1},
    {"InterruptInTheRun", SIGINT, silentRun, 2},
    {"TerminationInTheRun", SIGTERM, silentRun, 2},
    {"HangupInTheRun", SIGHUP, silentRun, 2},
    {"BrokenPipeInTheRun", SIGPIPE, silentRun, 2},
    {"InvalidAccessInTheRun", SIGSEGV, silentRun, 2},
    {"InterruptInTheRunAhead", SIGINT, silentRunAhead, 3},
    {"TerminationInTheRunAhead", SIGTERM, silentRunAhead, 3},
    {"HangupInTheRunAhead", SIGHUP, silentRunAhead, 3},
    {"BrokenPipeInTheRunAhead", SIGPIPE, silentRunAhead, 3},
    {"InvalidAccessInTheRunAhead", SIGSEGV, silentRunAhead, 3},
};

class EndingSignal : public InterruptedConversion, public testing::WithParamInterface<Row>
{
};

TEST_P(EndingSignal, LeavesNoOutputAndNoGhostscript)
{
    const FakeGhostscript ghostscript(GetParam().answers);
    const ProgramResult result = interrupt(start({"-o", "out.tif", "in.png", "in.pdf"}),
                                           ghostscript, GetParam().runCount, GetParam().signal);
    EXPECT_EQ(result.signal, GetParam().signal);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.error, "");
    EXPECT_FALSE(exists("out.tif"));
}

INSTANTIATE_TEST_SUITE_P(Cli, EndingSignal, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST_F(InterruptedConversion, RemovesTheLinkAndItsTarget)
{
    const FakeGhostscript ghostscript(silentQuery);
    folder().write("target.tif", "old");
    link("target.tif", "out.tif");
    const ProgramResult result =
        interrupt(start({"-o", "out.tif", "in.png", "in.pdf"}), ghostscript, 1, SIGTERM);
    EXPECT_EQ(result.signal, SIGTERM);
    EXPECT_FALSE(exists("out.tif"));
    EXPECT_FALSE(exists("target.tif"));
}

TEST_F(InterruptedConversion, LeavesAFifoWhereItIs)
{
    const FakeGhostscript ghostscript(silentQuery);
    ASSERT_EQ(mkfifo(folder().path("out.tif").c_str(), 0600), 0);
    const ProgramResult result =
        interrupt(start({"-o", "out.tif", "in.pdf"}), ghostscript, 1, SIGTERM);
    EXPECT_EQ(result.signal, SIGTERM);
    EXPECT_TRUE(exists("out.tif"));
}

TEST_F(InterruptedConversion, LeavesAFileThatTookThePlaceOfTheOutput)
{
    const FakeGhostscript ghostscript(silentQuery);
    ProgramRun run(start({"-o", "out.tif", "in.pdf"}));
    waitForRuns(ghostscript, 1);
    ASSERT_EQ(std::rename(folder().write("new", "new").c_str(), folder().path("out.tif").c_str()),
              0);
    run.sendSignal(SIGTERM);
    EXPECT_EQ(run.finish().signal, SIGTERM);
    EXPECT_EQ(content("out.tif"), QByteArray("new"));
}

TEST_F(InterruptedConversion, ByAKillLeavesNoGhostscript)
{
    const FakeGhostscript ghostscript(silentRun);
    const ProgramResult result =
        interrupt(start({"-o", "out.tif", "in.pdf"}), ghostscript, 2, SIGKILL);
    EXPECT_EQ(result.signal, SIGKILL);
}

TEST_F(InterruptedConversion, ByAKillLeavesNoRunAhead)
{
    const FakeGhostscript ghostscript(silentRunAhead);
    const ProgramResult result =
        interrupt(start({"-o", "out.tif", "in.pdf"}), ghostscript, 3, SIGKILL);
    EXPECT_EQ(result.signal, SIGKILL);
}

TEST_F(InterruptedConversion, ByAStackOverflowLeavesNoOutput)
{
    folder().write("cover.html", "<html><body>" + QByteArray("<table><tr><td>").repeated(2000) +
                                     "text</body></html>");
    ProgramStart conversion = start({"-C", "cover.html", "-o", "out.tif", "in.png"});
    conversion.environment["ASAN_OPTIONS"] = sanitizerHandlesNothing;
    conversion.stackLimitBytes = 524288; // as a rule it would take 10000 tables, and long
    EXPECT_EQ(runProgram(conversion).signal, SIGSEGV);
    EXPECT_FALSE(exists("out.tif"));
}

class IgnoredSignal : public InterruptedConversion, public testing::WithParamInterface<Row>
{
};

const Row ignoredRows[] = {
    {"Interrupt", SIGINT, {}, 0},       {"Termination", SIGTERM, {}, 0},
    {"Hangup", SIGHUP, {}, 0},          {"BrokenPipe", SIGPIPE, {}, 0},
    {"Quit", SIGQUIT, {}, 0},           {"FirstUserSignal", SIGUSR1, {}, 0},
    {"FirstRealTime", SIGRTMIN, {}, 0},
};

TEST_P(IgnoredSignal, AtStartStaysIgnored)
{
    // Waits until the test lets it go on.
    const FakeGhostscript ghostscript(Answer::waitFor(QStringLiteral("go")) + Answer::real());
    ProgramStart conversion = start({"-o", "out.tif", "in.png", "in.pdf"});
    conversion.ignoredSignals = {GetParam().signal};
    ProgramRun run(conversion);
    waitForRuns(ghostscript, 1);
    run.sendSignal(GetParam().signal);
    folder().write("go", "");
    EXPECT_TRUE(isSilentSuccess(run.finish()));
    EXPECT_EQ(pages().size(), 2U);
}

INSTANTIATE_TEST_SUITE_P(Cli, IgnoredSignal, testing::ValuesIn(ignoredRows),
                         [](const auto& test) { return std::string{test.param.name}; });

} // namespace
