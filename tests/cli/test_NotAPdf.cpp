#include "CliTest.h"

#include "support/FakeGhostscript.h"
#include "support/SamplePdf.h"

namespace {

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
    const FakeGhostscript ghostscript("exit 1");
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
    const char* commands;
    const char* error;
};

// A size is asked for with -c, pages without.
const GhostscriptRow ghostscriptRows[] = {
    {"FailsInTheQuery", "exit 1", "can't write page file 'in.pdf', invalid pdf format\n"},
    {"AnswersButFailsInTheQuery", "echo 0 0 612 792; exit 1",
     "can't write page file 'in.pdf', invalid pdf format\n"},
    {"SaysNothingInTheQuery", "exit 0", "can't write page file 'in.pdf', invalid pdf format\n"},
    {"IsKilledInTheQuery", "kill -9 $$", "can't write page file 'in.pdf', invalid pdf format\n"},
    {"FailsInTheRun", "case \"$*\" in *' -c '*) echo 0 0 612 792;; *) exit 1;; esac",
     "can't write page file 'in.pdf', invalid data\n"},
    {"IsKilledInTheRun", "case \"$*\" in *' -c '*) echo 0 0 612 792;; *) kill -9 $$;; esac",
     "can't write page file 'in.pdf', invalid data\n"},
    {"WritesHalfAPage",
     "case \"$*\" in *' -c '*) echo 0 0 612 792;; *) head -c 1000 /dev/zero;; esac",
     "can't write page file 'in.pdf', invalid data\n"},
    {"ComplainsOnStandardError", "echo complaint >&2; exit 1",
     "complaint\ncan't write page file 'in.pdf', invalid pdf format\n"},
};

class FailingGhostscript : public CliTest, public testing::WithParamInterface<GhostscriptRow>
{
};

TEST_P(FailingGhostscript, LeavesNoOutput)
{
    const FakeGhostscript ghostscript(GetParam().commands);
    folder().write("in.pdf", SamplePdf::equalPages(1));
    EXPECT_TRUE(isFailure(run({"-o", "out.tif", "in.pdf"}), GetParam().error));
    EXPECT_FALSE(exists("out.tif"));
}

INSTANTIATE_TEST_SUITE_P(Cli, FailingGhostscript, testing::ValuesIn(ghostscriptRows),
                         [](const auto& test) { return std::string{test.param.name}; });

} // namespace
