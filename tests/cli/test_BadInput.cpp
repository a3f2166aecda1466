#include "CliTest.h"

#include "support/SampleImages.h"
#include "support/SamplePdf.h"

#include <sys/stat.h>

namespace {

QByteArray jpeg()
{
    return SampleImages::jpegFile(SampleImages::quarters({64, 48}));
}

// Up to the middle of the tables in front of the picture.
QByteArray jpegCutInItsHeader()
{
    return jpeg().left(100);
}

QByteArray junk()
{
    return "neither fish nor fowl";
}

struct Row
{
    const char* name;
    const char* fileName;
    QByteArray (*content)();
    const char* reason;
};

const Row rows[] = {
    {"JunkNamedPng", "a.png", junk, "invalid png format"},
    {"EmptyPng", "a.png", [] { return QByteArray(); }, "invalid png format"},
    {"JpegNamedPng", "a.png", jpeg, "invalid png format"},
    {"JunkNamedJpg", "a.jpg", junk, "invalid jpeg format"},
    {"EmptyJpeg", "a.jpeg", [] { return QByteArray(); }, "invalid jpeg format"},
    {"PngNamedJpg", "a.jpg", [] { return blackPng({20, 20}); }, "invalid jpeg format"},
    {"JpegCutInItsHeader", "a.jpg", jpegCutInItsHeader, "invalid data"},
    {"PictureThatShrinksToNothing", "a.png", [] { return blackPng({20000, 3}); }, "invalid data"},
    {"ExtremelyWidePicture", "a.png", [] { return blackPng({60000, 8}); }, "invalid data"},
    {"ExtremelyHighPicture", "a.png", [] { return blackPng({8, 60000}); }, "invalid data"},
    {"TextFile", "a.txt", junk, "unsupported  format"},
    {"EmptyFileWithoutSuffix", "a", [] { return QByteArray(); }, "unsupported  format"},
    {"JunkWithUpperCaseSuffix", "a.PNG", junk, "unsupported  format"},
    {"HtmlAsPage", "a.html", [] { return QByteArray("<html>Page</html>"); },
     "unsupported html format"},
    {"HtmlAsPageByItsContent", "a", [] { return QByteArray("<html>Page</html>"); },
     "unsupported html format"},
    {"EmptyFileNamedHtml", "a.html", [] { return QByteArray(); }, "unsupported html format"},
};

class BadPage : public CliTest, public testing::WithParamInterface<Row>
{
};

TEST_P(BadPage, IsReportedWithItsReasonAndLeavesNoOutput)
{
    const std::string name = GetParam().fileName;
    folder().write(name, GetParam().content());
    EXPECT_TRUE(isFailure(run({"-o", "out.tif", name}),
                          "can't write page file '" + name + "', " + GetParam().reason + '\n'));
    EXPECT_FALSE(exists("out.tif"));
}

INSTANTIATE_TEST_SUITE_P(Cli, BadPage, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

// Qt 6.8 takes a TIFF file without pages for one that it cannot read; others try to
// decode the first.
#if QT_VERSION < QT_VERSION_CHECK(6, 5, 0)
constexpr auto reasonOfNoPages = "invalid data";
#else
constexpr auto reasonOfNoPages = "invalid tiff format";
#endif

// The decoding library adds lines of its own.
const Row remarkedRows[] = {
    {"JunkNamedTif", "a.tif", junk, "invalid data"},
    {"EmptyTiff", "a.tiff", [] { return QByteArray(); }, "invalid data"},
    {"PngNamedTif", "a.tif", [] { return blackPng({20, 20}); }, "invalid data"},
    {"TiffCutBehindItsHeader", "a.tif",
     [] { return SampleImages::tiffFile({{SampleImages::quarters({20, 20})}}).left(8); },
     reasonOfNoPages},
    {"TruncatedPng", "a.png",
     [] { return SampleImages::pngFile(SampleImages::transparent({60, 60})).left(1000); },
     "invalid data"},
};

class UndecodablePage : public CliTest, public testing::WithParamInterface<Row>
{
};

TEST_P(UndecodablePage, IsReportedOnTheLastLineAndLeavesNoOutput)
{
    const std::string name = GetParam().fileName;
    folder().write(name, GetParam().content());
    EXPECT_TRUE(
        isFailureAfterRemarks(run({"-o", "out.tif", name}),
                              "can't write page file '" + name + "', " + GetParam().reason + '\n'));
    EXPECT_FALSE(exists("out.tif"));
}

INSTANTIATE_TEST_SUITE_P(Cli, UndecodablePage, testing::ValuesIn(remarkedRows),
                         [](const auto& test) { return std::string{test.param.name}; });

const Row coverRows[] = {
    {"Png", "a.png", [] { return blackPng({20, 20}); }, "unsupported png format"},
    {"Jpeg", "a.jpg", jpeg, "unsupported jpeg format"},
    {"Tiff", "a.tif", junk, "unsupported tiff format"},
    {"Pdf", "a.pdf", [] { return SamplePdf::equalPages(1); }, "unsupported pdf format"},
    {"PlainText", "a.txt", junk, "unsupported  format"},
    {"HtmlWithoutMarkup", "a.html", junk, "invalid data"},
    {"EmptyHtml", "a.html", [] { return QByteArray(); }, "invalid data"},
    {"ParagraphAloneWithoutSuffix", "a", [] { return QByteArray("<p>hello</p>"); },
     "unsupported  format"},
};

class BadCoverPage : public CliTest, public testing::WithParamInterface<Row>
{
};

TEST_P(BadCoverPage, IsReportedWithItsReasonAndLeavesNoOutput)
{
    const std::string name = GetParam().fileName;
    folder().write("good.png", blackPng({20, 20}));
    folder().write(name, GetParam().content());
    EXPECT_TRUE(
        isFailure(run({"-C", name, "-o", "out.tif", "good.png"}),
                  "can't write cover page file '" + name + "', " + GetParam().reason + '\n'));
    EXPECT_FALSE(exists("out.tif"));
}

INSTANTIATE_TEST_SUITE_P(Cli, BadCoverPage, testing::ValuesIn(coverRows),
                         [](const auto& test) { return std::string{test.param.name}; });

class SecondPage : public CliTest
{
};

TEST_F(SecondPage, IsReportedBehindAGoodOneAndLeavesNoOutput)
{
    folder().write("good.png", blackPng({20, 20}));
    folder().write("bad.png", junk());
    EXPECT_TRUE(isFailure(run({"-o", "out.tif", "good.png", "bad.png"}),
                          "can't write page file 'bad.png', invalid png format\n"));
    EXPECT_FALSE(exists("out.tif"));
}

class UnreadableInput : public CliTest
{
protected:
    void SetUp() override { folder().write("in.png", blackPng({20, 20})); }

    void TearDown() override { EXPECT_FALSE(exists("out.tif")); }
};

TEST_F(UnreadableInput, IsMissing)
{
    EXPECT_TRUE(isFailure(run({"-o", "out.tif", "missing.png"}),
                          "can't write page file 'missing.png', file not found\n"));
}

TEST_F(UnreadableInput, IsAMissingCoverPage)
{
    EXPECT_TRUE(isFailure(run({"-o", "out.tif", "-C", "missing.html", "in.png"}),
                          "can't write cover page file 'missing.html', file not found\n"));
}

TEST_F(UnreadableInput, HasAnEmptyName)
{
    EXPECT_TRUE(
        isFailure(run({"-o", "out.tif", ""}), "can't write page file '', file not found\n"));
}

TEST_F(UnreadableInput, IsAFolder)
{
    ASSERT_EQ(mkdir(folder().path("folder.png").c_str(), 0700), 0);
    EXPECT_TRUE(isFailure(run({"-o", "out.tif", "folder.png"}),
                          "can't write page file 'folder.png', file not found\n"));
}

TEST_F(UnreadableInput, IsALinkThatLeadsNowhere)
{
    link("missing.png", "link.png");
    EXPECT_TRUE(isFailure(run({"-o", "out.tif", "link.png"}),
                          "can't write page file 'link.png', file not found\n"));
}

TEST_F(UnreadableInput, MayNotBeRead)
{
    ASSERT_EQ(chmod(folder().path("in.png").c_str(), 0), 0);
    ProgramStart bound = start({"-o", "out.tif", "in.png"});
    bound.obeysPermissions = true;
    EXPECT_TRUE(isFailure(runProgram(bound), "can't write page file 'in.png', file not found\n"));
}

TEST_F(UnreadableInput, IsACoverPageThatMayNotBeRead)
{
    folder().write("cover.html", "<html>Cover</html>");
    ASSERT_EQ(chmod(folder().path("cover.html").c_str(), 0), 0);
    ProgramStart bound = start({"-o", "out.tif", "-C", "cover.html", "in.png"});
    bound.obeysPermissions = true;
    EXPECT_TRUE(
        isFailure(runProgram(bound), "can't write cover page file 'cover.html', file not found\n"));
}

class PrintableArea : public UnreadableInput
{
};

TEST_F(PrintableArea, OfMarginsThatAreNotNumbersIsRefused)
{
    EXPECT_TRUE(isFailure(run({"-o", "out.tif", "-m", "nan", "in.png"}),
                          "can't write page file 'in.png', invalid render size\n"));
}

TEST_F(PrintableArea, OfOneMarginThatIsNotANumberIsRefused)
{
    EXPECT_TRUE(isFailure(run({"-o", "out.tif", "-m", "0,nan,0,0", "in.png"}),
                          "can't write page file 'in.png', invalid render size\n"));
}

class ContentDetection : public CliTest, public testing::WithParamInterface<Row>
{
};

const Row detectedRows[] = {
    {"PngWithoutSuffix", "a", [] { return blackPng({20, 20}); }, ""},
    {"PngWithUpperCaseSuffix", "a.PNG", [] { return blackPng({20, 20}); }, ""},
    {"JpegWithAStrangeSuffix", "a.jpe", jpeg, ""},
    {"TiffWithoutSuffix", "a",
     [] { return SampleImages::tiffFile({{SampleImages::quarters({20, 20})}}); }, ""},
    {"PdfWithUpperCaseSuffix", "a.PDF", [] { return SamplePdf::equalPages(1); }, ""},
    {"OnlyTheLastSuffixCounts", "a.pdf.png", [] { return blackPng({20, 20}); }, ""},
};

TEST_P(ContentDetection, ReadsTheFileNevertheless)
{
    folder().write(GetParam().fileName, GetParam().content());
    ASSERT_TRUE(isSilentSuccess(run({"-o", "out.tif", GetParam().fileName})));
    EXPECT_EQ(pages().size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(Cli, ContentDetection, testing::ValuesIn(detectedRows),
                         [](const auto& test) { return std::string{test.param.name}; });

} // namespace
