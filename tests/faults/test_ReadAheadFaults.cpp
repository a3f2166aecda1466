#include "faults/Conversion.h"
#include "support/FakeGhostscript.h"
#include "support/SamplePdf.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <vector>

namespace {

using Answer = GhostscriptAnswer;

// At standard resolution Ghostscript draws a page of letter paper in 484704
// bytes, so that 40 pages come in three runs.
const QStringList threeRuns = {QStringLiteral("-dFirstPage=1 -dLastPage=18 -g1728x2244"),
                               QStringLiteral("-dFirstPage=19 -dLastPage=36 -g1728x2244"),
                               QStringLiteral("-dFirstPage=37 -dLastPage=40 -g1728x2244")};

class LongConversion : public testing::Test
{
protected:
    LongConversion() { m_folder.write("a.pdf", SamplePdf::equalPages(40)); }

    std::vector<std::string> arguments() const
    {
        return {"-p", "letter", "-r", "standard", "-o", m_output, m_folder.path("a.pdf")};
    }

    // Real Ghostscript, but `answer` in the place of the run that begins with this
    // page.
    static FakeGhostscript::Answers exceptFrom(int page, const Answer& answer)
    {
        return {Answer::real(), Answer::real(), {{page, answer}}};
    }

    // Expects the failure with this reason. A child that outlives the program
    // keeps its standard error open, which is a failure too.
    void expectFailure(const ProgramResult& result, const std::string& reason) const
    {
        EXPECT_TRUE(Conversion::hasFailedCleanly(result, m_output));
        EXPECT_EQ(result.error,
                  "can't write page file '" + m_folder.path("a.pdf") + "', " + reason + '\n');
    }

    TemporaryFolder m_folder;
    std::string m_output = m_folder.path("out.tif");
};

TEST_F(LongConversion, GivesTheSamePagesFromRunsThatNeverOverlap)
{
    ASSERT_EQ(runProgram(Conversion::with(arguments())).exitStatus, 0);
    const std::string content = Conversion::contentOf(m_output);
    const FakeGhostscript ghostscript(Answer::real());
    const ProgramResult result = runProgram(Conversion::with(arguments()));
    EXPECT_TRUE(Conversion::hasSucceeded(result, m_output, content));
    EXPECT_EQ(result.error, "");
    EXPECT_EQ(ghostscript.renderedRanges(), threeRuns);
    EXPECT_EQ(ghostscript.overlaps(), 0);
}

struct FailureRow
{
    const char* name;
    int firstPage;
    Answer answer;
    int runCount;
};

const Answer goodOutput = Answer::bytes(8724672);
const Answer cutOutput = Answer::bytes(100000) + Answer::crash(SIGKILL);

const FailureRow failureRows[] = {
    {"InTheFirstRun", 1, Answer::exit(1), 1},
    {"InTheSecondRun", 19, Answer::exit(1), 2},
    {"InTheLastRun", 37, Answer::exit(1), 3},
    {"AtTheEndOfTheFirstRun", 1, goodOutput + Answer::exit(1), 1},
    {"AtTheEndOfTheSecondRun", 19, goodOutput + Answer::exit(1), 2},
    {"AtTheEndOfTheLastRun", 37, goodOutput + Answer::exit(1), 3},
    {"BySignalInTheFirstRun", 1, cutOutput, 1},
    {"BySignalInTheSecondRun", 19, cutOutput, 2},
    {"BySignalInTheLastRun", 37, cutOutput, 3},
};

class FailedRun : public LongConversion, public testing::WithParamInterface<FailureRow>
{
};

TEST_P(FailedRun, IsTheLastOneAndLeavesNothing)
{
    const FakeGhostscript ghostscript(exceptFrom(GetParam().firstPage, GetParam().answer));
    expectFailure(runProgram(Conversion::with(arguments())), "invalid data");
    EXPECT_EQ(ghostscript.renderedRanges(), threeRuns.mid(0, GetParam().runCount));
    EXPECT_EQ(ghostscript.overlaps(), 0);
}

INSTANTIATE_TEST_SUITE_P(Ghostscript, FailedRun, testing::ValuesIn(failureRows),
                         [](const auto& test) { return std::string{test.param.name}; });

// While the run ahead hangs, or stands still with a full pipe.

class WriteError : public LongConversion, public testing::WithParamInterface<Answer>
{
};

TEST_P(WriteError, InTheMiddleOfARunEndsTheRunAhead)
{
    const FakeGhostscript ghostscript(exceptFrom(19, GetParam()));
    const ProgramResult result =
        runProgram(Conversion::with(arguments(), MORVALTIDE_WRITE_FAULTS,
                                    {{"FAULT_FILE", m_output},
                                     {"FAULT_CALL", "write"},
                                     {"FAULT_KIND", "ENOSPC"},
                                     {"FAULT_NUMBER", "20"},
                                     {"FAULT_LASTS", "1"},
                                     {"FAULT_REPORT", m_folder.path("struck")}}));
    EXPECT_TRUE(Conversion::hasFailedCleanly(result, m_output));
    EXPECT_NE(result.error.find("can't write page file"), std::string::npos) << result.error;
    EXPECT_NE(result.error.find(", failed to write\n"), std::string::npos) << result.error;
    EXPECT_EQ(ghostscript.overlaps(), 0);
}

INSTANTIATE_TEST_SUITE_P(Ghostscript, WriteError,
                         testing::Values(Answer::hang(), Answer::endlessBytes()),
                         [](const auto& test) {
                             return std::string{test.index == 0 ? "ThatHangs" : "ThatIsFull"};
                         });

} // namespace
