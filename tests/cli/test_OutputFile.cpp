#include "CliTest.h"

#include "support/FakeGhostscript.h"
#include "support/SampleImages.h"
#include "support/SamplePdf.h"

#include <csignal>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace {

const char* const missingInput = "can't write page file 'missing.png', file not found\n";

class OutputFile : public CliTest
{
protected:
    void SetUp() override { folder().write("in.png", blackPng({20, 20})); }
};

TEST_F(OutputFile, IsGoneAfterAMissingSecondInput)
{
    EXPECT_TRUE(isFailure(run({"-o", "out.tif", "in.png", "missing.png"}), missingInput));
    EXPECT_EQ(folder().entries(), QStringList(QStringLiteral("in.png")));
}

TEST_F(OutputFile, IsGoneAfterACoverPageThatIsNotHtml)
{
    // The missing document would give another message.
    EXPECT_TRUE(isFailure(run({"-C", "in.png", "-o", "out.tif", "missing.png"}),
                          "can't write cover page file 'in.png', unsupported png format\n"));
    EXPECT_EQ(folder().entries(), QStringList(QStringLiteral("in.png")));
}

TEST_F(OutputFile, IsReplacedIfThereIsOneAlready)
{
    folder().write("out.tif", QByteArray(100000, 'x'));
    ASSERT_TRUE(isSilentSuccess(run({"-o", "out.tif", "in.png"})));
    EXPECT_EQ(pages().size(), 1U);
}

TEST_F(OutputFile, IsGoneAfterAFailureAlthoughItWasThereBefore)
{
    folder().write("out.tif", "old");
    EXPECT_TRUE(isFailure(run({"-o", "out.tif", "missing.png"}), missingInput));
    EXPECT_FALSE(exists("out.tif"));
}

TEST_F(OutputFile, StaysIfTheCommandLineIsRefused)
{
    folder().write("out.tif", "old");
    EXPECT_TRUE(isFailure(run({"-o", "out.tif", "-m", "9", "in.png"}),
                          "the argument ('9.0') for option '--margins' is too large\n"));
    EXPECT_EQ(content("out.tif"), QByteArray("old"));
}

TEST_F(OutputFile, WithAnEmptyNameEndsWithoutAMessage)
{
    EXPECT_TRUE(isFailure(run({"-o", "", "in.png"}), ""));
    EXPECT_EQ(folder().entries(), QStringList(QStringLiteral("in.png")));
}

TEST_F(OutputFile, InAFolderThatDoesNotExistCannotBeOpened)
{
    EXPECT_TRUE(isFailure(run({"-o", "none/out.tif", "in.png"}),
                          "TIFFOpen: none/out.tif: No such file or directory.\n"
                          "can't open file 'none/out.tif'\n"));
    EXPECT_EQ(folder().entries(), QStringList(QStringLiteral("in.png")));
}

TEST_F(OutputFile, ThatIsAFolderStays)
{
    ASSERT_EQ(mkdir(folder().path("out.tif").c_str(), 0700), 0);
    EXPECT_TRUE(isFailure(run({"-o", "out.tif", "in.png"}), "TIFFOpen: out.tif: Is a directory.\n"
                                                            "can't open file 'out.tif'\n"));
    EXPECT_TRUE(exists("out.tif"));
}

TEST_F(OutputFile, BelowAFileCannotBeOpened)
{
    EXPECT_TRUE(isFailure(run({"-o", "in.png/out.tif", "in.png"}),
                          "TIFFOpen: in.png/out.tif: Not a directory.\n"
                          "can't open file 'in.png/out.tif'\n"));
    EXPECT_EQ(folder().entries(), QStringList(QStringLiteral("in.png")));
}

TEST_F(OutputFile, ThatMayNotBeWrittenStaysAsItIs)
{
    folder().write("out.tif", "old");
    ASSERT_EQ(chmod(folder().path("out.tif").c_str(), 0444), 0);
    ProgramStart bound = start({"-o", "out.tif", "in.png"});
    bound.obeysPermissions = true;
    EXPECT_TRUE(isFailure(runProgram(bound), "TIFFOpen: out.tif: Permission denied.\n"
                                             "can't open file 'out.tif'\n"));
    EXPECT_EQ(content("out.tif"), QByteArray("old"));
}

