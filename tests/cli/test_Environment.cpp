#include "CliTest.h"

#include "support/SampleImages.h"
#include "support/SamplePdf.h"

#include <QDir>

namespace {

using Environment = std::map<std::string, std::optional<std::string>>;

struct Row
{
    const char* name;
    Environment changes;
};

const Row rows[] = {
    {"NoHome", {{"HOME", std::nullopt}}},
    {"HomeWhereNothingCanBeWritten",
     {{"HOME", "/proc"}, {"XDG_CACHE_HOME", std::nullopt}, {"XDG_CONFIG_HOME", std::nullopt}}},
    {"NoRuntimeFolder", {{"XDG_RUNTIME_DIR", std::nullopt}}},
    {"RuntimeFolderThatDoesNotExist", {{"XDG_RUNTIME_DIR", "/nonexistent"}}},
    {"LocaleC", {{"LC_ALL", "C"}}},
    {"LocaleWithDecimalComma", {{"LC_ALL", "de_DE.UTF-8"}, {"LANG", "de_DE.UTF-8"}}},
    {"RightToLeftLanguage", {{"LC_ALL", "ar_EG.UTF-8"}, {"LANGUAGE", "ar"}}},
    {"UnknownLocale", {{"LC_ALL", "xx_XX.nonsense"}}},
    {"XcbPlatform", {{"QT_QPA_PLATFORM", "xcb"}, {"DISPLAY", ":99"}}},
    {"UnknownPlatform", {{"QT_QPA_PLATFORM", "nonsense"}}},
    {"NoDisplay", {{"DISPLAY", std::nullopt}, {"WAYLAND_DISPLAY", std::nullopt}}},
    {"PlatformTheme", {{"QT_QPA_PLATFORMTHEME", "gtk3"}, {"QT_STYLE_OVERRIDE", "nonsense"}}},
    {"ScaledDesktop", {{"QT_SCALE_FACTOR", "2"}, {"QT_AUTO_SCREEN_SCALE_FACTOR", "1"}}},
    {"PluginDebugging", {{"QT_DEBUG_PLUGINS", "1"}}},
    {"NoEnvironmentButTheSearchPath",
     {{"HOME", std::nullopt}, {"LANG", std::nullopt}, {"USER", std::nullopt}}},
};

class EnvironmentTest : public CliTest
{
protected:
    void SetUp() override
    {
        folder().write("cover.html", "<html><body><h1>Cover</h1><p>1.5</p></body></html>");
        folder().write("in.jpg", SampleImages::jpegFile(SampleImages::quarters({64, 48})));
        folder().write("in.pdf", SamplePdf::equalPages(1));
    }

