#include "fence/SystemFiles.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace {

bool isReadable(const std::string& path)
{
    const std::vector<std::string>& paths = SystemFiles::readable();
    return std::find(paths.begin(), paths.end(), path) != paths.end();
}

TEST(SystemFiles, HoldLibrariesAndSharedFiles)
{
    EXPECT_TRUE(isReadable("/usr/lib"));
    EXPECT_TRUE(isReadable("/usr/share"));
    EXPECT_TRUE(isReadable("/etc/ld.so.cache"));
}

TEST(SystemFiles, HoldNoFolderWithin)
{
    EXPECT_FALSE(isReadable("/usr/share/fonts"));
}

TEST(SystemFiles, HoldNoHomeFolder)
{
    for (const std::string& path : SystemFiles::readable()) {
        EXPECT_NE(path, "/");
        EXPECT_NE(path, "/etc");
        EXPECT_NE(path, std::getenv("HOME") == nullptr ? "/home" : std::getenv("HOME"));
    }
}

class NamedFolder : public testing::TestWithParam<const char*>
{
};

TEST_P(NamedFolder, IsReadableAsLongAsItIsNamed)
{
    const TemporaryFolder folder;
    const std::string path = folder.path("a");
    folder.write("a", "");
    EXPECT_FALSE(isReadable(path));
    setenv(GetParam(), path.c_str(), 1);
    EXPECT_TRUE(isReadable(path));
    unsetenv(GetParam());
    EXPECT_FALSE(isReadable(path));
}

INSTANTIATE_TEST_SUITE_P(SystemFiles, NamedFolder,
                         testing::Values("GS_LIB", "GS_FONTPATH", "LD_LIBRARY_PATH",
                                         "FONTCONFIG_PATH", "FONTCONFIG_FILE"),
                         [](const auto& test) { return std::string{test.param}; });

TEST(SystemFiles, HoldEachOfSeveralNamedFolders)
{
    const TemporaryFolder folder;
    setenv("GS_FONTPATH", (folder.write("a", "") + ':' + folder.write("b", "")).c_str(), 1);
    EXPECT_TRUE(isReadable(folder.path("a")));
    EXPECT_TRUE(isReadable(folder.path("b")));
    unsetenv("GS_FONTPATH");
}

TEST(SystemFiles, HoldTheFontsOfTheHomeFolderAsLongAsItIsThat)
{
    const TemporaryFolder folder;
    folder.write(".fonts", "");
    const std::string fonts = folder.path("") + "/.fonts";
    const std::string home = std::getenv("HOME") == nullptr ? "" : std::getenv("HOME");
    EXPECT_FALSE(isReadable(fonts));
    setenv("HOME", folder.path("").c_str(), 1);
    EXPECT_TRUE(isReadable(fonts));
    setenv("HOME", home.c_str(), 1);
    EXPECT_FALSE(isReadable(fonts));
}

} // namespace
