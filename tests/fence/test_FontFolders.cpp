#include "fence/FontFolders.h"

#include "support/TemporaryFolder.h"

#include <QDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace {

class Fonts : public testing::Test
{
protected:
    void TearDown() override
    {
        unsetenv("FONTCONFIG_FILE");
        unsetenv("FONTCONFIG_PATH");
        unsetenv("XDG_DATA_HOME");
        unsetenv("XDG_CACHE_HOME");
    }

    void configure(const QByteArray& elements)
    {
        setenv("FONTCONFIG_FILE", m_folder.write("fonts.conf", elements).c_str(), 1);
    }

    static int descriptorCount()
    {
        return static_cast<int>(QDir(QStringLiteral("/proc/self/fd"))
                                    .entryList(QDir::AllEntries | QDir::System)
                                    .size());
    }

    static bool isReadable(const std::string& path)
    {
        const std::vector<std::string> paths = FontFolders::readable();
        return std::find(paths.begin(), paths.end(), path) != paths.end();
    }

    TemporaryFolder m_folder;
};

TEST_F(Fonts, OfTheSystemAreReadable)
{
    EXPECT_TRUE(isReadable("/usr/share/fonts"));
    EXPECT_TRUE(isReadable("/usr/local/share/fonts"));
    EXPECT_TRUE(isReadable("/var/cache/fontconfig"));
}

TEST_F(Fonts, OfAConfigurationOfOnesOwnAreReadable)
{
    configure("<dir>/opt/fonts</dir>\n<cachedir>/opt/cache</cachedir>");
    EXPECT_TRUE(isReadable("/opt/fonts"));
    EXPECT_TRUE(isReadable("/opt/cache"));
    EXPECT_FALSE(isReadable("/usr/share/fonts"));
}

TEST_F(Fonts, OfIncludedFilesAreReadable)
{
    m_folder.write("more.conf", "<dir>/opt/more</dir>");
    configure("<include ignore_missing=\"yes\">more.conf</include>");
    EXPECT_TRUE(isReadable("/opt/more"));
}

TEST_F(Fonts, OfFilesThatIncludeEachOtherAreFoundOnce)
{
    m_folder.write("more.conf", "<include>fonts.conf</include><dir>/opt/more</dir>");
    configure("<include>more.conf</include>");
    const std::vector<std::string> paths = FontFolders::readable();
    EXPECT_EQ(std::count(paths.begin(), paths.end(), "/opt/more"), 1);
}

TEST_F(Fonts, OfFilesInAnIncludedFolderAreReadable)
{
    m_folder.write("10-more.conf", "<dir>/opt/more</dir>");
    m_folder.write("README", "<dir>/opt/none</dir>");
    configure("<include>" + QByteArray::fromStdString(m_folder.path("")) + "</include>");
    EXPECT_TRUE(isReadable("/opt/more"));
    EXPECT_FALSE(isReadable("/opt/none"));
}

TEST_F(Fonts, OfAnElementOverTwoLinesAreReadable)
{
    configure("<!-- <b> --><dir\n prefix=\"default\">/opt/fonts</dir>"
              "<remap-dir as-path=\"/usr/share/fonts\">/opt/other</remap-dir>"
              "<directory>/opt/none</directory>");
    EXPECT_TRUE(isReadable("/opt/fonts"));
    EXPECT_TRUE(isReadable("/opt/other"));
    EXPECT_FALSE(isReadable("/opt/none"));
}

TEST_F(Fonts, OfElementsThatBeginLikeThoseWithFoldersAreLeftOut)
{
    configure("<description>/opt/none</description><cachedir>/opt/cache</cachedir>");
    EXPECT_TRUE(isReadable("/opt/cache"));
    EXPECT_FALSE(isReadable("/opt/none"));
}

TEST_F(Fonts, OfAConfigurationInOneOfSeveralFoldersAreReadable)
{
    m_folder.write("fonts.conf", "<dir>/opt/fonts</dir>");
    setenv("FONTCONFIG_PATH", ("/opt/none:" + m_folder.path("")).c_str(), 1);
    EXPECT_TRUE(isReadable("/opt/fonts"));
}

TEST_F(Fonts, OfAConfigurationInTheHomeFolderAreReadable)
{
    const std::string home = std::getenv("HOME") == nullptr ? "" : std::getenv("HOME");
    m_folder.write("own.conf", "<dir>~/fonts</dir>");
    setenv("HOME", m_folder.path("").c_str(), 1);
    setenv("FONTCONFIG_FILE", "~/own.conf", 1);
    EXPECT_TRUE(isReadable(m_folder.path("") + "/fonts"));
    setenv("HOME", home.c_str(), 1);
}

TEST_F(Fonts, OfAnIncludedFolderAreThoseOfItsConfigurationFiles)
{
    ASSERT_TRUE(QDir(m_folder.qPath(QString())).mkdir(QStringLiteral("conf.d")));
    m_folder.write("conf.d/more.conf", "<dir>/opt/more</dir>");
    m_folder.write("conf.d/README", "<dir>/opt/other</dir>");
    configure("<include>conf.d</include>");
    const int before = descriptorCount();
    EXPECT_TRUE(isReadable("/opt/more"));
    EXPECT_FALSE(isReadable("/opt/other"));
    EXPECT_EQ(descriptorCount(), before);
}

TEST_F(Fonts, OfFilesThatIncludeOneAnotherForLongAreLeftOut)
{
    for (int i = 0; i < 8; ++i) {
        const QByteArray number = QByteArray::number(i);
        m_folder.write((number + ".conf").toStdString(), "<dir>/opt/" + number + "</dir><include>" +
                                                             QByteArray::number(i + 1) +
                                                             ".conf</include>");
    }
    configure("<include>0.conf</include>");
    EXPECT_TRUE(isReadable("/opt/4"));
    EXPECT_FALSE(isReadable("/opt/5"));
}

TEST_F(Fonts, OfTheUserAreWhereTheEnvironmentSays)
{
    setenv("XDG_DATA_HOME", "/opt/data", 1);
    configure("<dir prefix=\"xdg\">fonts</dir>");
    EXPECT_TRUE(isReadable("/opt/data/fonts"));
}

TEST_F(Fonts, OfAnUnfinishedConfigurationAreLeftOut)
{
    configure("<dir>/opt/fonts");
    EXPECT_FALSE(isReadable("/opt/fonts"));
}

TEST_F(Fonts, HaveTheirCacheWhereTheEnvironmentSays)
{
    setenv("XDG_CACHE_HOME", "/opt/cache", 1);
    configure("<dir>/opt/fonts</dir>");
    EXPECT_EQ(FontFolders::userCache(), "/opt/cache/fontconfig");
    EXPECT_TRUE(isReadable("/opt/cache/fontconfig"));
}

} // namespace
