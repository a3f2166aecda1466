#include "render/pdf/GhostScriptFileName.h"

#include "app/settings/RenderSize.h"
#include "process/CollectingHandler.h"
#include "render/pdf/GhostScriptCommand.h"
#include "support/PrintQt.h"
#include "support/SamplePdf.h"
#include "support/TemporaryFolder.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

struct Row
{
    const char* name;
    QString fileName;
    bool isLiteral;
    QString argument;
};

Row asItIs(const char* name, const QString& fileName)
{
    return {name, fileName, true, fileName};
}

Row behindAFolder(const char* name, const QString& fileName)
{
    return {name, fileName, true, QStringLiteral("./") + fileName};
}

Row inTheWorkingFolder(const char* name, const QString& fileName)
{
    return {name, fileName, true, QStringLiteral("/proc/self/cwd/") + fileName};
}

Row refused(const char* name, const QString& fileName)
{
    return {name, fileName, false, QString()};
}

const Row rows[] = {
    asItIs("APlainName", QStringLiteral("report.pdf")),
    asItIs("AnAbsoluteName", QStringLiteral("/tmp/report.pdf")),
    asItIs("ANameInAFolder", QStringLiteral("folder/report.pdf")),
    asItIs("ANameInThisFolder", QStringLiteral("./report.pdf")),
    asItIs("ANameInTheFolderAbove", QStringLiteral("../report.pdf")),
    asItIs("AHiddenName", QStringLiteral(".pdf")),
    asItIs("AnEmptyName", QString()),
    asItIs("ASpaceInside", QStringLiteral("two words.pdf")),
    asItIs("ASpaceAtTheEnd", QStringLiteral("report.pdf ")),
    asItIs("ATabInside", QStringLiteral("two\twords.pdf")),
    asItIs("ALineFeedInside", QStringLiteral("two\nwords.pdf")),
    asItIs("ADashInside", QStringLiteral("re-port.pdf")),
    asItIs("AnAtSignInside", QStringLiteral("me@home.pdf")),
    asItIs("APercentSignInside", QStringLiteral("100%.pdf")),
    asItIs("APipeDeviceInside", QStringLiteral("x%pipe%touch P")),
    asItIs("APlaceholderInside", QStringLiteral("x%1.pdf")),
    asItIs("AHashSign", QStringLiteral("#1.pdf")),
    asItIs("APlusSign", QStringLiteral("+1.pdf")),
    asItIs("ATilde", QStringLiteral("~root.pdf")),
    asItIs("ADollarSign", QStringLiteral("$HOME.pdf")),
    asItIs("AVerticalBar", QStringLiteral("|touch P")),
    asItIs("ASemicolonAndACommand", QStringLiteral(";touch P;.pdf")),
    asItIs("Backquotes", QStringLiteral("`touch P`.pdf")),
    asItIs("ASingleQuote", QStringLiteral("it's.pdf")),
    asItIs("ADoubleQuote", QStringLiteral("\"quoted\".pdf")),
    asItIs("AnAmpersand", QStringLiteral("&.pdf")),
    asItIs("AnAngleBracket", QStringLiteral("<68656c6c6f>.pdf")),
    asItIs("ABracket", QStringLiteral("[1].pdf")),
    asItIs("ABrace", QStringLiteral("{quit}.pdf")),
    asItIs("ASlashPair", QStringLiteral("//quit.pdf")),
    asItIs("AStar", QStringLiteral("*.pdf")),
    asItIs("AQuestionMark", QStringLiteral("?.pdf")),
    asItIs("AColon", QStringLiteral(":a:b.pdf")),
    asItIs("AnEqualsSign", QStringLiteral("a=b.pdf")),
    asItIs("AnExclamationMark", QStringLiteral("!.pdf")),
    asItIs("ANameOfADeviceInAFolder", QStringLiteral("./%pipe%touch P")),
    asItIs("ADashInAFolder", QStringLiteral("./-dSAFER")),
    asItIs("AnAtSignInAnAbsoluteFolder", QStringLiteral("/@args.pdf")),
    asItIs("BalancedParentheses", QStringLiteral("report (1).pdf")),
    asItIs("NestedParentheses", QStringLiteral("a(b(c)d)e.pdf")),
    asItIs("TwoPairsOfParentheses", QStringLiteral("(1)(2).pdf")),
    asItIs("AnAccentedLetter", QStringLiteral(u"\u00e9t\u00e9.pdf")),
    asItIs("AnAccentOfItsOwn", QStringLiteral(u"e\u0301.pdf")),
    asItIs("CyrillicLetters", QStringLiteral(u"\u043e\u0442\u0447\u0451\u0442.pdf")),
    asItIs("ChineseCharacters", QStringLiteral(u"\u4e2d\u6587.pdf")),
    asItIs("ACharacterOutsideTheBasicPlane", QStringLiteral(u"\U0001f600.pdf")),
    asItIs("AWideParenthesisAlone", QStringLiteral(u"\uff08.pdf")),
    asItIs("AWideBackslash", QStringLiteral(u"\uff3c.pdf")),
    asItIs("ANoBreakSpaceInFront", QStringLiteral(u"\u00a0x.pdf")),
    asItIs("AnIdeographicSpaceInFront", QStringLiteral(u"\u3000x.pdf")),
    asItIs("AnEnDashInFront", QStringLiteral(u"\u2013x.pdf")),
    asItIs("AWideAtSignInFront", QStringLiteral(u"\uff20x.pdf")),
    asItIs("AReversedByteOrderMark", QStringLiteral(u"\ufffex.pdf")),
    asItIs("ABellInFront", QStringLiteral("\ax.pdf")),
    asItIs("AnEscapeInFront", QStringLiteral("\033x.pdf")),
    behindAFolder("ADashAlone", QStringLiteral("-")),
    behindAFolder("TwoDashes", QStringLiteral("--")),
    behindAFolder("AnOption", QStringLiteral("-dNOSAFER")),
    behindAFolder("AnOptionWithAFile", QStringLiteral("-sstdout=P")),
    behindAFolder("AnOptionThatOpensAnotherFile", QStringLiteral("-fplain.pdf")),
    behindAFolder("ACommandOption", QStringLiteral("-c")),
    behindAFolder("AnArgumentFile", QStringLiteral("@args.pdf")),
    behindAFolder("ThePipeDevice", QStringLiteral("%pipe%touch P #.pdf")),
    behindAFolder("TheStandardInputDevice", QStringLiteral("%stdin")),
    behindAFolder("APercentSignAlone", QStringLiteral("%")),
    behindAFolder("APlaceholderInFront", QStringLiteral("%1.pdf")),
    behindAFolder("ASpaceInFront", QStringLiteral(" plain.pdf")),
    behindAFolder("SeveralSpacesInFront", QStringLiteral("   plain.pdf")),
    behindAFolder("ATabInFront", QStringLiteral("\tplain.pdf")),
    behindAFolder("ALineFeedInFront", QStringLiteral("\nplain.pdf")),
    behindAFolder("AVerticalTabInFront", QStringLiteral("\vplain.pdf")),
    behindAFolder("AFormFeedInFront", QStringLiteral("\fplain.pdf")),
    behindAFolder("ADashAndBalancedParentheses", QStringLiteral("-(1).pdf")),
    behindAFolder("ASpecialFirstCharacterOfAPath", QStringLiteral("-folder/plain.pdf")),
    refused("ABackslash", QStringLiteral("a\\b.pdf")),
    refused("ABackslashAtTheEnd", QStringLiteral("plain.pdf\\")),
    refused("AnEscapedParenthesis", QStringLiteral("a\\(b.pdf")),
    refused("AnOctalEscape", QStringLiteral("\\045pipe\\045touch P")),
    refused("ACarriageReturn", QStringLiteral("a\rb.pdf")),
    refused("ACarriageReturnInFront", QStringLiteral("\rplain.pdf")),
    refused("ACarriageReturnAtTheEnd", QStringLiteral("plain.pdf\r")),
    refused("ACarriageReturnAndALineFeed", QStringLiteral("a\r\nb.pdf")),
    inTheWorkingFolder("ANameOfAProgram", QStringLiteral("align.ps")),
    inTheWorkingFolder("ANameOfAProgramInThisFolder", QStringLiteral("./align.ps")),
    inTheWorkingFolder("ANameOfAProgramInTheFolderAbove", QStringLiteral("../lib/align.ps")),
    behindAFolder("ANameOfAProgramBehindADash", QStringLiteral("-align.ps")),
    asItIs("AnAbsoluteNameOfAProgram", QStringLiteral("/tmp/align.ps")),
    asItIs("ASuffixOfProgramsInCapitals", QStringLiteral("ALIGN.PS")),
    asItIs("ASuffixOfProgramsInside", QStringLiteral("align.ps.pdf")),

    refused("AByteOrderMarkInFront", QStringLiteral(u"\ufeff%pipe%touch P")),
    refused("AByteOrderMarkInFrontOfADash", QStringLiteral(u"\ufeff-dNOSAFER")),
    refused("AByteOrderMarkInside", QStringLiteral(u"a\ufeffb.pdf")),
    refused("AByteOrderMarkAtTheEnd", QStringLiteral(u"a.pdf\ufeff")),
    refused("AnOpeningParenthesis", QStringLiteral("a(b.pdf")),
    refused("AClosingParenthesis", QStringLiteral("a)b.pdf")),
    refused("ParenthesesThatCloseBeforeTheyOpen", QStringLiteral(")(.pdf")),
    refused("OneParenthesisTooManyOpened", QStringLiteral("((1).pdf")),
    refused("OneParenthesisTooManyClosed", QStringLiteral("(1)).pdf")),
    refused("ACommandBehindAParenthesis",
            QStringLiteral("x) pop (%pipe%touch P) (r) file pop (plain.pdf")),
    refused("ABackslashInAFolder", QStringLiteral("/tmp/a\\b/plain.pdf")),
    refused("AParenthesisInAFolder", QStringLiteral("/tmp/a(b/plain.pdf")),
    asItIs("ParenthesesThatBalanceOverTheWholePath", QStringLiteral("/tmp/a(b/c)d.pdf")),
};