TEST_F(OutputFile, InAFolderThatMayNotBeWrittenCannotBeOpened)
{
    ASSERT_EQ(mkdir(folder().path("closed").c_str(), 0500), 0);
    ProgramStart bound = start({"-o", "closed/out.tif", "in.png"});
    bound.obeysPermissions = true;
    EXPECT_TRUE(isFailure(runProgram(bound), "TIFFOpen: closed/out.tif: Permission denied.\n"
                                             "can't open file 'closed/out.tif'\n"));
}

TEST_F(OutputFile, WithANameThatIsTooLongCannotBeOpened)
{
    const std::string name(256, 'x');
    EXPECT_TRUE(isFailure(run({"-o", name, "in.png"}), "TIFFOpen: " + name +
                                                           ": File name too long.\n"
                                                           "can't open file '" +
                                                           name + "'\n"));
}

TEST_F(OutputFile, ReachedThroughALinkIsWritten)
{
    link("target.tif", "out.tif");
    ASSERT_TRUE(isSilentSuccess(run({"-o", "out.tif", "in.png"})));
    EXPECT_EQ(pages("target.tif").size(), 1U);
}

TEST_F(OutputFile, ReachedThroughALinkIsGoneTogetherWithTheLinkAfterAFailure)
{
    folder().write("target.tif", "old");
    link("target.tif", "out.tif");
    EXPECT_TRUE(isFailure(run({"-o", "out.tif", "missing.png"}), missingInput));
    EXPECT_EQ(folder().entries(), QStringList(QStringLiteral("in.png")));
}

TEST_F(OutputFile, ReachedThroughADanglingLinkIsGoneTogetherWithTheLinkAfterAFailure)
{
    link("target.tif", "out.tif");
    EXPECT_TRUE(isFailure(run({"-o", "out.tif", "in.png", "missing.png"}), missingInput));
    EXPECT_FALSE(exists("target.tif"));
    EXPECT_FALSE(exists("out.tif"));
}

TEST_F(OutputFile, ReachedThroughALinkInAnotherFolderIsGoneAfterAFailure)
{
    ASSERT_EQ(mkdir(folder().path("other").c_str(), 0700), 0);
    link("../target.tif", "other/out.tif");
    EXPECT_TRUE(isFailure(run({"-o", "other/out.tif", "missing.png"}), missingInput));
    EXPECT_FALSE(exists("target.tif"));
    EXPECT_FALSE(exists("other/out.tif"));
}

TEST_F(OutputFile, BehindALinkThatLeadsNowhereAtAllCannotBeOpened)
{
    link("none/target.tif", "out.tif");
    EXPECT_TRUE(isFailure(run({"-o", "out.tif", "in.png"}),
                          "TIFFOpen: out.tif: No such file or directory.\n"
                          "can't open file 'out.tif'\n"));
    EXPECT_TRUE(exists("out.tif"));
}

TEST_F(OutputFile, WithAnotherHardLinkLosesOnlyItsOwnName)
{
    folder().write("other.tif", "old");
    ASSERT_EQ(::link(folder().path("other.tif").c_str(), folder().path("out.tif").c_str()), 0);
    EXPECT_TRUE(isFailure(run({"-o", "out.tif", "missing.png"}), missingInput));
    EXPECT_FALSE(exists("out.tif"));
    EXPECT_TRUE(exists("other.tif"));
}

// Another process at work in the folder while the program waits for Ghostscript,
// which runs it before it answers the query.
class DisturbedOutputFile : public OutputFile
{
protected:
    ProgramResult runDisturbed(const QStringList& command) const
    {
        folder().write("in.pdf", SamplePdf::equalPages(1));
        const FakeGhostscript ghostscript(
            {GhostscriptAnswer::command(command) + GhostscriptAnswer::real(),
             GhostscriptAnswer::real()});
        return run({"-o", "out.tif", "in.pdf", "in.png"});
    }

