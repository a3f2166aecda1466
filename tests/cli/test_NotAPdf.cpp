#include "CliTest.h"

#include "support/FakeGhostscript.h"
#include "support/SamplePdf.h"

#include <csignal>

namespace {

using Answer = GhostscriptAnswer;

// A program that would draw a page, and leave a trace where it may write.
const char* const postScript = "%!PS\n(trace) (w) file closefile\nshowpage\n";

// A PDF file with so many bytes in front of its header.
QByteArray pdfBehind(int junkSize)
{
    return QByteArray(junkSize, 'x') + SamplePdf::equalPages(1);
}

struct Row
{
    const char* name;
    QByteArray (*content)();
};

const Row rows[] = {
    {"Text", [] { return QByteArray("just text\n"); }},
    {"Nothing", [] { return QByteArray(); }},
    {"OnlyBlanks", [] { return QByteArray(3000, ' '); }},
    {"APng", [] { return blackPng({20, 20}); }},
    {"PostScript", [] { return QByteArray(postScript); }},
    {"PostScriptBehindBlanks", [] { return "\n\t " + QByteArray(postScript); }},
    {"PostScriptInFrontOfAPdf", [] { return postScript + SamplePdf::equalPages(1); }},
    {"PostScriptThatMentionsPdf", [] { return QByteArray("%!PS\n%PDF-1.4\nshowpage\n"); }},
    {"PostScriptMarkInTheJunkInFrontOfAPdf", [] { return "x %!PS\n" + SamplePdf::equalPages(1); }},
    {"StructuringCommentInFrontOfAPdf",
     [] { return "%%BoundingBox: 0 0 9 9\n" + SamplePdf::equalPages(1); }},
    {"APdfBehind1019BytesOfJunk", [] { return pdfBehind(1019); }},
};

class NotAPdf : public CliTest, public testing::WithParamInterface<Row>
{
};

TEST_P(NotAPdf, IsReportedAsAnInvalidPdf)
{
    folder().write("in.pdf", GetParam().content());
    EXPECT_TRUE(isFailure(run({"-o", "out.tif", "in.pdf"}),
                          "can't write page file 'in.pdf', invalid pdf format\n"));
    EXPECT_EQ(folder().entries(), QStringList(QStringLiteral("in.pdf")));
}

TEST_P(NotAPdf, NeverReachesGhostscript)
{
    const FakeGhostscript ghostscript(Answer::exit(1));
    folder().write("in.pdf", GetParam().content());
    run({"-o", "out.tif", "in.pdf"});
    EXPECT_TRUE(ghostscript.runs().empty());
}

INSTANTIATE_TEST_SUITE_P(Cli, NotAPdf, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

class PdfInput : public CliTest
{
};

TEST_F(PdfInput, Behind1018BytesOfJunkIsConverted)
{
    folder().write("in.pdf", pdfBehind(1018));
    EXPECT_EQ(run({"-o", "out.tif", "in.pdf"}).exitStatus, 0);
    EXPECT_EQ(pages().size(), 1U);
}

TEST_F(PdfInput, BehindBlanksIsConverted)
{
    folder().write("in.pdf", QByteArray(3000, ' ') + SamplePdf::equalPages(1));
    EXPECT_EQ(run({"-o", "out.tif", "in.pdf"}).exitStatus, 0);
    EXPECT_EQ(pages().size(), 1U);
}

TEST_F(PdfInput, ContributesAllItsPagesInSilence)
{
    folder().write("in.pdf", SamplePdf::equalPages(3));
    ASSERT_TRUE(isSilentSuccess(run({"-o", "out.tif", "in.pdf"})));
    EXPECT_EQ(pages().size(), 3U);
}

TEST_F(PdfInput, WithoutGhostscriptIsAnInvalidPdf)
{
    folder().write("in.pdf", SamplePdf::equalPages(1));
    ProgramStart alone = start({"-o", "out.tif", "in.pdf"});
    alone.environment["PATH"] = folder().path("");
    EXPECT_TRUE(
        isFailure(runProgram(alone), "can't write page file 'in.pdf', invalid pdf format\n"));
    EXPECT_FALSE(exists("out.tif"));
}

struct GhostscriptRow
{
    const char* name;
    FakeGhostscript::Answers answers;
    const char* error;
};

const char* const invalidPdf = "can't write page file 'in.pdf', invalid pdf format\n";
const char* const invalidData = "can't write page file 'in.pdf', invalid data\n";

const GhostscriptRow ghostscriptRows[] = {
    {"FailsInTheQuery", {Answer::exit(1), Answer::real()}, invalidPdf},
    {"AnswersButFailsInTheQuery",
     {Answer::pageSizes(1) + Answer::exit(1), Answer::real()},
     invalidPdf},
    {"SaysNothingInTheQuery", {{}, Answer::real()}, invalidPdf},
    {"IsKilledInTheQuery", {Answer::crash(SIGKILL), Answer::real()}, invalidPdf},
    {"FailsInTheRun", {Answer::pageSizes(1), Answer::exit(1)}, invalidData},
    {"IsKilledInTheRun", {Answer::pageSizes(1), Answer::crash(SIGKILL)}, invalidData},
    {"WritesHalfAPage", {Answer::pageSizes(1), Answer::bytes(1000)}, invalidData},
    {"ComplainsOnStandardError",
     {Answer::remark("complaint\n") + Answer::exit(1), Answer::real()},
     "complaint\ncan't write page file 'in.pdf', invalid pdf format\n"},
};

class FailingGhostscript : public CliTest, public testing::WithParamInterface<GhostscriptRow>
{
};

TEST_P(FailingGhostscript, LeavesNoOutput)
{
    const FakeGhostscript ghostscript(GetParam().answers);
    folder().write("in.pdf", SamplePdf::equalPages(1));
    EXPECT_TRUE(isFailure(run({"-o", "out.tif", "in.pdf"}), GetParam().error));
    EXPECT_FALSE(exists("out.tif"));
}

INSTANTIATE_TEST_SUITE_P(Cli, FailingGhostscript, testing::ValuesIn(ghostscriptRows),
                         [](const auto& test) { return std::string{test.param.name}; });

} // namespace
