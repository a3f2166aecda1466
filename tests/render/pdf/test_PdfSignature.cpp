#include "render/pdf/PdfSignature.h"

#include "support/SamplePdf.h"
#include "support/TemporaryFolder.h"

#include <QByteArray>
#include <QFile>

#include <gtest/gtest.h>

#include <string>

#include <unistd.h>

namespace {

constexpr int longestSkip = 16 * 1024 * 1024;

QByteArray junk(int count)
{
    return QByteArray(count, 'x');
}

struct Row
{
    const char* name;
    QByteArray content;
    bool isPdf;
};

const Row rows[] = {
    {"ARealPdfIsOne", SamplePdf::equalPages(1), true},
    {"TheHeaderAloneIsEnough", "%PDF-", true},
    {"AnyVersionIsAccepted", "%PDF-9.9\n", true},
    {"AnEmptyFileIsNone", "", false},
    {"TextIsNone", "Just a letter.\n", false},
    {"TheHeaderWithoutItsDashIsNone", "%PDF 1.4\n", false},
    {"TheHeaderInSmallLettersIsNone", "%pdf-1.4\n", false},
    {"ACutHeaderIsNone", "%PDF", false},
    {"PostScriptIsNone", "%!PS-Adobe-3.0\nshowpage\n", false},
    {"PostScriptWithoutAVersionIsNone", "%!\nshowpage\n", false},
    {"PostScriptInFrontOfAPdfIsNone", "%!PS-Adobe-3.0\nshowpage\n%PDF-1.4\n", false},
    {"APercentAndExclamationMarkInFrontOfAPdfIsNone", "%!\n%PDF-1.4\n", false},
    {"TwoPercentSignsInFrontOfAPdfAreNone", "%%\n%PDF-1.4\n", false},
    {"TwoPercentSignsOfTheHeaderItselfAreNone", "%%PDF-1.4\n", false},
    {"PostScriptBetweenJunkAndAPdfIsNone", "junk\n%!PS\n%PDF-1.4\n", false},
    {"PostScriptBehindTheHeaderIsAPdf", "%PDF-1.4\n%!PS\n", true},
    {"PostScriptBehindJunkAndTheHeaderIsAPdf", "junk\n%PDF-1.4\n%!PS\n", true},
    {"AnExclamationMarkBehindJunkIsAPdf", "junk\n%!\n%PDF-1.4\n", true},
    {"TwoPercentSignsBehindJunkAreAPdf", "junk\n%%\n%PDF-1.4\n", true},
    {"JunkOf1018BytesIsAPdf", junk(1018) + "%PDF-1.4\n", true},
    {"JunkOf1019BytesIsNone", junk(1019) + "%PDF-1.4\n", false},
    {"PostScriptJustInsideTheStartIsNone", junk(1000) + "%!PS%PDF-1.4\n", false},
    {"SpacesInFrontAreSkipped", QByteArray(5000, ' ') + "%PDF-1.4\n", true},
    {"AHeaderThatSpansTwoBlocksIsRead", QByteArray(16 * 1024 - 2, ' ') + "%PDF-1.4\n", true},
    {"AHeaderAtTheStartOfABlockIsRead", QByteArray(16 * 1024, ' ') + "%PDF-1.4\n", true},
    {"JunkThatSpansTwoBlocksCounts", QByteArray(16 * 1024 - 500, ' ') + junk(1018) + "%PDF-1.4\n",
     true},
    {"TooMuchJunkThatSpansTwoBlocksCounts",
     QByteArray(16 * 1024 - 500, ' ') + junk(1019) + "%PDF-1.4\n", false},
    {"ALongRunOfNullBytesIsSkipped", QByteArray(longestSkip - 1, '\0') + "%PDF-1.4\n", true},
    {"AnEndlessRunOfNullBytesIsNotSkipped", QByteArray(longestSkip, '\0') + "%PDF-1.4\n", false},
    {"NullBytesInFrontAreSkipped", QByteArray(5000, '\0') + "%PDF-1.4\n", true},
    {"EveryControlCharacterInFrontIsSkipped",
     QByteArray("\x01\x02\x03\x04\x05\x06\x07\x08\t\n\v\f\r\x0e\x0f\x10\x11\x12\x13\x14\x15\x16"
                "\x17\x18\x19\x1a\x1b\x1c\x1d\x1e\x1f ") +
         "%PDF-1.4\n",
     true},
    {"SkippedBytesDoNotCountAsJunk", QByteArray(5000, ' ') + junk(1018) + "%PDF-1.4\n", true},
    {"SpacesBehindJunkDoCount", junk(1) + QByteArray(1018, ' ') + "%PDF-1.4\n", false},
    {"SpacesInFrontOfPostScriptHideNothing", "  \n%!PS\n%PDF-1.4\n", false},
    {"SpacesInFrontOfTwoPercentSignsHideNothing", QByteArray(3, '\0') + "%%\n%PDF-1.4\n", false},
    {"AByteAboveTheSpaceIsNotSkipped", "!%PDF-1.4\n" + junk(2000), true},
    {"BytesAbove127AreNotSkipped", QByteArray(1019, '\xff') + "%PDF-1.4\n", false},
    {"AFileOfSpacesIsNone", QByteArray(3000, ' '), false},
    {"AByteOrderMarkInFrontIsJunk", "\xef\xbb\xbf%PDF-1.4\n", true},
    {"APngFileIsNone", "\x89PNG\r\n\x1a\n", false},
};

class PdfSignatureOfAFile : public testing::TestWithParam<Row>
{
};

TEST_P(PdfSignatureOfAFile, FollowsTheRuleOfGhostscript)
{
    const TemporaryFolder folder;
    const std::string name = folder.write("document", GetParam().content);
    EXPECT_EQ(PdfSignature::isPdfFile(QString::fromStdString(name)), GetParam().isPdf);
}

INSTANTIATE_TEST_SUITE_P(PdfSignature, PdfSignatureOfAFile, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(PdfSignature, AFileThatDoesNotExistIsNone)
{
    const TemporaryFolder folder;
    EXPECT_FALSE(PdfSignature::isPdfFile(folder.qPath(QStringLiteral("nothing.pdf"))));
}

TEST(PdfSignature, AnEmptyNameIsNone)
{
    EXPECT_FALSE(PdfSignature::isPdfFile(QString()));
}

TEST(PdfSignature, AFolderIsNone)
{
    const TemporaryFolder folder;
    EXPECT_FALSE(PdfSignature::isPdfFile(folder.qPath(QStringLiteral("."))));
}

TEST(PdfSignature, ALinkToNowhereIsNone)
{
    const TemporaryFolder folder;
    ASSERT_EQ(symlink("nowhere", folder.path("link.pdf").c_str()), 0);
    EXPECT_FALSE(PdfSignature::isPdfFile(folder.qPath(QStringLiteral("link.pdf"))));
}

TEST(PdfSignature, LooksThroughALink)
{
    const TemporaryFolder folder;
    folder.write("document", "%PDF-1.4\n");
    ASSERT_EQ(symlink("document", folder.path("link.pdf").c_str()), 0);
    EXPECT_TRUE(PdfSignature::isPdfFile(folder.qPath(QStringLiteral("link.pdf"))));
}

TEST(PdfSignature, ADeviceThatNeverEndsIsNone)
{
    EXPECT_FALSE(PdfSignature::isPdfFile(QStringLiteral("/dev/zero")));
}

TEST(PdfSignature, TellsThePureRuleFromBytesAlone)
{
    EXPECT_TRUE(PdfSignature::isPdfStart("%PDF-1.4\n"));
    EXPECT_FALSE(PdfSignature::isPdfStart("%!PS\n%PDF-1.4\n"));
    EXPECT_FALSE(PdfSignature::isPdfStart(QByteArray()));
}

} // namespace