    static QStringList words(const char* command)
    {
        return QString::fromUtf8(command).split(QLatin1Char(' '));
    }

    const char* const m_message = "can't write file 'out.tif'\n";
};

TEST_F(DisturbedOutputFile, ThatIsRemovedIsAFailure)
{
    EXPECT_TRUE(isFailure(runDisturbed(words("rm out.tif")), m_message));
    EXPECT_FALSE(exists("out.tif"));
}

struct SecondConversion
{
    const char* description;
    const char* command;
    const char* message;
};

class SharedOutputFile : public DisturbedOutputFile,
                         public testing::WithParamInterface<SecondConversion>
{
};

TEST_P(SharedOutputFile, BelongsToTheConversionThatIsWritingIt)
{
    link("out.tif", "link.tif");
    const ProgramResult result = runDisturbed(words(GetParam().command));
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.error, GetParam().message);
    EXPECT_EQ(pages().size(), 2U);
}

const SecondConversion secondConversions[] = {
    {"ThatWouldSucceed", MORVALTIDE_PROGRAM " -o out.tif in.png", "can't open file 'out.tif'\n"},
    {"ThatWouldFail", MORVALTIDE_PROGRAM " -o out.tif missing.png", "can't open file 'out.tif'\n"},
    {"ThroughALink", MORVALTIDE_PROGRAM " -o link.tif in.png", "can't open file 'link.tif'\n"},
};

INSTANTIATE_TEST_SUITE_P(Cli, SharedOutputFile, testing::ValuesIn(secondConversions),
                         [](const auto& row) { return std::string(row.param.description); });

TEST_F(DisturbedOutputFile, ThatIsReplacedIsAFailureAndTheNewFileStays)
{
    folder().write("new.tif", "new");
    EXPECT_TRUE(isFailure(runDisturbed(words("mv new.tif out.tif")), m_message));
    EXPECT_EQ(content("out.tif"), QByteArray("new"));
}

TEST_F(DisturbedOutputFile, ThatIsMovedElsewhereIsAFailure)
{
    EXPECT_TRUE(isFailure(runDisturbed(words("mv out.tif elsewhere.tif")), m_message));
    EXPECT_TRUE(exists("elsewhere.tif"));
}

TEST_F(DisturbedOutputFile, BehindALinkThatLeadsElsewhereByNowIsAFailure)
{
    link("target.tif", "out.tif");
    folder().write("other.tif", "other");
    EXPECT_TRUE(isFailure(runDisturbed(words("ln -sf other.tif out.tif")), m_message));
    EXPECT_FALSE(exists("target.tif"));
    EXPECT_EQ(content("other.tif"), QByteArray("other"));
}

TEST_F(DisturbedOutputFile, WithAnotherNameBesidesIsKept)
{
    EXPECT_TRUE(isSilentSuccess(runDisturbed(words("ln out.tif other.tif"))));
    EXPECT_EQ(pages("other.tif").size(), 2U);
}

class OutputDevice : public OutputFile
{
protected:
    static dev_t deviceNumber(const char* path)
    {
        struct stat info = {};
        EXPECT_EQ(stat(path, &info), 0);
        EXPECT_TRUE(S_ISCHR(info.st_mode));
        return info.st_rdev;
    }
};

TEST_F(OutputDevice, NullStaysAfterAFailure)
{
    EXPECT_TRUE(isFailure(run({"-o", "/dev/null", "missing.png"}), missingInput));
    EXPECT_EQ(deviceNumber("/dev/null"), makedev(1, 3));
}

TEST_F(OutputDevice, FullCannotBeOpenedAndStays)
{
    EXPECT_TRUE(isFailure(run({"-o", "/dev/full", "in.png"}),
                          "/dev/full: Error writing TIFF header.\n"
                          "can't open file '/dev/full'\n"));
    EXPECT_EQ(deviceNumber("/dev/full"), makedev(1, 7));
}

TEST_F(OutputDevice, ReachedThroughALinkStaysWithTheLink)
{
    link("/dev/null", "out.tif");
    EXPECT_TRUE(isFailure(run({"-o", "out.tif", "missing.png"}), missingInput));
    EXPECT_TRUE(exists("out.tif"));
    EXPECT_EQ(deviceNumber("/dev/null"), makedev(1, 3));
}

