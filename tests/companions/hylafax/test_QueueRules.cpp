#include "companions/hylafax/QueueTest.h"
#include "support/SamplePdf.h"
#include "support/TiffFile.h"

#include <QImage>
#include <QStringList>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

namespace {

// True if everybody may enter the folder and all those above it.
bool isReachableForOthers(const std::string& folder)
{
    for (std::filesystem::path path = std::filesystem::canonical(folder);;
         path = path.parent_path()) {
        const auto permissions = std::filesystem::status(path).permissions();
        if ((permissions & std::filesystem::perms::others_exec) == std::filesystem::perms::none) {
            return false;
        }
        if (path == path.root_path()) {
            return true;
        }
    }
}

class HylaFaxQueue : public QueueTest
{
protected:
    // The output is as empty as the queue has made it, and nothing else is left.
    void expectNothingLeft() const
    {
        EXPECT_EQ(outputContent(), "");
        EXPECT_EQ(entries("tmp"), QStringList());
        EXPECT_EQ(entries("docq").size(), 2);
    }
};

struct BadDocument
{
    const char* name;
    DocumentKind kind;
    QByteArray content;
    const char* message;
};

void PrintTo(const BadDocument& document, std::ostream* stream)
{
    *stream << document.name;
}

const BadDocument badDocuments[] = {
    {"PostScriptWithAnError", DocumentKind::PostScript, "%!PS\n1 0 div showpage\n",
     "The PostScript document cannot be faxed: Error: /undefinedresult in --div--"},
    {"PostScriptThatTalksInControlCodes", DocumentKind::PostScript,
     "%!PS\n(\033[2Jhello\007\\n) print flush 1 0 div\n",
     "The PostScript document cannot be faxed: [2Jhello"},
    {"PostScriptWithoutPages", DocumentKind::PostScript, "%!PS\n1 pop\n",
     "The PostScript document cannot be faxed: it has no pages"},
    {"EmptyPostScript", DocumentKind::PostScript, "",
     "The PostScript document cannot be faxed: it has no pages"},
    {"PostScriptCalledPdf", DocumentKind::Pdf, "%!PS\nshowpage\n",
     "The PDF document cannot be faxed: invalid pdf format"},
    {"TextCalledTiff", DocumentKind::Tiff, "a fax\n",
     "The TIFF document cannot be faxed: invalid data"},
};

class HylaFaxBadDocument : public HylaFaxQueue, public testing::WithParamInterface<BadDocument>
{
};

TEST_P(HylaFaxBadDocument, IsRejectedInOneLine)
{
    submit(GetParam().content);
    QueueRequest request;
    request.kind = GetParam().kind;
    EXPECT_TRUE(isRejected(run(request), GetParam().message));
    expectNothingLeft();
}

INSTANTIATE_TEST_SUITE_P(HylaFax, HylaFaxBadDocument, testing::ValuesIn(badDocuments),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST_F(HylaFaxQueue, FindsNothingButThePrivateResult)
{
    submit(SamplePdf::equalPages(1));
    ASSERT_TRUE(isQueueSuccess(run({})));
    EXPECT_EQ(entries("tmp"), QStringList());
    EXPECT_EQ(entries("docq").size(), 2);
    struct stat status = {};
    ASSERT_EQ(stat(path(output).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(HylaFaxQueue, MayGiveDocumentsAnyName)
{
    document = "docq/%d (a\\b),1 \n$(touch evil) `x` -o.pdf";
    output = "docq/-out %d,;'\"\n$HOME";
    submit(SamplePdf::equalPages(1));
    ASSERT_TRUE(isQueueSuccess(run({})));
    EXPECT_EQ(pages().size(), 1U);
    EXPECT_EQ(entries("."),
              QStringList({QStringLiteral("bin"), QStringLiteral("docq"), QStringLiteral("etc"),
                           QStringLiteral("lib"), QStringLiteral("tmp")}));
}

TEST_F(HylaFaxQueue, GetsNoMorePagesThanItAllows)
{
    submit(SamplePdf::equalPages(3));
    QueueRequest request;
    request.maximumPages = "2";
    EXPECT_TRUE(isRejected(run(request),
                           "The PDF document has 3 pages, more than the 2 that may be sent."));
    expectNothingLeft();
    request.maximumPages = "3";
    EXPECT_TRUE(isQueueSuccess(run(request)));
}

TEST_F(HylaFaxQueue, IsToldOfADocumentThatIsGone)
{
    EXPECT_TRUE(isRejected(run({}), "The PDF document cannot be read."));
}

TEST_F(HylaFaxQueue, GetsRoomForTheHeaderLineFromTheOptionsFile)
{
    const QByteArray content = SamplePdf::equalPages(1);
    submit(content);
    write("etc/morvaltide.options", "# room for the header line\n-m 0,0.2,0,0\n");
    ASSERT_TRUE(isQueueSuccess(run({})));
    const std::vector<TiffPage> expected =
        directPages("expected.pdf", content, {"-m", "0,0.2,0,0"});
    EXPECT_TRUE(isSamePicture(pages().at(0).pixels, expected.at(0).pixels));
}

struct OtherPage
{
    DocumentKind kind;
    std::string script;
    std::string width;
    std::string length;
};

const OtherPage otherPages[] = {
    {DocumentKind::PostScript, "bin/ps2fax.gs", "2048", "364"}, // B4
    {DocumentKind::Pdf, "bin/pdf2fax.gs", "2432", "297"},       // A3
    {DocumentKind::Tiff, "bin/tiff2fax", "1728", "-1"},         // of any length
};

TEST_F(HylaFaxQueue, IsServedByItsOwnScriptsForOtherPages)
{
    submit("unseen");
    for (const OtherPage& page : otherPages) {
        write(page.script, "#!/bin/sh\necho \"$@\"\nexit 3\n");
        chmod(path(page.script).c_str(), S_IRWXU);
        QueueRequest request;
        request.kind = page.kind;
        request.width = page.width;
        request.length = page.length;
        const ProgramResult result = run(request);
        EXPECT_EQ(result.exitStatus, 3);
        EXPECT_EQ(result.output, "-o " + output + " -r 196 -w " + page.width + " -l " +
                                     page.length + " -m 4096 -U -3 " + document + '\n');
        EXPECT_EQ(result.error, "");
    }
}

TEST_F(HylaFaxQueue, IsToldOfOtherPagesThatNobodyMakes)
{
    submit("unseen");
    QueueRequest request;
    request.width = "2432";
    const std::string message = "No page of 2432 dots by 297 mm can be made at 196 lines per inch.";
    EXPECT_TRUE(isRejected(run(request), message));
    // Nor does the program call itself if it has taken the script's place.
    ASSERT_EQ(symlink("../lib/morvaltide-ps2fax", path("bin/pdf2fax.gs").c_str()), 0);
    EXPECT_TRUE(isRejected(run(request), message));
    expectNothingLeft();
}

TEST_F(HylaFaxQueue, HasItsDocumentsConvertedByItsOwnUser)
{
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can be another user";
    }
    constexpr uid_t user = 65534;
    submit("unseen");
    write("bin/pdf2fax.gs", "#!/bin/sh\nid -u; id -g; id -G; grep NoNewPrivs /proc/self/status\n");
    QueueRequest request;
    request.width = "2048";
    const ProgramStart call = start(request);
    for (const char* name : {".", "bin", "bin/pdf2fax.gs", "docq", "tmp", "lib"}) {
        ASSERT_EQ(chmod(path(name).c_str(), 0755), 0);
    }
    ASSERT_EQ(chown(path(output).c_str(), user, user), 0);
    if (!isReachableForOthers(path("."))) {
        GTEST_SKIP() << "a folder above the temporary one is closed to other users";
    }
    const ProgramResult result = runProgram(call);
    EXPECT_EQ(result.output, "65534\n65534\n65534\nNoNewPrivs:\t1\n") << result.error;
}

} // namespace