class FileNameForGhostscript : public testing::TestWithParam<Row>
{
};

TEST_P(FileNameForGhostscript, IsHandedOverOrRefused)
{
    const GhostScriptFileName name(GetParam().fileName);
    ASSERT_EQ(name.isLiteral(), GetParam().isLiteral);
    if (GetParam().isLiteral) {
        EXPECT_EQ(name.argument(), GetParam().argument);
    }
}

INSTANTIATE_TEST_SUITE_P(GhostScriptFileName, FileNameForGhostscript, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

/// Makes a folder the working folder for as long as it lives.
class WorkingFolder
{
public:
    explicit WorkingFolder(const QString& path) { EXPECT_TRUE(QDir::setCurrent(path)); }
    ~WorkingFolder() { QDir::setCurrent(m_original); }

    WorkingFolder(const WorkingFolder&) = delete;
    WorkingFolder& operator=(const WorkingFolder&) = delete;

private:
    QString m_original = QDir::currentPath();
};

enum class Outcome
{
    converts,
    failsToRender, // Ghostscript finds its pages, but takes the name for something else then
    isRefused,     // before Ghostscript is started
};

struct RealRow
{
    const char* name;
    QString fileName;
    Outcome outcome;
};

// One name for each way in which Ghostscript reads more into a name than there is.
const RealRow realRows[] = {
    {"APlainName", QStringLiteral("report.pdf"), Outcome::converts},
    {"ACommandBehindAParenthesis", QStringLiteral("x) pop (%pipe%touch P) (r) file pop (plain.pdf"),
     Outcome::isRefused},
    {"ThePipeDevice", QStringLiteral("%pipe%touch P #.pdf"), Outcome::failsToRender},
    {"ThePipeDeviceBehindASpace", QStringLiteral(" %pipe%touch P #.pdf"), Outcome::converts},
    {"ThePipeDeviceBehindAByteOrderMark", QStringLiteral(u"\ufeff%pipe%touch P"),
     Outcome::isRefused},
    {"AVerticalBar", QStringLiteral("|touch P"), Outcome::converts},
    {"TheStandardInputDevice", QStringLiteral("%stdin"), Outcome::converts},
    {"AnArgumentFile", QStringLiteral("@args.pdf"), Outcome::converts},
    {"AnOptionThatWritesAFile", QStringLiteral("-sstdout=P"), Outcome::converts},
    {"AnOptionThatSwitchesSafetyOff", QStringLiteral("-dNOSAFER"), Outcome::converts},
    {"AnOptionThatOpensAnotherFile", QStringLiteral("-fplain.pdf"), Outcome::converts},
    {"ADashAlone", QStringLiteral("-"), Outcome::converts},
    {"ACommandOption", QStringLiteral("-c"), Outcome::converts},
    {"ASpaceInFront", QStringLiteral(" plain.pdf"), Outcome::converts},
    {"ATabInFront", QStringLiteral("\tplain.pdf"), Outcome::converts},
    {"ALineFeedInFront", QStringLiteral("\nplain.pdf"), Outcome::converts},
    {"ALineFeedInside", QStringLiteral("a\nb.pdf"), Outcome::converts},
    {"BalancedParentheses", QStringLiteral("report (1).pdf"), Outcome::converts},
    {"APlaceholder", QStringLiteral("%1.pdf"), Outcome::converts},
    {"AHexadecimalString", QStringLiteral("<706c61696e>.pdf"), Outcome::converts},
    {"ABraceAndACommand", QStringLiteral("{quit}.pdf"), Outcome::converts},
    {"Backquotes", QStringLiteral("`touch P`.pdf"), Outcome::converts},
    {"AControlCharacterInFront", QStringLiteral("\001x.pdf"), Outcome::converts},
    {"ACharacterOutsideTheBasicPlane", QStringLiteral(u"\U0001f600.pdf"), Outcome::converts},
    {"AReversedByteOrderMarkInFront", QStringLiteral(u"\ufffe-dNOSAFER"), Outcome::converts},
    {"AFileOfGhostscriptItself", QStringLiteral("cidfmap"), Outcome::failsToRender},
    {"AProgramOfGhostscriptItself", QStringLiteral("align.ps"), Outcome::converts},
    {"TheStartOfGhostscriptItself", QStringLiteral("gs_init.ps"), Outcome::converts},
};

/// Real Ghostscript in a folder with a document of a hostile name, and with the
/// files beside it that the name may point at.
class HostileName : public testing::TestWithParam<RealRow>
{
protected:
    void SetUp() override
    {
        QFile document(m_folder.qPath(GetParam().fileName));
        ASSERT_TRUE(document.open(QIODevice::WriteOnly));
        document.write(SamplePdf::equalPages(2, "0 0 100 200"));
        document.close();
        m_folder.write("plain.pdf", SamplePdf::equalPages(1));
        m_folder.write("args.pdf", "-sstdout=P plain.pdf");
        m_entries = m_folder.entries();
    }

    bool isRefused() const { return GetParam().outcome == Outcome::isRefused; }
    bool converts() const { return GetParam().outcome == Outcome::converts; }

    /// The pages as they come out under a name that plays no tricks, always the same.
    const QByteArray& expectedPages() const
    {
        static QByteArray pages;
        if (pages.isEmpty()) {
            m_folder.write("reference.pdf", SamplePdf::equalPages(2, "0 0 100 200"));
            CollectingHandler handler;
            EXPECT_TRUE(GhostScriptCommand(m_folder.qPath(QStringLiteral("reference.pdf")))
                            .renderPages(1, 2, m_size, m_device, &handler));
            pages = handler.collected();
        }
        return pages;
    }

    const QString m_device = QStringLiteral("bit");
    const RenderSize m_size{QSize(80, 100), LogicalDpi{0, 0}};
    TemporaryFolder m_folder;
    WorkingFolder m_workingFolder{m_folder.qPath(QStringLiteral("."))};
    QStringList m_entries;
    GhostScriptCommand m_command{GetParam().fileName};
};

TEST_P(HostileName, GivesItsOwnPagesOrNone)
{
    EXPECT_EQ(m_command.getPageSizes(),
              isRefused() ? std::vector<QSizeF>() : std::vector<QSizeF>(2, {100, 200}));
    EXPECT_EQ(m_command.getPageCount(), isRefused() ? 0U : 2U);

    CollectingHandler handler;
    EXPECT_EQ(m_command.renderPages(1, 2, m_size, m_device, &handler), converts());
    EXPECT_EQ(m_folder.entries(), m_entries);
    if (converts()) {
        EXPECT_TRUE(handler.collected() == expectedPages());
    }
}

INSTANTIATE_TEST_SUITE_P(GhostScriptFileName, HostileName, testing::ValuesIn(realRows),
                         [](const auto& test) { return std::string{test.param.name}; });

} // namespace