TEST_F(OutputDevice, StandardOutputStaysEvenIfItIsAFile)
{
    const bool isLink = access("/dev/stdout", F_OK) == 0;
    ASSERT_TRUE(isLink);
    // /dev/stderr leads to a regular file here, as /dev/stdout may.
    folder().write("log", "");
    ProgramStart logged = start({"-o", "/dev/stderr", "missing.png"});
    logged.errorFile = folder().path("log");
    EXPECT_EQ(runProgram(logged).exitStatus, 1);
    EXPECT_EQ(access("/dev/stderr", F_OK), 0);
}

TEST_F(OutputDevice, FifoStaysAfterAFailure)
{
    ASSERT_EQ(mkfifo(folder().path("out.tif").c_str(), 0600), 0);
    EXPECT_TRUE(isFailure(run({"-o", "out.tif", "missing.png"}), missingInput));
    struct stat info = {};
    ASSERT_EQ(stat(folder().path("out.tif").c_str(), &info), 0);
    EXPECT_TRUE(S_ISFIFO(info.st_mode));
}

struct NameRow
{
    const char* name;
    const char* fileName;
    const char* similar; ///< What careless treatment of the bytes makes of it.
};

const NameRow nameRows[] = {
    {"NotUtf8", "out\xff.tif", "out\xef\xbf\xbd.tif"},
    {"ByteOrderMarkInFront", "\xef\xbb\xbfout.tif", "out.tif"},
    {"ByteOrderMarkInside", "out\xef\xbb\xbf.tif", "out.tif"},
    {"ColonInFront", ":out.tif", "out.tif"},
    {"OverlongUtf8", "out\xc1\x81.tif", "outA.tif"},
    {"SurrogatesInUtf8", "out\xed\xa0\xbd\xed\xb8\x80.tif", "out\xf0\x9f\x98\x80.tif"},
    {"DecomposedLetter", "oute\xcc\x81.tif", "out\xc3\xa9.tif"},
    {"BlankAtTheEnd", "out.tif ", "out.tif"},
    {"BlankInFront", " out.tif", "out.tif"},
    {"PercentAndDigit", "out%1.tif", "out.tif"},
    {"Braces", "out{}.tif", "out.tif"},
    {"LineFeed", "out\n.tif", "out.tif"},
    {"Backslash", "out\\.tif", "out.tif"},
    {"FileScheme", "file:out.tif", "out.tif"},
};

class OutputFileName : public OutputFile, public testing::WithParamInterface<NameRow>
{
};

TEST_P(OutputFileName, IsTakenByteForByteWhenTheFileIsWritten)
{
    folder().write(GetParam().similar, "other");
    ASSERT_TRUE(isSilentSuccess(run({"-o", GetParam().fileName, "in.png"})));
    EXPECT_EQ(content(GetParam().fileName).left(2), QByteArray("II"));
    EXPECT_EQ(content(GetParam().similar), QByteArray("other"));
}

TEST_P(OutputFileName, IsTakenByteForByteWhenTheFileIsRemoved)
{
    folder().write(GetParam().similar, "other");
    EXPECT_TRUE(isFailure(run({"-o", GetParam().fileName, "missing.png"}), missingInput));
    EXPECT_FALSE(exists(GetParam().fileName));
    EXPECT_EQ(content(GetParam().similar), QByteArray("other"));
}

TEST_P(OutputFileName, IsShownByteForByteInTheMessage)
{
    ASSERT_EQ(mkdir(folder().path(GetParam().fileName).c_str(), 0700), 0);
    const std::string name = GetParam().fileName;
    EXPECT_TRUE(isFailure(run({"-o", name, "in.png"}), "TIFFOpen: " + name +
                                                           ": Is a directory.\n"
                                                           "can't open file '" +
                                                           name + "'\n"));
}

INSTANTIATE_TEST_SUITE_P(Cli, OutputFileName, testing::ValuesIn(nameRows),
                         [](const auto& test) { return std::string{test.param.name}; });

} // namespace
