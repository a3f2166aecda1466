#include "fence/LandlockRuleset.h"
#include "support/FakeGhostscript.h"
#include "support/PrintQt.h"
#include "support/ProgramRun.h"
#include "support/SampleImages.h"
#include "support/SamplePdf.h"
#include "support/SearchPath.h"
#include "support/TemporaryFolder.h"
#include "support/TiffFile.h"

#include <gtest/gtest.h>

#include <optional>
#include <ostream>

#include <unistd.h>

namespace {

class FencedProgram : public testing::Test
{
protected:
    // Of a picture and a document; another folder is for temporary files.
    ProgramStart conversion() const
    {
        m_folder.write("in.png", SampleImages::pngFile(SampleImages::bilevel({20, 20})));
        m_folder.write("in.pdf", SamplePdf::equalPages(2));
        ProgramStart start;
        start.program = MORVALTIDE_PROGRAM;
        start.folder = m_folder.path("");
        start.arguments = {"-o", "out.tif", "in.png", "in.pdf"};
        start.environment["TMPDIR"] = m_other.path("");
        start.environment["XDG_RUNTIME_DIR"] = m_folder.path("");
        return start;
    }

    TemporaryFolder m_folder;
    TemporaryFolder m_other;
};

TEST_F(FencedProgram, LeavesNoTemporaryFiles)
{
    const ProgramResult result = runProgram(conversion());
    EXPECT_EQ(result.exitStatus, 0) << result.error;
    EXPECT_EQ(result.error, "");
    EXPECT_EQ(m_other.entries(), QStringList());
    EXPECT_EQ(readTiff(m_folder.path("out.tif")).size(), 3U);
}

TEST_F(FencedProgram, NeedsNoPlaceForTemporaryFiles)
{
    ProgramStart start = conversion();
    start.environment["TMPDIR"] = m_other.path("none");
    EXPECT_EQ(runProgram(start).exitStatus, 0);
    EXPECT_EQ(readTiff(m_folder.path("out.tif")).size(), 3U);
}

struct Row
{
    const char* name;
    const char* variable;
    std::optional<std::string> value;
};

void PrintTo(const Row& row, std::ostream* stream)
{
    *stream << row.name;
}

// What a user's surroundings may be like.
const Row rows[] = {
    {"NoHome", "HOME", std::nullopt},
    {"AnEmptyHome", "HOME", ""},
    {"AHomeThatDoesNotExist", "HOME", "/nonexistent"},
    {"AHomeThatIsAllThereIs", "HOME", "/"},
    {"AnEmptyFolderForTemporaryFiles", "TMPDIR", ""},
    {"ARelativeFolderForTemporaryFiles", "TMPDIR", "."},
    {"AnotherFileSystemForTemporaryFiles", "TMPDIR", "/dev/shm"},
    {"AFolderForTemporaryFilesThatNobodyMayChange", "TMPDIR", "/proc"},
    {"OwnDataFolder", "XDG_DATA_HOME", "/nonexistent"},
    {"OwnConfigurationFolder", "XDG_CONFIG_HOME", "/nonexistent"},
    {"OwnCacheFolder", "XDG_CACHE_HOME", "/nonexistent"},
    {"ANameOnlyForTheConfigurationOfFonts", "FONTCONFIG_FILE", "fonts.conf"},
    {"SeveralFoldersOfConfigurations", "FONTCONFIG_PATH", "/nonexistent:/etc/fonts"},
    {"OptionsOfGhostscript", "GS_OPTIONS", "-dNumRenderingThreads=2"},
};

class FencedProgramWith : public FencedProgram, public testing::WithParamInterface<Row>
{
};

TEST_P(FencedProgramWith, ConvertsAsEver)
{
    ProgramStart start = conversion();
    start.environment[GetParam().variable] = GetParam().value;
    const ProgramResult result = runProgram(start);
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.error, "");
    EXPECT_EQ(readTiff(m_folder.path("out.tif")).size(), 3U);
}

INSTANTIATE_TEST_SUITE_P(FencedProgram, FencedProgramWith, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST_F(FencedProgram, FindsGhostscriptThroughSeveralLinks)
{
    const std::string path = m_other.path("gs");
    ASSERT_EQ(symlink("/usr/bin/gs", m_other.path("alternative").c_str()), 0);
    ASSERT_EQ(symlink("alternative", path.c_str()), 0);
    const SearchPath links(SearchPath::withFirst(m_other.qPath(QString())));
    const ProgramResult result = runProgram(conversion());
    EXPECT_EQ(result.exitStatus, 0) << result.error;
    EXPECT_EQ(readTiff(m_folder.path("out.tif")).size(), 3U);
}

#ifdef MORVALTIDE_FENCE

// A preloaded library plays the decoder of the picture.
class ConqueredDecoder : public FencedProgram
{
protected:
    std::string reportOf(const char* attempt, const std::string& argument) const
    {
        ProgramStart start = conversion();
        start.environment["LD_PRELOAD"] = MORVALTIDE_CONQUERED_DECODER;
        start.environment["ATTEMPT"] = attempt;
        start.environment["ARGUMENT"] = argument;
        const ProgramResult result = runProgram(start);
        EXPECT_EQ(result.exitStatus, 0) << result.error;
        EXPECT_EQ(readTiff(m_folder.path("out.tif")).size(), 3U);
        return result.error;
    }
};

TEST_F(ConqueredDecoder, CannotWriteElsewhere)
{
    if (LandlockRuleset::kernelAbi() == 0) {
        GTEST_SKIP() << "no Landlock here";
    }
    EXPECT_EQ(reportOf("createFile", m_other.path("new")), "failed\n");
    EXPECT_EQ(reportOf("runShell", ""), "failed\n");
}

TEST_F(ConqueredDecoder, CannotSpeakWithAnybody)
{
    EXPECT_EQ(reportOf("makeSocketPair", ""), "failed\n");
}

TEST_F(ConqueredDecoder, CanRemoveButNotMakeFilesBesideTheOutput)
{
    if (LandlockRuleset::kernelAbi() == 0) {
        GTEST_SKIP() << "no Landlock here";
    }
    EXPECT_EQ(reportOf("createFile", m_folder.path("new")), "failed\n");
    EXPECT_EQ(reportOf("removeFile", m_folder.write("old", "")), "succeeded\n");
}

// The rules hold for the thread that made them.
TEST_F(ConqueredDecoder, FindsNoThreadBesideItsOwn)
{
    EXPECT_EQ(reportOf("findThread", ""), "failed\n");
}

TEST_F(ConqueredDecoder, CanWriteElsewhereIfGhostscriptIsAWrapper)
{
    const FakeGhostscript wrapper(GhostscriptAnswer::real());
    EXPECT_EQ(reportOf("createFile", m_other.path("new")), "succeeded\n");
}

#endif

} // namespace