    ProgramStart conversion(const std::string& output, const Environment& changes) const
    {
        ProgramStart conversion = start({"-r", "standard", "-m", "0.5,0.25", "-C", "cover.html",
                                         "-o", output, "in.jpg", "in.pdf"});
        for (const auto& [name, value] : changes) {
            conversion.environment[name] = value;
        }
        return conversion;
    }
};

class AnyEnvironment : public EnvironmentTest, public testing::WithParamInterface<Row>
{
};

TEST_P(AnyEnvironment, GivesTheSameFileInSilence)
{
    // The same for all of them.
    static QByteArray plain;
    if (plain.isEmpty()) {
        ASSERT_TRUE(isSilentSuccess(runProgram(conversion("plain.tif", {}))));
        plain = content("plain.tif");
    }
    ASSERT_TRUE(isSilentSuccess(runProgram(conversion("out.tif", GetParam().changes))));
    EXPECT_EQ(pages().size(), 3U);
    EXPECT_TRUE(content("out.tif") == plain);
}

INSTANTIATE_TEST_SUITE_P(Cli, AnyEnvironment, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST_F(EnvironmentTest, LoggingRulesOfTheUserAddRemarksButGiveTheSameFile)
{
    ASSERT_TRUE(isSilentSuccess(runProgram(conversion("plain.tif", {}))));
    const ProgramResult result =
        runProgram(conversion("out.tif", {{"QT_LOGGING_RULES", "*=true"}}));
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.output, "");
    EXPECT_NE(result.error, "");
    EXPECT_TRUE(content("out.tif") == content("plain.tif"));
}

class NameInLocaleC : public CliTest
{
protected:
    ProgramStart inLocaleC(const std::vector<std::string>& arguments) const
    {
        ProgramStart conversion = start(arguments);
        conversion.environment["LC_ALL"] = "C";
        return conversion;
    }
};

TEST_F(NameInLocaleC, OfAPictureIsUtf8)
{
    folder().write("\xd1\x84\xc3\xa9.png", blackPng({20, 20}));
    ASSERT_TRUE(isSilentSuccess(runProgram(inLocaleC({"-o", "out.tif", "\xd1\x84\xc3\xa9.png"}))));
    EXPECT_EQ(pages().size(), 1U);
}

TEST_F(NameInLocaleC, OfAPdfIsUtf8)
{
    folder().write("\xd1\x84\xc3\xa9.pdf", SamplePdf::equalPages(2));
    ASSERT_TRUE(isSilentSuccess(runProgram(inLocaleC({"-o", "out.tif", "\xd1\x84\xc3\xa9.pdf"}))));
    EXPECT_EQ(pages().size(), 2U);
}

TEST_F(NameInLocaleC, OfACoverPageIsUtf8)
{
    folder().write("\xd1\x84\xc3\xa9.html", "<html>Cover</html>");
    folder().write("in.png", blackPng({20, 20}));
    ASSERT_TRUE(isSilentSuccess(
        runProgram(inLocaleC({"-C", "\xd1\x84\xc3\xa9.html", "-o", "out.tif", "in.png"}))));
    EXPECT_EQ(pages().size(), 2U);
}

TEST_F(NameInLocaleC, OfTheOutputIsUtf8)
{
    folder().write("in.png", blackPng({20, 20}));
    ASSERT_TRUE(isSilentSuccess(runProgram(inLocaleC({"-o", "\xd1\x84\xc3\xa9.tif", "in.png"}))));
    EXPECT_EQ(pages("\xd1\x84\xc3\xa9.tif").size(), 1U);
}

TEST_F(NameInLocaleC, IsShownByteForByteInTheMessage)
{
    EXPECT_TRUE(isFailure(runProgram(inLocaleC({"-o", "out.tif", "\xd1\x84\xc3\xa9.png"})),
                          "can't write page file '\xd1\x84\xc3\xa9.png', file not found\n"));
}

class FontConfiguration : public EnvironmentTest
{
protected:
    ProgramResult runWith(const QByteArray& elements, Environment changes = {}) const
    {
        folder().write("fonts.conf", "<fontconfig>" + elements + "</fontconfig>");
        changes["FONTCONFIG_FILE"] = folder().path("fonts.conf");
        return runProgram(conversion("out.tif", changes));
    }
};

// As on a machine whose cache is older than its fonts, for a user without a home folder.
TEST_F(FontConfiguration, WithoutAPlaceForTheCacheIsNoRemark)
{
    ASSERT_TRUE(isSilentSuccess(
        runWith("<dir>/usr/share/fonts/truetype</dir><cachedir>/proc/none</cachedir>")));
    EXPECT_EQ(pages().size(), 3U);
}

TEST_F(FontConfiguration, IsShownWithOtherRemarks)
{
    const ProgramResult result = runWith("<nonsense/>");
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.output, "");
    EXPECT_NE(result.error.find("nonsense"), std::string::npos) << result.error;
}

// Behind the fence it could not be made any more.
TEST_F(FontConfiguration, GetsItsCacheInAHomeFolderThatHasNone)
{
    ASSERT_TRUE(isSilentSuccess(
        runWith("<dir>/usr/share/fonts/truetype</dir><cachedir prefix='xdg'>fontconfig</cachedir>",
                {{"HOME", folder().path("home")}, {"XDG_CACHE_HOME", std::nullopt}})));
    EXPECT_FALSE(QDir(folder().qPath(QStringLiteral("home/.cache/fontconfig"))).isEmpty());
}

} // namespace
