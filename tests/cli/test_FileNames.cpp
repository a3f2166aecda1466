#include "CliTest.h"

#include "support/SamplePdf.h"

namespace {

QByteArray png()
{
    return blackPng({20, 20});
}

QByteArray pdf()
{
    return SamplePdf::equalPages(1);
}

struct Row
{
    const char* name;
    const char* fileName;
    QByteArray (*content)();
};

const Row convertedRows[] = {
    {"Blank", "a b.png", png},
    {"Quote", "it's.png", png},
    {"LineFeed", "a\nb.png", png},
    {"Braces", "{}{0}.png", png},
    {"Percent", "%1%s%n.png", png},
    {"Cyrillic", "\xd1\x84\xd0\xb0\xd0\xba\xd1\x81.png", png},
    {"Emoji", "\xf0\x9f\x93\xa0.png", png},
    {"DecomposedLetter", "e\xcc\x81.png", png},
    {"ByteOrderMarkInFront", "\xef\xbb\xbf.png", png},
    {"BackslashInAPicture", "a\\b.png", png},
    {"HighResolutionMark", "a@2x.png", png},
    {"DashInFront", "-h.png", png},
    {"TwoDashesInFront", "--help.png", png},
    {"BareOptionName", "--version", png},
    {"QtPlatformOption", "-platform", png},
    {"QtPluginOption", "-platformpluginpath", png},
    {"OnlyADash", "-", png},
    {"CyrillicPdf", "\xd1\x84\xd0\xb0\xd0\xba\xd1\x81.pdf", pdf},
    {"PdfWithBlank", "a b.pdf", pdf},
    {"PdfWithBlankInFront", " a.pdf", pdf},
    {"PdfWithTabInFront", "\ta.pdf", pdf},
    {"PdfWithBalancedParentheses", "a(b).pdf", pdf},
    {"PdfWithAtSignInFront", "@args.pdf", pdf},
    {"PdfThatLooksLikeAnOption", "-sstdout=trace.pdf", pdf},
    {"PdfThatLooksLikeAFileOption", "-fplain.pdf", pdf},
    {"PdfWithPercentAndDigitInside", "a%1.pdf", pdf},
    {"PdfWithAQuote", "it's.pdf", pdf},
    {"PdfWithSemicolonAndDollar", "a;$(touch trace);b.pdf", pdf},
};

class DocumentName : public CliTest, public testing::WithParamInterface<Row>
{
protected:
    // What a name may turn into if it is not taken as it is.
    void SetUp() override
    {
        folder().write("plain.pdf", SamplePdf::equalPages(3));
        folder().write("args.pdf", "-sOutputFile=trace");
        folder().write(GetParam().fileName, GetParam().content());
    }
};

TEST_P(DocumentName, IsTakenAsItIs)
{
    QStringList expected = folder().entries();
    ASSERT_TRUE(
        isSilentSuccess(run({"-r", "standard", "-o", "out.tif", "--", GetParam().fileName})));
    EXPECT_EQ(pages().size(), 1U);
    expected << QStringLiteral("out.tif");
    QStringList actual = folder().entries();
    expected.sort();
    actual.sort();
    EXPECT_EQ(actual, expected);
}

INSTANTIATE_TEST_SUITE_P(Cli, DocumentName, testing::ValuesIn(convertedRows),
                         [](const auto& test) { return std::string{test.param.name}; });

struct RefusedRow
{
    const char* name;
    const char* fileName;
    const char* reason;
};

const RefusedRow refusedRows[] = {
    {"ParenthesisThatIsNotClosed", "a(b.pdf", "invalid pdf format"},
    {"ParenthesisThatIsNotOpened", "a)b.pdf", "invalid pdf format"},
    {"ParenthesesTheWrongWayRound", "a)b(.pdf", "invalid pdf format"},
    {"BackslashInAPdf", "a\\b.pdf", "invalid pdf format"},
    {"CarriageReturnInAPdf", "a\rb.pdf", "invalid pdf format"},
    {"ByteOrderMarkInFrontOfAPdf", "\xef\xbb\xbf@args.pdf", "invalid pdf format"},
    {"ByteOrderMarkInsideAPdf", "a\xef\xbb\xbf.pdf", "invalid pdf format"},
    {"PostScriptCode", "x) pop (%pipe%touch trace) (r) file pop (plain.pdf", "invalid pdf format"},
};

class RefusedName : public CliTest, public testing::WithParamInterface<RefusedRow>
{
};

TEST_P(RefusedName, IsACleanFailureAndNothingIsRun)
{
    folder().write("plain.pdf", SamplePdf::equalPages(3));
    folder().write("args.pdf", "-sOutputFile=trace");
    const std::string name = GetParam().fileName;
    folder().write(name, SamplePdf::equalPages(1));
    const QStringList before = folder().entries();
    EXPECT_TRUE(isFailure(run({"-o", "out.tif", "--", name}),
                          "can't write page file '" + name + "', " + GetParam().reason + '\n'));
    EXPECT_EQ(folder().entries(), before);
}

INSTANTIATE_TEST_SUITE_P(Cli, RefusedName, testing::ValuesIn(refusedRows),
                         [](const auto& test) { return std::string{test.param.name}; });

class SeveralNames : public CliTest
{
};

TEST_F(SeveralNames, ThatLookLikeArgumentsOfQtAreDocuments)
{
    folder().write("-platform", blackPng({20, 20}));
    folder().write("xcb", blackPng({30, 30}));
    ASSERT_TRUE(isSilentSuccess(run({"-o", "out.tif", "--", "-platform", "xcb"})));
    EXPECT_EQ(pages().size(), 2U);
}

// Ghostscript itself refuses the name, with a line of its own.
TEST_F(SeveralNames, OfPipesRunNothing)
{
    const std::string name = "%pipe%touch trace #.pdf";
    folder().write(name, SamplePdf::equalPages(1));
    const QStringList before = folder().entries();
    EXPECT_TRUE(isFailureAfterRemarks(run({"-o", "out.tif", name}),
                                      "can't write page file '" + name + "', invalid data\n"));
    EXPECT_EQ(folder().entries(), before);
}

TEST_F(SeveralNames, ThatAreNotUtf8AreNotFoundAndShownByteForByte)
{
    folder().write("a\xff.png", blackPng({20, 20}));
    EXPECT_TRUE(isFailure(run({"-o", "out.tif", "a\xff.png"}),
                          "can't write page file 'a\xff.png', file not found\n"));
    EXPECT_FALSE(exists("out.tif"));
}

struct CutRow
{
    const char* name;
    const char* rest; ///< What is left of a character.
};

const CutRow cutRows[] = {
    {"OneOfTwoBytes", "\xc3"},
    {"ThreeOfFourBytes", "\xf0\x9f\x93"},
};

// The part of the name in front of the cut character is the name of another
// file, which must be neither read nor taken for the output.
class NameThatEndsInACutCharacter : public CliTest, public testing::WithParamInterface<CutRow>
{
protected:
    void SetUp() override
    {
        folder().write("in.png", blackPng({20, 20}));
        folder().write("cover.html", "<html>Cover</html>");
    }
};

TEST_P(NameThatEndsInACutCharacter, IsNotThatOfAnotherInput)
{
    const std::string name = std::string("in.png") + GetParam().rest;
    EXPECT_TRUE(isFailure(run({"-o", "out.tif", name}),
                          "can't write page file '" + name + "', file not found\n"));
    EXPECT_FALSE(exists("out.tif"));
}

TEST_P(NameThatEndsInACutCharacter, IsNotThatOfAnotherCoverPage)
{
    const std::string name = std::string("cover.html") + GetParam().rest;
    EXPECT_TRUE(isFailure(run({"-o", "out.tif", "-C", name, "in.png"}),
                          "can't write cover page file '" + name + "', file not found\n"));
    EXPECT_FALSE(exists("out.tif"));
}

// The output may have the name that is left, since the document is another file.
TEST_P(NameThatEndsInACutCharacter, IsNotThatOfTheOutput)
{
    const std::string name = std::string("in.png") + GetParam().rest;
    EXPECT_TRUE(isFailure(run({"-o", "in.png", name}),
                          "can't write page file '" + name + "', file not found\n"));
}

// Each byte that is left is decoded to a replacement character.
TEST_P(NameThatEndsInACutCharacter, IsThatOfTheOutputOnceItIsDecoded)
{
    std::string output = "in.png";
    for (const char* byte = GetParam().rest; *byte != '\0'; ++byte) {
        output += "\xef\xbf\xbd";
    }
    folder().write(output, blackPng({30, 30}));
    EXPECT_TRUE(isFailure(run({"-o", output, std::string("in.png") + GetParam().rest}),
                          "can't open file '" + output + "'\n"));
    EXPECT_TRUE(content(output) == blackPng({30, 30}));
}

INSTANTIATE_TEST_SUITE_P(Cli, NameThatEndsInACutCharacter, testing::ValuesIn(cutRows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST_F(SeveralNames, WithAColonInFrontAreNotOnTheDisk)
{
    // Qt keeps such names for the resources of a program.
    folder().write(":a.png", blackPng({20, 20}));
    EXPECT_TRUE(isFailure(run({"-o", "out.tif", ":a.png"}),
                          "can't write page file ':a.png', file not found\n"));
    EXPECT_EQ(run({"-o", "out.tif", "./:a.png"}).exitStatus, 0);
}

// Ghostscript opens its own files of these names unless it is told the folder.
TEST_F(SeveralNames, OfFilesOfGhostscriptAreTakenAsTheyAreIfAbsolute)
{
    for (const char* name : {"Fontmap", "Fontmap.GS", "cidfmap", "FAPIconfig", "gs_l.xbm"}) {
        folder().write(name, SamplePdf::equalPages(1));
        ASSERT_TRUE(isSilentSuccess(run({"-r", "standard", "-o", "out.tif", folder().path(name)})))
            << name;
        EXPECT_EQ(pages().size(), 1U) << name;
    }
}

TEST_F(SeveralNames, OfFilesOfGhostscriptAreTakenAsTheyAreWithASuffix)
{
    folder().write("Fontmap.pdf", SamplePdf::equalPages(1));
    ASSERT_TRUE(isSilentSuccess(run({"-o", "out.tif", "Fontmap.pdf"})));
    EXPECT_EQ(pages().size(), 1U);
}

TEST_F(SeveralNames, OfCoverPagesAreTakenAsTheyAre)
{
    folder().write("-style", "<html>Cover</html>");
    folder().write("in.png", blackPng({20, 20}));
    ASSERT_TRUE(isSilentSuccess(run({"-o", "out.tif", "-C", "-style", "in.png"})));
    EXPECT_EQ(pages().size(), 2U);
}

} // namespace
